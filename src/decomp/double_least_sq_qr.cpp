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

// Trailing columns whose diagonal element is within the tolerance; pivoting brings the small ones
// there. They are free, and their unknowns 0.
unsigned DoubleLeastSqQR::numFreeCols() const {
  unsigned bound = std::min(rows(), cols());
  const auto isSmall = [this](unsigned i) {
    return std::abs(factors_(static_cast<int>(i), static_cast<int>(i))) <= tolerance_;
  };
  while (bound > 0 && isSmall(bound - 1)) --bound;
  return cols() - bound;
}

DoubleVec DoubleLeastSqQR::solve(const DoubleVec& b) const {
  detail::checkRhs(b, rows());
  if (cols() == 0) raiseMathErrorCode(knotwork::kNotFactored);
  const unsigned free = numFreeCols();
  if (free == 0) return DoubleQRDecomp::solve(b);
  const unsigned bound = cols() - free;
  const DoubleVec x = partialSolve(b, static_cast<int>(bound));
  return detail::basicSolution(x, bound, cols(), pivots_, pivoting_);
}

DoubleVec DoubleLeastSqQR::residual(const DoubleVec& b) const {
  detail::checkRhs(b, rows());
  if (rows() == 0) raiseMathErrorCode(knotwork::kNotFactored);
  return computeResidualVec(b, static_cast<int>(cols() - numFreeCols()));
}
