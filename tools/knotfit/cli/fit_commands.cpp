// SPDX-License-Identifier: MIT
// The commands curve and surface.
#include <memory>
#include <ostream>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/fit_arguments.h"
#include "io/fit_json.h"

namespace knotfit {
namespace {

// Writes all files, then the report: where a file cannot be written, nothing is reported.
void finish(const FitArguments& a, const Spline& spline, const PictureData& data, Report& report,
            FitOutputs& outputs, const Streams& streams) {
  outputs.addFit(spline, data);
  std::string wrote = outputs.list(spline);
  if (!a.report.empty()) {
    outputs.add(a.report, jsonText(report.json));
    wrote += cat(wrote.empty() ? "" : ", ", a.report, " (report)");
  }
  outputs.commit();
  if (!wrote.empty()) report.line("wrote", wrote);
  if (a.quiet) return;
  (a.outputs.takesStandardOutput() || a.report == "-" ? streams.err : streams.out) << report.text;
}

int fitCurveCommand(const FitArguments& a, const Streams& streams) {
  FitOutputs outputs(a.outputs);
  if (!a.report.empty()) outputs.announce(a.report);
  PointSet points = readPoints(a.input, a.pointOptions());
  FitOptions options = a.curveOptions(points);
  Progress progress(a.talk());
  options.solver.reporter = &progress;
  CurveFit fit = fitCurve(points, options);
  progress.wipe();
  const std::vector<double> at = distancesAt(fit.spline, points, fit.parameters);
  const std::vector<double> near = nearestDistances(fit.spline, points, fit.parameters);
  Report report = reportOf(fit, points, options, a.context(), at, near);
  fit.spline.fit = report.json;
  finish(a, fit.spline, {&points, nullptr, &fit.parameters, &at}, report, outputs, streams);
  return fit.reached ? kDone : kToleranceMissed;
}

int fitSurfaceCommand(const FitArguments& a, const Streams& streams) {
  FitOutputs outputs(a.outputs);
  if (!a.report.empty()) outputs.announce(a.report);
  const PointGrid grid = readGrid(a.input, a.gridOptions());
  FitOptions options = a.surfaceOptions();
  Progress progress(a.talk());
  options.solver.reporter = &progress;
  SurfaceFit fit = fitSurface(grid, options);
  progress.wipe();
  const std::vector<double> at = distancesAt(fit, grid), near = nearestDistances(fit, grid);
  Report report = reportOf(fit, grid, options, a.context(), at, near);
  fit.spline.fit = report.json;
  finish(a, fit.spline, {nullptr, &grid, nullptr, &at}, report, outputs, streams);
  return fit.reached ? kDone : kToleranceMissed;
}

}  // namespace

void addCurveCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("curve", "fit a curve");
  const auto a = std::make_shared<FitArguments>();
  a->addCurve(*command);
  command->callback([a, &chosen] {
    chosen = [a](const Streams& streams) { return fitCurveCommand(*a, streams); };
  });
}

void addSurfaceCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("surface", "fit a surface to a rows x columns grid");
  const auto a = std::make_shared<FitArguments>();
  a->addSurface(*command);
  command->callback([a, &chosen] {
    chosen = [a](const Streams& streams) { return fitSurfaceCommand(*a, streams); };
  });
}

}  // namespace knotfit
