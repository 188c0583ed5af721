// SPDX-License-Identifier: MIT
// The command info: what a file holds, before it is fitted. What may be wrong with it shows here:
// coordinates in the wrong columns as bounds, double points as such, gaps as spacing.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <ostream>

#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/inputs.h"
#include "cli/report.h"
#include "io/fit_json.h"
#include "io/readers.h"
#include "model/bounds.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

// Of every `step`-th number from `first` on.
std::string rangeText(const std::vector<double>& values, std::size_t first, std::size_t step) {
  double low = std::numeric_limits<double>::infinity(), high = -low;
  for (std::size_t i = first; i < values.size(); i += step) {
    low = std::min(low, values[i]);
    high = std::max(high, values[i]);
  }
  return cat(significant(low, 7), " to ", significant(high, 7));
}

void addBounds(Report& report, const std::vector<double>& coords, int dim) {
  for (int c = 0; c < dim; ++c) {
    report.line(std::string(1, "xyz"[c]),
                rangeText(coords, static_cast<std::size_t>(c), static_cast<std::size_t>(dim)));
  }
}

Report infoOfFit(const Spline& s) {
  Report r;
  r.line(s.isCurve() ? "curve" : "surface",
         cat("degree ", s.degree[0], s.isCurve() ? "" : cat(" x ", s.degree[1]), ", ", sizeText(s),
             ", dimension ", s.dim, s.closed ? ", closed" : "", ", ", s.units));
  for (int d = 0; d < s.directions; ++d) {
    const std::vector<double>& t = s.knots[static_cast<std::size_t>(d)];
    const auto distinct =
        static_cast<std::size_t>(1 + std::inner_product(t.begin() + 1, t.end(), t.begin(), 0,
                                                        std::plus<>(), std::not_equal_to<>()));
    r.line(d ? "knots v" : "knots u",
           cat(t.size(), " knots, ", distinct, " distinct, range ", s.first(d), " to ", s.last(d)));
  }
  const Bounds bounds = boundsOf(s);
  for (std::size_t c = 0; c < static_cast<std::size_t>(s.dim); ++c) {
    r.line(std::string(1, "xyz"[c]),
           cat(significant(bounds.low[c], 7), " to ", significant(bounds.high[c], 7)));
  }
  return r;
}

Report infoOfPoints(const PointSet& points) {
  Report r;
  std::size_t same = 0;
  double least = std::numeric_limits<double>::infinity(), most = 0, sum = 0;
  for (std::size_t i = 1; i < points.count(); ++i) {
    const double d = distance(points[i], points[i - 1], points.dim);
    same += d == 0;
    least = std::min(least, d);
    most = std::max(most, d);
    sum += d;
  }
  r.line("points", cat(points.count(), points.count() == 1 ? " point (" : " points (", points.dim,
                       " columns)"));
  addBounds(r, points.coords, points.dim);
  if (points.count() > 1) {
    r.line("spacing", cat(significant(least, 6), " to ", significant(most, 6), ", mean ",
                          significant(sum / static_cast<double>(points.count() - 1), 6),
                          ", length ", significant(sum, 7)));
    r.line("same",
           cat(same, same == 1 ? " point coincides" : " points coincide", " with the one before"));
  }
  return r;
}

Report infoOfTable(const Table& table) {
  Report r;
  r.line("table", cat(table.rows, " rows, ", table.columns, " columns"));
  r.line("values", rangeText(table.values, 0, 1));
  return r;
}

struct InfoArguments {
  std::string input, columns;
  TableArguments table;
};

// Points where two or three columns are coordinates, else a table. The file is read once: it may be
// a pipe.
Report infoOfText(const InfoArguments& a) {
  ByteSource source(a.input);
  bool points = false;
  Table table = readTable(source, a.table.options(), [&](const TableHead& head) {
    std::vector<std::size_t> columns =
        a.columns.empty() ? usualColumns(head) : namedColumns(a.columns, head.names, head.width);
    points = columns.size() == 2 || columns.size() == 3;
    return columns;
  });
  if (!points) return infoOfTable(table);
  PointSet set;
  set.dim = static_cast<int>(table.columns);
  set.coords = std::move(table.values);
  checkRange(source, set.coords);
  return infoOfPoints(set);
}

Report infoOf(const InfoArguments& a) {
  const std::string suffix = lowered(std::filesystem::path(a.input).extension().string());
  if (suffix == ".json") {
    if (!a.columns.empty() || a.table.given()) {
      throw Fault(kUsage, cat(shownName(a.input),
                              ": a fit has no columns; leave out --columns, --delimiter, --skip"));
    }
    return infoOfFit(readFit(a.input).spline);
  }
  if (suffix != ".obj" && suffix != ".ply") return infoOfText(a);
  PointOptions options;
  options.table = a.table.options();
  options.columns = a.columns;
  return infoOfPoints(readPoints(a.input, options));
}

}  // namespace

void addInfoCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("info", "tell what is in a file of points or a fit");
  const auto a = std::make_shared<InfoArguments>();
  command->add_option("FILE", a->input, "points, a table or a fit")->required();
  command->add_option("--columns", a->columns, "columns of x, y and z, by name or number from 1")
      ->type_name("X,Y,Z");
  a->table.addTo(*command);
  command->footer("\nExample: knotfit info section.csv");
  command->callback([a, &chosen] {
    chosen = [a](const Streams& streams) {
      deliver(streams.out, infoOf(*a).text);
      return kDone;
    };
  });
}

}  // namespace knotfit
