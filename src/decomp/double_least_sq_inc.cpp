// SPDX-License-Identifier: MIT
// Linear least squares, equation by equation.
#include "knotwork/decomp/double_least_sq_inc.h"

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace linpack = knotwork::linpack;

DoubleLeastSqInc::DoubleLeastSqInc(unsigned n, unsigned d) {
  factor_.resize(n, n);
  data_.resize(n, d);
  norms_.resize(d);
}

void DoubleLeastSqInc::addEquation(DoubleVec& x, const DoubleVec& y) {
  update(x, &data_, &y, &norms_, nullptr, nullptr);
}

void DoubleLeastSqInc::addEquation(DoubleVec& x, double y) { addEquation(x, DoubleVec(1, y)); }

int DoubleLeastSqInc::deleteEquation(DoubleVec& x, const DoubleVec& y) {
  return downdate(x, &data_, &y, &norms_, nullptr, nullptr);
}

int DoubleLeastSqInc::deleteEquation(DoubleVec& x, double y) {
  return deleteEquation(x, DoubleVec(1, y));
}

bool DoubleLeastSqInc::checkData(int j) const {
  const int count = static_cast<int>(norms_.length());
  if (j >= 0 && j < count) return true;
  raiseMathErrorCode(knotwork::kNoSuchData, j, count);
  return false;
}

double DoubleLeastSqInc::residualNorm(int j) const { return checkData(j) ? norms_(j) : 0.0; }

bool DoubleLeastSqInc::isUnderDetermined() const {
  for (int i = static_cast<int>(order()) - 1; i >= 0; --i)
    if (factor_(i, i) == 0.0) return true;
  return false;
}

bool DoubleLeastSqInc::fail() const { return isUnderDetermined(); }
bool DoubleLeastSqInc::good() const { return !fail(); }

DoubleVec DoubleLeastSqInc::solve(int j) const {
  if (order() == 0 || isUnderDetermined()) raiseMathErrorCode(knotwork::kNotFactored);
  if (!checkData(j) || static_cast<unsigned>(j) >= data_.cols()) return DoubleVec();
  DoubleVec x = data_.col(j).deepCopy();
  const int n = static_cast<int>(std::min(order(), x.length()));
  if (linpack::dtrsl(factor_.data(), static_cast<int>(rows()), n, x.data()) != 0)
    raiseMathErrorCode(knotwork::kNotFactored);
  return x;
}

DoubleLeastSqInc DoubleLeastSqInc::copy() const {
  DoubleLeastSqInc other(*this);
  other.deepenShallowCopy();
  return other;
}

void DoubleLeastSqInc::deepenShallowCopy() {
  data_.deepenShallowCopy();
  norms_.deepenShallowCopy();
}
