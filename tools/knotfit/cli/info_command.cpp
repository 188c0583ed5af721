// SPDX-License-Identifier: MIT
// The command info.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <ostream>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/report.h"
#include "io/fit_json.h"
#include "io/points.h"

namespace knotfit {
namespace {

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
  addBounds(r, s.controls, s.dim);
  return r;
}

Report infoOfPoints(const PointSet& points) {
  Report r;
  std::size_t same = 0;
  double least = std::numeric_limits<double>::infinity(), most = 0, sum = 0;
  for (std::size_t i = 1; i < points.count(); ++i) {
    double squared = 0;
    for (int c = 0; c < points.dim; ++c) squared += std::pow(points[i][c] - points[i - 1][c], 2);
    const double d = std::sqrt(squared);
    same += d == 0;
    least = std::min(least, d);
    most = std::max(most, d);
    sum += d;
  }
  r.line("points", cat(points.count(), " points (", points.dim, " columns)"));
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

Report infoOfTable(const std::string& path) {
  ByteSource source(path);
  const Table table = readTable(source, {}, [](const auto&, std::size_t width) {
    std::vector<std::size_t> all;
    for (std::size_t i = 0; i < width; ++i) all.push_back(i);
    return all;
  });
  Report r;
  r.line("table", cat(table.rows, " rows, ", table.columns, " columns"));
  r.line("values", rangeText(table.values, 0, 1));
  return r;
}

int infoCommand(const std::string& path, const std::string& columns, const Streams& streams) {
  const std::string suffix = lowered(std::filesystem::path(path).extension().string());
  Report report;
  if (suffix == ".json") {
    report = infoOfFit(readFit(path));
  } else {
    bool points = true;
    if (suffix == ".csv" && columns.empty()) {  // a table of more columns is no list of points
      ByteSource source(path);
      readTable(source, {}, [&](const auto& names, std::size_t width) {
        points = width <= 3 || !names.empty();
        return std::vector<std::size_t>{};
      });
    }
    PointOptions options;
    options.columns = columns;
    report = points ? infoOfPoints(readPoints(path, options)) : infoOfTable(path);
  }
  streams.out << report.text;
  return kDone;
}

}  // namespace

void addInfoCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("info", "tell what is in a file of points or a fit");
  const auto input = std::make_shared<std::string>(), columns = std::make_shared<std::string>();
  command->add_option("FILE", *input, "points, a table or a fit")->required();
  command->add_option("--columns", *columns, "columns of x, y and z, by name or number from 1")
      ->type_name("X,Y,Z");
  command->footer("\nExample: knotfit info section.csv");
  command->callback([input, columns, &chosen] {
    chosen = [input, columns](const Streams& s) { return infoCommand(*input, *columns, s); };
  });
}

}  // namespace knotfit
