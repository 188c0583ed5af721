// SPDX-License-Identifier: MIT
// Least squares on grids.
#pragma once

#include "knotwork/export.h"
#include "knotwork/fwd.h"

class TsolveConstrainedLsq;
class TtupleMatrix;

/// Fits U X V' to grid data B, with a solver for each direction: first V along every row of B, then
/// U along every column of what that gave.
///
/// U has a row per data row and a column per row of X; V has a row per data column and a column per
/// column of X. The solvers are not owned and must outlive this object.
///
/// Each row and column is a call of the solver's `solve` for one right-hand side. Only a solver
/// that is a Thouseholder, and no class derived from it, is given all of them at once; results and
/// codes are the same.
class KNOTWORK_API TsolveTensorProductLsq {
 public:
  TsolveTensorProductLsq(TsolveConstrainedLsq& u, TsolveConstrainedLsq& v);
  /// Another object that works through the same solvers.
  TsolveTensorProductLsq(const TsolveTensorProductLsq& other);
  TsolveTensorProductLsq& operator=(const TsolveTensorProductLsq& other);
  ~TsolveTensorProductLsq();

  /// @return the solver of the direction.
  const TsolveConstrainedLsq& solverInU() const;
  const TsolveConstrainedLsq& solverInV() const;

  /// Sets both systems; see `TsolveConstrainedLsq::setMatrix` for the arguments, which come in
  /// pairs.
  /// @return 0, or the code of the first solver that refused; after U's, V's is left alone.
  [[nodiscard]] int setMatrix(const DoubleGenMat& u, const DoubleGenMat& v, int constraintRowsU,
                              int constraintRowsV, bool normaliseU, bool normaliseV,
                              bool cleanZerosU, bool cleanZerosV, bool findCutoffU,
                              bool findCutoffV);

  /// Solves with the systems set.
  ///
  /// @param b  data, as many rows as U and as many columns as V.
  /// @param x  result, as many rows as U has columns and as many columns as V has; unchanged where
  ///           a row of b cannot be solved for, or memory runs out. Where a column cannot, those
  ///           before it are stored.
  /// @return   the first code that is not 0 of any row, and then of any column; 0 if there is none;
  ///           4 null result, shapes that do not fit or no memory; -1 where there is nothing to
  ///           solve.
  [[nodiscard]] int solve(const DoubleGenMat& b, DoubleGenMat* x) const;
  /// The same for grids of points of one dimension, component after component. Where one cannot be
  /// solved for, those before it are stored, unless memory ran out.
  [[nodiscard]] int solve(const TtupleMatrix& b, TtupleMatrix* x) const;

  /// Sets the systems and solves with some unknowns prescribed.
  ///
  /// The result is the least-squares solution if the data are consistent, if all columns of X have
  /// the same prescribed rows, or if the columns of V are orthogonal; for other masks the two
  /// passes come near it.
  ///
  /// @param u      U.
  /// @param v      V.
  /// @param fixed  of the shape of x; an entry 1 marks an unknown that keeps its value.
  /// @param b      data, as many rows as U and as many columns as V.
  /// @param x      as many rows as U has columns and as many columns as V has: the prescribed
  ///               values on entry, the result if the code is 0. Prescribed ones keep their bits.
  /// @return       0 done; 4 null result, shapes that do not fit or no memory; else the first code
  ///               that is not 0 of any system set or solved.
  [[nodiscard]] int solveFixed(const DoubleGenMat& u, const DoubleGenMat& v, const IntGenMat& fixed,
                               const DoubleGenMat& b, DoubleGenMat* x);
  /// The same for grids of points, with the mask for every component.
  [[nodiscard]] int solveFixed(const DoubleGenMat& u, const DoubleGenMat& v, const IntGenMat& fixed,
                               const TtupleMatrix& b, TtupleMatrix* x);

 private:
  TsolveConstrainedLsq* u_;
  TsolveConstrainedLsq* v_;
};
