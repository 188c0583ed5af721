// SPDX-License-Identifier: MIT
// The Householder solver: storage of the factorisation, checks, and corrections of a solution.
#include "knotwork/solvers/householder.h"

#include <algorithm>
#include <cstdint>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/householder_system.h"
#include "solvers/point_values.h"

using knotwork::kBadArgument;
using knotwork::kDependent;
using knotwork::kSolved;
namespace detail = knotwork::detail;

namespace {

constexpr double kSkippedPartOfTolerance = 0.1;
constexpr unsigned kFirstSizeRefused = 65536;

// Shared by all objects: the one that factored last has set it for the others.
double skipThreshold = 1e-13;

// 0, 1, 2, ...
IntVec identity(unsigned n) { return IntVec(n, 0, 1); }

// The elements of a view, to write through.
double* elements(DoubleVec view) { return view.data(); }
int* elements(IntVec view) { return view.data(); }

// The leading elements of `to` become those of `from`, the others 0.
void copyAndClear(const DoubleVec& from, DoubleVec& to) {
  to = 0.0;
  DoubleVec leading = to.slice(0, from.length(), 1);
  leading = from;
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

detail::HouseholderSystem Thouseholder::system() const {
  const int rows = static_cast<int>(factorMatrix_.rows());
  const int cols = static_cast<int>(factorMatrix_.cols());
  const int constraints = rows < cols ? rows : std::clamp(constraintRows_, 0, cols);
  return {elements(factorMatrix_.dataVec()),
          rows,
          cols,
          constraints,
          elements(beta_),
          elements(sigma_),
          elements(norms_),
          elements(rowPerm_),
          elements(colPerm_),
          skipThreshold};
}

// Whether memory was had for all that the factorisation needs.
bool Thouseholder::hasStorage() const {
  const unsigned rows = matrix_.rows();
  const unsigned cols = matrix_.cols();
  const unsigned pivots = std::max(rows, cols);
  return factorMatrix_.rows() == rows && factorMatrix_.cols() == cols &&
         rowPerm_.length() == rows && colPerm_.length() == cols && beta_.length() == pivots &&
         sigma_.length() == pivots && norms_.length() == pivots;
}

bool Thouseholder::factor() {
  skipThreshold = tolerance_ * kSkippedPartOfTolerance;
  // Storage is always new: copies of this solver may share the old one.
  rowPerm_.reference(identity(matrix_.rows()));
  colPerm_.reference(identity(matrix_.cols()));
  const unsigned pivots = std::max(static_cast<std::uint16_t>(matrix_.rows()),
                                   static_cast<std::uint16_t>(matrix_.cols()));
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
  const unsigned places = std::max(matrix_.rows(), matrix_.cols());
  if (places >= kFirstSizeRefused || !hasStorage()) return false;
  DoubleVec values(places), products(places);
  IntVec columns(places), rows(places);
  if (std::min({values.length(), products.length(), columns.length(), rows.length()}) < places) {
    return false;
  }
  const detail::HouseholderWorkspace work{values.data(), products.data(), columns.data(),
                                          rows.data()};
  return detail::factorHouseholder(system(), work, *reporter_);
}

// ---- Solution -----------------------------------------------------------------------------------

// Does to sides what normalisation did to the rows, if there are as many.
void Thouseholder::scale(DoubleVec& flat, int dimension) const {
  const int sides = static_cast<int>(flat.length()) / dimension;
  if (static_cast<unsigned>(sides) != rhsMult_.length()) return;
  for (int i = 0; i < sides; ++i) {
    for (int c = 0; c < dimension; ++c) flat(i * dimension + c) *= rhsMult_(i);
  }
}

void Thouseholder::solveScaled(DoubleVec& flat, DoubleVec& x, int dimension) const {
  x = 0.0;
  detail::solveHouseholder(system(), flat.data(), x.data(), dimension);
}

int Thouseholder::solveInPlace(DoubleVec& rhs, DoubleVec* x) const {
  if (x == nullptr || x->length() < matrix_.cols() || rhs.length() < matrix_.rows()) {
    return kBadArgument;
  }
  if (isDependent()) return kDependent;
  DoubleVec b = rhs.deepCopy();
  DoubleVec y(matrix_.cols());
  if (b.length() != rhs.length() || y.length() != matrix_.cols()) return kBadArgument;
  scale(b, 1);
  solveScaled(b, y, 1);
  rhs = b;
  copyAndClear(y, *x);
  return kSolved;
}

int Thouseholder::solveInPlace(TtupleVector& rhs, TtupleVector* x) const {
  if (x == nullptr || x->size() != rhs.size() || detail::pointsOf(*x) < matrix_.cols() ||
      detail::pointsOf(rhs) < matrix_.rows()) {
    return kBadArgument;
  }
  if (isDependent()) return kDependent;
  const int dimension = rhs.size();
  DoubleVec b = static_cast<const DoubleVec&>(rhs).deepCopy();
  DoubleVec y(matrix_.cols() * static_cast<unsigned>(dimension));
  if (b.length() != rhs.length() || y.length() != matrix_.cols() * static_cast<unsigned>(dimension))
    return kBadArgument;
  scale(b, dimension);
  solveScaled(b, y, dimension);
  copyAndClear(y, *x);
  return kSolved;
}

// y += the solution for b - matrix y. @return false if memory ran out.
bool Thouseholder::correct(const DoubleVec& b, DoubleVec& y, int dimension) const {
  const int rows = static_cast<int>(matrix_.rows());
  DoubleVec product(static_cast<unsigned>(rows * dimension), 0.0);
  DoubleVec correction(y.length());
  if (static_cast<int>(product.length()) != rows * dimension) return false;
  if (correction.length() != y.length()) return false;
  for (int j = 0; j < static_cast<int>(matrix_.cols()); ++j) {
    const DoubleVec column = matrix_.col(j);
    for (int i = 0; i < rows; ++i) {
      for (int c = 0; c < dimension; ++c) {
        product(i * dimension + c) += column(i) * y(j * dimension + c);
      }
    }
  }
  DoubleVec residual = b.slice(0, product.length(), 1) - product;
  if (residual.length() != product.length()) return false;
  solveScaled(residual, correction, dimension);
  y += correction;
  return true;
}

TtupleVector Thouseholder::altSolve(const TtupleVector& rhs, int n) const {
  if (!isSolvable()) return TtupleVector();
  const int dimension = rhs.size();
  TtupleVector x = detail::zeros<TtupleVector>(dimension, static_cast<unsigned>(totalCols_));
  if (solve(rhs, &x, false) != kSolved) return x;
  const bool allRows = usedRowIndex_.length() == static_cast<unsigned>(totalRows_);
  DoubleVec b = allRows ? rhs.copy() : detail::gather(rhs, usedRowIndex_);
  scale(b, dimension);
  const bool allCols = usedCols() == totalCols_;
  DoubleVec y = allCols ? x.copy() : detail::gather(x, usedColIndex_);
  for (int turn = 0; turn < n; ++turn) {
    if (!correct(b, y, dimension)) break;
  }
  TtupleVector solved(dimension, y);
  if (allCols) return solved;
  detail::scatter(solved, usedColIndex_, x);
  return x;
}
