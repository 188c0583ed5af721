// SPDX-License-Identifier: MIT
// The two phases of the Householder solver's factorisation.
//
// Exact zeros are not multiplied where that changes no bit: adding a product with 0 leaves a sum
// that started at +0 and a finite x other than -0 as they are. So zeros are passed over as long as
// the system holds neither -0 nor a magnitude above 1e100, of which reflections, keeping lengths,
// could make one that is not finite, and until a pivot below 1e-150 brings factors that could.
#include <algorithm>
#include <bit>
#include <cstdint>

#include "knotwork/solvers/solver_reporter.h"
#include "solvers/householder_system.h"
#include "solvers/progress_meter.h"
#include "solvers/reflection.h"

namespace knotwork::detail {
namespace {

constexpr double kRankTolerance = 1e-13;
constexpr double kLargestForSkipping = 1e100;
constexpr double kSmallestPivotForSkipping = 1e-150;
constexpr double kNormLoss = 100;  // norms are computed anew once they have shrunk by this factor
constexpr int kListedPart = 3;     // one entry in so many may be non-zero for a list to pay

bool mayPassOverZeros(const double* a, std::ptrdiff_t count) {
  constexpr auto kNegativeZero = std::bit_cast<std::uint64_t>(-0.0);
  bool may = true;
  for (std::ptrdiff_t t = 0; t < count; ++t) {
    may &= std::abs(a[t]) <= kLargestForSkipping;
    may &= std::bit_cast<std::uint64_t>(a[t]) != kNegativeZero;
  }
  return may;
}

double square(double x) { return x * x; }

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
    return countNegligible() == 0;
  }

 private:
  void reflectConstraints(int first);
  void reflectFreeColumns();
  void pivotRow(int p, int q);
  void pivotColumn(int p, int j);
  template <class Places>
  void reflectColumnsAfter(int p, int j, const Places& at, std::ptrdiff_t pivotPlace);
  void reflectRows(int p, const Pivot& pivot, const ListedPlaces& columns);
  ListedPlaces listRow(int p, int q);
  ListedPlaces listColumn(int p, int j);
  RunsOfPlaces copyColumn(int p, int j);
  void sumRowSquares(int first, int last, int columns);
  void sumColumnSquares(int first, int secondRun);
  void swapRows(int a, int b);
  void swapColumns(int a, int b);
  bool isTiny(const ListedPlaces& listed) const;
  int largestNorm(int first, int end) const;
  void startNorms(int first, int end);
  bool haveNormsFaded(int first, int end) const;
  int countNegligible();

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
  ListedPlaces columns = listRow(p, q);
  if (passesOverZeros_ && isTiny(columns)) {
    passesOverZeros_ = false;
    columns = listRow(p, q);
  }
  const Pivot pivot = formReflection(work_.values, columns.count, columns.count - 1, s_.skip);
  s_.sigma[p] = pivot.sigma;
  s_.beta[p] = pivot.beta;
  if (!pivot.isApplied) return;
  s_.at(p, q) = work_.values[columns.count - 1];
  reflectRows(p, pivot, columns);
}

// The entries of row p in columns 0 .. q; that in column q stands last, even if it is 0.
ListedPlaces Factorisation::listRow(int p, int q) {
  std::ptrdiff_t count = 0;
  for (int j = 0; j <= q; ++j) {
    work_.values[count] = s_.at(p, j);
    work_.places[count] = j;
    if (j == q || !passesOverZeros_ || work_.values[count] != 0) ++count;
  }
  return {work_.places, count};
}

// Rows 0 .. p - 1, all of them at once and column by column.
void Factorisation::reflectRows(int p, const Pivot& pivot, const ListedPlaces& columns) {
  double* products = work_.products;
  std::fill(products, products + p, 0.0);
  columns.each([&](std::ptrdiff_t t, std::ptrdiff_t j) {
    const double* x = s_.column(static_cast<int>(j));
    const double v = work_.values[t];
    for (int i = 0; i < p; ++i) products[i] += x[i] * v;
  });
  int reflected = 0;
  for (int i = 0; i < p; ++i) {
    if (!(std::abs(products[i]) > s_.skip)) continue;
    products[reflected] = products[i] * pivot.beta;
    work_.rows[reflected++] = i;
  }
  columns.each([&](std::ptrdiff_t t, std::ptrdiff_t j) {
    double* x = s_.column(static_cast<int>(j));
    const double v = work_.values[t];
    for (int k = 0; k < reflected; ++k) x[work_.rows[k]] += products[k] * v;
  });
}

void Factorisation::sumRowSquares(int first, int last, int columns) {
  std::fill(s_.norms + first, s_.norms + last, 0.0);
  for (int j = 0; j < columns; ++j) {
    const double* x = s_.column(j);
    for (int i = first; i < last; ++i) s_.norms[i] += square(x[i]);
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
  if (passesOverZeros_) {
    const ListedPlaces listed = listColumn(p, j);
    passesOverZeros_ = !isTiny(listed);
    const int active = s_.firstPivotRow() + s_.leastSquaresRows() - p;
    if (passesOverZeros_ && listed.count * kListedPart < active) {
      const int* place = std::find(listed.places, listed.places + listed.count, p);
      return reflectColumnsAfter(p, j, listed, place - listed.places);
    }
  }
  reflectColumnsAfter(p, j, copyColumn(p, j), s_.firstPivotRow());
}

// Columns j + 1 and up, those of the constraints included, by the entries that stand in the
// workspace, that of row p in place `pivotPlace`.
template <class Places>
void Factorisation::reflectColumnsAfter(int p, int j, const Places& at, std::ptrdiff_t pivotPlace) {
  const Pivot pivot = formReflection(work_.values, at.count, pivotPlace, s_.skip);
  s_.sigma[p] = pivot.sigma;
  s_.beta[p] = pivot.beta;
  if (!pivot.isApplied) return;
  s_.at(p, j) = work_.values[pivotPlace];
  reflectColumns(at, work_.values, pivot, s_.skip, s_.column(j) + s_.rows, s_.rows,
                 s_.cols - j - 1);
}

// The entries of column j in the active rows that are not 0, and that in row p.
ListedPlaces Factorisation::listColumn(int p, int j) {
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
  list(p, s_.leastSquaresRows());
  return {work_.places, count};
}

// All entries of column j in the active rows.
RunsOfPlaces Factorisation::copyColumn(int p, int j) {
  const double* x = s_.column(j);
  const int head = s_.firstPivotRow();
  double* rest = std::copy(x, x + head, work_.values);
  double* end = std::copy(x + p, x + s_.leastSquaresRows(), rest);
  return {head, p - head, end - work_.values};
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

// Whether the listed entries form a pivot whose factors may overflow.
bool Factorisation::isTiny(const ListedPlaces& listed) const {
  if (s_.skip >= kSmallestPivotForSkipping) return false;
  return largestMagnitude(work_.values, listed.count) < kSmallestPivotForSkipping;
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

int Factorisation::countNegligible() {
  const double limit = kRankTolerance * largestSquare_;
  int count = 0;
  for (int p = s_.firstPivotRow(); p < s_.rows; ++p) {
    if (s_.sigma[p] != 0 && !(std::abs(s_.sigma[p]) < limit)) continue;
    s_.sigma[p] = 0;
    ++count;
  }
  return count;
}

}  // namespace

bool factorHouseholder(const HouseholderSystem& system, const HouseholderWorkspace& work,
                       TsolverReporter& reporter) {
  return Factorisation(system, work, reporter).run();
}

}  // namespace knotwork::detail
