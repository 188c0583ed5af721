// SPDX-License-Identifier: MIT
// QR decomposition by Householder reflections, with column pivoting. R stands in the upper
// triangle; below it, and in `qraux_` for the first element of each, the vectors of the
// reflections: Q itself is never formed, only applied.
#include "knotwork/decomp/double_qr_decomp.h"

#include <utility>

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace detail = knotwork::detail;
namespace linpack = knotwork::linpack;
using detail::orderOf;
using linpack::QrslJob;

namespace {

void factorInPlace(DoubleGenMat& factors, IntVec& pivots, DoubleVec& qraux, int pivoting) {
  const unsigned columns = factors.cols();
  if (pivoting) pivots.resize(columns);
  qraux.resize(columns);
  DoubleVec work(pivoting ? columns : 0);
  const bool ready = qraux.length() == columns && work.length() == (pivoting ? columns : 0) &&
                     (!pivoting || pivots.length() == columns);
  if (!ready) {
    factors.reference(DoubleGenMat());
    return;
  }
  const int n = static_cast<int>(factors.rows());
  linpack::dqrdc(factors.data(), n, n, static_cast<int>(columns), qraux.data(), pivots.data(),
                 work.data(), pivoting ? linpack::Pivoting::kOn : linpack::Pivoting::kOff);
  --pivots;  // whether or not pivoting is on
}

// What `job` makes of y by the first k columns: empty where there was no memory.
DoubleVec apply(const DoubleGenMat& factors, const DoubleVec& qraux, const DoubleVec& y, int k,
                QrslJob job) {
  const unsigned rows = factors.rows();
  detail::checkRhs(y, rows);
  const unsigned most = orderOf(factors);
  const unsigned count = k < 0 ? most : std::min(static_cast<unsigned>(k), most);
  const unsigned length = job == QrslJob::kSolve ? count : rows;
  if (length == 0) return DoubleVec();
  DoubleVec result = detail::firstOf(y, rows);
  if (result.length() != rows) return DoubleVec();
  if (count > 0) {
    const int n = static_cast<int>(rows);
    const int info = linpack::dqrsl(factors.data(), n, n, static_cast<int>(count), qraux.data(),
                                    result.data(), job);
    if (info != 0) raiseMathErrorCode(knotwork::kNotFactored);
  } else if (job == QrslJob::kFit) {
    result = 0.0;
  }
  result.resize(length);
  return result.length() == length ? result : DoubleVec();
}

}  // namespace

DoubleQRDecomp::DoubleQRDecomp() = default;
DoubleQRDecomp::DoubleQRDecomp(const DoubleGenMat& A) { DoubleQRDecomp::factor(A); }
DoubleQRDecomp::DoubleQRDecomp(const DoubleQRDecomp& other) = default;
DoubleQRDecomp& DoubleQRDecomp::operator=(const DoubleQRDecomp& other) = default;

void DoubleQRDecomp::factor(const DoubleGenMat& A) {
  // The old factors go first, so that there are never two matrices besides A.
  if (&A != &factors_) factors_.reference(DoubleGenMat());
  factors_.reference(A.deepCopy());
  factorInPlace(factors_, pivots_, qraux_, pivoting_);
}

void DoubleQRDecomp::deepenShallowCopy() {
  factors_.deepenShallowCopy();
  pivots_.deepenShallowCopy();
  qraux_.deepenShallowCopy();
}

void DoubleQRDecomp::dofactor() {
  factors_.reference(factors_.deepCopy());
  factorInPlace(factors_, pivots_, qraux_, pivoting_);
}

int DoubleQRDecomp::doPivoting(int on) { return std::exchange(pivoting_, on); }

IntVec DoubleQRDecomp::pivots() const { return pivots_; }

unsigned DoubleQRDecomp::rank() const {
  const int order = static_cast<int>(orderOf(factors_));
  int zeros = 0;
  for (int i = 0; i < order; ++i) zeros += factors_(i, i) == 0.0;
  return static_cast<unsigned>(order - zeros);
}

bool DoubleQRDecomp::isSingular() const { return rank() != rows() && rank() != cols(); }

DoubleVec DoubleQRDecomp::partialSolve(const DoubleVec& b, int k) const {
  return apply(factors_, qraux_, b, k, QrslJob::kSolve);
}
DoubleVec DoubleQRDecomp::computeQy(const DoubleVec& y, int k) const {
  return apply(factors_, qraux_, y, k, QrslJob::kQy);
}
DoubleVec DoubleQRDecomp::computeQTy(const DoubleVec& y, int k) const {
  return apply(factors_, qraux_, y, k, QrslJob::kQty);
}
DoubleVec DoubleQRDecomp::computeResidualVec(const DoubleVec& y, int k) const {
  return apply(factors_, qraux_, y, k, QrslJob::kResidual);
}
DoubleVec DoubleQRDecomp::computeXb(const DoubleVec& y, int k) const {
  return apply(factors_, qraux_, y, k, QrslJob::kFit);
}

DoubleVec DoubleQRDecomp::solve(const DoubleVec& b) const {
  return detail::basicSolution(partialSolve(b, -1), orderOf(factors_), cols(), pivots_, pivoting_);
}

DoubleVec DoubleQRDecomp::permute(const DoubleVec& v) const {
  return detail::permute(v, pivots_, pivoting_);
}

DoubleVec DoubleQRDecomp::unpermute(const DoubleVec& v) const {
  return detail::unpermute(v, pivots_, pivoting_);
}
