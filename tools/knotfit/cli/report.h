// SPDX-License-Identifier: MIT
// The report of a fit: one screen of text, and the same as JSON.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "fit/curve_fit.h"
#include "fit/surface_fit.h"

namespace knotfit {

/// Lines of text with a key in front, and the JSON object that says the same with all digits.
struct Report {
  std::string text;
  nlohmann::ordered_json json;

  /// Appends a line; the key stands in front of the first of a group.
  void line(const std::string& key, const std::string& value);
};

/// @return "40 control points" or "30 x 21 control points".
std::string sizeText(const Spline& spline);

/// What was asked, as far as the report tells it and the fit does not.
struct ReportContext {
  std::string parameters;  ///< "chord-length", "centripetal", "uniform", "given"
  std::string knots;       ///< "averaged", "uniform", "given"
  bool tolerance = false;  ///< a tolerance was asked for
  double asked = 0;
};

Report reportOf(const CurveFit& fit, const PointSet& points, const FitOptions& options,
                const ReportContext& context, const std::vector<double>& distances,
                const std::vector<double>& nearest);

Report reportOf(const SurfaceFit& fit, const PointGrid& grid, const FitOptions& options,
                const ReportContext& context, const std::vector<double>& distances,
                const std::vector<double>& nearest);

}  // namespace knotfit
