// SPDX-License-Identifier: MIT
// Linear least squares by Cholesky decomposition of the normal equations.
#include "knotwork/decomp/double_least_sq_ch.h"

#include <utility>

#include "decomp/arguments.h"

namespace detail = knotwork::detail;

DoubleLeastSqCh::DoubleLeastSqCh() = default;
DoubleLeastSqCh::DoubleLeastSqCh(const DoubleGenMat& A) { factor(A); }

void DoubleLeastSqCh::factor(const DoubleGenMat& A) {
  data_.reference(A.deepCopy());  // first, as A may be the factor itself
  DoubleChDecomp::factor(transposeProduct(data_, data_));
}

double DoubleLeastSqCh::setTolerance(double t) { return std::exchange(tolerance_, t); }

unsigned DoubleLeastSqCh::numEquations() const { return data_.rows(); }
bool DoubleLeastSqCh::isUnderDetermined() const { return numFreeCols() != 0; }

unsigned DoubleLeastSqCh::numFreeCols() const {
  int bound = std::clamp(positive_, 0, static_cast<int>(order()));
  while (bound > 0 && factor_(bound - 1, bound - 1) <= tolerance_) --bound;
  return order() - static_cast<unsigned>(bound);
}

DoubleVec DoubleLeastSqCh::solve(const DoubleVec& b) const {
  if (order() == 0) return DoubleVec();
  detail::checkRhs(b, data_.rows());
  const DoubleVec y = product(b, data_);
  const unsigned free = numFreeCols();
  if (free == 0) return DoubleChDecomp::solve(y);
  const unsigned bound = order() - free;
  DoubleVec x = partialSolve(detail::ofLength(permute(y), bound), static_cast<int>(bound));
  x.resize(order());
  return unpermute(x);
}

DoubleVec DoubleLeastSqCh::residual(const DoubleVec& b) const {
  return b - product(data_, solve(b));
}
