// SPDX-License-Identifier: MIT
// Picks of DoubleGenMat.
#pragma once

#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/matrix/gen_mat_pick.h"

extern template class knotwork::GenMatPick<DoubleGenMatPick, DoubleGenMat>;

/// A DoubleGenMat seen through a list of rows and a list of columns; made by
/// `DoubleGenMat::matPick`. See GenMatPick.
class KNOTWORK_API DoubleGenMatPick : public knotwork::GenMatPick<DoubleGenMatPick, DoubleGenMat> {
 public:
  /// Another pick of the same matrix through the same lists.
  DoubleGenMatPick(const DoubleGenMatPick& pick);
  ~DoubleGenMatPick();

  /// Sets every picked element to x.
  DoubleGenMatPick& operator=(double x);
  /// Copies m's elements to the picked ones. Reports 0x4004 if the shapes differ.
  DoubleGenMatPick& operator=(const DoubleGenMat& m);
  /// Copies the other pick's elements to the picked ones. Reports 0x4004 if the shapes differ.
  DoubleGenMatPick& operator=(const DoubleGenMatPick& pick);

 private:
  friend class DoubleGenMat;
  friend class knotwork::GenMatPick<DoubleGenMatPick, DoubleGenMat>;
  KNOTWORK_LOCAL DoubleGenMatPick(const DoubleGenMat& m, const IntVec& rows, const IntVec& cols);
};
