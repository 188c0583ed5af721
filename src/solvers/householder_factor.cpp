// SPDX-License-Identifier: MIT
// The two phases of the Householder solver's factorisation.
//
// Passing over zeros. Matrices of splines hold little else, and the reflection I + beta v v' need
// not visit places where v is 0. It takes a row or column x to x + f v with s = x'v, f = beta s:
//
//   s += x_i v_i   with v_i = 0 adds a zero. In rounding to nearest a sum is -0 only of -0 and -0,
//                  so the running sum, from +0 on, never is, and either zero leaves its bits.
//                  x_i must be finite: infinity times 0 is NaN.
//   x_i += f v_i   with v_i = 0 adds a zero, which changes x_i = -0 alone. f must be finite.
//
// No bit changes, then, as long as
// (1) no element is -0. If none is at first, none becomes so: elements are swapped, or become sums
//     whose first term is not -0; and the pivot's entry moves away from 0.
// (2) all elements are finite. Reflections keep lengths, so elements stay below the length of the
//     matrix as given: below 1e105 if they were at most 1e100, being fewer than 65536^2.
// (3) the factors f are finite. With m the largest magnitude of v as it was, sigma its length and
//     v_p the pivot's entry after the change, |v|^2 = 2 |sigma v_p|, beta = 1 / (sigma v_p) and
//     |v_p| >= |sigma| >= m. So |beta| <= m^-2, |s| <= |x| |v| < 1e211, |f| <= sqrt(2) |x| / m: all
//     are finite if m is at least 1e-150.
//
// So zeros are passed over if the matrix as given shows (1) and (2), until a pivot with m below
// 1e-150 is applied; after it, infinity and NaN may be anywhere.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "kernels/kernels.h"
#include "knotwork/solvers/solver_reporter.h"
#include "solvers/householder_system.h"
#include "solvers/progress_meter.h"
#include "solvers/reflection.h"

namespace knotwork::detail {
namespace {

constexpr double kRankTolerance = 1e-13;
constexpr double kLargestElement = 1e100;  // (2)
constexpr double kSmallestPivot = 1e-150;  // (3)
constexpr double kNormLoss = 100;  // norms are computed anew once they have shrunk by this factor
constexpr int kListedPart = 3;     // one entry in so many may be non-zero for a list to pay

// (1) and (2), where NaN fails too.
bool mayPassOverZeros(const double* a, std::ptrdiff_t count) {
  constexpr auto kNegativeZero = std::bit_cast<std::uint64_t>(-0.0);
  bool may = true;
  for (std::ptrdiff_t t = 0; t < count; ++t) {
    may &= std::abs(a[t]) <= kLargestElement;
    may &= std::bit_cast<std::uint64_t>(a[t]) != kNegativeZero;
  }
  return may;
}

double square(double x) { return x * x; }

void reflect(const ListedPlaces& at, const Reflector& h, const ReflectedColumns& columns) {
  reflectionKernels().reflectListed(at, h, columns);
}

void reflect(const RunsOfPlaces& at, const Reflector& h, const ReflectedColumns& columns) {
  reflectionKernels().reflectRuns(at, h, columns);
}

// The entries of a row or column that stand in the workspace: their places there, and which of them
// is the pivot's.
template <class Places>
struct Entries {
  Places at;
  std::ptrdiff_t pivot;
};

class Factorisation {
 public:
  Factorisation(const HouseholderSystem& system, const HouseholderWorkspace& work,
                TsolverReporter& reporter)
      : s_(system),
        work_(work),
        reporter_(reporter),
        passesOverZeros_(mayPassOverZeros(s_.f, static_cast<std::ptrdiff_t>(s_.rows) * s_.cols)) {}

  bool run() {
    const int firstConstraint = s_.leastSquaresRows();
    if (firstConstraint < s_.rows) reflectConstraints(firstConstraint);
    if (s_.freeColumns() > 0) reflectFreeColumns();
    return isOfFullRank();
  }

 private:
  void reflectConstraints(int first);
  void reflectFreeColumns();
  void pivotRow(int p, int q);
  void pivotColumn(int p, int j);
  bool isTinyRow(int p, int q) const;
  bool isTinyColumn(int p, int j) const;
  bool isSparseColumn(int p, int j) const;
  Entries<ListedPlaces> listRow(int p, int q);
  Entries<ListedPlaces> listColumn(int p, int j);
  Entries<RunsOfPlaces> copyColumn(int p, int j);
  template <class Places>
  bool form(int p, int j, const Entries<Places>& entries);
  template <class Places>
  void reflectColumnsAfter(int p, int j, const Entries<Places>& entries);
  void sumRowSquares(int first, int last, int columns);
  void sumColumnSquares(int first, int secondRun);
  void swapRows(int a, int b);
  void swapColumns(int a, int b);
  int largestNorm(int first, int end) const;
  void startNorms(int first, int end);
  bool haveNormsFaded(int first, int end) const;
  bool isOfFullRank();

