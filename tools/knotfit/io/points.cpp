// SPDX-License-Identifier: MIT
// Points from tables and OBJ files.
#include "io/points.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

// Columns named x, y and z where there are such, else all of them.
std::vector<std::size_t> usualColumns(const std::vector<std::string>& names, std::size_t width) {
  std::vector<std::size_t> found;
  for (const char* wanted : {"x", "y", "z"}) {
    const auto it = std::find_if(names.begin(), names.end(),
                                 [&](const std::string& n) { return lowered(n) == wanted; });
    if (it != names.end()) found.push_back(static_cast<std::size_t>(it - names.begin()));
  }
  if (found.size() >= 2) return found;
  found.clear();
  for (std::size_t i = 0; i < width; ++i) found.push_back(i);
  return found;
}

std::vector<std::size_t> coordinateColumns(const PointOptions& options,
                                           const std::vector<std::string>& names,
                                           std::size_t width) {
  if (options.columns.empty()) return usualColumns(names, width);
  std::vector<std::size_t> found;
  for (const std::string& wanted : commaList(options.columns)) {
    found.push_back(findColumn(wanted, names, width));
  }
  return found;
}

PointSet tablePoints(ByteSource& source, const PointOptions& options, bool blanks) {
  TableOptions how = options.table;
  if (blanks && how.delimiter == 0) how.delimiter = ' ';
  std::size_t dim = 0;
  const Table table = readTable(source, how, [&](const auto& names, std::size_t width) {
    std::vector<std::size_t> columns = coordinateColumns(options, names, width);
    dim = columns.size();
    if (dim < 2 || dim > 3) {
      throw Fault(options.columns.empty() ? kInput : kUsage,
                  cat(source.name(), ":", source.lineNumber(), ": points have 2 or 3 columns, not ",
                      dim, " (choose them with --columns)"));
    }
    if (!options.weightColumn.empty()) {
      columns.push_back(findColumn(options.weightColumn, names, width));
    }
    return columns;
  });
  PointSet points;
  points.dim = static_cast<int>(dim);
  for (std::size_t i = 0; i < table.rows; ++i) {
    const double* row = table.values.data() + i * table.columns;
    points.coords.insert(points.coords.end(), row, row + dim);
    if (table.columns > dim) points.weights.push_back(row[dim]);
  }
  return points;
}

double distance(const double* a, const double* b, int dim) {
  double sum = 0;
  for (int c = 0; c < dim; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
  return std::sqrt(sum);
}

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

}  // namespace

PointSet readPoints(const std::string& path, const PointOptions& options) {
  ByteSource source(path);
  const std::string suffix = lowered(std::filesystem::path(path).extension().string());
  PointSet points = suffix == ".obj"   ? readObjPoints(source, options.table)
                    : suffix == ".ply" ? readPlyPoints(source, options.table)
                                       : tablePoints(source, options, suffix == ".xyz");
  if (points.count() == 0) {
    throw Fault(kInput, cat(source.name(), ": holds no points (one point a line)"));
  }
  if (options.merge >= 0) mergeNeighbours(points, options.merge);
  return points;
}

std::vector<double> readNumbers(const std::string& path) {
  ByteSource source(path);
  return readTable(source, {},
                   [&](const auto&, std::size_t width) {
                     if (width != 1)
                       source.fail(cat(width, " columns, wanted 1"), "one number a line");
                     return std::vector<std::size_t>{0};
                   })
      .values;
}

void checkRoom(const ByteSource& source, const std::vector<double>& values) {
  if (values.size() > kMostNumbers) {
    source.fail(cat("more than ", kMostNumbers, " numbers"), "take fewer points with --thin N");
  }
}

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
