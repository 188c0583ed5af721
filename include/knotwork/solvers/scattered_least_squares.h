// SPDX-License-Identifier: MIT
// Least squares for tensor-product surfaces over points in any arrangement.
#pragma once

#include <cstddef>
#include <memory>

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/solvers/solver_reporter.h"
#include "knotwork/vector/int_vec.h"

namespace knotwork {

namespace detail {
class ScatteredSystem;
}

/// One direction of a tensor-product system: the B-splines over it.
struct TensorDirection {
  int unknowns;           ///< number of B-splines, at least `order`
  int order;              ///< of them that are not 0 at one parameter: the degree plus 1
  bool periodic = false;  ///< whether the first B-splines follow the last ones
};

/// Solves min |A x - b| subject to C x = d, where each row of A has its entries in one *cell*:
/// order_u x order_v unknowns that stand together in a grid of unknowns_u x unknowns_v. That is the
/// system of a tensor-product B-spline surface over scattered points, whose rows are the products
/// of basis functions at the parameters (u, v) of one point.
///
/// Unknown (i, j) is column i * unknowns_v + j, the order of the library's control nets.
///
/// Rows are taken one after the other and not kept: those of a cell are reduced to a triangle as
/// they come, and the cells' triangles are joined by nested dissection when the system is solved.
/// Memory does not grow with the rows, n unknowns of a square net cost some n log n numbers and
/// n^1.5 operations, and the normal equations are never formed. The result is, bit for bit, a
/// function of the rows of each cell in the order given, whatever the number of threads.
///
/// A cell without data leaves unknowns undetermined, which `solve` names; rows of a penalty on the
/// surface's roughness (`addCellRows`) determine them. Constraints C x = d hold to rounding, in any
/// number and on any columns; where rows leave an unknown open, only constraints within one cell
/// count for it. Prescribed unknowns keep their values exactly.
///
/// Failures are codes, and nothing is thrown. Where memory runs out the code is -1; if that was
/// while rows were added the system is cleared, since some of them may be in it.
///
/// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 20-21 and 27;
/// A. George, Nested dissection of a regular finite element mesh (1973).
class KNOTWORK_API ScatteredLeastSquares {
 public:
  /// An empty system of right-hand sides with `dimension` components, at least 1.
  ScatteredLeastSquares(const TensorDirection& u, const TensorDirection& v, int dimension);
  /// The same with a reporter, which hears progress; it must live as long as the solver.
  ScatteredLeastSquares(TsolverReporter& reporter, const TensorDirection& u,
                        const TensorDirection& v, int dimension);
  ScatteredLeastSquares(const ScatteredLeastSquares&) = delete;
  ScatteredLeastSquares& operator=(const ScatteredLeastSquares&) = delete;
  ~ScatteredLeastSquares();

  /// Forgets rows, constraints and prescribed unknowns.
  void clear();

  /// Fixes an unknown; to be called before the first row and constraint.
  ///
  /// @param unknown  column, 0 <= unknown < unknowns().
  /// @param value    `dimension` components, finite.
  /// @return  0 done; 4 bad argument, or rows are there; -1 no memory.
  [[nodiscard]] int prescribe(int unknown, const DoubleVec& value);

  /// Adds the rows of points: entry (a, b) of row k is valuesU[k][a] valuesV[k][b].
  ///
  /// @param count    number of rows.
  /// @param firstU   first unknown of each row in u: 0 <= first <= unknowns - order, in a periodic
  ///                 direction 0 <= first < unknowns.
  /// @param firstV   the same in v.
  /// @param valuesU  count x order_u basis values, row after row, finite. A weighted row has one of
  ///                 its factors multiplied by the weight's square root, and so its side.
  /// @param valuesV  count x order_v basis values.
  /// @param rhs      count x dimension components, row after row, finite.
  /// @return  0 done; 4 bad argument, with no row added; -1 no memory.
  [[nodiscard]] int addRows(std::size_t count, const int* firstU, const int* firstV,
                            const double* valuesU, const double* valuesV, const double* rhs);

  /// Adds rows of one cell with entries of any kind, as a penalty has them.
  ///
  /// @param values  count x (order_u * order_v) entries, row after row; within a row entry (a, b)
  ///                is element a * order_v + b.
  /// @return  0 done; 4 bad argument, with no row added; -1 no memory.
  [[nodiscard]] int addCellRows(int firstU, int firstV, std::size_t count, const double* values,
                                const double* rhs);

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
  /// @param x  result: unknowns() points of `dimension` components; touched only if the code is 0.
  /// @return   0 done; 4 null result; 5 the rows leave unknowns undetermined, or constraints
  ///           contradict each other: `undetermined` and `conflicting` tell, both empty where the
  ///           result is beyond the range of double; -1 no memory.
  [[nodiscard]] int solve(TtupleVector* x);

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
  /// @return number of columns, unknowns_u * unknowns_v; 0 where the sizes are refused.
  int unknowns() const;

  /// Share of its column's length below which what is left of a pivot counts as zero; 1e-13 at
  /// first. Writes through.
  double& rankTolerance();
  /// Number of threads that `addRows` and `solve` may use, 1 at first; bits do not depend on it.
  /// Writes through.
  int& threads();

 private:
  KNOTWORK_LOCAL detail::ScatteredSystem& system();
  KNOTWORK_LOCAL int cellOf(int firstU, int firstV) const;

  std::unique_ptr<detail::ScatteredSystem> system_;
  TsolverReporter* reporter_;
  TensorDirection u_, v_;
  int dimension_;
  bool isValid_;
  double rankTolerance_ = 1e-13;
  int threads_ = 1;
  IntVec undetermined_, conflicting_;
  DoubleVec residualSquares_;
};

}  // namespace knotwork
