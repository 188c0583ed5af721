// SPDX-License-Identifier: MIT
// LU factorisation with partial pivoting.
#include "knotwork/decomp/double_gen_fact.h"

#include <cmath>

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace detail = knotwork::detail;
namespace linpack = knotwork::linpack;

const char DoubleGenFact::className[] = "DoubleGenFact";

DoubleGenFact::DoubleGenFact() = default;
DoubleGenFact::DoubleGenFact(const DoubleGenFact& other) = default;
DoubleGenFact& DoubleGenFact::operator=(const DoubleGenFact& other) = default;
DoubleGenFact::DoubleGenFact(const DoubleGenMat& A, int estimateCondition) {
  factor(A, estimateCondition);
}

void DoubleGenFact::factor(const DoubleGenMat& A, int estimateCondition) {
  factors_.reference(A.deepCopy());
  dofactor(estimateCondition);
}

unsigned DoubleGenFact::order() const { return std::min(rows(), cols()); }

void DoubleGenFact::dofactor(int estimateCondition) {
  if (rows() != cols()) raiseMathErrorCode(knotwork::kFactorNotSquare, rows(), cols());
  if (factors_.dataVec().stride() != 1) factors_.deepenShallowCopy();
  pivots_.resize(order());
  pivots_.deepenShallowCopy();
  condition_ = -1.0;
  DoubleVec work(estimateCondition ? order() : 0);
  if (pivots_.length() != order() || (estimateCondition && work.length() != order()))
    factors_.reference(DoubleGenMat());
  if (order() == 0) return;

  const int n = static_cast<int>(order());
  const int lda = static_cast<int>(rows());
  if (estimateCondition) {
    condition_ = linpack::dgeco(factors_.data(), lda, n, pivots_.data(), work.data());
  } else if (linpack::dgefa(factors_.data(), lda, n, pivots_.data()) > 0) {
    condition_ = 0.0;
  }
}

bool DoubleGenFact::isSingular() const { return 1.0 + condition_ == 1.0; }
bool DoubleGenFact::fail() const { return order() == 0 || isSingular(); }
bool DoubleGenFact::good() const { return !fail(); }

double DoubleGenFact::condition() const {
  if (condition_ < 0.0) raiseMathErrorCode(knotwork::kNoConditionNumber);
  return condition_;
}

void DoubleGenFact::checkFactored() const {
  if (fail()) raiseMathErrorCode(knotwork::kNotFactored);
}

// After an assignment between different orders they need not be.
bool DoubleGenFact::pivotsAreRows() const {
  if (pivots_.length() < order()) return false;
  for (int i = 0; i < static_cast<int>(order()); ++i)
    if (pivots_(i) < 1 || static_cast<unsigned>(pivots_(i)) > order()) return false;
  return true;
}

DoubleVec DoubleGenFact::solve(const DoubleVec& b) const {
  detail::checkRhs(b, order());
  if (b.length() != order()) return DoubleVec();
  checkFactored();
  DoubleVec x = b.deepCopy();
  if (x.length() == order() && pivotsAreRows()) {
    linpack::dgesl(factors_.data(), static_cast<int>(rows()), static_cast<int>(order()),
                   pivots_.data(), x.data());
  }
  return x;
}

double DoubleGenFact::determinant() const {
  if (order() == 0) return 0.0;
  double det[2] = {};
  calldi(factors_, static_cast<int>(linpack::GediJob::kDeterminant), det, nullptr);
  return det[0] * std::pow(10.0, det[1]);
}

DoubleGenMat DoubleGenFact::inverse() const {
  checkFactored();
  const DoubleGenMat inverted = factors_.deepCopy();
  double det[2];
  calldi(inverted, static_cast<int>(linpack::GediJob::kInverse), det, nullptr);
  return inverted;
}

void DoubleGenFact::calldi(const DoubleGenMat& a, int job, double* det, int*) const {
  DoubleGenMat work(a);  // a view
  DoubleVec scratch(order());
  const bool fits = a.rows() == rows() && a.cols() == cols() && a.dataVec().stride() == 1;
  if (!fits || scratch.length() != order() || !pivotsAreRows()) return;
  linpack::dgedi(work.data(), static_cast<int>(rows()), static_cast<int>(order()), pivots_.data(),
                 det, scratch.data(), static_cast<linpack::GediJob>(job));
}
