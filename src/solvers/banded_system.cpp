// SPDX-License-Identifier: MIT
// The stages of a banded least-squares fit: rows into the triangles of their spans, triangles into
// the band, constraints and border, back substitution.
//
// A span's triangle keeps all that its rows tell, so each is rotated into the band once per
// solution, whatever the number of rows. Columns that the band cannot hold go to a border of full
// columns: those across the seam of a periodic system, from the start, and those that only wide
// constraints determine, once a first reduction has found no pivot for them.
//
// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 27; ch. 20 for
// the constraints.
#include "solvers/banded_system.h"

#include <algorithm>
#include <cmath>

#include "solvers/at.h"
#include "solvers/balanced_spans.h"
#include "solvers/progress_meter.h"
#include "solvers/rotation.h"

namespace knotwork::detail {
namespace {

// Columns that only constraints over many columns determine move to the border, whose columns are
// full: more than these would not be a banded system any more.
constexpr std::size_t kMostOpenColumns = 64;

}  // namespace

BandedSystem::BandedSystem(int unknowns, int order, int dimension, int spans)
    : unknowns_(unknowns),
      order_(order),
      dimension_(dimension),
      exact_(unknowns, dimension),
      spans_(spans, order, dimension) {}

int BandedSystem::columnOf(int span, int j) const {
  return span + j < unknowns_ ? span + j : span + j - unknowns_;
}

// Rows

void BandedSystem::addRows(std::size_t count, const int* first, const double* values,
                           const double* rhs, int threads) {
  onBalancedSpans(count, first, spans(), threads, [&](int firstSpan, int lastSpan) {
    addSpans(firstSpan, lastSpan, count, first, values, rhs);
  });
  rowCount_ += count;
}

// The rows of the spans from firstSpan to before lastSpan, in the order given.
void BandedSystem::addSpans(int firstSpan, int lastSpan, std::size_t count, const int* first,
                            const double* values, const double* rhs) {
  std::vector<double> row(at(spans_.width()));
  for (std::size_t i = 0; i < count; ++i) {
    const int span = first[i];
    if (span < firstSpan || span >= lastSpan) continue;
    const double* const entries = values + i * at(order_);
    const double* const side = rhs + i * at(dimension_);
    std::copy(entries, entries + order_, row.begin());
    std::copy(side, side + dimension_, row.begin() + order_);
    for (int j = 0; exact_.anyPrescribed() && j < order_; ++j) {
      const int column = columnOf(span, j);
      if (exact_.isPrescribed(column)) exact_.takeOut(column, row[at(j)], row.data() + order_);
    }
    spans_.add(span, row.data());
  }
}

// Constraints

// The span whose columns hold all of the row's; -1 if there is none.
int BandedSystem::spanOf(const ConstraintRow& row) const {
  for (const int column : row.columns) {
    const int span = isPeriodic() ? column : std::min(column, spans() - 1);
    const bool holdsAll = std::all_of(row.columns.begin(), row.columns.end(), [&](int other) {
      const int distance = other - span;
      return (distance < 0 ? distance + unknowns_ : distance) < order_;
    });
    if (holdsAll) return span;
  }
  return -1;
}

bool BandedSystem::hasWideConstraint() const {
  return std::any_of(exact_.constraints().begin(), exact_.constraints().end(),
                     [&](const ConstraintRow& row) { return spanOf(row) < 0; });
}

// Reduction to the band

// |A_j| = |(R_span)_j over all spans|: rotations keep the lengths of columns.
std::vector<double> BandedSystem::columnLengths() const {
  std::vector<double> lengths(at(unknowns_));
  for (int span = 0; span < spans(); ++span) {
    for (int i = 0; i < order_; ++i) {
      const double* const row = spans_.row(span, i);
      for (int j = i; j < order_; ++j) {
        double& length = lengths[at(columnOf(span, j))];
        if (row[j] != 0) length = rotationOf(length, row[j]).length;
      }
    }
  }
  return lengths;
}

// One row of a span's width, spread over the band and the border.
void BandedSystem::addRow(int span, const double* row, const ColumnRoles& roles,
                          std::vector<double>& spread, BandTriangle& triangle) const {
  spread.assign(at(triangle.width()), 0.0);
  const int start = span + order_ > unknowns_ ? 0 : span;
  for (int j = 0; j < order_; ++j) {
    const int column = columnOf(span, j), b = roles.borderIndex(column);
    if (roles.isInBand(column)) {
      spread[at(column - start)] = row[j];
    } else if (b >= 0) {
      spread[at(order_ + b)] = row[j];
    }
  }
  std::copy(row + order_, row + order_ + dimension_,
            spread.begin() + (triangle.width() - dimension_));
  triangle.add(start, spread.data());
}

// A constraint that fits a span also counts as a least-squares row.
void BandedSystem::addAsRow(const ConstraintRow& constraint, int span,
                            const std::vector<double>& lengths, const ColumnRoles& roles,
                            std::vector<double>& spread, BandTriangle& triangle) const {
  const double weight = ExactRows::weightAsRow(constraint, lengths);
  if (weight == 0) return;
  std::vector<double> row(at(spans_.width()));
  for (std::size_t t = 0; t < constraint.columns.size(); ++t) {
    const int distance = constraint.columns[t] - span;
    row[at(distance < 0 ? distance + unknowns_ : distance)] = weight * constraint.values[t];
  }
  for (int c = 0; c < dimension_; ++c) row[at(order_ + c)] = weight * constraint.rhs[at(c)];
  addRow(span, row.data(), roles, spread, triangle);
}

std::unique_ptr<BandTriangle> BandedSystem::reduce(const ColumnRoles& roles,
                                                   const std::vector<double>& lengths,
                                                   double tolerance,
                                                   TsolverReporter& reporter) const {
  auto triangle = std::make_unique<BandTriangle>(roles, order_, dimension_, lengths, tolerance);
  std::vector<std::vector<std::size_t>> local(at(spans()));
  for (std::size_t k = 0; k < exact_.constraints().size(); ++k) {
    const int span = spanOf(exact_.constraints()[k]);
    if (span >= 0) local[at(span)].push_back(k);
  }
  std::vector<double> spread;
  ProgressMeter progress(reporter, spans(), spans());
  const int straight = unknowns_ - order_ + 1;  // spans that do not cross the seam come last
  for (int i = 0; i < spans(); ++i) {
    const int span = i < spans() - straight ? straight + i : i - (spans() - straight);
    for (int r = 0; r < order_; ++r) {
      const double* const row = spans_.row(span, r);
      if (row[r] != 0) addRow(span, row, roles, spread, *triangle);
    }
    for (const std::size_t k : local[at(span)]) {
      addAsRow(exact_.constraints()[k], span, lengths, roles, spread, *triangle);
    }
    progress.step();
  }
  progress.finish();
  return triangle;
}

// Solution

LsqSolution BandedSystem::solve(double tolerance, TsolverReporter& reporter) const {
  ColumnRoles roles = exact_.roles();
  // Rows across the seam of a periodic system reach from the last columns to the first ones.
  for (int j = unknowns_ - order_ + 1; isPeriodic() && j < unknowns_; ++j) {
    if (roles.isInBand(j)) roles.moveToBorder(j);
  }
  std::vector<double> lengths = columnLengths();
  // Columns without data get the size that addAsRow gives their constraints.
  for (double& length : lengths) length = length > 0 ? length : 1;
  std::unique_ptr<BandTriangle> triangle;
  std::vector<int> open;
  const bool hasWide = hasWideConstraint();
  for (;;) {
    triangle = reduce(roles, lengths, tolerance, reporter);
    open.clear();
    for (int j = 0; j < unknowns_; ++j) {
      if (roles.isInBand(j) && !triangle->hasPivot(j)) open.push_back(j);
    }
    if (open.empty() || !hasWide || open.size() > kMostOpenColumns) break;
    for (const int column : open) roles.moveToBorder(column);
  }
  return exact_.solve(*triangle, roles, tolerance, open, residuals(*triangle));
}

std::vector<double> BandedSystem::residuals(const BandTriangle& triangle) const {
  std::vector<double> squares = triangle.residuals();
  for (int span = 0; span < spans(); ++span) {
    for (int c = 0; c < dimension_; ++c) squares[at(c)] += spans_.residuals(span)[c];
  }
  return squares;
}

}  // namespace knotwork::detail
