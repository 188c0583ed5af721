// SPDX-License-Identifier: MIT
// The linear system of a curve fit: data, smoothing, and the constraints that are met exactly.
#pragma once

#include <cmath>
#include <cstddef>
#include <optional>
#include <set>
#include <vector>

#include "fit/options.h"
#include "fit/solver.h"
#include "fit/system.h"
#include "model/points.h"

namespace knotfit {

/// The rows of the points that are not met exactly, made when they are wanted. Points and
/// parameters are to outlive the object.
class DataRows {
 public:
  DataRows(const PointSet& points, const FitOptions& options, const std::vector<double>& parameters,
           const knotwork::BsplineBasis& basis);

  /// @return indices of the points that are met exactly, ascending.
  const std::set<std::size_t>& met() const { return met_; }
  /// Calls f(row, point, factor) in the order of the points: row and point are to be multiplied by
  /// the factor, the root of the weight. The row is overwritten by the next.
  template <class F>
  void visit(F f) const {
    SparseRow row;
    const Stage stage(watcher_, "fitting", count_);
    for (std::size_t i = 0; i < count_; ++i) {
      stage.at(i);
      const double weight = points_.weights.empty() ? 1.0 : points_.weights[i];
      if (weight == 0 || met_.count(i)) continue;
      row.assign(basis_, u_[i]);
      f(row, points_[i], std::sqrt(weight));
    }
  }
  /// @return how many there are.
  std::size_t rows() const;

 private:
  const PointSet& points_;
  const std::vector<double>& u_;
  Watcher* watcher_;
  knotwork::BsplineBasis basis_;
  std::set<std::size_t> met_;
  std::size_t count_;  // points, without a last one that repeats the first of a closed curve
};

/// The system of one curve fit and the tangents whose lengths are still open.
struct CurveSystem {
  RowMatrix matrix;
  int dim = 0;                           ///< numbers of a control point
  std::vector<double> rhs;               ///< dim numbers per row
  std::vector<std::size_t> tangentRows;  ///< in the order of the options' tangents
  std::optional<DataRows> data;          ///< rows in front of the matrix that are not kept in it

  std::size_t dataRows() const { return data ? data->rows() : 0; }
  /// @return number of least-squares rows in the matrix.
  std::size_t freeRows() const { return matrix.rows.size() - matrix.constraints; }
};

/// @param keepData  whether the rows of the points stand in the matrix.
/// @return rows for the points that are not met exactly, for smoothing, then the constraints: the
/// seam of a closed curve, the points that are met, the tangents.
CurveSystem curveSystem(const PointSet& points, const FitOptions& options,
                        const std::vector<double>& parameters, const std::vector<double>& knots,
                        bool keepData);

/// What a solver makes of a curve's system.
struct CurveSolution {
  std::vector<double> controls;  ///< dim numbers each; tangents have no length yet
  std::vector<double> shapes;    ///< one number per tangent each: with its length 1 and no data
};

/// Solves by the library's dense solvers; the data's rows stand in the matrix. Faults as
/// FactoredSystem.
CurveSolution solvedDense(const CurveSystem& system, const SolverOptions& options);
/// Solves by the library's banded solver, which sees each row once. Faults (exit code 4) name
/// control points that are undetermined, or constraints that contradict each other.
CurveSolution solvedBanded(const CurveSystem& system, int degree, const SolverOptions& options);

/// What the solver met to rounding is met to the bit where that is plain: a constraint on one
/// control point alone gives it its datum, one that two control points be equal makes them so.
void meetPlainRows(const CurveSystem& system, std::vector<double>& controls);

/// Adds what the tangents' open lengths contribute to the control points. The solution is linear in
/// them, so those of least squares come from the normal equations of the shapes. Faults (exit code
/// 4): a length that is not positive, lengths that are not unique.
void addTangents(const CurveSystem& curve, const FitOptions& options, CurveSolution& solution);

/// @return largest distance from a point or seam constraint.
double largestMiss(const CurveSystem& curve, const std::vector<double>& controls);

}  // namespace knotfit
