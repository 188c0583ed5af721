// SPDX-License-Identifier: MIT
// Linear least squares by Cholesky decomposition of the normal equations.
#include "knotwork/decomp/double_least_sq_ch.h"

#include <utility>

#include "decomp/arguments.h"

namespace detail = knotwork::detail;
using detail::orderOf;

DoubleLeastSqCh::DoubleLeastSqCh() = default;
DoubleLeastSqCh::DoubleLeastSqCh(const DoubleGenMat& A) { factor(A); }

void DoubleLeastSqCh::factor(const DoubleGenMat& A) {
  data_.reference(A.deepCopy());  // first, as A may be the factor itself
  DoubleChDecomp::factor(transposeProduct(data_, data_));
  if (cols() != data_.cols()) data_.reference(DoubleGenMat());  // no memory
}

double DoubleLeastSqCh::setTolerance(double t) { return std::exchange(tolerance_, t); }

unsigned DoubleLeastSqCh::numEquations() const { return data_.rows(); }
bool DoubleLeastSqCh::isUnderDetermined() const { return numFreeCols() != 0; }

unsigned DoubleLeastSqCh::numFreeCols() const {
  const unsigned order = orderOf(factor_);
  int bound = std::clamp(positive_, 0, static_cast<int>(order));
  while (bound > 0 && factor_(bound - 1, bound - 1) <= tolerance_) --bound;
  return order - static_cast<unsigned>(bound);
}

// Without memory the results on the way are too short, and the solution is empty.
DoubleVec DoubleLeastSqCh::solve(const DoubleVec& b) const {
  const unsigned order = orderOf(factor_);
  if (order == 0) return DoubleVec();
  detail::checkRhs(b, data_.rows());
  const DoubleVec y = product(b, data_);
  const unsigned free = numFreeCols();
  if (y.length() != data_.cols()) return DoubleVec();
  if (free == 0) return DoubleChDecomp::solve(y);
  const DoubleVec permuted = permute(y);
  if (permuted.length() != y.length()) return DoubleVec();
  const unsigned bound = order - free;
  const DoubleVec x = partialSolve(detail::ofLength(permuted, bound), static_cast<int>(bound));
  return detail::basicSolution(x, bound, order, pivots_, pivoting_);
}

DoubleVec DoubleLeastSqCh::residual(const DoubleVec& b) const {
  const DoubleVec x = solve(b);
  if (x.length() != data_.cols()) return DoubleVec();
  const DoubleVec fit = product(data_, x);
  return fit.length() == data_.rows() ? b - fit : DoubleVec();
}
