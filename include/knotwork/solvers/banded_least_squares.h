// SPDX-License-Identifier: MIT
// Least squares for any number of rows that touch few neighbouring unknowns each.
#pragma once

#include <cstddef>
#include <memory>

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/solvers/solver_reporter.h"
#include "knotwork/vector/int_vec.h"

namespace knotwork {

namespace detail {
class BandedSystem;
}

/// Solves min |A x - b| subject to C x = d, where each row of A has its entries in `order`
/// neighbouring columns: the system of a B-spline curve, whose rows are the basis functions at one
/// parameter.
///
/// Rows are taken one after the other and not kept. Those that start at the same column, a *span*,
/// are rotated into one triangle of the order's size; the triangles meet in the band of R when the
/// system is solved. So memory grows with unknowns x order^2 and not with rows, and the normal
/// equations are never formed. Rows of different spans may come in any order; the result is, bit
/// for bit, a function of the rows of each span in the order given, whatever the number of threads.
///
/// Constraints C x = d hold to rounding, in any number and on any columns. Prescribed unknowns keep
/// their values exactly. In a periodic system the first column follows the last one.
///
/// Failures are codes, and nothing is thrown. Where memory runs out the code is -1; if that was
/// while rows were added the system is cleared, since some of them may be in it.
///
/// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 27 (sequential
/// accumulation for banded problems) and ch. 20-21 (constraints).
class KNOTWORK_API BandedLeastSquares {
 public:
  /// An empty system.
  ///
  /// @param unknowns   number of columns, at least `order`.
  /// @param order      entries per row, at least 1; a B-spline's degree plus 1.
  /// @param dimension  components of each right-hand side and of each unknown, at least 1.
  /// @param periodic   whether rows may go on from the last column to the first.
  BandedLeastSquares(int unknowns, int order, int dimension, bool periodic = false);
  /// The same with a reporter, which hears progress; it must live as long as the solver.
  BandedLeastSquares(TsolverReporter& reporter, int unknowns, int order, int dimension,
                     bool periodic = false);
  BandedLeastSquares(const BandedLeastSquares&) = delete;
  BandedLeastSquares& operator=(const BandedLeastSquares&) = delete;
  ~BandedLeastSquares();

  /// Forgets rows, constraints and prescribed unknowns.
  void clear();

  /// Fixes an unknown; to be called before the first row.
  ///
  /// @param unknown  column, 0 <= unknown < unknowns.
  /// @param value    `dimension` components, finite.
  /// @return  0 done; 4 bad argument, or rows are there; -1 no memory.
  [[nodiscard]] int prescribe(int unknown, const DoubleVec& value);

  /// Adds least-squares rows.
  ///
  /// @param count   number of rows.
  /// @param first   first column of each row: 0 <= first <= unknowns - order, in a periodic system
  ///                0 <= first < unknowns.
  /// @param values  count x order entries, row after row, finite. A weighted row comes multiplied
  ///                by its weight's square root, as does its right-hand side.
  /// @param rhs     count x dimension components, row after row, finite.
  /// @return  0 done; 4 bad argument, with no row added; -1 no memory.
  [[nodiscard]] int addRows(std::size_t count, const int* first, const double* values,
                            const double* rhs);
  /// Adds one row.
  [[nodiscard]] int addRow(int first, const DoubleVec& values, const DoubleVec& rhs);

  /// Adds a row that is to hold exactly.
  ///
  /// @param columns  distinct columns of its entries, any number of them.
  /// @param values   their entries, finite and not all 0.
  /// @param rhs      `dimension` components, finite.
  /// @return  0 done; 4 bad argument; -1 no memory.
  [[nodiscard]] int addConstraint(const IntVec& columns, const DoubleVec& values,
                                  const DoubleVec& rhs);

  /// Solves the system of all rows added so far; more may be added afterwards.
  ///
  /// @param x  result: `unknowns` points of `dimension` components; touched only if the code is 0.
  /// @return   0 done; 4 null result; 5 the rows leave unknowns undetermined, or constraints
  ///           contradict each other: `undetermined` and `conflicting` tell, both empty where the
  ///           result is beyond the range of double; -1 no memory.
  [[nodiscard]] int solve(TtupleVector* x);
  /// The same for a system of dimension 1; 4 for others.
  [[nodiscard]] int solve(DoubleVec* x);

  /// @return ascending columns that the last `solve` found undetermined. Where rows leave a
  /// combination of unknowns open, one of its columns stands for it.
  const IntVec& undetermined() const;
  /// @return ascending numbers, in the order of `addConstraint`, of the constraints that the last
  /// `solve` found to contradict others.
  const IntVec& conflicting() const;
  /// @return for each component, the sum of squares of A x - b of the last successful `solve`.
  const DoubleVec& residualSquares() const;

  /// @return number of least-squares rows.
  std::size_t rows() const;
  /// @return number of constraints.
  int constraints() const;
  /// @return number of columns.
  int unknowns() const;

  /// Share of its column's length below which what is left of a pivot counts as zero; 1e-13 at
  /// first. Writes through.
  double& rankTolerance();
  /// Number of threads that `addRows` may use, 1 at first; bits do not depend on it. Writes
  /// through.
  int& threads();

 private:
  std::unique_ptr<detail::BandedSystem> system_;
  TsolverReporter* reporter_;
  int unknowns_, order_, dimension_;
  int spans_;  // 0 where the sizes are refused
  double rankTolerance_ = 1e-13;
  int threads_ = 1;
  IntVec undetermined_, conflicting_;
  DoubleVec residualSquares_;
};

}  // namespace knotwork
