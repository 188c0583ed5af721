// SPDX-License-Identifier: MIT
// The Householder solver: storage of the factorisation, checks, and corrections of a solution.
#include "knotwork/solvers/householder.h"

#include <algorithm>
#include <cstdint>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/householder_system.h"
#include "solvers/point_values.h"

using knotwork::kSolved;
namespace detail = knotwork::detail;

namespace {

constexpr double kSkippedPartOfTolerance = 0.1;

// Shared by all objects: the one that factored last has set it for the others.
double skipThreshold = 1e-13;

// 0, 1, 2, ...
IntVec identity(unsigned n) { return IntVec(n, 0, 1); }

// The elements of a view, to write through.
double* elements(DoubleVec view) { return view.data(); }
int* elements(IntVec view) { return view.data(); }

// to[i * toStep + w] = from[i * fromStep + w] for i < n and w < width
void copyBlock(const double* from, int fromStep, double* to, int toStep, int n, int width) {
  for (int i = 0; i < n; ++i, from += fromStep, to += toStep) std::copy_n(from, width, to);
}

}  // namespace

namespace knotwork::detail {

// The factorisation of a solver, checked and applied.
class HouseholderFactor {
 public:
  explicit HouseholderFactor(const Thouseholder& solver) : s_(solver) {}

  // Whether there is room for all that the factorisation needs: memory may have run out, and from
  // 65536 rows or columns on the work vectors are too short.
  bool hasStorage() const;
  HouseholderSystem system() const;
  // Does to the sides what normalisation did to the rows, if there are as many.
  template <class Values>
  void scale(Values& sides) const;
  template <class Values>
  int solve(Values& rhs, Values* x, bool changesSides) const;
  // y += the solution for b - matrix y. @return false if memory ran out.
  bool correct(const TtupleVector& b, TtupleVector& y) const;

 private:
  TtupleVector residual(const TtupleVector& b, const TtupleVector& y) const;
  bool solveScaled(DoubleVec& b, DoubleVec& y, int dimension) const;

  const Thouseholder& s_;
};

bool HouseholderFactor::hasStorage() const {
  const unsigned rows = s_.matrix_.rows();
  const unsigned cols = s_.matrix_.cols();
  const unsigned pivots = std::max(rows, cols);
  return s_.factorMatrix_.rows() == rows && s_.factorMatrix_.cols() == cols &&
         s_.rowPerm_.length() == rows && s_.colPerm_.length() == cols &&
         s_.beta_.length() == pivots && s_.sigma_.length() == pivots &&
         s_.norms_.length() == pivots;
}

HouseholderSystem HouseholderFactor::system() const {
  const int rows = static_cast<int>(s_.factorMatrix_.rows());
  const int cols = static_cast<int>(s_.factorMatrix_.cols());
  const int constraints = rows < cols ? rows : std::clamp(s_.constraintRows_, 0, cols);
  return {elements(s_.factorMatrix_.dataVec()),
          rows,
          cols,
          constraints,
          elements(s_.beta_),
          elements(s_.sigma_),
          elements(s_.norms_),
          elements(s_.rowPerm_),
          elements(s_.colPerm_),
          skipThreshold};
}

template <class Values>
void HouseholderFactor::scale(Values& sides) const {
  if (pointsOf(sides) != s_.rhsMult_.length()) return;
  for (int i = 0; i < static_cast<int>(pointsOf(sides)); ++i) {
    DoubleVec side = pointAt(sides, i);
    side *= s_.rhsMult_(i);
  }
}

// Points of many components are taken apart into lists of fewer, which lie together in memory; b
// then stays as it is. @return false if memory ran out.
bool HouseholderFactor::solveScaled(DoubleVec& b, DoubleVec& y, int dimension) const {
  const HouseholderSystem s = system();
  if (dimension <= kFewSides) {
    solveHouseholder(s, elements(b), elements(y), dimension);
    return true;
  }
  DoubleVec sides(static_cast<unsigned>(s.rows * kManySides));
  DoubleVec unknowns(static_cast<unsigned>(s.cols * kManySides));
  if (static_cast<int>(sides.length()) != s.rows * kManySides) return false;
  if (static_cast<int>(unknowns.length()) != s.cols * kManySides) return false;
  for (int first = 0; first < dimension; first += kManySides) {
    const int left = dimension - first;
    const int width = left <= kFewSides ? left : kManySides;
    const int filled = std::min(left, width);
    sides = 0.0;
    unknowns = 0.0;
    copyBlock(elements(b) + first, dimension, elements(sides), width, s.rows, filled);
    solveHouseholder(s, elements(sides), elements(unknowns), width);
    copyBlock(elements(unknowns), width, elements(y) + first, dimension, s.cols, filled);
  }
  return true;
}

template <class Values>
int HouseholderFactor::solve(Values& rhs, Values* x, bool changesSides) const {
  const unsigned unknowns = s_.matrix_.cols();
  const int dimension = dimensionOf(rhs);
  if (x == nullptr || dimensionOf(*x) != dimension || pointsOf(*x) < unknowns) return kBadArgument;
  if (pointsOf(rhs) < s_.matrix_.rows()) return kBadArgument;
  if (s_.isDependent()) return kDependent;
  Values b = rhs.copy();
  Values y = zeros<Values>(dimension, unknowns);
  if (pointsOf(b) < s_.matrix_.rows() || pointsOf(y) < unknowns) return kBadArgument;
  scale(b);
  if (!solveScaled(b, y, dimension)) return kBadArgument;
  if (changesSides) rhs = b;
  static_cast<DoubleVec&>(*x) = 0.0;
  copyPoints(y, *x);
  return kSolved;
}

TtupleVector HouseholderFactor::residual(const TtupleVector& b, const TtupleVector& y) const {
  const int rows = static_cast<int>(s_.matrix_.rows());
  TtupleVector product = zeros<TtupleVector>(b.size(), s_.matrix_.rows());
  if (product.points() < rows) return product;
  DoubleVec& flat = product;
  for (int j = 0; j < static_cast<int>(s_.matrix_.cols()); ++j) {
    const DoubleVec column = s_.matrix_.col(j);
    const DoubleVec unknown = pointAt(y, j);
    for (int i = 0; i < rows; ++i) {
      for (int c = 0; c < b.size(); ++c) flat(i * b.size() + c) += column(i) * unknown(c);
    }
  }
  const DoubleVec& sides = b;
  for (int t = 0; t < static_cast<int>(flat.length()); ++t) flat(t) = sides(t) - flat(t);
  return product;
}

bool HouseholderFactor::correct(const TtupleVector& b, TtupleVector& y) const {
  TtupleVector left = residual(b, y);
  TtupleVector correction = zeros<TtupleVector>(y.size(), pointsOf(y));
  if (pointsOf(left) < s_.matrix_.rows() || pointsOf(correction) < pointsOf(y)) return false;
  if (!solveScaled(left, correction, y.size())) return false;
  static_cast<DoubleVec&>(y) += correction;
  return true;
}

}  // namespace knotwork::detail

