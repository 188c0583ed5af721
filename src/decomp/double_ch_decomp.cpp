// SPDX-License-Identifier: MIT
// Cholesky decomposition: factorisation and solution. `positive_` is the number of leading columns
// with a positive pivot, as the routine returns it; what follows them is the part not reduced.
#include "knotwork/decomp/double_ch_decomp.h"

#include <utility>

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace detail = knotwork::detail;
namespace linpack = knotwork::linpack;
using detail::orderOf;

DoubleChDecomp::DoubleChDecomp() = default;
DoubleChDecomp::DoubleChDecomp(const DoubleGenMat& A) { factor(A); }
DoubleChDecomp::DoubleChDecomp(const DoubleChDecomp& other) = default;
DoubleChDecomp& DoubleChDecomp::operator=(const DoubleChDecomp& other) = default;

void DoubleChDecomp::factor(const DoubleGenMat& A) {
  factor_.reference(A.deepCopy());
  dofactor();
}

void DoubleChDecomp::dofactor() {
  if (rows() < cols()) {
    raiseMathErrorCode(knotwork::kFewerRowsThanColumns, static_cast<int>(rows()),
                       static_cast<int>(cols()));
  }
  if (pivoting_) pivots_.resize(cols());
  const unsigned order = orderOf(factor_);
  const unsigned scratch = linpack::kChdcWork * order;
  DoubleVec work(scratch);
  if (work.length() != scratch || (pivoting_ && pivots_.length() != cols())) {
    factor_.reference(DoubleGenMat());
    positive_ = -1;
    return;
  }
  positive_ =
      linpack::dchdc(factor_.data(), static_cast<int>(rows()), static_cast<int>(order), work.data(),
                     pivots_.data(), pivoting_ ? linpack::Pivoting::kOn : linpack::Pivoting::kOff);
  --pivots_;  // whether or not pivoting is on
}

int DoubleChDecomp::doPivoting(int on) { return std::exchange(pivoting_, on); }

int DoubleChDecomp::setPivoting(int column, int position) {
  if (position < FINAL || position > INITIAL)
    raiseMathErrorCode(knotwork::kBadPivotPosition, position);
  const unsigned needed = static_cast<unsigned>(column) + 1;
  if (column >= 0 && pivots_.length() < needed) pivots_.resize(needed);
  if (column < 0 || pivots_.length() < needed) {
    pivots_.boundsCheck(column);
    return 0;
  }
  return std::exchange(pivots_(column), position);
}

IntVec DoubleChDecomp::pivots() const { return pivots_; }
bool DoubleChDecomp::isPD() const { return positive_ == static_cast<int>(rows()); }
int DoubleChDecomp::lastPosFactor() const { return positive_ - 1; }

bool DoubleChDecomp::fail() const {
  for (int i = std::max(positive_ - 1, 0); i < static_cast<int>(orderOf(factor_)); ++i)
    if (factor_(i, i) < 0.0) return true;
  return false;
}

bool DoubleChDecomp::good() const { return !fail(); }

double DoubleChDecomp::condition() const {
  if (!pivoting_) {
    raiseMathErrorCode(knotwork::kNoConditionNumber);
    return -1.0;
  }
  const int last = static_cast<int>(cols()) - 1;
  if (last < 0 || positive_ != last || rows() < cols()) return 0.0;
  const double ratio = factor_(last, last) / factor_(0, 0);
  return ratio * ratio;
}

DoubleVec DoubleChDecomp::permute(const DoubleVec& v) const {
  return detail::permute(v, pivots_, pivoting_);
}

DoubleVec DoubleChDecomp::unpermute(const DoubleVec& v) const {
  return detail::unpermute(v, pivots_, pivoting_);
}

DoubleVec DoubleChDecomp::partialSolve(const DoubleVec& b, int n) const {
  detail::checkRhs(b, static_cast<unsigned>(n));
  if (n > positive_) raiseMathErrorCode(knotwork::kNotFactored);
  DoubleVec x = b.deepCopy();
  const int most = static_cast<int>(std::min(orderOf(factor_), x.length()));
  linpack::dposl(factor_.data(), static_cast<int>(rows()), std::clamp(n, 0, most), x.data());
  return x;
}

DoubleVec DoubleChDecomp::solve(const DoubleVec& b) const {
  const DoubleVec permuted = permute(b);
  if (permuted.length() != b.length()) return DoubleVec();
  const DoubleVec x = partialSolve(permuted, static_cast<int>(cols()));
  return x.length() == b.length() ? unpermute(x) : DoubleVec();
}
