// SPDX-License-Identifier: MIT
// Picks of DoubleVec.
#pragma once

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/vec_pick.h"

extern template class knotwork::VecPick<DoubleVecPick, DoubleVec>;

/// A DoubleVec seen through a list of indices; made by `DoubleVec::vecPick`. See VecPick.
class KNOTWORK_API DoubleVecPick : public knotwork::VecPick<DoubleVecPick, DoubleVec> {
 public:
  /// Another pick of the same vector through the same list.
  DoubleVecPick(const DoubleVecPick& pick);
  ~DoubleVecPick();

  /// Sets every picked element to x.
  DoubleVecPick& operator=(double x);
  /// Copies v's elements to the picked ones. Reports 0x300F if the lengths differ.
  DoubleVecPick& operator=(const DoubleVec& v);
  /// Copies the other pick's elements to the picked ones. Reports 0x300F if the lengths differ.
  DoubleVecPick& operator=(const DoubleVecPick& pick);

  static const char className[];
  static const unsigned short origin;

 private:
  friend class DoubleVec;
  friend class knotwork::VecPick<DoubleVecPick, DoubleVec>;
  KNOTWORK_LOCAL DoubleVecPick(DoubleVec& v, const IntVec& indices);
};
