// SPDX-License-Identifier: MIT
// The Householder solver: storage of the factorisation, checks, and corrections of a solution.
#include "knotwork/solvers/householder.h"

#include <algorithm>
#include <cstdint>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/householder_system.h"
#include "solvers/point_values.h"
#include "vector/memory_watch.h"

using knotwork::kBadArgument;
using knotwork::kDependent;
using knotwork::kSolved;
namespace detail = knotwork::detail;

namespace {

constexpr double kSkippedPartOfTolerance = 0.1;

// Shared by all objects: the one that factored last has set it for the others.
double skipThreshold = 1e-13;

// 0, 1, 2, ...
IntVec identity(unsigned n) { return IntVec(n, 0, 1); }

// The places that a factorisation has for each pivot: lengths are taken modulo 65536.
unsigned pivotPlaces(const DoubleGenMat& matrix) {
  return std::max(static_cast<std::uint16_t>(matrix.rows()),
                  static_cast<std::uint16_t>(matrix.cols()));
}

// What x leaves of the sides, b - matrix x, point by point.
TtupleVector residual(const DoubleGenMat& matrix, const TtupleVector& b, const TtupleVector& x) {
  const int rows = static_cast<int>(matrix.rows()), dimension = b.size();
  TtupleVector left = detail::zeros<TtupleVector>(dimension, matrix.rows());
  if (left.points() < rows) return left;
  DoubleVec& flat = left;
  for (int j = 0; j < static_cast<int>(matrix.cols()); ++j) {
    const DoubleVec column = matrix.col(j);
    const DoubleVec unknown = detail::pointAt(x, j);
    for (int i = 0; i < rows; ++i) {
      for (int c = 0; c < dimension; ++c) flat(i * dimension + c) += column(i) * unknown(c);
    }
  }
  const DoubleVec& sides = b;
  for (int t = 0; t < static_cast<int>(flat.length()); ++t) flat(t) = sides(t) - flat(t);
  return left;
}

}  // namespace

namespace knotwork::detail {

// The members that hold a factorisation, as plain arrays.
struct HouseholderStorage {
  // Whether there is room for all that the factorisation needs: memory may have run out, and from
  // 65536 rows or columns on the work vectors are too short.
  static bool isWhole(const Thouseholder& s) {
    const unsigned rows = s.matrix_.rows(), cols = s.matrix_.cols(), pivots = std::max(rows, cols);
    return s.factorMatrix_.rows() == rows && s.factorMatrix_.cols() == cols &&
           s.rowPerm_.length() == rows && s.colPerm_.length() == cols &&
           s.beta_.length() == pivots && s.sigma_.length() == pivots && s.norms_.length() == pivots;
  }

  static HouseholderShape shape(const Thouseholder& s) {
    const int rows = static_cast<int>(s.factorMatrix_.rows());
    const int cols = static_cast<int>(s.factorMatrix_.cols());
    return {rows, cols, rows < cols ? rows : std::clamp(s.constraintRows_, 0, cols)};
  }

  static HouseholderSystem toWrite(Thouseholder& s) {
    return {shape(s),        s.factorMatrix_.data(), s.beta_.data(),    s.sigma_.data(),
            s.norms_.data(), s.rowPerm_.data(),      s.colPerm_.data(), skipThreshold};
  }

  static HouseholderFactors toRead(const Thouseholder& s) {
    return {shape(s),          s.factorMatrix_.data(), s.beta_.data(), s.sigma_.data(),
            s.rowPerm_.data(), s.colPerm_.data(),      skipThreshold};
  }
};

}  // namespace knotwork::detail

using detail::HouseholderStorage;

namespace {

// Solves with a copy of the sides, which then takes their place if they are to be used up.
template <class Values>
int solveSides(const Thouseholder& solver, Values& rhs, Values* x, bool usesUp) {
  const detail::HouseholderFactors factors = HouseholderStorage::toRead(solver);
  const int dimension = detail::dimensionOf(rhs);
  const auto rows = static_cast<unsigned>(factors.rows);
  const auto cols = static_cast<unsigned>(factors.cols);
  if (x == nullptr || detail::dimensionOf(*x) != dimension) return kBadArgument;
  if (detail::pointsOf(*x) < cols || detail::pointsOf(rhs) < rows) return kBadArgument;
  if (solver.isDependent() || !HouseholderStorage::isWhole(solver)) return kDependent;
  const detail::MemoryWatch memory;
  Values b = rhs.copy();
  Values y = detail::zeros<Values>(dimension, cols);
  if (memory.ranOut()) return kBadArgument;
  detail::scalePoints(b, solver.rhsMult());
  if (!detail::solveHouseholder(factors, b, y, dimension)) return kBadArgument;
  if (usesUp) rhs = b;
  if (detail::holdsNaN(y)) return kDependent;
  static_cast<DoubleVec&>(*x) = 0.0;
  detail::copyPoints(y, *x);
  return kSolved;
}

}  // namespace

