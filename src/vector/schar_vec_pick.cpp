// SPDX-License-Identifier: MIT
// Picks of SCharVec.
#include "knotwork/vector/schar_vec_pick.h"

#include "vector/vec_pick_impl.h"

template class knotwork::VecPick<SCharVecPick, SCharVec>;

const char SCharVecPick::className[] = "SCharVecPick";
const unsigned short SCharVecPick::origin = 0x9023;

SCharVecPick::SCharVecPick(SCharVec& v, const IntVec& indices) : VecPick(v, indices) {}
SCharVecPick::SCharVecPick(const SCharVecPick& pick) = default;
SCharVecPick::~SCharVecPick() = default;

SCharVecPick& SCharVecPick::operator=(signed char x) { return fill(x); }
SCharVecPick& SCharVecPick::operator=(const SCharVec& v) { return assign(v); }
SCharVecPick& SCharVecPick::operator=(const SCharVecPick& pick) { return assign(pick); }

SCharVecPick SCharVec::vecPick(const IntVec& indices) { return SCharVecPick(*this, indices); }

SCharVec::SCharVec(const SCharVecPick& pick) : SCharVec(pick.length()) {
  knotwork::detail::copyElements(*this, pick);
}

SCharVec& SCharVec::operator=(const SCharVecPick& pick) {
  pick.lengthCheck(length());
  knotwork::detail::copyElements(*this, pick);
  return *this;
}
