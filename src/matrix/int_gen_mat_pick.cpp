// SPDX-License-Identifier: MIT
// Picks of IntGenMat.
#include "knotwork/matrix/int_gen_mat_pick.h"

#include "matrix/gen_mat_pick_impl.h"

template class knotwork::GenMatPick<IntGenMatPick, IntGenMat>;

IntGenMatPick::IntGenMatPick(const IntGenMat& m, const IntVec& rows, const IntVec& cols)
    : GenMatPick(m, rows, cols) {}
IntGenMatPick::IntGenMatPick(const IntGenMatPick& pick) = default;
IntGenMatPick::~IntGenMatPick() = default;

IntGenMatPick& IntGenMatPick::operator=(int x) { return fill(x); }
IntGenMatPick& IntGenMatPick::operator=(const IntGenMat& m) { return assign(m); }
IntGenMatPick& IntGenMatPick::operator=(const IntGenMatPick& pick) { return assign(pick); }

IntGenMatPick IntGenMat::matPick(const IntVec& rows, const IntVec& cols) {
  return IntGenMatPick(*this, rows, cols);
}
IntGenMatPick IntGenMat::operator()(const IntVec& rows, const IntVec& cols) {
  return matPick(rows, cols);
}

IntGenMat::IntGenMat(const IntGenMatPick& pick) : IntGenMat(pick.rows(), pick.cols(), 0) {
  pick.copyTo(*this);
}

IntGenMat& IntGenMat::operator=(const IntGenMatPick& pick) {
  pick.copyTo(*this);
  return *this;
}
