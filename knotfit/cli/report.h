// SPDX-License-Identifier: MIT
// The report of a fit: one screen of text, and the same as JSON.
#pragma once

#include <string>
#include <vector>

#include "cli/app.h"
#include "fit/curve_fit.h"
#include "fit/scattered_fit.h"
#include "fit/surface_fit.h"

namespace knotfit {

/// Lines of text with a key in front, and JSON text that says the same with all digits.
struct Report {
  std::string text;
  std::string json;  ///< empty where a command has none

  /// Appends a line; the key stands in front of the first of a group.
  void line(const std::string& key, const std::string& value);
};

/// Prints the report on standard output, or where data take that (`aside`) on standard error.
void print(const Report& report, bool aside, const Streams& streams);

/// @return "40 control points" or "30 x 21 control points".
std::string sizeText(const Spline& spline);

/// What was asked and read, as far as the report tells it and the fit does not.
struct ReportContext {
  std::string parameters;  ///< "chord-length", "centripetal", "uniform", "given"
  std::string knots;       ///< "averaged", "uniform", "given"
  std::size_t merged = 0;  ///< points left out because they coincide with the one before
  bool weighted = false;   ///< the points have weights
};

/// @param nearest  distance of every point from the nearest place of the curve.
Report curveReport(const CurveFit& fit, const FitOptions& options, const ReportContext& context,
                   const std::vector<double>& nearest);

/// @param nearest  distance of every grid point from the nearest place of the surface.
Report surfaceReport(const SurfaceFit& fit, const PointGrid& grid, const FitOptions& options,
                     const ReportContext& context, const std::vector<double>& nearest);

/// @param nearest  distance of every point from the nearest place of the surface.
Report scatteredReport(const ScatteredFit& fit, const FitOptions& options,
                       const ReportContext& context, const std::vector<double>& nearest);

}  // namespace knotfit
