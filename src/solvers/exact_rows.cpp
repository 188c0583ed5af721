// SPDX-License-Identifier: MIT
// Prescribed unknowns are taken out of every row as it comes: sides <- sides - a_j x_j. The
// constraints that remain are met beside the triangle that the other rows have become, one
// component after the other, and then refined once, since their elimination goes through the
// triangle, whose condition is that of the data.
#include "solvers/exact_rows.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "solvers/at.h"

namespace knotwork::detail {
ExactRows::ExactRows(int unknowns, int dimension)
    : dimension_(dimension), roles_(unknowns), prescribed_(at(unknowns) * at(dimension)) {}

void ExactRows::prescribe(int unknown, const double* value) {
  std::copy(value, value + dimension_, prescribed_.data() + at(unknown) * at(dimension_));
  roles_.prescribe(unknown);
  anyPrescribed_ = true;
}

void ExactRows::takeOut(int unknown, double& entry, double* sides) const {
  const double* const known = prescribed_.data() + at(unknown) * at(dimension_);
  for (int c = 0; c < dimension_; ++c) sides[c] -= entry * known[c];
  entry = 0;
}

void ExactRows::addConstraint(const ConstraintRow& row) {
  ConstraintRow kept;
  kept.rhs = row.rhs;
  for (std::size_t t = 0; t < row.columns.size(); ++t) {
    double entry = row.values[t];
    if (isPrescribed(row.columns[t])) {
      takeOut(row.columns[t], entry, kept.rhs.data());
    } else {
      kept.columns.push_back(row.columns[t]);
      kept.values.push_back(entry);
    }
  }
  constraints_.push_back(std::move(kept));
}

// 2^(exponent of the longest column - exponent of the largest entry), within the range of numbers:
// a power of 2, so that the weighted row has the digits of the constraint.
double ExactRows::weightAsRow(const ConstraintRow& row, const std::vector<double>& lengths) {
  double length = 0, largest = 0;
  for (std::size_t t = 0; t < row.columns.size(); ++t) {
    length = std::max(length, lengths[at(row.columns[t])]);
    largest = std::max(largest, std::abs(row.values[t]));
  }
  if (largest == 0) return 0;
  return std::ldexp(1.0, std::clamp(std::ilogb(length) - std::ilogb(largest), -1000, 1000));
}

LsqSolution ExactRows::solve(const Triangle& triangle, const ColumnRoles& roles, double tolerance,
                             const std::vector<int>& open,
                             const std::vector<double>& squares) const {
  LsqSolution solution;
  const TriangleConstraints constraints(triangle, roles, constraints_, tolerance);
  std::vector<int>& undetermined = solution.undetermined;
  undetermined = open;
  undetermined.insert(undetermined.end(), constraints.undetermined().begin(),
                      constraints.undetermined().end());
  std::sort(undetermined.begin(), undetermined.end());
  solution.squares = squares;
  if (undetermined.empty()) solveComponents(constraints, solution);
  return solution;
}

void ExactRows::solveComponents(const TriangleConstraints& constraints,
                                LsqSolution& solution) const {
  solution.x = prescribed_;
  std::vector<double> d(constraints_.size());
  for (int c = 0; c < dimension_; ++c) {
    for (std::size_t k = 0; k < d.size(); ++k) d[k] = constraints_[k].rhs[at(c)];
    TriangleConstraints::Solution part = constraints.solve(c, d);
    solution.squares[at(c)] += part.squares;
    solution.conflicting.insert(solution.conflicting.end(), part.conflicting.begin(),
                                part.conflicting.end());
    if (!part.conflicting.empty()) continue;
    correct(constraints, c, part.x);
    for (int j = 0; j < roles_.columns(); ++j) {
      if (!isPrescribed(j)) solution.x[at(j) * at(dimension_) + at(c)] = part.x[at(j)];
    }
  }
  auto& conflicting = solution.conflicting;
  std::sort(conflicting.begin(), conflicting.end());
  conflicting.erase(std::unique(conflicting.begin(), conflicting.end()), conflicting.end());
}

// One step of iterative refinement of the constraints: what they miss is solved for once more.
void ExactRows::correct(const TriangleConstraints& constraints, int component,
                        std::vector<double>& x) const {
  if (constraints_.empty()) return;
  std::vector<double> missed;
  missed.reserve(constraints_.size());
  for (const ConstraintRow& row : constraints_) {
    double sum = row.rhs[at(component)];
    for (std::size_t t = 0; t < row.columns.size(); ++t)
      sum -= row.values[t] * x[at(row.columns[t])];
    missed.push_back(sum);
  }
  const TriangleConstraints::Solution step = constraints.correct(missed);
  for (std::size_t j = 0; j < x.size(); ++j) x[j] += step.x[j];
}

}  // namespace knotwork::detail
