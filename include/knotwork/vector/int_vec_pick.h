// SPDX-License-Identifier: MIT
// Picks of IntVec.
#pragma once

#include "knotwork/vector/vec_pick.h"

extern template class knotwork::VecPick<IntVecPick, IntVec>;

/// A IntVec seen through a list of indices; made by `IntVec::vecPick`. See VecPick.
class KNOTWORK_API IntVecPick : public knotwork::VecPick<IntVecPick, IntVec> {
 public:
  /// Another pick of the same vector through the same list.
  IntVecPick(const IntVecPick& pick);
  ~IntVecPick();

  /// Sets every picked element to x.
  IntVecPick& operator=(int x);
  /// Copies v's elements to the picked ones. Reports 0x300F if the lengths differ.
  IntVecPick& operator=(const IntVec& v);
  /// Copies the other pick's elements to the picked ones. Reports 0x300F if the lengths differ.
  IntVecPick& operator=(const IntVecPick& pick);

  static const char className[];
  static const unsigned short origin;

 private:
  friend class IntVec;
  friend class knotwork::VecPick<IntVecPick, IntVec>;
  KNOTWORK_LOCAL IntVecPick(IntVec& v, const IntVec& indices);
};
