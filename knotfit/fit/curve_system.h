// SPDX-License-Identifier: MIT
// The linear system of a curve fit: data, smoothing, and the constraints that are met exactly.
#pragma once

#include <cstddef>
#include <vector>

#include "fit/options.h"
#include "fit/solver.h"
#include "fit/system.h"

namespace knotfit {

/// The system of one curve fit and the tangents whose lengths are still open.
struct CurveSystem {
  RowMatrix matrix;
  int dim = 0;                           ///< numbers of a control point
  std::vector<double> rhs;               ///< dim numbers per row
  std::vector<std::size_t> tangentRows;  ///< in the order of the options' tangents
};

/// @return rows for the points that are not met exactly, for smoothing, then the constraints: the
/// seam of a closed curve, the points that are met, the tangents.
CurveSystem curveSystem(const PointSet& points, const FitOptions& options,
                        const std::vector<double>& parameters, const std::vector<double>& knots);

/// What the solver met to rounding is met to the bit where that is plain: a constraint on one
/// control point alone gives it its datum, one that two control points be equal makes them so.
void meetPlainRows(const CurveSystem& system, std::vector<double>& controls);

/// Adds what the tangents' open lengths contribute. The solution is linear in them, so those of
/// least squares come from the normal equations of the solutions with one tangent of length 1 and
/// no data. Faults (exit code 4): a length that is not positive, lengths that are not unique.
void addTangents(const CurveSystem& curve, const FactoredSystem& factored,
                 const FitOptions& options, std::vector<double>& controls);

/// @return largest distance from a point or seam constraint.
double largestMiss(const CurveSystem& curve, const std::vector<double>& controls);

}  // namespace knotfit
