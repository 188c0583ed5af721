// SPDX-License-Identifier: MIT
// QR decomposition by Householder reflections, with column pivoting.
#include "knotwork/decomp/double_qr_decomp.h"

#include <utility>

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace detail = knotwork::detail;
namespace linpack = knotwork::linpack;
using linpack::QrslJob;

DoubleQRDecomp::DoubleQRDecomp() = default;
DoubleQRDecomp::DoubleQRDecomp(const DoubleGenMat& A) { DoubleQRDecomp::factor(A); }
DoubleQRDecomp::DoubleQRDecomp(const DoubleQRDecomp& other) = default;
DoubleQRDecomp& DoubleQRDecomp::operator=(const DoubleQRDecomp& other) = default;

void DoubleQRDecomp::factor(const DoubleGenMat& A) {
  // The old factors go first, so that there are never two matrices besides A.
  if (&A != &factors_) factors_.reference(DoubleGenMat());
  factors_.reference(A.deepCopy());
  dofactor();
}

void DoubleQRDecomp::deepenShallowCopy() {
  factors_.deepenShallowCopy();
  pivots_.deepenShallowCopy();
  qraux_.deepenShallowCopy();
}

void DoubleQRDecomp::dofactor() {
  factors_.deepenShallowCopy();
  const unsigned columns = cols();
  if (pivoting_) pivots_.resize(columns);
  qraux_.resize(columns);
  DoubleVec work(pivoting_ ? columns : 0);
  if (qraux_.length() != columns ||
      (pivoting_ && (pivots_.length() != columns || work.length() != columns))) {
    factors_.reference(DoubleGenMat());
    return;
  }
  const int n = static_cast<int>(rows());
  linpack::dqrdc(factors_.data(), n, n, static_cast<int>(columns), qraux_.data(), pivots_.data(),
                 work.data(), pivoting_ ? linpack::Pivoting::kOn : linpack::Pivoting::kOff);
  --pivots_;  // whether or not pivoting is on
}

int DoubleQRDecomp::doPivoting(int on) { return std::exchange(pivoting_, on); }

IntVec DoubleQRDecomp::pivots() const { return pivots_; }

unsigned DoubleQRDecomp::rank() const {
  const int order = static_cast<int>(std::min(rows(), cols()));
  int zeros = 0;
  for (int i = 0; i < order; ++i) zeros += factors_(i, i) == 0.0;
  return static_cast<unsigned>(order - zeros);
}

bool DoubleQRDecomp::isSingular() const { return rank() != rows() && rank() != cols(); }

// Q'y, where it is needed on the way to something else, stands in the place of that result.
DoubleVec DoubleQRDecomp::apply(const DoubleVec& y, int k, QrslJob job) const {
  detail::checkRhs(y, rows());
  const bool solving = job == QrslJob::kSolve;
  const unsigned most = std::min(rows(), cols());
  const unsigned count = k < 0 ? most : std::min(static_cast<unsigned>(k), most);
  const DoubleVec data = detail::ofLength(y, rows());
  if (count == 0) {
    if (solving) return DoubleVec();
    return job == QrslJob::kFit ? DoubleVec(rows(), 0.0) : data.deepCopy();
  }

  DoubleVec result(solving ? count : rows());
  DoubleVec scratch(solving ? rows() : 0);
  DoubleVec& qty = solving ? scratch : result;
  if (data.length() != rows() || qty.length() != rows() || result.length() < count)
    return DoubleVec();
  const int n = static_cast<int>(rows());
  const int info =
      linpack::dqrsl(factors_.data(), n, n, static_cast<int>(count), qraux_.data(), data.data(),
                     result.data(), qty.data(), result.data(), result.data(), result.data(), job);
  if (info != 0) raiseMathErrorCode(knotwork::kNotFactored);
  return result;
}

DoubleVec DoubleQRDecomp::partialSolve(const DoubleVec& b, int k) const {
  return apply(b, k, QrslJob::kSolve);
}
DoubleVec DoubleQRDecomp::computeQy(const DoubleVec& y, int k) const {
  return apply(y, k, QrslJob::kQy);
}
DoubleVec DoubleQRDecomp::computeQTy(const DoubleVec& y, int k) const {
  return apply(y, k, QrslJob::kQty);
}
DoubleVec DoubleQRDecomp::computeResidualVec(const DoubleVec& y, int k) const {
  return apply(y, k, QrslJob::kResidual);
}
DoubleVec DoubleQRDecomp::computeXb(const DoubleVec& y, int k) const {
  return apply(y, k, QrslJob::kFit);
}

DoubleVec DoubleQRDecomp::solve(const DoubleVec& b) const {
  DoubleVec x = partialSolve(b, -1);
  x.resize(cols());
  return unpermute(x);
}

DoubleVec DoubleQRDecomp::permute(const DoubleVec& v) const {
  return detail::permute(v, pivots_, pivoting_);
}

DoubleVec DoubleQRDecomp::unpermute(const DoubleVec& v) const {
  return detail::unpermute(v, pivots_, pivoting_);
}
