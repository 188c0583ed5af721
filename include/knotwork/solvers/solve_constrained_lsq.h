// SPDX-License-Identifier: MIT
// Least-squares systems some of whose rows must hold exactly.
#pragma once

#include "knotwork/solvers/solve_systems.h"

/// Abstract solver for min |A1 x - b1| subject to A2 x = b2, where A2 is the last rows of one
/// matrix; subclasses factor the prepared matrix.
///
/// What may surprise: `setMatrix` can raise or replace the tolerance, for the systems that follow
/// too. Constraint rows of zeros that are dropped do not lower the number of constraints, so
/// equations take their place; constraints in excess of the columns become equations.
class KNOTWORK_API TsolveConstrainedLsq : public TsolveSystems {
 public:
  /// See TbaseSolver.
  explicit TsolveConstrainedLsq(bool keepOriginal);
  TsolveConstrainedLsq(TsolverReporter& reporter, bool keepOriginal);
  /// A solver that shares all storage with `other`.
  TsolveConstrainedLsq(const TsolveConstrainedLsq& other);
  ~TsolveConstrainedLsq() override;

  /// Makes this solver share all storage and the reporter of `other`. @return this solver.
  TsolveConstrainedLsq& reference(TsolveConstrainedLsq& other);
  /// As that of TsolveSystems.
  void deepenShallowCopy();

  /// Takes, prepares and factors a system; the one before is forgotten, but the tolerance is not.
  ///
  /// @param a               rows x cols matrix, one row per equation; copied.
  /// @param fixedCols       ascending columns whose unknowns the caller prescribes; heeded only
  ///                        where zeros are cleaned.
  /// @param constraintRows  how many of the last rows hold exactly; bounded by the rows there are,
  ///                        and by the columns, after rows of zeros were dropped. All rows do where
  ///                        fewer rows than columns are left.
  /// @param normalise       scales rows to unit length, which weights the equations by 1 / length.
  /// @param cleanZeros      drops rows and columns of entries within the tolerance of 0, and sets
  ///                        such entries to 0. If the tolerance is too large for that, 0.001 is
  ///                        tried.
  /// @param findCutoff      raises the tolerance to the first gap in the singular values below 1,
  ///                        where there is one; with `cleanZeros`, after setting entries within
  ///                        0.001 of 0 to 0.
  /// @return 0; -1 if the factored system does not determine the unknowns, or if memory ran out,
  ///         which leaves the tolerance as it was.
  [[nodiscard]] int setMatrix(const DoubleGenMat& a, const IntVec& fixedCols, int constraintRows,
                              bool normalise, bool cleanZeros, bool findCutoff);
  /// The same without fixed columns.
  [[nodiscard]] int setMatrix(const DoubleGenMat& a, int constraintRows, bool normalise,
                              bool cleanZeros, bool findCutoff);

  bool isSolvable() const override;
  /// @return whether there is no system, or one that does not determine the unknowns.
  bool isDependent() const;

  /// @return new (rows + cols) x cols matrix: the prepared one, and below it 0.2 times the
  /// identity, which damps a least-squares solution; 0 x 0 if memory ran out.
  [[nodiscard]] virtual DoubleGenMat altMatrix();

 protected:
  /// Factors `matrix_` and clears `dependent_` if it is of full rank; called by every `setMatrix`.
  /// @return whether it is.
  virtual bool factor() = 0;

  /// What `setMatrix` does.
  int realSetMatrix(const DoubleGenMat& a, const IntVec& fixedCols, int constraintRows,
                    bool normalise, bool cleanZeros, bool findCutoff);
  /// Estimate of the tolerance that separates the singular values of `a` from what should be zero:
  /// just above the first one below 1 that is at most 1e-10, or more than 20 times below the first
  /// one under 1 and more than 2 times below the one before it.
  /// @return the estimate, 0 if there is none.
  static double trySVD(const DoubleGenMat& a);

  int constraintRows_ = 0;  ///< the last so many rows of the prepared matrix
  bool dependent_ = true;
};
