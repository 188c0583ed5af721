// SPDX-License-Identifier: MIT
// Preparation of a linear system: what takes part, what counts as zero, rows of unit length.
#pragma once

#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/solvers/base_solver.h"

/// Abstract middle layer of the solvers: owns the matrix and prepares it.
class KNOTWORK_API TsolveSystems : public TbaseSolver {
 public:
  /// See TbaseSolver.
  explicit TsolveSystems(bool keepOriginal);
  TsolveSystems(TsolverReporter& reporter, bool keepOriginal);
  /// A solver that shares all storage with `other`.
  TsolveSystems(const TsolveSystems& other);
  ~TsolveSystems() override;

  /// Makes this solver share all storage and the reporter of `other`. @return this solver.
  TsolveSystems& reference(TsolveSystems& other);
  /// Gives the lists and factors of TbaseSolver storage of their own. The matrices stay shared:
  /// preparing a new system replaces them, it never writes into them.
  void deepenShallowCopy();

  /// Lists the rows and columns of a matrix that have an entry beyond `tolerance` of zero.
  ///
  /// @param a          matrix; fixed columns count in the test of its rows.
  /// @param fixedCols  ascending columns to leave out; from an entry on that is out of order or of
  ///                   range, the list is ignored.
  /// @param usedRows   becomes a new vector of ascending row indices.
  /// @param usedCols   becomes a new vector of ascending column indices.
  /// @return false, with both lists unchanged, for a matrix without elements or without memory.
  [[nodiscard]] static bool findZero(const DoubleGenMat& a, const IntVec& fixedCols,
                                     IntVec& usedRows, IntVec& usedCols, double tolerance);

 protected:
  /// Reduces `matrix_` to the used rows and columns, in storage of its own.
  void resetMatrix() override;
  /// @return view on a column of the kept matrix; empty if none is kept.
  DoubleVec originalColumn(int column) override;
  /// Prepares `matrix_`, which holds the new system and is not shared.
  ///
  /// @param fixedCols   ascending columns that must not take part; heeded only where zeros are
  ///                    cleaned.
  /// @param cutoff      the new tolerance where the present one is too large: above 0.99 times the
  ///                    largest entry, or 0.99 times 1 if that is less. It must be below that limit
  ///                    itself, and above 0; else every row and column takes part.
  /// @param normalise   scales every row to unit length.
  /// @param cleanZeros  drops rows and columns of entries within the tolerance of 0, and sets such
  ///                    entries to 0.
  void preSetMatrix(const IntVec& fixedCols, double cutoff, bool normalise,
                    bool cleanZeros) override;
  /// `findZero` of the working matrix.
  bool findAllZeros(const IntVec& fixedCols, IntVec& usedRows, IntVec& usedCols,
                    double tolerance) const override;

  /// Where `maxNonZeros_` is at least 1 and below the number of columns, keeps only so many entries
  /// per row: the leading ones, except that the diagonal entry, where it is larger, takes the
  /// places of the smallest ones.
  void zeroOutCount();
  /// Scales every row to unit length, and a row of zeros to zero; the factors go to `rhsMult_`.
  void tryNormalise();

  DoubleGenMat keptMatrix_;  ///< the system as given, before rows were normalised; may be empty
  DoubleGenMat matrix_;      ///< the prepared system
  int maxNonZeros_ = 0;
};
