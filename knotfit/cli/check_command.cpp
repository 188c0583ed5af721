// SPDX-License-Identifier: MIT
// The command check: how far points are from a fit. Without --nearest a point is compared with the
// place on the curve that its chord length gives it, as the fit itself was: points that a curve was
// fitted to then show the same deviations. Grids have no such order here, so surfaces are always
// asked for the nearest place.
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/inputs.h"
#include "cli/outputs.h"
#include "cli/report.h"
#include "fit/nearest.h"
#include "fit/parameters.h"
#include "io/fit_json.h"
#include "io/output.h"
#include "io/readers.h"
#include "model/deviation.h"

namespace knotfit {
namespace {

struct CheckArguments {
  std::string fit, points, columns, output;
  bool nearest = false, force = false;
  double tolerance = -1, merge = -1;  // -1: not given
  TableArguments table;
};

std::vector<Foot> feetOf(const Spline& s, const PointSet& points, bool nearest) {
  std::vector<Foot> feet;
  if (!s.isCurve()) {
    const SurfaceProjector projector(s);
    for (std::size_t i = 0; i < points.count(); ++i) {
      feet.push_back(projector.nearest(points[i]));
    }
    return feet;
  }
  const CurveProjector projector(s);
  const std::vector<double> u =
      nearest ? std::vector<double>() : parametersOf(points, Spacing::kChord, s.closed);
  for (std::size_t i = 0; i < points.count(); ++i) {
    if (nearest) {
      feet.push_back(projector.nearest(points[i]));
      continue;
    }
    const double at = s.first(0) + u[i] * (s.last(0) - s.first(0));
    feet.push_back(projector.at(points[i], at));
  }
  return feet;
}

int checkCommand(const CheckArguments& a, const Streams& streams) {
  OutputSet outputs(a.force);
  // Before anything is read: a name that cannot be written costs no work.
  outputs.protect(a.fit);
  outputs.protect(a.points);
  if (!a.output.empty()) {
    outputs.announce(a.output);
    checkSuffix(a.output, Format::kCsv);
  }
  const Spline s = readFit(a.fit).spline;
  PointOptions options;
  options.table = a.table.options();
  options.columns = a.columns;
  options.merge = a.merge;
  const PointSet points = readPoints(a.points, options);
  if (points.dim != s.dim) {
    throw Fault(kUsage, cat("the points have ", points.dim, " columns, the fit has ", s.dim,
                            " (choose them with --columns)"));
  }
  const bool nearest = a.nearest || !s.isCurve();
  const std::vector<Foot> feet = feetOf(s, points, nearest);
  std::vector<double> distances;
  std::string table = s.isCurve() ? "point,u,distance\n" : "point,u,v,distance\n";
  for (std::size_t i = 0; i < feet.size(); ++i) {
    distances.push_back(feet[i].distance);
    table += cat(i + 1, ",", feet[i].u, ",", s.isCurve() ? "" : cat(feet[i].v, ","),
                 feet[i].distance, "\n");
  }
  const Deviation d = summaryOf(distances);
  Report report;
  report.line("check", cat(points.count(), " points (", points.dim, " columns)"));
  report.line("error",
              cat(nearest ? "nearest distance:  " : "at the parameters: ", "rms ", measured(d.rms),
                  ", max ", measured(d.max), " (point ", d.worst + 1, ")"));
  const bool within = a.tolerance < 0 || d.max <= a.tolerance;
  if (a.tolerance >= 0) report.line("tol", cat(a.tolerance, within ? " kept" : " not kept"));
  if (!a.output.empty()) {
    outputs.add(a.output, table);
    report.line("wrote", shownName(a.output));
  }
  outputs.commit([&] { print(report, a.output == "-", streams); });
  return within ? kDone : kToleranceMissed;
}

}  // namespace

void addCheckCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("check", "residuals of any points against a fit");
  const auto a = std::make_shared<CheckArguments>();
  command->add_option("FIT", a->fit, "a fit written as JSON")->required();
  command->add_option("POINTS", a->points, "CSV, XYZ, OBJ or PLY points")->required();
  command->add_flag("--nearest", a->nearest,
                    "distance from the nearest place, not from that at the chord length");
  addNumber(*command, "--tol", a->tolerance, Least::kZero,
            "end with code 1 when a point is further away");
  command->add_option("--columns", a->columns, "columns of x, y and z, by name or number from 1")
      ->type_name("X,Y,Z");
  addNumber(*command, "--merge", a->merge, Least::kZero,
            "leave out points this near to the one before");
  a->table.addTo(*command);
  command->add_option("-o,--output", a->output, "table of the distances as CSV")->type_name("FILE");
  command->add_flag("--force", a->force, "overwrite files that exist");
  command->footer("\nExample: knotfit check section.json measured.csv --nearest --tol 0.01");
  command->callback(
      [a, &chosen] { chosen = [a](const Streams& s) { return checkCommand(*a, s); }; });
}

}  // namespace knotfit
