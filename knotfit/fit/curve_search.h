// SPDX-License-Identifier: MIT
// The steps of a curve fit, for the search of a curve within a tolerance.
#pragma once

#include <vector>

#include "fit/curve_fit.h"

namespace knotfit {

/// Fits with given knots (long form) and re-projects the parameters as the options ask. Faults as
/// FactoredSystem and checkDetermined.
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
/// control points are tried in turn. Faults (exit code 4) where no number of them has a solution.
CurveFit fitWithin(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters);

}  // namespace knotfit
