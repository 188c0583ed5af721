// SPDX-License-Identifier: MIT
// What every linear solver shares: which rows and columns of the system take part, and how a
// right-hand side gets there and its solution back.
#pragma once

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/solvers/solver_reporter.h"
#include "knotwork/vector/int_vec.h"

namespace knotwork::detail {
class SideMapper;
}

/// Abstract root of the solvers.
///
/// A subclass's `setMatrix` prepares and factors a system; `solve` may then be called any number of
/// times and changes nothing in the solver. Copies and `reference` share the vectors' storage until
/// `deepenShallowCopy`; there is no assignment. A solver does not own its reporter.
///
/// A result is written only where the code is 0, and the library's solvers never make one of NaN.
/// When memory runs out, which is reported with 0x3008, and the handler returns, the code is -1
/// from `setMatrix` and 4 from the others; the solver stays usable.
///
/// The order of the virtual operations is part of the interface.
class KNOTWORK_API TbaseSolver {
 public:
  /// An empty solver with the library's silent reporter and tolerance 1e-10.
  /// @param keepOriginal  whether to keep a copy of each system's matrix, which prescribed values
  ///                      need.
  explicit TbaseSolver(bool keepOriginal);
  /// The same with a reporter, which must live as long as the solver and its copies.
  TbaseSolver(TsolverReporter& reporter, bool keepOriginal);
  /// A solver that shares all storage with `other`.
  TbaseSolver(const TbaseSolver& other);
  TbaseSolver& operator=(const TbaseSolver&) = delete;
  virtual ~TbaseSolver();

  /// @return whether `solve` can succeed.
  virtual bool isSolvable() const = 0;
  /// Solves the prepared system. `solve` is what maps a caller's right-hand side onto it.
  ///
  /// @param rhs  one entry (point) per used row; may be overwritten.
  /// @param x    as many entries (points of the same dimension) as used columns.
  /// @return     0 done; 4 null result, lengths that do not fit or no memory; 5 dependent system,
  ///             or a solution that is not a number.
  [[nodiscard]] virtual int solveInPlace(TtupleVector& rhs, TtupleVector* x) const = 0;
  [[nodiscard]] virtual int solveInPlace(DoubleVec& rhs, DoubleVec* x) const = 0;

 protected:
  /// Reduces the working matrix to the used rows and columns.
  virtual void resetMatrix() = 0;
  /// @return view on a column of the kept matrix; empty if none is kept.
  virtual DoubleVec originalColumn(int column) = 0;
  /// Prepares the working matrix; see TsolveSystems.
  virtual void preSetMatrix(const IntVec& fixedCols, double cutoff, bool normalise,
                            bool cleanZeros) = 0;
  /// Lists the rows and columns with an entry beyond `tolerance`; see TsolveSystems.
  virtual bool findAllZeros(const IntVec& fixedCols, IntVec& usedRows, IntVec& usedCols,
                            double tolerance) const = 0;

 public:
  /// Makes this solver share all storage and the reporter of `other`. @return this solver.
  TbaseSolver& reference(TbaseSolver& other);
  /// Gives the lists and factors storage of their own.
  void deepenShallowCopy();

  /// @return whether the rows of the prepared matrix were scaled to unit length.
  bool isNormalised() const;
  /// @return the factor of each used row, for its right-hand side; empty unless normalised.
  const DoubleVec& rhsMult() const;
  /// @return number of rows of the system given.
  int totalRows() const;
  /// @return number of columns, that is of unknowns, of the system given.
  int totalCols() const;
  /// @return ascending indices of the columns that take part.
  const IntVec& usedColIndex() const;
  /// @return number of columns that take part.
  int usedCols() const;
  /// @return the magnitude up to which an entry counts as zero.
  double tolerance() const;
  /// The tolerance itself, writes through; a new value takes effect with the next `setMatrix`.
  double& tolerance();

  /// Solves for one right-hand side.
  ///
  /// @param rhs         totalRows() entries (points); unchanged. Without rows dropped or values
  ///                    prescribed more are accepted, but are then not scaled for normalised rows.
  /// @param x           result of totalCols() entries (points of the right-hand side's dimension),
  ///                    written only if the code is 0, and then resized if need be. It may be the
  ///                    right-hand side. Unknowns of columns that do not take part become 0.
  /// @param keepValues  keeps those entries of x instead, and solves for the others. Ignored where
  ///                    x has another size, or where all columns take part.
  /// @return  0 done; 4 if x is null, the right-hand side too short, values are prescribed
  ///          without a kept matrix, or there is no memory; else what `solveInPlace` returned.
  [[nodiscard]] int solve(const DoubleVec& rhs, DoubleVec* x, bool keepValues) const;
  [[nodiscard]] int solve(const TtupleVector& rhs, TtupleVector* x, bool keepValues) const;
  /// @return new vector (list) of the solution; empty if the system is not solvable; zeros where
  ///         the form with a code gives one.
  [[nodiscard]] DoubleVec solve(const DoubleVec& rhs) const;
  [[nodiscard]] TtupleVector solve(const TtupleVector& rhs) const;

 protected:
  /// Drops rows and columns of zeros, and fixed columns, by `findAllZeros` and `resetMatrix`.
  /// @return false, with nothing changed, where no row or no column would be left.
  bool cleanZero(const IntVec& fixedCols, double tolerance);

  TsolverReporter* reporter_;  ///< never null
  IntVec usedRowIndex_;        ///< ascending
  int totalRows_ = 0;
  int totalCols_ = 0;
  IntVec usedColIndex_;  ///< ascending
  double tolerance_;
  DoubleVec rhsMult_;
  bool isNormalised_ = false;
  bool keepOriginal_;
  bool copyRhs_ = true;  ///< if false, solving for full right-hand sides overwrites them

 private:
  friend class knotwork::detail::SideMapper;
};
