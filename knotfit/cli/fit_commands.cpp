// SPDX-License-Identifier: MIT
// The commands curve and surface. Outputs are announced before anything is read or computed: a name
// that cannot be written must not cost a long fit.
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/fit_arguments.h"

namespace knotfit {
namespace {

// Writes all files and the report, or nothing: a report that cannot be printed takes the files
// back.
void finish(const FitArguments& a, const Spline& spline, const PictureData& data, Report& report,
            FitOutputs& outputs, const Streams& streams) {
  outputs.addFit({spline, report.json}, data);
  std::string wrote = outputs.list(spline);
  if (!a.report.empty()) {
    outputs.add(a.report, report.json);
    wrote += cat(wrote.empty() ? "" : ", ", shownName(a.report), " (report)");
  }
  if (!wrote.empty()) report.line("wrote", wrote);
  const bool aside = a.outputs.takesStandardOutput() || a.report == "-";
  outputs.commit([&] {
    if (!a.quiet) print(report, aside, streams);
  });
}

int fitCurveCommand(const FitArguments& a, const Streams& streams) {
  FitOutputs outputs(a.outputs, a.inputs());
  if (!a.report.empty()) outputs.announce(a.report);
  Progress progress(a.talk());
  PointOptions reading = a.pointOptions();
  reading.table.watcher = &progress;
  PointSet points = readPoints(a.input, reading);
  FitOptions options = a.curveOptions(points);
  options.solver.reporter = &progress;
  options.watcher = &progress;
  const CurveFit fit = fitCurve(points, options);
  ReportContext context = a.context();
  context.merged = points.merged;
  context.weighted = !points.weights.empty();
  const std::vector<double> nearest =
      nearestDistances(fit.spline, points, fit.parameters, &progress);
  progress.wipe();
  Report report = curveReport(fit, options, context, nearest);
  const PictureData data{&points, nullptr, &fit.parameters, &fit.distances};
  finish(a, fit.spline, data, report, outputs, streams);
  return fit.reached ? kDone : kToleranceMissed;
}

int fitScatteredCommand(const FitArguments& a, const Streams& streams) {
  FitOutputs outputs(a.outputs, a.inputs());
  if (!a.report.empty()) outputs.announce(a.report);
  FitOptions options = a.scatteredOptions();
  PointSet points = readPoints(a.input, a.pointOptions());
  if (points.dim != 3) {
    throw Fault(kInput, cat("the points have ", points.dim,
                            " columns; a surface wants x, y and z (choose them with --columns)"));
  }
  a.readWeights(points);
  Progress progress(a.talk());
  options.solver.reporter = &progress;
  const ScatteredFit fit = fitScattered(points, options);
  progress.wipe();
  ReportContext context = a.context();
  context.weighted = !points.weights.empty();
  Report report = scatteredReport(fit, options, context, nearestDistances(fit, points));
  finish(a, fit.spline, {&points, nullptr, &fit.parameters, &fit.distances}, report, outputs,
         streams);
  return fit.reached ? kDone : kToleranceMissed;
}

int fitSurfaceCommand(const FitArguments& a, const Streams& streams) {
  if (a.scattered) return fitScatteredCommand(a, streams);
  FitOutputs outputs(a.outputs, a.inputs());
  if (!a.report.empty()) outputs.announce(a.report);
  Progress progress(a.talk());
  FitOptions options = a.surfaceOptions();
  GridOptions reading = a.gridOptions();
  reading.table.watcher = &progress;
  const PointGrid grid = readGrid(a.input, reading);
  options.solver.reporter = &progress;
  options.watcher = &progress;
  const SurfaceFit fit = fitSurface(grid, options);
  const std::vector<double> nearest = nearestDistances(fit, grid, &progress);
  progress.wipe();
  Report report = surfaceReport(fit, grid, options, a.context(), nearest);
  finish(a, fit.spline, {nullptr, &grid, nullptr, &fit.distances}, report, outputs, streams);
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
