// SPDX-License-Identifier: MIT
// The stages of a banded least-squares fit: rows into the triangles of their spans, triangles into
// the band, constraints and border, back substitution.
#include "solvers/banded_system.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <system_error>
#include <thread>

#include "solvers/progress_meter.h"
#include "solvers/rotation.h"

namespace knotwork::detail {
namespace {

// Columns that only constraints over many columns determine move to the border, whose columns are
// full: more than these would not be a banded system any more.
constexpr std::size_t kMostOpenColumns = 64;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

}  // namespace

BandedSystem::BandedSystem(int unknowns, int order, int dimension, int spans)
    : unknowns_(unknowns),
      order_(order),
      dimension_(dimension),
      roles_(unknowns),
      prescribed_(at(unknowns) * at(dimension)),
      spans_(spans, order, dimension) {}

int BandedSystem::columnOf(int span, int j) const {
  return span + j < unknowns_ ? span + j : span + j - unknowns_;
}

void BandedSystem::prescribe(int unknown, const double* value) {
  std::copy(value, value + dimension_, prescribed_.data() + at(unknown) * at(dimension_));
  roles_.prescribe(unknown);
}

// Rows

void BandedSystem::addRows(std::size_t count, const int* first, const double* values,
                           const double* rhs, int threads) {
  const std::vector<int> bounds = balancedSpans(count, first, std::max(threads, 1));
  std::vector<std::exception_ptr> failures(bounds.size());
  {
    const auto run = [&](std::size_t part) noexcept {
      try {
        addSpans(bounds[part - 1], bounds[part], count, first, values, rhs);
      } catch (...) {
        failures[part] = std::current_exception();
      }
    };
    std::vector<std::jthread> workers;
    workers.reserve(bounds.size());
    for (std::size_t part = 2; part < bounds.size(); ++part) {
      try {
        workers.emplace_back(run, part);
      } catch (const std::system_error&) {  // as many threads as the system gives
        run(part);
      }
    }
    run(1);
  }
  for (const std::exception_ptr& failure : failures) {
    if (failure) std::rethrow_exception(failure);
  }
  rowCount_ += count;
}

// Bounds of at most `parts` ranges of spans with about as many rows each.
std::vector<int> BandedSystem::balancedSpans(std::size_t count, const int* first, int parts) const {
  std::vector<int> bounds = {0};
  if (parts > 1) {
    std::vector<std::size_t> rows(at(spans()));
    for (std::size_t i = 0; i < count; ++i) ++rows[at(first[i])];
    std::size_t sum = 0;
    for (int span = 0; span + 1 < spans(); ++span) {
      sum += rows[at(span)];
      if (sum * at(parts) >= count * bounds.size()) bounds.push_back(span + 1);
    }
  }
  bounds.push_back(spans());
  return bounds;
}

// The rows of the spans from firstSpan to before lastSpan, in the order given.
void BandedSystem::addSpans(int firstSpan, int lastSpan, std::size_t count, const int* first,
                            const double* values, const double* rhs) {
  std::vector<double> row(at(spans_.width()));
  const bool anyPrescribed = [&] {
    for (int j = 0; j < unknowns_; ++j) {
      if (roles_.isPrescribed(j)) return true;
    }
    return false;
  }();
  for (std::size_t i = 0; i < count; ++i) {
    const int span = first[i];
    if (span < firstSpan || span >= lastSpan) continue;
    const double* const entries = values + i * at(order_);
    const double* const side = rhs + i * at(dimension_);
    std::copy(entries, entries + order_, row.begin());
    std::copy(side, side + dimension_, row.begin() + order_);
    for (int j = 0; anyPrescribed && j < order_; ++j) {
      const int column = columnOf(span, j);
      if (!roles_.isPrescribed(column)) continue;
      const double* const known = prescribed_.data() + at(column) * at(dimension_);
      for (int c = 0; c < dimension_; ++c) row[at(order_ + c)] -= row[at(j)] * known[c];
      row[at(j)] = 0;
    }
    spans_.add(span, row.data());
  }
}

// Constraints

void BandedSystem::addConstraint(const ConstraintRow& row) {
  ConstraintRow kept;
  kept.rhs = row.rhs;
  for (std::size_t t = 0; t < row.columns.size(); ++t) {
    const int column = row.columns[t];
    if (roles_.isPrescribed(column)) {
      const double* const known = prescribed_.data() + at(column) * at(dimension_);
      for (int c = 0; c < dimension_; ++c) kept.rhs[at(c)] -= row.values[t] * known[c];
    } else {
      kept.columns.push_back(column);
      kept.values.push_back(row.values[t]);
    }
  }
  constraints_.push_back(std::move(kept));
}

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
  return std::any_of(constraints_.begin(), constraints_.end(),
                     [&](const ConstraintRow& row) { return spanOf(row) < 0; });
}

