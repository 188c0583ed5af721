// SPDX-License-Identifier: MIT
// How right-hand sides get onto the rows that take part, and solutions back to all columns.
#include "knotwork/solvers/base_solver.h"

#include <algorithm>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/point_values.h"

using knotwork::kBadArgument;
using knotwork::kSolved;
namespace detail = knotwork::detail;

namespace {

constexpr double kDefaultTolerance = 1e-10;

TsolverReporter silentReporter(true);

// Whether every index is at least 0 and below the limit.
bool areBelow(const IntVec& indices, unsigned limit) {
  for (int i = 0; i < static_cast<int>(indices.length()); ++i) {
    if (static_cast<unsigned>(indices(i)) >= limit) return false;
  }
  return true;
}

}  // namespace

TbaseSolver::TbaseSolver(bool keepOriginal) : TbaseSolver(silentReporter, keepOriginal) {}
TbaseSolver::TbaseSolver(TsolverReporter& reporter, bool keepOriginal)
    : reporter_(&reporter), tolerance_(kDefaultTolerance), keepOriginal_(keepOriginal) {}
TbaseSolver::TbaseSolver(const TbaseSolver&) = default;
TbaseSolver::~TbaseSolver() = default;

TbaseSolver& TbaseSolver::reference(TbaseSolver& other) {
  reporter_ = other.reporter_;
  usedRowIndex_.reference(other.usedRowIndex_);
  totalRows_ = other.totalRows_;
  totalCols_ = other.totalCols_;
  usedColIndex_.reference(other.usedColIndex_);
  tolerance_ = other.tolerance_;
  rhsMult_.reference(other.rhsMult_);
  isNormalised_ = other.isNormalised_;
  keepOriginal_ = other.keepOriginal_;
  copyRhs_ = other.copyRhs_;
  return *this;
}

void TbaseSolver::deepenShallowCopy() {
  usedRowIndex_.deepenShallowCopy();
  usedColIndex_.deepenShallowCopy();
  rhsMult_.deepenShallowCopy();
}

bool TbaseSolver::isNormalised() const { return isNormalised_; }
const DoubleVec& TbaseSolver::rhsMult() const { return rhsMult_; }
int TbaseSolver::totalRows() const { return totalRows_; }
int TbaseSolver::totalCols() const { return totalCols_; }
const IntVec& TbaseSolver::usedColIndex() const { return usedColIndex_; }
int TbaseSolver::usedCols() const { return static_cast<int>(usedColIndex_.length()); }
double TbaseSolver::tolerance() const { return tolerance_; }
double& TbaseSolver::tolerance() { return tolerance_; }

// Whether the used rows lie in a right-hand side of so many entries, and the used columns in the
// system: where nothing was usable the lists are still those of an earlier system.
bool TbaseSolver::areIndicesInside(unsigned sides, bool prescribed) const {
  const auto rows = static_cast<unsigned>(totalRows_);
  if (!areBelow(usedColIndex_, static_cast<unsigned>(totalCols_))) return false;
  if (usedRowIndex_.length() == rows) return !prescribed || sides == rows;
  return areBelow(usedRowIndex_, prescribed ? std::min(rows, sides) : sides);
}

// b -= column j times x[j] over the columns that do not take part. @return false where a subclass
// gives a column that is too short.
template <class Values>
bool TbaseSolver::subtractPrescribed(DoubleVec& b, const Values& x) const {
  // The accessor is meant for subclasses to redefine and changes nothing.
  auto& self = const_cast<TbaseSolver&>(*this);
  int nextUsed = 0;
  for (int j = 0; j < totalCols_; ++j) {
    if (nextUsed < usedCols() && usedColIndex_(nextUsed) == j) {
      ++nextUsed;
      continue;
    }
    const DoubleVec column = self.originalColumn(j);
    if (column.length() < static_cast<unsigned>(totalRows_)) return false;
    subtractMultiples(b, column, detail::pointAt(x, j));
  }
  return true;
}

// Component c of every side loses point[c] times the column.
void TbaseSolver::subtractMultiples(DoubleVec& b, const DoubleVec& column,
                                    const DoubleVec& point) const {
  const int sides = static_cast<int>(usedRowIndex_.length());
  const int dimension = static_cast<int>(point.length());
  const bool allRows = sides == totalRows_;
  for (int i = 0; i < sides; ++i) {
    const double element = column(allRows ? i : usedRowIndex_(i));
    for (int c = 0; c < dimension; ++c) b(i * dimension + c) -= point(c) * element;
  }
}

template <class Values>
int TbaseSolver::solveFor(const Values& rhs, Values* x, bool keepValues) const {
  const unsigned sides = detail::pointsOf(rhs);
  if (x == nullptr || sides < usedRowIndex_.length()) return kBadArgument;
  const int dimension = detail::dimensionOf(rhs);
  const auto unknowns = static_cast<unsigned>(totalCols_);
  const bool prescribed =
      keepValues && usedCols() != totalCols_ && detail::hasShape(*x, dimension, unknowns);
  if (prescribed && !keepOriginal_) return kBadArgument;
  if (!areIndicesInside(sides, prescribed)) return kBadArgument;

  const bool allRows = usedRowIndex_.length() == static_cast<unsigned>(totalRows_);
  Values b(rhs);
  if (!allRows) {
    detail::become(b, detail::gather(rhs, usedRowIndex_));
  } else if (copyRhs_ || prescribed) {
    detail::become(b, rhs.copy());
  }
  if (detail::pointsOf(b) < usedRowIndex_.length()) return kBadArgument;
  if (prescribed && !subtractPrescribed(b, *x)) return kBadArgument;

  Values y = detail::zeros<Values>(dimension, usedColIndex_.length());
  const int code = solveInPlace(b, &y);
  if (code != kSolved) return code;
  if (!detail::hasShape(*x, dimension, unknowns)) detail::reshape(*x, dimension, unknowns);
  if (!detail::hasShape(*x, dimension, unknowns)) return kBadArgument;
  if (!prescribed) static_cast<DoubleVec&>(*x) = 0.0;
  if (usedCols() == totalCols_) {
    detail::copyPoints(y, *x);
  } else {
    detail::scatter(y, usedColIndex_, *x);
  }
  return kSolved;
}

int TbaseSolver::solve(const DoubleVec& rhs, DoubleVec* x, bool keepValues) const {
  return solveFor(rhs, x, keepValues);
}

int TbaseSolver::solve(const TtupleVector& rhs, TtupleVector* x, bool keepValues) const {
  return solveFor(rhs, x, keepValues);
}

DoubleVec TbaseSolver::solve(const DoubleVec& rhs) const {
  if (!isSolvable()) return DoubleVec();
  DoubleVec x(static_cast<unsigned>(totalCols_), 0.0);
  solve(rhs, &x, false);
  return x;
}

TtupleVector TbaseSolver::solve(const TtupleVector& rhs) const {
  if (!isSolvable()) return TtupleVector();
  TtupleVector x(rhs.size(), totalCols_, 0.0);
  solve(rhs, &x, false);
  return x;
}

bool TbaseSolver::cleanZero(const IntVec& fixedCols, double tolerance) {
  IntVec usedRows;
  IntVec usedCols;
  if (!findAllZeros(fixedCols, usedRows, usedCols, tolerance)) return false;
  if (usedRows.length() == 0 || usedCols.length() == 0) return false;
  usedColIndex_.reference(usedCols);
  usedRowIndex_.reference(usedRows);
  resetMatrix();
  return true;
}
