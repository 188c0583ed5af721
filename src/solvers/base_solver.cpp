// SPDX-License-Identifier: MIT
// How right-hand sides get onto the rows that take part, and solutions back to all columns.
#include "knotwork/solvers/base_solver.h"

#include <algorithm>
#include <tuple>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/point_values.h"
#include "vector/memory_watch.h"

namespace detail = knotwork::detail;

namespace {

constexpr double kDefaultTolerance = 1e-10;

TsolverReporter silentReporter(true);  // of solvers that were given none

// Whether every index is at least 0 and below the limit.
bool areBelow(const IntVec& indices, unsigned limit) {
  for (int i = 0; i < static_cast<int>(indices.length()); ++i) {
    if (static_cast<unsigned>(indices(i)) >= limit) return false;
  }
  return true;
}

}  // namespace

namespace knotwork::detail {

// Maps right-hand sides onto the rows that take part, and solutions back to all columns.
class SideMapper {
 public:
  explicit SideMapper(const TbaseSolver& solver) : s_(solver) {}

  template <class Values>
  int solve(const Values& rhs, Values* x, bool keepValues) const;

 private:
  bool hasAllRows() const { return s_.usedRowIndex_.length() == rows(); }
  bool hasAllColumns() const { return s_.usedColIndex_.length() == columns(); }
  unsigned rows() const { return static_cast<unsigned>(s_.totalRows_); }
  unsigned columns() const { return static_cast<unsigned>(s_.totalCols_); }

  bool areIndicesInside(unsigned sides, bool prescribed) const;
  template <class Values>
  Values sidesOf(const Values& rhs, bool isChanged) const;
  template <class Values>
  bool subtractPrescribed(DoubleVec& b, const Values& x) const;
  void subtractMultiples(DoubleVec& b, const DoubleVec& column, const DoubleVec& point) const;
  template <class Values>
  void store(const Values& y, bool prescribed, Values& x) const;

  const TbaseSolver& s_;
};

// Whether the used rows lie in a right-hand side of so many entries, and the used columns in the
// system: where nothing was usable the lists are still those of an earlier system.
bool SideMapper::areIndicesInside(unsigned sides, bool prescribed) const {
  if (!areBelow(s_.usedColIndex_, columns())) return false;
  if (hasAllRows()) return !prescribed || sides == rows();
  return areBelow(s_.usedRowIndex_, prescribed ? std::min(rows(), sides) : sides);
}

// The sides of the used rows: a view on all of them only if the caller's may be overwritten.
template <class Values>
Values SideMapper::sidesOf(const Values& rhs, bool isChanged) const {
  if (!hasAllRows()) return gather(rhs, s_.usedRowIndex_);
  return s_.copyRhs_ || isChanged ? Values(rhs.copy()) : Values(rhs);
}

// b -= column j times x[j] over the columns that do not take part. @return false where a subclass
// gives a column that is too short.
template <class Values>
bool SideMapper::subtractPrescribed(DoubleVec& b, const Values& x) const {
  // The accessor is meant for subclasses to redefine and changes nothing.
  auto& solver = const_cast<TbaseSolver&>(s_);
  int nextUsed = 0;
  for (int j = 0; j < s_.totalCols_; ++j) {
    if (nextUsed < s_.usedCols() && s_.usedColIndex_(nextUsed) == j) {
      ++nextUsed;
      continue;
    }
    const DoubleVec column = solver.originalColumn(j);
    if (column.length() < rows()) return false;
    subtractMultiples(b, column, pointAt(x, j));
  }
  return true;
}

// Component c of every side loses point[c] times the column.
void SideMapper::subtractMultiples(DoubleVec& b, const DoubleVec& column,
                                   const DoubleVec& point) const {
  const int sides = static_cast<int>(s_.usedRowIndex_.length());
  const int dimension = static_cast<int>(point.length());
  for (int i = 0; i < sides; ++i) {
    const double element = column(hasAllRows() ? i : s_.usedRowIndex_(i));
    for (int c = 0; c < dimension; ++c) b(i * dimension + c) -= point(c) * element;
  }
}

// Stores the unknowns y of the used columns.
template <class Values>
void SideMapper::store(const Values& y, bool prescribed, Values& x) const {
  if (!prescribed) static_cast<DoubleVec&>(x) = 0.0;
  if (hasAllColumns()) {
    copyPoints(y, x);
  } else {
    scatter(y, s_.usedColIndex_, x);
  }
}

template <class Values>
int SideMapper::solve(const Values& rhs, Values* x, bool keepValues) const {
  const unsigned sides = pointsOf(rhs);
  if (x == nullptr || sides < s_.usedRowIndex_.length()) return kBadArgument;
  const int dimension = dimensionOf(rhs);
  const bool prescribed = keepValues && !hasAllColumns() && hasShape(*x, dimension, columns());
  if (prescribed && !s_.keepOriginal_) return kBadArgument;
  if (!areIndicesInside(sides, prescribed)) return kBadArgument;

  const MemoryWatch memory;
  const unsigned unknowns = s_.usedColIndex_.length();
  Values b = sidesOf(rhs, prescribed);
  Values y = zeros<Values>(dimension, unknowns);
  if (memory.ranOut()) return kBadArgument;
  if (prescribed && !subtractPrescribed(b, *x)) return kBadArgument;
  const int code = s_.solveInPlace(b, &y);
  if (code != kSolved) return code;
  if (memory.ranOut() || !hasShape(y, dimension, unknowns)) return kBadArgument;
  if (!reshape(*x, dimension, columns())) return kBadArgument;
  store(y, prescribed, *x);
  return kSolved;
}

}  // namespace knotwork::detail

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

int TbaseSolver::solve(const DoubleVec& rhs, DoubleVec* x, bool keepValues) const {
  return detail::SideMapper(*this).solve(rhs, x, keepValues);
}

int TbaseSolver::solve(const TtupleVector& rhs, TtupleVector* x, bool keepValues) const {
  return detail::SideMapper(*this).solve(rhs, x, keepValues);
}

DoubleVec TbaseSolver::solve(const DoubleVec& rhs) const {
  if (!isSolvable()) return DoubleVec();
  DoubleVec x(static_cast<unsigned>(totalCols_), 0.0);
  std::ignore = solve(rhs, &x, false);  // what there is is returned whatever the code
  return x;
}

TtupleVector TbaseSolver::solve(const TtupleVector& rhs) const {
  if (!isSolvable()) return TtupleVector();
  TtupleVector x(rhs.size(), totalCols_, 0.0);
  std::ignore = solve(rhs, &x, false);
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
