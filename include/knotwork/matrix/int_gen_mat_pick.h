// SPDX-License-Identifier: MIT
// Picks of IntGenMat.
#pragma once

#include "knotwork/matrix/gen_mat_pick.h"
#include "knotwork/matrix/int_gen_mat.h"

extern template class knotwork::GenMatPick<IntGenMatPick, IntGenMat>;

/// A IntGenMat seen through a list of rows and a list of columns; made by `IntGenMat::matPick`. See
/// GenMatPick.
class KNOTWORK_API IntGenMatPick : public knotwork::GenMatPick<IntGenMatPick, IntGenMat> {
 public:
  /// Another pick of the same matrix through the same lists.
  IntGenMatPick(const IntGenMatPick& pick);
  ~IntGenMatPick();

  /// Sets every picked element to x.
  IntGenMatPick& operator=(int x);
  /// Copies m's elements to the picked ones. Reports 0x4004 if the shapes differ.
  IntGenMatPick& operator=(const IntGenMat& m);
  /// Copies the other pick's elements to the picked ones. Reports 0x4004 if the shapes differ.
  IntGenMatPick& operator=(const IntGenMatPick& pick);

 private:
  friend class IntGenMat;
  friend class knotwork::GenMatPick<IntGenMatPick, IntGenMat>;
  KNOTWORK_LOCAL IntGenMatPick(const IntGenMat& m, const IntVec& rows, const IntVec& cols);
};
