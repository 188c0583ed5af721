// SPDX-License-Identifier: MIT
// Linear least squares by QR decomposition.
#include "knotwork/decomp/double_least_sq_qr.h"

#include <cmath>
#include <utility>

#include "decomp/arguments.h"

namespace detail = knotwork::detail;

DoubleLeastSqQR::DoubleLeastSqQR() = default;
DoubleLeastSqQR::DoubleLeastSqQR(const DoubleGenMat& A) : DoubleQRDecomp(A) {}

void DoubleLeastSqQR::factor(const DoubleGenMat& A) {
  DoubleQRDecomp::factor(A);
  tolerance_ = 0.0;
}

double DoubleLeastSqQR::setTolerance(double t) { return std::exchange(tolerance_, t); }

unsigned DoubleLeastSqQR::numEquations() const { return rows(); }
bool DoubleLeastSqQR::isUnderDetermined() const { return numFreeCols() != 0; }

unsigned DoubleLeastSqQR::numFreeCols() const {
  unsigned bound = std::min(rows(), cols());
  const auto isSmall = [this](unsigned i) {
    return std::abs(factors_(static_cast<int>(i), static_cast<int>(i))) <= tolerance_;
  };
  while (bound > 0 && isSmall(bound - 1)) --bound;
  return cols() - bound;
}

void DoubleLeastSqQR::check(const DoubleVec& b, unsigned size) const {
  detail::checkRhs(b, rows());
  if (size == 0) raiseMathErrorCode(knotwork::kNotFactored);
}

DoubleVec DoubleLeastSqQR::solve(const DoubleVec& b) const {
  check(b, cols());
  const unsigned free = numFreeCols();
  if (free == 0) return DoubleQRDecomp::solve(b);
  DoubleVec x = partialSolve(b, static_cast<int>(cols() - free));
  x.resize(cols());
  return unpermute(x);
}

DoubleVec DoubleLeastSqQR::residual(const DoubleVec& b) const {
  check(b, rows());
  return computeResidualVec(b, static_cast<int>(cols() - numFreeCols()));
}
