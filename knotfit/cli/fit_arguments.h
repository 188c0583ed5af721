// SPDX-License-Identifier: MIT
// The options of the fitting commands, and what they mean.
#pragma once

#include <string>
#include <vector>

#include "cli/inputs.h"
#include "cli/outputs.h"
#include "cli/progress.h"
#include "cli/report.h"
#include "fit/options.h"
#include "io/readers.h"

namespace CLI {
class App;
}

namespace knotfit {

/// Options as they stand on the command line.
struct FitArguments {
  std::string input, degree, controls, param, knots, ends = "exact", edges = "free";
  std::vector<std::string> pass, tangents, corners;
  std::string weights, solver = "auto", columns, spacing, order = "rows", plane = "xy",
                       units = "mm", report, progress = "auto";
  double tolerance = 0, smooth = 0, rankTolerance = 1e-10, merge = -1;
  std::size_t refine = 0, thin = 1;
  bool closed = false, heights = false, scattered = false, quiet = false, verbose = false,
       endsGiven = false;
  TableArguments table;
  OutputOptions outputs;

  /// Adds the options that curves and surfaces share, then those of one of them.
  void addCommon(CLI::App& app);
  void addCurve(CLI::App& app);
  void addSurface(CLI::App& app);
  void addPointColumns(CLI::App& app);

  /// @return all files that are read: points, parameters, knots, weights.
  std::vector<std::string> inputs() const;
  PointOptions pointOptions() const;
  GridOptions gridOptions() const;
  /// Faults: exit code 2 for what makes no sense, 3 for files of parameters, knots or weights.
  FitOptions curveOptions(PointSet& points) const;
  FitOptions surfaceOptions() const;
  FitOptions scatteredOptions() const;
  /// Adds the weights of a file. Faults: exit code 3.
  void readWeights(PointSet& points) const;
  ReportContext context() const;
  Talk talk() const;

 private:
  void readShared(FitOptions& options, int directions) const;
  void readKnots(FitOptions& options) const;
  TableOptions tableOptions() const;
  std::string usedParam() const;  // the one asked for, or the default
};

}  // namespace knotfit
