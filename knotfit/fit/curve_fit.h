// SPDX-License-Identifier: MIT
// Fits of curves.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "fit/options.h"
#include "fit/system.h"
#include "model/points.h"
#include "model/spline.h"

namespace knotfit {

/// A fitted curve and what the report tells about it.
struct CurveFit {
  Spline spline;
  std::vector<double> parameters;           ///< of the points, after any re-projection
  std::vector<double> distances;            ///< of the points from the curve at their parameters
  std::shared_ptr<const RowMatrix> matrix;  ///< that was solved, where it was kept
  std::size_t rows = 0, constraints = 0;    ///< of the system, the constraints among the rows
  Method method = Method::kHouseholder;     ///< that solved it
  std::optional<Spectrum> spectrum;         ///< of the system
  double miss = 0;                          ///< largest distance from a constraint
  bool met = true;                          ///< the miss is no more than rounding
  bool adapted = false;                     ///< knots were placed by the deviation
  bool reached = true;                      ///< the asked tolerance holds
};

/// Fits a curve: with the number of control points asked for, or within the tolerance asked for.
/// Faults: exit code 2 for constraints that the solver cannot meet; exit code 4 where there is no
/// unique solution or the control points leave the range of numbers.
CurveFit fitCurve(const PointSet& points, const FitOptions& options);

/// @return distance of every point from the nearest place of the curve.
std::vector<double> nearestDistances(const Spline& spline, const PointSet& points,
                                     const std::vector<double>& parameters,
                                     Watcher* watcher = nullptr);

/// @return distance of every point from the curve at its parameter.
std::vector<double> distancesAt(const Spline& spline, const PointSet& points,
                                const std::vector<double>& parameters);

}  // namespace knotfit
