// SPDX-License-Identifier: MIT
// The options of the fitting commands, and what they mean.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/outputs.h"
#include "cli/progress.h"
#include "cli/report.h"
#include "fit/options.h"
#include "io/points.h"

namespace knotfit {

/// Options as they stand on the command line.
struct FitArguments {
  std::string input, degree, controls, param = "chord", knots, ends = "exact", edges = "free";
  std::vector<std::string> pass, tangents, corners;
  std::string weights, solver = "householder", columns, delimiter = "auto", spacing = "1,1",
                       order = "rows", units = "mm", report, progress = "auto";
  double tolerance = 0, smooth = 0, rankTolerance = 1e-10, merge = -1;
  std::size_t refine = 0, skip = 0, thin = 1;
  bool closed = false, heights = false, quiet = false, verbose = false, endsGiven = false;
  OutputOptions outputs;

  /// Adds the options that curves and surfaces share, then those of one of them.
  void addCommon(CLI::App& app);
  void addCurve(CLI::App& app);
  void addSurface(CLI::App& app);

  PointOptions pointOptions() const;
  GridOptions gridOptions() const;
  /// Faults: exit code 2 for what makes no sense, 3 for files of parameters, knots or weights.
  FitOptions curveOptions(PointSet& points) const;
  FitOptions surfaceOptions() const;
  ReportContext context() const;
  Talk talk() const;

 private:
  void readShared(FitOptions& options, int directions) const;
  void readKnots(FitOptions& options) const;
  TableOptions tableOptions() const;
};

}  // namespace knotfit
