// SPDX-License-Identifier: MIT
// Linear least squares, equation by equation. Only the triangle R, Q'y of the data columns and the
// residual norms are kept, whatever the number of equations: a row is added, or taken out again, by
// rotations of R.
#include "knotwork/decomp/double_least_sq_inc.h"

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace linpack = knotwork::linpack;
using knotwork::detail::orderOf;

DoubleLeastSqInc::DoubleLeastSqInc(unsigned n, unsigned d) {
  factor_.resize(n, n);
  data_.resize(n, d);
  norms_.resize(d);
  if (cols() == n && data_.cols() == d && norms_.length() == d) return;
  factor_.reference(DoubleGenMat());  // no memory
  data_.reference(DoubleGenMat());
  norms_.reference(DoubleVec());
}

void DoubleLeastSqInc::addEquation(DoubleVec& x, const DoubleVec& y) {
  update(x, &data_, &y, &norms_, nullptr, nullptr);
}

void DoubleLeastSqInc::addEquation(DoubleVec& x, double y) {
  if (const DoubleVec values(1, y); values.length() == 1) addEquation(x, values);
}

int DoubleLeastSqInc::deleteEquation(DoubleVec& x, const DoubleVec& y) {
  return downdate(x, &data_, &y, &norms_, nullptr, nullptr);
}

int DoubleLeastSqInc::deleteEquation(DoubleVec& x, double y) {
  const DoubleVec values(1, y);
  return values.length() == 1 ? deleteEquation(x, values) : -1;
}

bool DoubleLeastSqInc::checkData(int j) const {
  const int count = static_cast<int>(norms_.length());
  if (j >= 0 && j < count) return true;
  raiseMathErrorCode(knotwork::kNoSuchData, j, count);
  return false;
}

double DoubleLeastSqInc::residualNorm(int j) const { return checkData(j) ? norms_(j) : 0.0; }

bool DoubleLeastSqInc::isUnderDetermined() const {
  for (int i = static_cast<int>(orderOf(factor_)) - 1; i >= 0; --i)
    if (factor_(i, i) == 0.0) return true;
  return false;
}

bool DoubleLeastSqInc::fail() const { return isUnderDetermined(); }
bool DoubleLeastSqInc::good() const { return !fail(); }

DoubleVec DoubleLeastSqInc::solve(int j) const {
  const unsigned order = orderOf(factor_);
  if (order == 0 || isUnderDetermined()) raiseMathErrorCode(knotwork::kNotFactored);
  if (!checkData(j) || static_cast<unsigned>(j) >= data_.cols()) return DoubleVec();
  DoubleVec x = data_.col(j).deepCopy();
  const int n = static_cast<int>(std::min(order, x.length()));
  if (linpack::dtrsl(factor_.data(), static_cast<int>(rows()), n, x.data()) != 0)
    raiseMathErrorCode(knotwork::kNotFactored);
  return x;
}

DoubleLeastSqInc DoubleLeastSqInc::copy() const {
  DoubleLeastSqInc other(*this);
  other.data_.reference(data_.deepCopy());
  other.norms_.reference(norms_.deepCopy());
  return other;
}

void DoubleLeastSqInc::deepenShallowCopy() {
  data_.deepenShallowCopy();
  norms_.deepenShallowCopy();
}
