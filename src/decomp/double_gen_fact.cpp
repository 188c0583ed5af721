// SPDX-License-Identifier: MIT
// LU factorisation with partial pivoting. The factors stay as the routine packs them, and its
// pivots count from 1. The reciprocal condition is kept with them: 0 for a zero pivot, -1 where
// none was asked for.
#include "knotwork/decomp/double_gen_fact.h"

#include <cmath>
#include <limits>

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace detail = knotwork::detail;
namespace linpack = knotwork::linpack;
using detail::orderOf;

const char DoubleGenFact::className[] = "DoubleGenFact";

namespace {

// After an assignment between different orders they need not be.
bool pivotsAreRows(const IntVec& pivots, unsigned order) {
  if (pivots.length() < order) return false;
  for (int i = 0; i < static_cast<int>(order); ++i)
    if (pivots(i) < 1 || static_cast<unsigned>(pivots(i)) > order) return false;
  return true;
}

// dgedi on the elements of a, which is written through.
// @return false, and nothing done, if the pivots are no rows of it or there was no memory.
bool invert(DoubleGenMat a, const IntVec& pivots, linpack::GediJob job, double* det) {
  const unsigned order = orderOf(a);
  DoubleVec scratch(job == linpack::GediJob::kDeterminant ? 0 : order);
  if (!pivotsAreRows(pivots, order)) return false;
  if (job != linpack::GediJob::kDeterminant && scratch.length() != order) return false;
  linpack::dgedi(a.data(), static_cast<int>(a.rows()), static_cast<int>(order), pivots.data(), det,
                 scratch.data(), job);
  return true;
}

}  // namespace

DoubleGenFact::DoubleGenFact() = default;
DoubleGenFact::DoubleGenFact(const DoubleGenFact& other) = default;
DoubleGenFact& DoubleGenFact::operator=(const DoubleGenFact& other) = default;
DoubleGenFact::DoubleGenFact(const DoubleGenMat& A, int estimateCondition) {
  factor(A, estimateCondition);
}

void DoubleGenFact::factor(const DoubleGenMat& A, int estimateCondition) {
  const unsigned wanted = A.rows();
  factors_.reference(A.deepCopy());
  if (rows() != wanted) condition_ = -1.0;  // no memory
  dofactor(estimateCondition);
}

void DoubleGenFact::dofactor(int estimateCondition) {
  if (rows() != cols()) raiseMathErrorCode(knotwork::kFactorNotSquare, rows(), cols());
  if (factors_.dataVec().stride() != 1) factors_.deepenShallowCopy();
  const unsigned order = orderOf(factors_);
  const unsigned scratch = estimateCondition ? order : 0;
  pivots_.reference(IntVec(order, 0));
  DoubleVec work(scratch);
  if (pivots_.length() != order || work.length() != scratch || factors_.dataVec().stride() != 1) {
    factors_.reference(DoubleGenMat());  // no memory
    pivots_.reference(IntVec());
    condition_ = -1.0;
    return;
  }
  if (order == 0) return;

  const int n = static_cast<int>(order);
  const int lda = static_cast<int>(rows());
  if (estimateCondition) {
    condition_ = linpack::dgeco(factors_.data(), lda, n, pivots_.data(), work.data());
  } else {
    condition_ = linpack::dgefa(factors_.data(), lda, n, pivots_.data()) > 0 ? 0.0 : -1.0;
  }
}

bool DoubleGenFact::isSingular() const { return 1.0 + condition_ == 1.0; }
bool DoubleGenFact::fail() const { return orderOf(factors_) == 0 || isSingular(); }
bool DoubleGenFact::good() const { return !fail(); }

double DoubleGenFact::condition() const {
  if (condition_ < 0.0) raiseMathErrorCode(knotwork::kNoConditionNumber);
  return condition_;
}

DoubleVec DoubleGenFact::solve(const DoubleVec& b) const {
  const unsigned order = orderOf(factors_);
  detail::checkRhs(b, order);
  if (b.length() != order) return DoubleVec();
  const bool solvable = pivotsAreRows(pivots_, order);
  if (fail() || !solvable) raiseMathErrorCode(knotwork::kNotFactored);
  DoubleVec x = b.deepCopy();
  if (!solvable || x.length() != order) return DoubleVec();
  linpack::dgesl(factors_.data(), static_cast<int>(rows()), static_cast<int>(order), pivots_.data(),
                 x.data());
  return x;
}

double DoubleGenFact::determinant() const {
  if (orderOf(factors_) == 0) return 0.0;
  double det[2];
  if (invert(factors_, pivots_, linpack::GediJob::kDeterminant, det))
    return det[0] * std::pow(10.0, det[1]);
  raiseMathErrorCode(knotwork::kNotFactored);
  return std::numeric_limits<double>::quiet_NaN();
}

DoubleGenMat DoubleGenFact::inverse() const {
  if (fail() || !pivotsAreRows(pivots_, orderOf(factors_)))
    raiseMathErrorCode(knotwork::kNotFactored);
  const DoubleGenMat inverted = factors_.deepCopy();
  double det[2];
  const bool done =
      inverted.rows() == rows() && invert(inverted, pivots_, linpack::GediJob::kInverse, det);
  return done ? inverted : DoubleGenMat();
}

void DoubleGenFact::calldi(const DoubleGenMat& a, int job, double* det, int*) const {
  if (a.rows() == rows() && a.cols() == cols() && a.dataVec().stride() == 1)
    invert(a, pivots_, static_cast<linpack::GediJob>(job), det);
}
