// SPDX-License-Identifier: MIT
// Picks of IntVec.
#include "knotwork/vector/int_vec_pick.h"

#include "vector/vec_pick_impl.h"

template class knotwork::VecPick<IntVecPick, IntVec>;

const char IntVecPick::className[] = "IntVecPick";
const unsigned short IntVecPick::origin = 0x9017;

IntVecPick::IntVecPick(IntVec& v, const IntVec& indices) : VecPick(v, indices) {}
IntVecPick::IntVecPick(const IntVecPick& pick) = default;
IntVecPick::~IntVecPick() = default;

IntVecPick& IntVecPick::operator=(int x) { return fill(x); }
IntVecPick& IntVecPick::operator=(const IntVec& v) { return assign(v); }
IntVecPick& IntVecPick::operator=(const IntVecPick& pick) { return assign(pick); }

IntVecPick IntVec::vecPick(const IntVec& indices) { return IntVecPick(*this, indices); }

IntVec::IntVec(const IntVecPick& pick) : IntVec(pick.length()) {
  knotwork::detail::copyElements(*this, pick);
}

IntVec& IntVec::operator=(const IntVecPick& pick) {
  pick.lengthCheck(length());
  knotwork::detail::copyElements(*this, pick);
  return *this;
}