Thouseholder::Thouseholder(double tolerance, int maxNonZeros, bool keepOriginal)
    : TsolveConstrainedLsq(keepOriginal) {
  tolerance_ = tolerance;
  maxNonZeros_ = maxNonZeros;
}

Thouseholder::Thouseholder(TsolverReporter& reporter, double tolerance, int maxNonZeros,
                           bool keepOriginal)
    : TsolveConstrainedLsq(reporter, keepOriginal) {
  tolerance_ = tolerance;
  maxNonZeros_ = maxNonZeros;
}

Thouseholder::Thouseholder(const Thouseholder&) = default;
Thouseholder::~Thouseholder() = default;

Thouseholder& Thouseholder::reference(Thouseholder& other) {
  TsolveConstrainedLsq::reference(other);
  beta_.reference(other.beta_);
  sigma_.reference(other.sigma_);
  norms_.reference(other.norms_);
  rowPerm_.reference(other.rowPerm_);
  colPerm_.reference(other.colPerm_);
  factorMatrix_.reference(other.factorMatrix_);
  return *this;
}

void Thouseholder::deepenShallowCopy() {
  TsolveConstrainedLsq::deepenShallowCopy();
  beta_.deepenShallowCopy();
  sigma_.deepenShallowCopy();
  norms_.deepenShallowCopy();
  rowPerm_.deepenShallowCopy();
  colPerm_.deepenShallowCopy();
  factorMatrix_.deepenShallowCopy();
}

// ---- Factorisation ------------------------------------------------------------------------------

bool Thouseholder::factor() {
  skipThreshold = tolerance_ * kSkippedPartOfTolerance;
  // Storage is always new: copies of this solver may share the old one.
  const unsigned pivots = pivotPlaces(matrix_);
  rowPerm_.reference(identity(matrix_.rows()));
  colPerm_.reference(identity(matrix_.cols()));
  beta_.reference(DoubleVec(pivots, 0.0));
  sigma_.reference(DoubleVec(pivots, 0.0));
  norms_.reference(DoubleVec(pivots, 0.0));
  factorMatrix_.reference(DoubleGenMat());
  factorMatrix_.reference(matrix_.copy());
  if (inPlace()) dependent_ = false;
  return !dependent_;
}

bool Thouseholder::inPlace() {
  if (static_cast<int>(factorMatrix_.rows()) < constraintRows_) return false;
  if (!dependent_) return true;
  if (!HouseholderStorage::isWhole(*this)) return false;
  const detail::MemoryWatch memory;
  const unsigned places = std::max(matrix_.rows(), matrix_.cols());
  DoubleVec values(places), products(places);
  IntVec columns(places), rows(places);
  if (memory.ranOut()) return false;
  const detail::HouseholderWorkspace work{values.data(), products.data(), columns.data(),
                                          rows.data()};
  return detail::factorHouseholder(HouseholderStorage::toWrite(*this), work, *reporter_);
}

// ---- Solution -----------------------------------------------------------------------------------

int Thouseholder::solveInPlace(DoubleVec& rhs, DoubleVec* x) const {
  return solveSides(*this, rhs, x, true);
}

int Thouseholder::solveInPlace(TtupleVector& rhs, TtupleVector* x) const {
  return solveSides(*this, rhs, x, false);
}

TtupleVector Thouseholder::altSolve(const TtupleVector& rhs, int n) const {
  if (!isSolvable()) return TtupleVector();
  const detail::MemoryWatch memory;
  const int dimension = rhs.size();
  TtupleVector x = detail::zeros<TtupleVector>(dimension, static_cast<unsigned>(totalCols_));
  const int code = solve(rhs.copy(), &x, false);
  if (memory.ranOut()) return TtupleVector();
  if (code != kSolved) return x;
  const bool allRows = usedRowIndex_.length() == static_cast<unsigned>(totalRows_);
  const bool allCols = usedCols() == totalCols_;
  TtupleVector b = allRows ? rhs.copy() : detail::gather(rhs, usedRowIndex_);
  TtupleVector y = allCols ? x.copy() : detail::gather(x, usedColIndex_);
  detail::scalePoints(b, rhsMult_);
  for (int turn = 0; turn < n && !memory.ranOut(); ++turn) {
    TtupleVector left = residual(matrix_, b, y);
    TtupleVector correction = detail::zeros<TtupleVector>(dimension, detail::pointsOf(y));
    if (memory.ranOut()) break;
    const auto factors = HouseholderStorage::toRead(*this);
    if (!detail::solveHouseholder(factors, left, correction, dimension)) break;
    if (detail::holdsNaN(correction)) break;
    static_cast<DoubleVec&>(y) += correction;
  }
  if (memory.ranOut()) return TtupleVector();
  if (allCols) return y;
  detail::scatter(y, usedColIndex_, x);
  return x;
}
