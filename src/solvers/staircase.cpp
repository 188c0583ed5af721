// SPDX-License-Identifier: MIT
// Columns are worked off in panels: within one, each reflection is applied as it is formed; what
// stands to the right of a panel takes all of its reflections at once, as products of matrices.
//
// With Q = H_1 ... H_m = I - V T V' the rest A becomes Q'A = A - V T'(V'A). Rows are contiguous
// here, so the products are those of the transposes: with F = A', F - ((F V) T) V'.
//
// Source: R. Schreiber, C. Van Loan, A storage-efficient WY representation for products of
// Householder transformations (1989).
#include "solvers/staircase.h"

#include <algorithm>
#include <cmath>

#include "kernels/kernels.h"
#include "matrix/blocked_product.h"

namespace knotwork::detail {
namespace {

constexpr int kPanel = 24;   // columns: of 16, 24, 32 and 48 the fastest at 20 to 450 columns
constexpr int kBeside = 16;  // fewer columns than these right of a panel go with it

std::size_t at(std::ptrdiff_t i) { return static_cast<std::size_t>(i); }

}  // namespace

void Staircase::begin(int columns, int sides) {
  columns_ = columns;
  width_ = columns + sides;
  rows_.clear();
  leads_.clear();
  residuals_.assign(at(sides), 0.0);
}

double* Staircase::addRow(int lead) {
  leads_.push_back(lead);
  rows_.resize(rows_.size() + at(width_));
  return mutableRow(rows() - 1);
}

void Staircase::reduce(const double* lengths, double tolerance) {
  std::vector<int> pivots;
  int bottom = 0;  // below the last row that begins at or before the column
  for (int first = 0, last; first < columns_; first = last) {
    last = std::min(columns_, first + kPanel);
    const int end = width_ - last < kBeside ? width_ : last;
    int lowest = bottom;
    while (lowest < rows() && lead(lowest) < last) ++lowest;
    panelTop_ = static_cast<int>(pivots.size());
    panelRows_ = lowest - panelTop_;
    v_.clear();
    taus_.clear();
    for (int column = first; column < last; ++column) {
      while (bottom < rows() && lead(bottom) <= column) ++bottom;
      const int top = static_cast<int>(pivots.size());
      if (top == bottom) continue;
      const double negligible = lengths ? tolerance * lengths[column] : 0.0;
      if (reflectColumn(column, top, bottom, end, negligible)) pivots.push_back(column);
    }
    if (end < width_ && !taus_.empty()) applyPanel(last);
  }
  finish(pivots);
}

// Forms the reflection that takes rows top .. bottom - 1 of a column to its first one, and applies
// it to the columns before `end`: with v_top = 1, I - tau v v' takes x to sigma e.
//
// @return false where the column is negligible; it is 0 then.
bool Staircase::reflectColumn(int column, int top, int bottom, int end, double negligible) {
  const auto count = static_cast<std::ptrdiff_t>(bottom - top);
  column_.resize(at(count));
  for (std::ptrdiff_t r = 0; r < count; ++r) column_[at(r)] = row(top)[r * width_ + column];
  double* const v = column_.data();
  const double largest = reflectionKernels().largestMagnitude(v, count);
  const double length = largest > 0 ? reflectionKernels().scaledLength(v, count, largest) : 0.0;
  for (std::ptrdiff_t r = 0; r < count; ++r) mutableRow(top)[r * width_ + column] = 0;
  if (length <= negligible) return false;
  const bool isReflected = std::any_of(v + 1, v + count, [](double x) { return x != 0; });
  mutableRow(top)[column] = !isReflected ? v[0] : v[0] > 0 ? -length : length;
  if (!isReflected) return true;

  const double sigma = row(top)[column], difference = v[0] - sigma;
  taus_.push_back(-difference / sigma);
  v[0] = 1;
  for (std::ptrdiff_t r = 1; r < count; ++r) v[r] /= difference;

  const int from = column + 1, width = end - from;
  products_.assign(at(width), 0.0);
  columnKernels<double>().addColumns(at(width), at(count), row(top) + from, width_, v,
                                     products_.data());
  for (double& product : products_) product *= -taus_.back();
  for (std::ptrdiff_t r = 0; r < count; ++r) {
    double* const x = mutableRow(top) + r * width_ + from;
    const double factor = v[r];
    for (int c = 0; c < width; ++c) x[c] += factor * products_[at(c)];
  }
  if (end < width_) addReflection(top);
  return true;
}

// Takes the reflection just formed into V, whose columns are as high as the panel's rows.
void Staircase::addReflection(int top) {
  const std::size_t start = v_.size();
  v_.resize(start + at(panelRows_));
  std::copy(column_.begin(), column_.end(), v_.data() + start + at(top - panelTop_));
}

// Columns from `first` on take the panel's reflections. T grows column by column:
// t_j = (-tau_j T (V'v_j), tau_j).
void Staircase::applyPanel(int first) {
  const auto m = static_cast<std::ptrdiff_t>(taus_.size()), high = std::ptrdiff_t{panelRows_};
  const std::size_t wide = at(width_ - first);
  t_.assign(at(m * m), 0.0);
  for (std::ptrdiff_t j = 0; j < m; ++j) {
    products_.assign(at(j), 0.0);
    columnKernels<double>().addColumnDots(at(high), at(j), v_.data() + j * high, v_.data(), high,
                                          products_.data());
    for (std::ptrdiff_t i = 0; i < j; ++i) {
      double sum = 0;
      for (std::ptrdiff_t l = i; l < j; ++l) sum += t_[at(i + l * m)] * products_[at(l)];
      t_[at(i + j * m)] = -taus_[at(j)] * sum;
    }
    t_[at(j + j * m)] = taus_[at(j)];
  }
  for (double& element : t_) element = -element;

  double* const rest = mutableRow(panelTop_) + first;
  products_.assign(2 * wide * at(m), 0.0);
  double* const fv = products_.data();
  double* const fvt = fv + wide * at(m);
  const auto step = static_cast<std::ptrdiff_t>(wide);
  blockedProduct<double>(wide, at(m), at(high), {rest, 1, width_}, {v_.data(), 1, high}, fv);
  blockedProduct<double>(wide, at(m), at(m), {fv, 1, step}, {t_.data(), 1, m}, fvt);
  blockedProduct<double>(wide, at(high), at(m), {fvt, 1, step}, {v_.data(), high, 1},
                         Grid<double>{rest, 1, width_});
}

// Rows with a pivot stay; the others have nothing left but their sides.
void Staircase::finish(const std::vector<int>& pivots) {
  for (int i = static_cast<int>(pivots.size()); i < rows(); ++i) {
    for (std::size_t side = 0; side < residuals_.size(); ++side) {
      const double left = row(i)[at(columns_) + side];
      residuals_[side] += left * left;
    }
  }
  leads_ = pivots;
}

}  // namespace knotwork::detail