  const HouseholderSystem& s_;
  const HouseholderWorkspace& work_;
  TsolverReporter& reporter_;
  bool passesOverZeros_;
  bool hasNorm_ = false;
  double largestSquare_ = 0;  // of all rows and columns as their phases began
  double reference_ = 0;      // the largest squared norm when they were last computed in full
};

// ---- Constraint rows, from the last one up; the active last column moves left -------------------

void Factorisation::reflectConstraints(int first) {
  sumRowSquares(first, s_.rows, s_.cols);
  startNorms(first, s_.rows);
  ProgressMeter progress(reporter_, s_.rows - first, s_.cols);
  for (int p = s_.rows - 1, q = s_.cols - 1; p >= first; --p, --q) {
    swapRows(largestNorm(first, p + 1), p);
    pivotRow(p, q);
    for (int i = first; i < p; ++i) s_.norms[i] -= square(s_.at(i, q));
    if (haveNormsFaded(first, p)) {
      sumRowSquares(first, p, q);
      reference_ = s_.norms[largestNorm(first, p)];
    }
    progress.step();
  }
  progress.finish();
}

void Factorisation::pivotRow(int p, int q) {
  passesOverZeros_ = passesOverZeros_ && !isTinyRow(p, q);
  const Entries<ListedPlaces> entries = listRow(p, q);
  if (!form(p, q, entries)) return;
  reflectionKernels().reflectRows(entries.at, {work_.values, s_.beta[p], s_.skip},
                                  {s_.f, s_.rows, p}, work_.products, work_.rows);
}

// Whether row p has entries whose reflection is applied, but may not be finite: see (3).
bool Factorisation::isTinyRow(int p, int q) const {
  if (s_.skip >= kSmallestPivot) return false;
  double largest = 0;
  for (int j = 0; j <= q; ++j) largest = std::max(largest, std::abs(s_.at(p, j)));
  return largest < kSmallestPivot;
}

// The entries of row p in columns 0 .. q; the pivot's stands last, even if it is 0.
Entries<ListedPlaces> Factorisation::listRow(int p, int q) {
  std::ptrdiff_t count = 0;
  for (int j = 0; j <= q; ++j) {
    work_.values[count] = s_.at(p, j);
    work_.places[count] = j;
    if (j == q || !passesOverZeros_ || work_.values[count] != 0) ++count;
  }
  return {{work_.places, count}, count - 1};
}

void Factorisation::sumRowSquares(int first, int last, int columns) {
  std::fill(s_.norms + first, s_.norms + last, 0.0);
  for (int j = 0; j < columns; ++j) {
    reflectionKernels().addSquares(s_.column(j) + first, last - first, s_.norms + first);
  }
}

void Factorisation::swapRows(int a, int b) {
  if (a == b) return;
  for (int j = 0; j < s_.cols; ++j) std::swap(s_.at(a, j), s_.at(b, j));
  std::swap(s_.beta[a], s_.beta[b]);
  std::swap(s_.sigma[a], s_.sigma[b]);
  std::swap(s_.norms[a], s_.norms[b]);
  std::swap(s_.rowPerm[a], s_.rowPerm[b]);
}

// ---- Free columns, in the rows that cannot be met and those not finished yet --------------------

void Factorisation::reflectFreeColumns() {
  const int columns = s_.freeColumns();
  sumColumnSquares(0, s_.firstPivotRow());
  startNorms(0, columns);
  ProgressMeter progress(reporter_, columns, s_.rows);
  for (int j = 0, p = s_.firstPivotRow(); j < columns; ++j, ++p) {
    swapColumns(largestNorm(j, columns), j);
    pivotColumn(p, j);
    for (int i = j + 1; i < columns; ++i) s_.norms[i] -= square(s_.at(p, i));
    if (haveNormsFaded(j + 1, columns)) {
      sumColumnSquares(j + 1, p + 1);
      reference_ = s_.norms[largestNorm(j + 1, columns)];
    }
    progress.step();
  }
  progress.finish();
}

void Factorisation::pivotColumn(int p, int j) {
  passesOverZeros_ = passesOverZeros_ && !isTinyColumn(p, j);
  if (passesOverZeros_ && isSparseColumn(p, j)) {
    reflectColumnsAfter(p, j, listColumn(p, j));
  } else {
    reflectColumnsAfter(p, j, copyColumn(p, j));
  }
}

// As for rows.
bool Factorisation::isTinyColumn(int p, int j) const {
  if (s_.skip >= kSmallestPivot) return false;
  const auto largest = reflectionKernels().largestMagnitude;
  const double* x = s_.column(j);
  return std::max(largest(x, s_.firstPivotRow()), largest(x + p, s_.leastSquaresRows() - p)) <
         kSmallestPivot;
}

// Whether so few of the active entries of column j are not 0 that a list of them pays.
bool Factorisation::isSparseColumn(int p, int j) const {
  const double* x = s_.column(j);
  const auto countNonZero = [x](int first, int end) {
    int count = 0;
    for (int i = first; i < end; ++i) count += x[i] != 0;
    return count;
  };
  const int active = s_.firstPivotRow() + s_.leastSquaresRows() - p;
  const int count = countNonZero(0, s_.firstPivotRow()) + countNonZero(p, s_.leastSquaresRows());
  return count * kListedPart < active;
}

// The entries of column j in the active rows that are not 0, and the pivot's.
Entries<ListedPlaces> Factorisation::listColumn(int p, int j) {
  const double* x = s_.column(j);
  std::ptrdiff_t count = 0;
  const auto list = [&](int first, int end) {
    for (int i = first; i < end; ++i) {
      work_.values[count] = x[i];
      work_.places[count] = i;
      count += x[i] != 0 || i == p;
    }
  };
  list(0, s_.firstPivotRow());
  const std::ptrdiff_t pivot = count;
  list(p, s_.leastSquaresRows());
  return {{work_.places, count}, pivot};
}

// All entries of column j in the active rows.
Entries<RunsOfPlaces> Factorisation::copyColumn(int p, int j) {
  const double* x = s_.column(j);
  const int head = s_.firstPivotRow();
  double* rest = std::copy(x, x + head, work_.values);
  double* end = std::copy(x + p, x + s_.leastSquaresRows(), rest);
  return {{head, p - head, end - work_.values}, head};
}

// Columns j + 1 and up, those of the constraints included.
template <class Places>
void Factorisation::reflectColumnsAfter(int p, int j, const Entries<Places>& entries) {
  if (!form(p, j, entries)) return;
  reflect(entries.at, {work_.values, s_.beta[p], s_.skip},
          {s_.column(j) + s_.rows, s_.rows, s_.cols - j - 1});
}

// Columns first and up, over the rows that cannot be met and those from `secondRun` on.
void Factorisation::sumColumnSquares(int first, int secondRun) {
  for (int j = first; j < s_.freeColumns(); ++j) {
    const double* x = s_.column(j);
    double sum = 0;
    for (int i = 0; i < s_.firstPivotRow(); ++i) sum += square(x[i]);
    for (int i = secondRun; i < s_.leastSquaresRows(); ++i) sum += square(x[i]);
    s_.norms[j] = sum;
  }
}

// The constraint rows keep their entries: the unknowns they see stay in the caller's order.
void Factorisation::swapColumns(int a, int b) {
  if (a == b) return;
  std::swap_ranges(s_.column(a), s_.column(a) + s_.leastSquaresRows(), s_.column(b));
  std::swap(s_.norms[a], s_.norms[b]);
  std::swap(s_.colPerm[a], s_.colPerm[b]);
}

// ---- Both phases --------------------------------------------------------------------------------

// Forms the reflection of pivot (p, j) from its entries. @return whether it is applied.
template <class Places>
bool Factorisation::form(int p, int j, const Entries<Places>& entries) {
  const Pivot pivot = formReflection(work_.values, entries.at.count, entries.pivot, s_.skip);
  s_.sigma[p] = pivot.sigma;
  s_.beta[p] = pivot.beta;
  if (pivot.isApplied) s_.at(p, j) = work_.values[entries.pivot];
  return pivot.isApplied;
}

// The first of the largest; a NaN in the first place stays.
int Factorisation::largestNorm(int first, int end) const {
  int best = first;
  for (int i = first + 1; i < end; ++i) {
    if (s_.norms[i] > s_.norms[best]) best = i;
  }
  return best;
}

void Factorisation::startNorms(int first, int end) {
  reference_ = s_.norms[largestNorm(first, end)];
  if (!hasNorm_ || reference_ > largestSquare_) largestSquare_ = reference_;
  hasNorm_ = true;
}

bool Factorisation::haveNormsFaded(int first, int end) const {
  return first < end && s_.norms[largestNorm(first, end)] * kNormLoss < reference_;
}

// Sets what is negligible to 0. A pivot that is not a number determines nothing either.
bool Factorisation::isOfFullRank() {
  const double limit = kRankTolerance * largestSquare_;
  bool isFull = true;
  for (int p = s_.firstPivotRow(); p < s_.rows; ++p) {
    double& sigma = s_.sigma[p];
    if (sigma == 0 || std::abs(sigma) < limit) sigma = 0;
    isFull &= sigma != 0 && !std::isnan(sigma);
  }
  return isFull;
}

}  // namespace

bool factorHouseholder(const HouseholderSystem& system, const HouseholderWorkspace& work,
                       TsolverReporter& reporter) {
  return Factorisation(system, work, reporter).run();
}

}  // namespace knotwork::detail
