// SPDX-License-Identifier: MIT
// The least-squares system of a fit: rows of basis values, the last of them constraints.
#pragma once

#include <cstddef>
#include <vector>

#include <knotwork/knotwork.h>

namespace knotfit {

/// @return the basis functions of a degree on knots in the long form.
knotwork::BsplineBasis basisOf(const std::vector<double>& knots, int degree);

/// The entries of a row that are not zero.
struct SparseRow {
  std::vector<std::size_t> columns;
  std::vector<double> values;

  SparseRow() = default;
  /// A derivative of the basis functions at u; order 0 stands for their values.
  SparseRow(const knotwork::BsplineBasis& basis, double u, int order = 0);
  /// Makes this the row of another place, in the storage at hand.
  void assign(const knotwork::BsplineBasis& basis, double u, int order = 0);
  /// Adds `factor` times another row to other columns than those already there.
  void append(const SparseRow& row, double factor);
  /// @return the largest magnitude.
  double largest() const;
};

/// The matrix of a fit: least-squares rows, then `constraints` rows that are to be met exactly.
struct RowMatrix {
  std::size_t unknowns = 0;
  std::vector<SparseRow> rows;
  std::size_t constraints = 0;

  /// Appends the row times `factor`.
  void add(SparseRow row, double factor = 1.0);
  /// @return b - rows x, for unknowns of `components` numbers each.
  std::vector<double> residual(const std::vector<double>& b, const std::vector<double>& x,
                               int components) const;
};

/// Appends rows that draw the control points to a straight course: second divided differences over
/// the mean places of their knots, scaled so that even knots give sqrt(weight) (1, -2, 1). Their
/// data are zeros.
/// Source: P. Eilers and B. Marx, Flexible smoothing with B-splines and penalties (1996).
void addSmoothing(RowMatrix& matrix, const knotwork::BsplineBasis& basis, double weight);

/// Faults (exit code 4) when the parameters leave control points undetermined: the conditions of
/// Schoenberg and Whitney, which name the knots that hold too few data.
/// @param determined  parameters of all rows, ascending; one may stand several times.
void checkDetermined(const std::vector<double>& knots, int degree,
                     const std::vector<double>& determined);

/// @return whether checkDetermined would pass.
bool isDetermined(const std::vector<double>& knots, int degree,
                  const std::vector<double>& determined);

}  // namespace knotfit
