// SPDX-License-Identifier: MIT
// Picks of SCharVec.
#pragma once

#include "knotwork/vector/schar_vec.h"
#include "knotwork/vector/vec_pick.h"

extern template class knotwork::VecPick<SCharVecPick, SCharVec>;

/// A SCharVec seen through a list of indices; made by `SCharVec::vecPick`. See VecPick.
class KNOTWORK_API SCharVecPick : public knotwork::VecPick<SCharVecPick, SCharVec> {
 public:
  /// Another pick of the same vector through the same list.
  SCharVecPick(const SCharVecPick& pick);
  ~SCharVecPick();

  /// Sets every picked element to x.
  SCharVecPick& operator=(signed char x);
  /// Copies v's elements to the picked ones. Reports 0x300F if the lengths differ.
  SCharVecPick& operator=(const SCharVec& v);
  /// Copies the other pick's elements to the picked ones. Reports 0x300F if the lengths differ.
  SCharVecPick& operator=(const SCharVecPick& pick);

  static const char className[];
  static const unsigned short origin;

 private:
  friend class SCharVec;
  friend class knotwork::VecPick<SCharVecPick, SCharVec>;
  KNOTWORK_LOCAL SCharVecPick(SCharVec& v, const IntVec& indices);
};
