// SPDX-License-Identifier: MIT
#include "solvers/lsq_values.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "knotwork/solvers/solve_codes.h"

namespace knotwork::detail {
namespace {

// The vectors of the library are empty where memory ran out.
template <class Vec, class Element>
Vec toVec(const std::vector<Element>& values) {
  Vec copy(static_cast<unsigned>(values.size()), Element{});
  if (copy.length() != values.size()) throw std::bad_alloc();
  std::copy(values.begin(), values.end(), copy.data());
  return copy;
}

}  // namespace

TsolverReporter& silentReporter() {
  static TsolverReporter reporter(true);
  return reporter;
}

bool allFinite(std::size_t count, const double* values) {
  return std::all_of(values, values + count, [](double x) { return std::isfinite(x); });
}

bool allFinite(const DoubleVec& values) {
  for (int i = 0; i < static_cast<int>(values.length()); ++i) {
    if (!std::isfinite(values(i))) return false;
  }
  return true;
}

std::vector<double> toStd(const DoubleVec& values) {
  std::vector<double> copy;
  copy.reserve(values.length());
  for (int i = 0; i < static_cast<int>(values.length()); ++i) copy.push_back(values(i));
  return copy;
}

std::optional<ConstraintRow> constraintRow(const IntVec& columns, const DoubleVec& values,
                                           const DoubleVec& rhs, int unknowns, int dimension) {
  if (columns.length() != values.length() || static_cast<int>(rhs.length()) != dimension ||
      !allFinite(values) || !allFinite(rhs)) {
    return {};
  }
  ConstraintRow row;
  for (int i = 0; i < static_cast<int>(columns.length()); ++i) {
    if (columns(i) < 0 || columns(i) >= unknowns) return {};
    if (values(i) == 0) continue;
    row.columns.push_back(columns(i));
    row.values.push_back(values(i));
  }
  std::vector<int> sorted = row.columns;
  std::sort(sorted.begin(), sorted.end());
  const bool isRepeated = std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
  if (isRepeated || sorted.empty()) return {};
  row.rhs = toStd(rhs);
  return row;
}

int give(const LsqSolution& solution, const MemoryWatch& memory, int dimension, TtupleVector* x,
         const LsqOutcome& outcome) {
  IntVec undetermined = toVec<IntVec>(solution.undetermined);
  IntVec conflicting = toVec<IntVec>(solution.conflicting);
  DoubleVec values = toVec<DoubleVec>(solution.x), squares = toVec<DoubleVec>(solution.squares);
  TtupleVector points(dimension, values);
  if (memory.ranOut()) return kNotSolvable;
  outcome.undetermined.reference(undetermined);
  outcome.conflicting.reference(conflicting);
  const bool isUnique = solution.undetermined.empty() && solution.conflicting.empty();
  if (!isUnique || !allFinite(solution.x.size(), solution.x.data())) return kDependent;
  outcome.squares.reference(squares);
  give(points, x);
  return kSolved;
}

}  // namespace knotwork::detail
