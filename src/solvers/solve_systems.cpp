// SPDX-License-Identifier: MIT
// Preparation of a linear system. The matrix is stored by columns and is walked that way; what must
// see whole rows sees them in slabs.
#include "knotwork/solvers/solve_systems.h"

#include <cmath>

#include "solvers/row_slabs.h"
#include "solvers/whole_matrix.h"
#include "vector/memory_watch.h"

namespace detail = knotwork::detail;

namespace {

// The largest tolerance for cleaning, as a part of the largest entry: something must be left.
constexpr double kPartOfLargestEntry = 0.99;

// "Within tolerance of 0"; a NaN is not.
bool isWithin(double x, double tolerance) { return std::abs(x) <= tolerance; }

// Indices of the columns that are neither fixed nor zero.
IntVec findColumns(const DoubleGenMat& a, const IntVec& fixedCols, double tolerance) {
  IntVec used(a.cols());
  unsigned count = 0;
  int nextFixed = 0;
  for (int c = 0; c < static_cast<int>(used.length()); ++c) {
    if (nextFixed < static_cast<int>(fixedCols.length()) && fixedCols(nextFixed) == c) {
      ++nextFixed;
    } else if (!a.col(c).isZero(tolerance)) {
      used(static_cast<int>(count++)) = c;
    }
  }
  return used.slice(0, count, 1);
}

// Indices of the rows that are not zero.
IntVec findRows(const DoubleGenMat& a, double tolerance) {
  IntVec isUsed(a.rows(), 0);
  for (int c = 0; c < static_cast<int>(a.cols()); ++c) {
    const DoubleVec column = a.col(c);
    for (int r = 0; r < static_cast<int>(isUsed.length()); ++r) {
      isUsed(r) |= !isWithin(column(r), tolerance);
    }
  }
  return isUsed.valueIndex(1);
}

// Whether zeros can be cleaned with the tolerance, which becomes the cutoff if it is too large.
bool acceptTolerance(const DoubleGenMat& a, double cutoff, double& tolerance,
                     TsolverReporter& reporter) {
  double largest = maxValue(a.dataVec());
  if (largest > 1.0) largest = 1.0;
  const double limit = kPartOfLargestEntry * largest;
  if (tolerance <= limit) return true;
  const bool isUsable = 0 < cutoff && cutoff < limit;
  if (isUsable) tolerance = cutoff;
  if (reporter.isVerbose()) {
    // The line is the same where nothing could be reset.
    reporter.reportFormatted(
        " Region cutoff value too large (maximal allowed value %5.3f). Reset to %5.3f.", limit,
        tolerance);
  }
  return isUsable;
}

// The first of the smallest; a NaN in the first place stays.
int smallestMagnitude(const DoubleVec& v) {
  int smallest = 0;
  for (int i = 1; i < static_cast<int>(v.length()); ++i) {
    if (std::abs(v(i)) < std::abs(v(smallest))) smallest = i;
  }
  return smallest;
}

// Keeps the leading entries of a row, but gives the diagonal entry the places of the smallest ones
// below it: one after the other, as many as there are other entries.
void keepLeadingEntries(DoubleVec& row, int diagonal, const DoubleVec& slots, IntVec& places) {
  const int kept = static_cast<int>(slots.length());
  const int n = static_cast<int>(row.length());
  DoubleVec values = slots;
  for (int s = 0; s < kept; ++s) {
    values(s) = row(s);
    places(s) = s;
  }
  if (diagonal < n) {
    const double candidate = row(diagonal);
    for (int turn = kept; turn < n; ++turn) {
      const int smallest = smallestMagnitude(values);
      if (!(std::abs(values(smallest)) < candidate)) break;
      values(smallest) = candidate;
      places(smallest) = diagonal;
    }
  }
  row = 0.0;
  for (int s = 0; s < kept; ++s) row(places(s)) = values(s);
}

}  // namespace

TsolveSystems::TsolveSystems(bool keepOriginal) : TbaseSolver(keepOriginal) {}
TsolveSystems::TsolveSystems(TsolverReporter& reporter, bool keepOriginal)
    : TbaseSolver(reporter, keepOriginal) {}
TsolveSystems::TsolveSystems(const TsolveSystems&) = default;
TsolveSystems::~TsolveSystems() = default;

