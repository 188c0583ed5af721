// SPDX-License-Identifier: MIT
// Least squares by QR decomposition.
#include "knotwork/solvers/solve_constrained_lsq_qr.h"

#include <memory>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/point_values.h"
#include "vector/memory_watch.h"

using knotwork::kBadArgument;
using knotwork::kDependent;
using knotwork::kSolved;
using knotwork::detail::holdsNaN;
using knotwork::detail::MemoryWatch;

namespace {

// Lets `lsq` share all storage with another: assignment would copy values.
void replace(DoubleLeastSqQR& lsq, const DoubleLeastSqQR& other) {
  std::destroy_at(&lsq);
  std::construct_at(&lsq, other);
}

}  // namespace

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
  if (this != &other) replace(lsq_, other.lsq_);
  return *this;
}

void TsolveConstrainedLsqQR::deepenShallowCopy() {
  TsolveConstrainedLsq::deepenShallowCopy();
  lsq_.deepenShallowCopy();
}

const DoubleLeastSqQR& TsolveConstrainedLsqQR::rwSolve() const { return lsq_; }

bool TsolveConstrainedLsqQR::factor() {
  dependent_ = true;
  const MemoryWatch memory;
  // The column order of the last factorisation is kept, but no longer shared with copies of this
  // solver: factoring writes into it.
  lsq_.deepenShallowCopy();
  if (!memory.ranOut()) lsq_.factor(matrix_);
  if (memory.ranOut()) {
    replace(lsq_, DoubleLeastSqQR());
    return false;
  }
  lsq_.setTolerance(tolerance_);  // which factoring resets
  // The decomposition does not count a diagonal element that is not a number as 0.
  dependent_ = lsq_.isSingular() || holdsNaN(lsq_.factors().diagonal());
  return !dependent_;
}

int TsolveConstrainedLsqQR::solveInPlace(DoubleVec& rhs, DoubleVec* x) const {
  if (x == nullptr) return kBadArgument;
  if (isDependent()) return kDependent;
  if (rhs.length() != matrix_.rows() || x->length() != matrix_.cols()) return kBadArgument;
  const MemoryWatch memory;
  if (rhsMult_.length() == rhs.length()) rhs *= rhsMult_;
  const bool allFree = lsq_.numFreeCols() >= matrix_.cols();
  const DoubleVec found = allFree ? DoubleVec(x->length(), 0.0) : lsq_.solve(rhs);
  if (memory.ranOut() || found.length() != x->length()) return kBadArgument;
  if (holdsNaN(found)) return kDependent;
  *x = found;
  return kSolved;
}

int TsolveConstrainedLsqQR::solveInPlace(TtupleVector& rhs, TtupleVector* x) const {
  if (x == nullptr || x->size() != rhs.size()) return kBadArgument;
  TtupleVector found = x->copy();
  if (found.length() != x->length()) return kBadArgument;
  int code = kSolved;
  for (int c = 0; c < rhs.size(); ++c) {
    DoubleVec side = rhs.component(c).copy();
    DoubleVec unknowns = found.component(c);
    const int solved = solveInPlace(side, &unknowns);
    if (solved != kSolved) code = solved;
  }
  if (code == kSolved) *x = found;
  return code;
}
