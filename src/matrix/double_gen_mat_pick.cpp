// SPDX-License-Identifier: MIT
// Picks of DoubleGenMat.
#include "knotwork/matrix/double_gen_mat_pick.h"

#include "matrix/gen_mat_pick_impl.h"

template class knotwork::GenMatPick<DoubleGenMatPick, DoubleGenMat>;

DoubleGenMatPick::DoubleGenMatPick(const DoubleGenMat& m, const IntVec& rows, const IntVec& cols)
    : GenMatPick(m, rows, cols) {}
DoubleGenMatPick::DoubleGenMatPick(const DoubleGenMatPick& pick) = default;
DoubleGenMatPick::~DoubleGenMatPick() = default;

DoubleGenMatPick& DoubleGenMatPick::operator=(double x) { return fill(x); }
DoubleGenMatPick& DoubleGenMatPick::operator=(const DoubleGenMat& m) { return assign(m); }
DoubleGenMatPick& DoubleGenMatPick::operator=(const DoubleGenMatPick& pick) { return assign(pick); }

DoubleGenMatPick DoubleGenMat::matPick(const IntVec& rows, const IntVec& cols) {
  return DoubleGenMatPick(*this, rows, cols);
}
DoubleGenMatPick DoubleGenMat::operator()(const IntVec& rows, const IntVec& cols) {
  return matPick(rows, cols);
}

DoubleGenMat::DoubleGenMat(const DoubleGenMatPick& pick)
    : DoubleGenMat(pick.rows(), pick.cols(), 0) {
  pick.copyTo(*this);
}

DoubleGenMat& DoubleGenMat::operator=(const DoubleGenMatPick& pick) {
  pick.copyTo(*this);
  return *this;
}
