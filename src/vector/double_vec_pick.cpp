// SPDX-License-Identifier: MIT
// Picks of DoubleVec.
#include "knotwork/vector/double_vec_pick.h"

#include "vector/vec_pick_impl.h"

template class knotwork::VecPick<DoubleVecPick, DoubleVec>;

const char DoubleVecPick::className[] = "DoubleVecPick";
const unsigned short DoubleVecPick::origin = 0x900D;

DoubleVecPick::DoubleVecPick(DoubleVec& v, const IntVec& indices) : VecPick(v, indices) {}
DoubleVecPick::DoubleVecPick(const DoubleVecPick& pick) = default;
DoubleVecPick::~DoubleVecPick() = default;

DoubleVecPick& DoubleVecPick::operator=(double x) { return fill(x); }
DoubleVecPick& DoubleVecPick::operator=(const DoubleVec& v) { return assign(v); }
DoubleVecPick& DoubleVecPick::operator=(const DoubleVecPick& pick) { return assign(pick); }

DoubleVecPick DoubleVec::vecPick(const IntVec& indices) { return DoubleVecPick(*this, indices); }

DoubleVec::DoubleVec(const DoubleVecPick& pick) : DoubleVec(pick.length()) {
  knotwork::detail::copyElements(*this, pick);
}

DoubleVec& DoubleVec::operator=(const DoubleVecPick& pick) {
  pick.lengthCheck(length());
  knotwork::detail::copyElements(*this, pick);
  return *this;
}