// Reduction to the band

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

// A constraint that fits a span also counts as a least-squares row, of the columns' own size: its
// residual will be 0, so the minimum stays, and what it determines needs no other rows.
void BandedSystem::addAsRow(const ConstraintRow& constraint, int span,
                            const std::vector<double>& lengths, const ColumnRoles& roles,
                            std::vector<double>& spread, BandTriangle& triangle) const {
  double length = 0, largest = 0;
  for (std::size_t t = 0; t < constraint.columns.size(); ++t) {
    length = std::max(length, lengths[at(constraint.columns[t])]);
    largest = std::max(largest, std::abs(constraint.values[t]));
  }
  if (largest == 0) return;
  const int exponent = std::ilogb(length) - std::ilogb(largest);
  const double weight = std::ldexp(1.0, std::clamp(exponent, -1000, 1000));
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
  for (std::size_t k = 0; k < constraints_.size(); ++k) {
    const int span = spanOf(constraints_[k]);
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
      addAsRow(constraints_[k], span, lengths, roles, spread, *triangle);
    }
    progress.step();
  }
  progress.finish();
  return triangle;
}

// Solution

BandedSystem::Solution BandedSystem::solve(double tolerance, TsolverReporter& reporter) const {
  Solution solution;
  ColumnRoles roles = roles_;
  // Rows across the seam of a periodic system reach from the last columns to the first ones.
  for (int j = unknowns_ - order_ + 1; isPeriodic() && j < unknowns_; ++j) {
    if (roles.isInBand(j)) roles.moveToBorder(j);
  }
  std::vector<double> lengths = columnLengths();
  // Columns without data get the size that addAsRow gives their constraints.
  for (double& length : lengths) length = length > 0 ? length : 1;
  std::unique_ptr<BandTriangle> triangle;
  std::vector<int>& open = solution.undetermined;
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
  const BandConstraints constraints(*triangle, roles, constraints_, tolerance);
  open.insert(open.end(), constraints.undetermined().begin(), constraints.undetermined().end());
  std::sort(open.begin(), open.end());
  if (open.empty()) solveComponents(*triangle, constraints, solution);
  return solution;
}

void BandedSystem::solveComponents(const BandTriangle& triangle, const BandConstraints& constraints,
                                   Solution& solution) const {
  solution.x = prescribed_;
  solution.squares = triangle.residuals();
  for (int span = 0; span < spans(); ++span) {
    for (int c = 0; c < dimension_; ++c) solution.squares[at(c)] += spans_.residuals(span)[c];
  }
  std::vector<double> d(constraints_.size());
  for (int c = 0; c < dimension_; ++c) {
    for (std::size_t k = 0; k < d.size(); ++k) d[k] = constraints_[k].rhs[at(c)];
    BandConstraints::Solution part = constraints.solve(c, d);
    solution.squares[at(c)] += part.squares;
    solution.conflicting.insert(solution.conflicting.end(), part.conflicting.begin(),
                                part.conflicting.end());
    if (!part.conflicting.empty()) continue;
    correct(constraints, c, part.x);
    for (int j = 0; j < unknowns_; ++j) {
      if (!roles_.isPrescribed(j)) solution.x[at(j) * at(dimension_) + at(c)] = part.x[at(j)];
    }
  }
  auto& conflicting = solution.conflicting;
  std::sort(conflicting.begin(), conflicting.end());
  conflicting.erase(std::unique(conflicting.begin(), conflicting.end()), conflicting.end());
}

// One step of iterative refinement of the constraints: what they miss is solved for once more.
void BandedSystem::correct(const BandConstraints& constraints, int component,
                           std::vector<double>& x) const {
  if (constraints_.empty()) return;
  std::vector<double> missed;
  for (const ConstraintRow& row : constraints_) {
    double sum = row.rhs[at(component)];
    for (std::size_t t = 0; t < row.columns.size(); ++t)
      sum -= row.values[t] * x[at(row.columns[t])];
    missed.push_back(sum);
  }
  const BandConstraints::Solution step = constraints.correct(missed);
  for (std::size_t j = 0; j < x.size(); ++j) x[j] += step.x[j];
}

}  // namespace knotwork::detail
