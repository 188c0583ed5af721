// SPDX-License-Identifier: MIT
// Points from tables and OBJ files, and the choice of a reader. The suffix alone chooses: contents
// may come from a pipe, which cannot be looked at twice.
#include "io/readers.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "base/fault.h"
#include "base/text.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

PointSet tablePoints(ByteSource& source, const PointOptions& options) {
  const bool weighted = !options.weightColumn.empty();
  std::size_t dim = 0;
  Table table = readTable(source, options.table, [&](const TableHead& head) {
    std::optional<std::size_t> weights;
    if (weighted) weights = findColumn(options.weightColumn, head.names, head.width);
    std::vector<std::size_t> columns = options.columns.empty()
                                           ? usualColumns(head, weights)
                                           : namedColumns(options.columns, head.names, head.width);
    dim = columns.size();
    if (dim < 2 || dim > 3) {
      source.failAt(head.line, cat("points have 2 or 3 columns, not ", dim),
                    "choose them with --columns");
    }
    if (weights) columns.push_back(*weights);
    return columns;
  });
  PointSet points;
  points.dim = static_cast<int>(dim);
  if (!weighted) {
    points.coords = std::move(table.values);  // a large file is held once
    return points;
  }
  for (std::size_t i = 0; i < table.rows; ++i) {
    const double* row = table.values.data() + i * table.columns;
    points.coords.insert(points.coords.end(), row, row + dim);
    points.weights.push_back(row[dim]);
  }
  return points;
}

// OBJ and PLY files say themselves where their numbers stand: what speaks of tables has no sense.
void refuseTableOptions(const ByteSource& source, const PointOptions& o, bool isObj) {
  const auto refuse = [&](const char* option) {
    throw Fault(kUsage, cat(source.name(), ": ", option, " does not suit ",
                            isObj ? "an OBJ" : "a PLY", " file; leave it out"));
  };
  if (o.table.delimiter) refuse("--delimiter");
  if (o.table.skip) refuse("--skip");
  if (isObj && !o.columns.empty()) refuse("--columns");
  if (isObj && !o.weightColumn.empty()) refuse("--weights COLUMN");
}

// Measures from the last point that was kept, so that a slow drift is not merged away.
void mergeNeighbours(PointSet& points, double within) {
  PointSet kept;
  kept.dim = points.dim;
  for (std::size_t i = 0; i < points.count(); ++i) {
    if (i > 0 && distance(points[i], kept[kept.count() - 1], points.dim) <= within) continue;
    kept.coords.insert(kept.coords.end(), points[i], points[i] + points.dim);
    if (!points.weights.empty()) kept.weights.push_back(points.weights[i]);
  }
  kept.merged = points.count() - kept.count();
  points = std::move(kept);
}

// Points as the suffix says they are written.
PointSet pointsOf(ByteSource& source, const PointOptions& options, const std::string& suffix) {
  const bool isObj = suffix == ".obj", isPly = suffix == ".ply";
  if (isObj || isPly) refuseTableOptions(source, options, isObj);
  if (isObj) return readObjPoints(source, options.table);
  if (isPly) return readPlyPoints(source, options);
  return tablePoints(source, options);
}

}  // namespace

PointSet readPoints(const std::string& path, const PointOptions& options) {
  ByteSource source(path);
  const std::string suffix = lowered(std::filesystem::path(path).extension().string());
  PointSet points = pointsOf(source, options, suffix);
  if (points.count() == 0) {
    throw Fault(kInput, cat(source.name(), ": holds no points (one point a line)"));
  }
  checkRange(source, points.coords);
  if (options.merge >= 0) mergeNeighbours(points, options.merge);
  return points;
}

std::vector<double> readNumbers(const std::string& path) {
  ByteSource source(path);
  const auto only = [&](const TableHead& head) {
    if (head.width != 1) {
      source.failAt(head.line, cat(head.width, " columns, wanted 1"), "one number a line");
    }
    return std::vector<std::size_t>{0};
  };
  return readTable(source, {}, only).values;
}

std::vector<std::size_t> usualColumns(const TableHead& head, std::optional<std::size_t> weights) {
  std::vector<std::size_t> found;
  for (const char* wanted : {"x", "y", "z"}) {
    const auto it = std::find_if(head.names.begin(), head.names.end(),
                                 [&](const std::string& n) { return lowered(n) == wanted; });
    if (it != head.names.end()) found.push_back(static_cast<std::size_t>(it - head.names.begin()));
  }
  if (found.size() >= 2) return found;
  found.clear();
  for (std::size_t i = 0; i < head.width; ++i) {
    if (i != weights) found.push_back(i);
  }
  return found;
}

std::vector<std::size_t> namedColumns(const std::string& columns,
                                      const std::vector<std::string>& names, std::size_t width) {
  std::vector<std::size_t> found;
  for (const std::string& wanted : commaList(columns)) {
    const std::size_t column = findColumn(wanted, names, width);
    if (std::count(found.begin(), found.end(), column)) {
      throw Fault(kUsage, cat("--columns: names column ", column + 1, " twice"));
    }
    found.push_back(column);
  }
  return found;
}

void checkRange(const ByteSource& source, const std::vector<double>& coords) {
  constexpr double kMost = 1e300;
  for (const double x : coords) {
    if (std::abs(x) <= kMost) continue;
    throw Fault(kInput, cat(source.name(), ": a coordinate is beyond 1e300: ", x,
                            " (measure in larger units)"));
  }
}

void checkRoom(const ByteSource& source, const std::vector<double>& values) {
  if (values.size() > kMostNumbers) {
    source.fail(cat("more than ", kMostNumbers, " numbers"), "take fewer points with --thin N");
  }
}

// A fourth number is the weight of a control point of free-form geometry, or the first of a colour:
// neither is a weight of a measurement.
PointSet readObjPoints(ByteSource& source, const TableOptions& options) {
  PointSet points;
  points.dim = 3;
  std::string_view line;
  std::size_t seen = 0;
  while (source.nextLine(line)) {
    line = trimmed(line);
    if (!line.starts_with("v ") && !line.starts_with("v\t")) continue;
    const bool kept = seen++ % options.thin == 0;
    std::size_t column = 0;
    for (std::string_view left = trimmed(line.substr(1)); column < 3; ++column) {
      const std::size_t end = std::min(left.find_first_of(" \t"), left.size());
      double value = 0;
      if (parseNumber(left.substr(0, end), value) != NumberFault::kNone) {
        source.fail(
            cat("coordinate ", column + 1, " is not a number: ", inQuotes(left.substr(0, end))),
            "write v x y z");
      }
      if (kept) points.coords.push_back(value);
      left = trimmed(left.substr(end));
    }
    checkRoom(source, points.coords);
  }
  return points;
}

}  // namespace knotfit
