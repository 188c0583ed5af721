// SPDX-License-Identifier: MIT
// The least-squares system of a fit: rows of basis values, the last of them constraints.
#pragma once

#include <cstddef>
#include <vector>

#include "fit/basis.h"

namespace knotfit {

/// The entries of a row that are not zero.
struct SparseRow {
  std::vector<std::size_t> columns;
  std::vector<double> values;

  SparseRow() = default;
  /// The basis row times `factor`.
  explicit SparseRow(const BasisRow& row, double factor = 1.0);
  /// Adds `factor` times a basis row to other columns than those already there.
  void append(const BasisRow& row, double factor);
  /// @return the largest magnitude.
  double largest() const;
};

/// min |rows x - rhs| over the least-squares rows, subject to the last `constraints` rows exactly.
struct FitSystem {
  std::size_t unknowns = 0;
  int dim = 1;                  ///< components of each unknown
  std::vector<SparseRow> rows;  ///< least-squares rows, then constraints
  std::size_t constraints = 0;
  std::vector<double> rhs;  ///< dim numbers per row

  /// Appends a row; `datum` has dim numbers, null stands for zeros.
  void add(SparseRow row, const double* datum, double factor = 1.0);
  /// @return rhs - rows x, for unknowns of `dim` components.
  std::vector<double> residual(const std::vector<double>& b, const std::vector<double>& x,
                               int components) const;
};

/// Appends rows that draw the control points to a straight course: second divided differences over
/// the mean places of their knots, scaled so that even knots give sqrt(weight) (1, -2, 1).
/// Source: P. Eilers and B. Marx, Flexible smoothing with B-splines and penalties (1996).
void addSmoothing(FitSystem& system, const std::vector<double>& knots, int degree, double weight);

/// Faults (exit code 4) when the parameters leave control points undetermined: the conditions of
/// Schoenberg and Whitney, which name the knots that hold too few data.
/// @param determined  parameters of all rows, ascending; one may stand several times.
void checkDetermined(const std::vector<double>& knots, int degree,
                     const std::vector<double>& determined);

/// @return whether checkDetermined would pass.
bool isDetermined(const std::vector<double>& knots, int degree,
                  const std::vector<double>& determined);

}  // namespace knotfit