TsolveSystems& TsolveSystems::reference(TsolveSystems& other) {
  TbaseSolver::reference(other);
  keptMatrix_.reference(other.keptMatrix_);
  matrix_.reference(other.matrix_);
  maxNonZeros_ = other.maxNonZeros_;
  return *this;
}

void TsolveSystems::deepenShallowCopy() { TbaseSolver::deepenShallowCopy(); }

bool TsolveSystems::findZero(const DoubleGenMat& a, const IntVec& fixedCols, IntVec& usedRows,
                             IntVec& usedCols, double tolerance) {
  if (a.rows() == 0 || a.cols() == 0) return false;
  const detail::MemoryWatch memory;
  const DoubleGenMat whole = detail::isWhole(a) ? a : a.copy();
  const IntVec cols = findColumns(whole, fixedCols, tolerance);
  const IntVec rows = findRows(whole, tolerance);
  if (memory.ranOut()) return false;
  usedCols.reference(cols);
  usedRows.reference(rows);
  return true;
}

bool TsolveSystems::findAllZeros(const IntVec& fixedCols, IntVec& usedRows, IntVec& usedCols,
                                 double tolerance) const {
  return findZero(matrix_, fixedCols, usedRows, usedCols, tolerance);
}

DoubleVec TsolveSystems::originalColumn(int column) {
  return keepOriginal_ ? keptMatrix_.col(column) : DoubleVec();
}

void TsolveSystems::resetMatrix() {
  const unsigned rows = usedRowIndex_.length();
  const unsigned cols = usedColIndex_.length();
  if (cols == static_cast<unsigned>(totalCols_) && rows == static_cast<unsigned>(totalRows_)) {
    return;
  }
  DoubleGenMat reduced(rows, cols);
  if (reduced.rows() != rows || reduced.cols() != cols) return;
  for (int j = 0; j < static_cast<int>(cols); ++j) {
    const DoubleVec from = matrix_.col(usedColIndex_(j));
    DoubleVec to = reduced.col(j);
    for (int i = 0; i < static_cast<int>(rows); ++i) to(i) = from(usedRowIndex_(i));
  }
  matrix_.reference(reduced);
}

void TsolveSystems::zeroOutCount() {
  if (maxNonZeros_ < 1 || maxNonZeros_ >= static_cast<int>(matrix_.cols())) return;
  const DoubleVec slots(static_cast<unsigned>(maxNonZeros_));
  IntVec places(slots.length());
  if (slots.length() == 0 || places.length() == 0) return;
  detail::changeRows(matrix_,
                     [&](int i, DoubleVec& row) { keepLeadingEntries(row, i, slots, places); });
}

void TsolveSystems::tryNormalise() {
  rhsMult_.reference(DoubleVec(matrix_.rows(), 0.0));
  if (rhsMult_.length() != matrix_.rows()) return;
  isNormalised_ = detail::changeRows(matrix_, [this](int i, DoubleVec& row) {
    const double length = row.vecLen();
    if (length <= 0) {
      row = 0.0;
    } else {
      rhsMult_(i) = 1 / length;
      row *= 1 / length;
    }
  });
}

void TsolveSystems::preSetMatrix(const IntVec& fixedCols, double cutoff, bool normalise,
                                 bool cleanZeros) {
  rhsMult_.reference(DoubleVec());
  isNormalised_ = false;
  keptMatrix_.reference(keepOriginal_ ? matrix_ : DoubleGenMat());
  totalCols_ = static_cast<int>(matrix_.cols());
  totalRows_ = static_cast<int>(matrix_.rows());
  if (reporter_->isVerbose()) {
    reporter_->reportFormatted(" Region cutoff value set to %f", tolerance_);
  }
  bool isAccepted = false;
  if (cleanZeros && totalRows_ > 0 && totalCols_ > 0) {
    isAccepted = acceptTolerance(matrix_, cutoff, tolerance_, *reporter_);
    if (isAccepted) {
      zeroOutCount();
      cleanZero(fixedCols, tolerance_);
    }
    matrix_.dataVec().clampZero(tolerance_);
  }
  // Only now: what was changed in place above is meant to be in the kept matrix too.
  keptMatrix_.deepenShallowCopy();
  if (!isAccepted) {
    usedColIndex_.reference(IntVec(static_cast<unsigned>(totalCols_), 0, 1));
    usedRowIndex_.reference(IntVec(static_cast<unsigned>(totalRows_), 0, 1));
  }
  if (normalise) tryNormalise();
}
