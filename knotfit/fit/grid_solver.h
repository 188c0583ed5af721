// SPDX-License-Identifier: MIT
// The two linear systems of a surface fit and their solution one after the other.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <knotwork/knotwork.h>

#include "fit/options.h"
#include "fit/solver.h"
#include "fit/system.h"

namespace knotfit {

/// One direction of the tensor product: its matrix and which line of the grid each row stands for.
struct Direction {
  RowMatrix matrix;
  std::vector<std::ptrdiff_t> lines;  ///< -1: a row of smoothing, its data are zero
};

/// @return the rows for a direction's parameters: with exact edges the first and the last line are
/// constraints. Faults as checkDetermined and checkSize.
Direction directionOf(const std::vector<double>& parameters, const std::vector<double>& knots,
                      int degree, const FitOptions& options);

/// @return the grid's points, x y z at 3 (i columns + j), in the order of the directions' rows.
TtupleMatrix gridTuples(const Direction& u, const Direction& v, const std::vector<double>& values,
                        std::size_t columns);

/// Solves U X V' = B. As FactoredSystem does for curves, data are scaled by a power of two and one
/// step of refinement follows. Faults (exit code 4) when a direction is deficient.
class GridSolver {
 public:
  GridSolver(const Direction& u, const Direction& v, const SolverOptions& options);

  TtupleMatrix solve(const TtupleMatrix& b);
  /// The four corner control points are prescribed; `corners` holds them, zeros elsewhere.
  TtupleMatrix solveWithCorners(const TtupleMatrix& b, const TtupleMatrix& corners);

 private:
  TtupleMatrix zeros() const;

  const Direction& u_;
  const Direction& v_;
  std::unique_ptr<TsolveConstrainedLsq> solverU_, solverV_;
  TsolveTensorProductLsq tensor_;
};

}  // namespace knotfit
