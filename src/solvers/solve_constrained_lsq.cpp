// SPDX-License-Identifier: MIT
// Least-squares systems some of whose rows must hold exactly: everything but the factorisation.
#include "knotwork/solvers/solve_constrained_lsq.h"

#include <algorithm>
#include <cmath>

#include "knotwork/decomp/double_sv_decomp.h"
#include "knotwork/solvers/solve_codes.h"
#include "vector/memory_watch.h"

using knotwork::kNotSolvable;
using knotwork::kSolved;
using knotwork::detail::MemoryWatch;

namespace {

constexpr double kFirstClamp = 0.001;  // entries below it do not count for the cutoff estimate
constexpr double kCutoff = 0.001;      // the tolerance where the given one is too large
constexpr unsigned kLargeForEstimate = 50000;  // elements
constexpr double kNegligibleValue = 1e-10;
constexpr double kDamping = 0.2;

// Just above s[i], a tenth of the way to its predecessor.
double justAbove(const DoubleVec& s, int i) { return (9 * s(i) + s(i - 1)) * 0.1; }

}  // namespace

TsolveConstrainedLsq::TsolveConstrainedLsq(bool keepOriginal) : TsolveSystems(keepOriginal) {}
TsolveConstrainedLsq::TsolveConstrainedLsq(TsolverReporter& reporter, bool keepOriginal)
    : TsolveSystems(reporter, keepOriginal) {}
TsolveConstrainedLsq::TsolveConstrainedLsq(const TsolveConstrainedLsq&) = default;
TsolveConstrainedLsq::~TsolveConstrainedLsq() = default;

TsolveConstrainedLsq& TsolveConstrainedLsq::reference(TsolveConstrainedLsq& other) {
  TsolveSystems::reference(other);
  dependent_ = other.dependent_;
  constraintRows_ = other.constraintRows_;
  return *this;
}

void TsolveConstrainedLsq::deepenShallowCopy() { TsolveSystems::deepenShallowCopy(); }

bool TsolveConstrainedLsq::isSolvable() const { return !dependent_; }
bool TsolveConstrainedLsq::isDependent() const { return dependent_; }

int TsolveConstrainedLsq::setMatrix(const DoubleGenMat& a, const IntVec& fixedCols,
                                    int constraintRows, bool normalise, bool cleanZeros,
                                    bool findCutoff) {
  return realSetMatrix(a, fixedCols, constraintRows, normalise, cleanZeros, findCutoff);
}

int TsolveConstrainedLsq::setMatrix(const DoubleGenMat& a, int constraintRows, bool normalise,
                                    bool cleanZeros, bool findCutoff) {
  return realSetMatrix(a, IntVec(), constraintRows, normalise, cleanZeros, findCutoff);
}

int TsolveConstrainedLsq::realSetMatrix(const DoubleGenMat& a, const IntVec& fixedCols,
                                        int constraintRows, bool normalise, bool cleanZeros,
                                        bool findCutoff) {
  const auto signedSize = [](unsigned n) { return static_cast<int>(n); };
  const MemoryWatch memory;
  const double givenTolerance = tolerance_;
  constraintRows_ = std::clamp(constraintRows, 0, signedSize(a.rows()));
  dependent_ = true;
  // The new copy first: the matrix given may be one of this solver's own.
  if (&a != &keptMatrix_) keptMatrix_.reference(DoubleGenMat());
  matrix_.reference(a.copy());
  if (findCutoff) {
    DoubleVec elements = matrix_.dataVec();
    if (cleanZeros) elements.clampZero(kFirstClamp);
    if (reporter_->isVerbose() && elements.length() > kLargeForEstimate) {
      reporter_->reportFormatted("Computing region cutoff... (could take some time)");
    }
    // An estimate that is not a number changes nothing.
    tolerance_ = std::max(tolerance_, trySVD(matrix_));
  }
  preSetMatrix(fixedCols, kCutoff, normalise, cleanZeros);
  // Where some step was left out this is not the system that was given.
  if (memory.ranOut()) matrix_.reference(DoubleGenMat());
  const int rows = signedSize(matrix_.rows());
  const int cols = signedSize(matrix_.cols());
  constraintRows_ = rows < cols ? rows : std::min(constraintRows_, cols);
  factor();
  if (memory.ranOut()) {
    dependent_ = true;
    tolerance_ = givenTolerance;
  }
  return dependent_ ? kNotSolvable : kSolved;
}

double TsolveConstrainedLsq::trySVD(const DoubleGenMat& a) {
  DoubleSVDecomp decomposition;
  decomposition.computeLeftVecs(0);
  decomposition.computeRightVecs(0);
  decomposition.factor(a);
  const DoubleVec s = decomposition.singularValues();
  const int count = static_cast<int>(s.length());
  if (count == 0) return 0.0;
  constexpr int kNone = -1;
  int firstBelowOne = s(0) < 1.0 ? 0 : kNone;
  for (int i = 1; i < count; ++i) {
    if (!(s(i) < 1.0)) continue;
    if (firstBelowOne == kNone) {
      firstBelowOne = i;
      continue;
    }
    if (std::abs(s(i)) <= kNegligibleValue) return justAbove(s, i);
    if (s(firstBelowOne) / s(i) > 20 && s(i - 1) / s(i) > 2) return justAbove(s, i);
  }
  return 0.0;
}

DoubleGenMat TsolveConstrainedLsq::altMatrix() {
  const MemoryWatch memory;
  const unsigned rows = matrix_.rows();
  DoubleGenMat damped = matrix_.copy();
  damped.resize(rows + matrix_.cols(), matrix_.cols());
  if (memory.ranOut()) return DoubleGenMat();
  for (int k = 0; k < static_cast<int>(matrix_.cols()); ++k) {
    damped.ref(static_cast<int>(rows) + k, k) = kDamping;
  }
  return damped;
}