using detail::HouseholderFactor;

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
  rowPerm_.reference(identity(matrix_.rows()));
  colPerm_.reference(identity(matrix_.cols()));
  // Lengths are taken modulo 65536.
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
  if (!HouseholderFactor(*this).hasStorage()) return false;
  DoubleVec values(places), products(places);
  IntVec columns(places), rows(places);
  if (std::min({values.length(), products.length(), columns.length(), rows.length()}) < places) {
    return false;
  }
  const detail::HouseholderWorkspace work{values.data(), products.data(), columns.data(),
                                          rows.data()};
  return detail::factorHouseholder(HouseholderFactor(*this).system(), work, *reporter_);
}

// ---- Solution -----------------------------------------------------------------------------------

int Thouseholder::solveInPlace(DoubleVec& rhs, DoubleVec* x) const {
  return HouseholderFactor(*this).solve(rhs, x, true);
}

int Thouseholder::solveInPlace(TtupleVector& rhs, TtupleVector* x) const {
  return HouseholderFactor(*this).solve(rhs, x, false);
}

TtupleVector Thouseholder::altSolve(const TtupleVector& rhs, int n) const {
  if (!isSolvable()) return TtupleVector();
  const int dimension = rhs.size();
  TtupleVector x = detail::zeros<TtupleVector>(dimension, static_cast<unsigned>(totalCols_));
  if (solve(rhs, &x, false) != kSolved) return x;
  const bool allRows = usedRowIndex_.length() == static_cast<unsigned>(totalRows_);
  TtupleVector b = allRows ? rhs.copy() : detail::gather(rhs, usedRowIndex_);
  HouseholderFactor(*this).scale(b);
  const bool allCols = usedCols() == totalCols_;
  TtupleVector y = allCols ? x.copy() : detail::gather(x, usedColIndex_);
  for (int turn = 0; turn < n; ++turn) {
    if (!HouseholderFactor(*this).correct(b, y)) break;
  }
  if (allCols) return y;
  detail::scatter(y, usedColIndex_, x);
  return x;
}
