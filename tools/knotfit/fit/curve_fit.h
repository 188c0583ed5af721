// SPDX-License-Identifier: MIT
// Fits of curves.
#pragma once

#include <vector>

#include "fit/deviation.h"
#include "fit/options.h"
#include "fit/spline.h"

namespace knotfit {

/// A fitted curve and what the report tells about it.
struct CurveFit {
  Spline spline;
  std::vector<double> parameters;  ///< of the points, after any re-projection
  std::size_t rows = 0, constraints = 0;
  double condition = -1;  ///< as conditionOf answers
  double miss = 0;        ///< largest distance from a constraint
  bool adapted = false;   ///< knots were placed by the deviation
  bool reached = true;    ///< the asked tolerance holds
};

/// Fits a curve: with the number of control points asked for, or within the tolerance asked for.
CurveFit fitCurve(const PointSet& points, const FitOptions& options);

/// Fits with given knots (long form). Faults as FactoredSystem and checkDetermined.
CurveFit fitWithKnots(const PointSet& points, const FitOptions& options,
                      const std::vector<double>& parameters, const std::vector<double>& knots);

/// @return knots for n control points by the options' choice.
std::vector<double> knotsFor(const FitOptions& options, const std::vector<double>& parameters,
                             std::size_t n);

/// Finds a curve with few control points whose largest nearest distance keeps the tolerance.
///
/// Unless the user chose the knots, they are placed where the deviation is: spans that hold a point
/// too far away are halved between their data until none does, then knots that can go are taken
/// out, least jump of the highest derivative first. Where even that ends with points too far away,
/// the search starts from the interpolating knots. With knots of the user's choice the numbers of
/// control points are tried in turn.
CurveFit fitWithin(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters);

/// @return distance of every point from the curve at its parameter.
std::vector<double> distancesAt(const Spline& spline, const PointSet& points,
                                const std::vector<double>& parameters);

/// @return distance of every point from the nearest place of the curve.
std::vector<double> nearestDistances(const Spline& spline, const PointSet& points,
                                     const std::vector<double>& parameters);

}  // namespace knotfit
