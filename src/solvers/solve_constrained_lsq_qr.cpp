// SPDX-License-Identifier: MIT
// Least squares by QR decomposition.
#include "knotwork/solvers/solve_constrained_lsq_qr.h"

#include <memory>

#include "knotwork/solvers/solve_codes.h"

using knotwork::kBadArgument;
using knotwork::kDependent;
using knotwork::kSolved;

TsolveConstrainedLsqQR::TsolveConstrainedLsqQR(double tolerance, bool keepOriginal)
    : TsolveConstrainedLsq(keepOriginal) {
  tolerance_ = tolerance;
}

TsolveConstrainedLsqQR::TsolveConstrainedLsqQR(TsolverReporter& reporter, double tolerance,
                                               bool keepOriginal)
    : TsolveConstrainedLsq(reporter, keepOriginal) {
  tolerance_ = tolerance;
}

TsolveConstrainedLsqQR::TsolveConstrainedLsqQR(const TsolveConstrainedLsqQR&) = default;
TsolveConstrainedLsqQR::~TsolveConstrainedLsqQR() = default;

TsolveConstrainedLsqQR& TsolveConstrainedLsqQR::reference(TsolveConstrainedLsqQR& other) {
  TsolveConstrainedLsq::reference(other);
  if (this == &other) return *this;
  // Assignment would copy values; copy construction shares.
  std::destroy_at(&lsq_);
  std::construct_at(&lsq_, other.lsq_);
  return *this;
}

void TsolveConstrainedLsqQR::deepenShallowCopy() {
  TsolveConstrainedLsq::deepenShallowCopy();
  lsq_.deepenShallowCopy();
}

const DoubleLeastSqQR& TsolveConstrainedLsqQR::rwSolve() const { return lsq_; }

bool TsolveConstrainedLsqQR::factor() {
  // The column order of the last factorisation is kept, but no longer shared with copies of this
  // solver: factoring writes into it.
  lsq_.deepenShallowCopy();
  lsq_.factor(matrix_);
  lsq_.setTolerance(tolerance_);  // which factoring resets
  dependent_ = lsq_.isSingular();
  return !dependent_;
}

int TsolveConstrainedLsqQR::solveInPlace(DoubleVec& rhs, DoubleVec* x) const {
  if (x == nullptr) return kBadArgument;
  if (isDependent()) return kDependent;
  if (rhs.length() != matrix_.rows() || x->length() != matrix_.cols()) return kBadArgument;
  if (rhsMult_.length() == rhs.length()) rhs *= rhsMult_;
  if (lsq_.numFreeCols() >= matrix_.cols()) {
    *x = 0.0;
  } else {
    *x = lsq_.solve(rhs);
  }
  return kSolved;
}

int TsolveConstrainedLsqQR::solveInPlace(TtupleVector& rhs, TtupleVector* x) const {
  if (x == nullptr || x->size() != rhs.size()) return kBadArgument;
  int code = kSolved;
  for (int c = 0; c < rhs.size(); ++c) {
    DoubleVec side = rhs.component(c).copy();
    DoubleVec unknowns = x->component(c);
    const int solved = solveInPlace(side, &unknowns);
    if (solved != kSolved) code = solved;
  }
  return code;
}
