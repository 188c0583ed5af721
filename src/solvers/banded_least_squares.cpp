// SPDX-License-Identifier: MIT
// The codes and reports around a banded system: arguments are looked at here, and what the system
// throws becomes a code. The method is the system's.
#include "knotwork/solvers/banded_least_squares.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/banded_system.h"
#include "solvers/lsq_values.h"

namespace knotwork {
namespace {

// What the operation on the system returns, or the code of memory that ran out. The system is made
// when it is first needed.
template <class Operation>
int onSystem(std::unique_ptr<detail::BandedSystem>& system, int unknowns, int order, int dimension,
             int spans, Operation operation) {
  if (spans == 0) return kBadArgument;
  try {
    if (!system) {
      system = std::make_unique<detail::BandedSystem>(unknowns, order, dimension, spans);
    }
    return operation(*system);
  } catch (const std::bad_alloc&) {
    return kNotSolvable;
  }
}

}  // namespace

BandedLeastSquares::BandedLeastSquares(int unknowns, int order, int dimension, bool periodic)
    : BandedLeastSquares(detail::silentReporter(), unknowns, order, dimension, periodic) {}

BandedLeastSquares::BandedLeastSquares(TsolverReporter& reporter, int unknowns, int order,
                                       int dimension, bool periodic)
    : reporter_(&reporter),
      unknowns_(unknowns),
      order_(order),
      dimension_(dimension),
      spans_(order < 1 || dimension < 1 || unknowns < order ? 0
             : periodic                                     ? unknowns
                                                            : unknowns - order + 1) {}

BandedLeastSquares::~BandedLeastSquares() = default;

void BandedLeastSquares::clear() { system_.reset(); }

int BandedLeastSquares::prescribe(int unknown, const DoubleVec& value) {
  const auto operation = [&](detail::BandedSystem& system) -> int {
    if (rows() > 0 || constraints() > 0 || unknown < 0 || unknown >= unknowns_ ||
        static_cast<int>(value.length()) != dimension_ || !detail::allFinite(value)) {
      return kBadArgument;
    }
    system.prescribe(unknown, detail::toStd(value).data());
    return kSolved;
  };
  return onSystem(system_, unknowns_, order_, dimension_, spans_, operation);
}

int BandedLeastSquares::addRows(std::size_t count, const int* first, const double* values,
                                const double* rhs) {
  const auto operation = [&](detail::BandedSystem& system) -> int {
    const bool areSpans =
        std::all_of(first, first + count, [&](int f) { return f >= 0 && f < spans_; });
    if (!areSpans || !detail::allFinite(count * static_cast<std::size_t>(order_), values) ||
        !detail::allFinite(count * static_cast<std::size_t>(dimension_), rhs)) {
      return kBadArgument;
    }
    system.addRows(count, first, values, rhs, threads_);
    return kSolved;
  };
  const int code = onSystem(system_, unknowns_, order_, dimension_, spans_, operation);
  if (code == kNotSolvable) clear();
  return code;
}

int BandedLeastSquares::addRow(int first, const DoubleVec& values, const DoubleVec& rhs) {
  if (static_cast<int>(values.length()) != order_ || static_cast<int>(rhs.length()) != dimension_) {
    return kBadArgument;
  }
  const DoubleVec entries = values.copy(), side = rhs.copy();
  if (entries.length() != values.length() || side.length() != rhs.length()) return kNotSolvable;
  return addRows(1, &first, entries.data(), side.data());
}

int BandedLeastSquares::addConstraint(const IntVec& columns, const DoubleVec& values,
                                      const DoubleVec& rhs) {
  const auto operation = [&](detail::BandedSystem& system) -> int {
    const auto row = detail::constraintRow(columns, values, rhs, unknowns_, dimension_);
    if (!row) return kBadArgument;
    system.addConstraint(*row);
    return kSolved;
  };
  return onSystem(system_, unknowns_, order_, dimension_, spans_, operation);
}

int BandedLeastSquares::solve(TtupleVector* x) {
  undetermined_.resize(0);
  conflicting_.resize(0);
  if (x == nullptr) return kBadArgument;
  const auto operation = [&](detail::BandedSystem& system) -> int {
    const detail::MemoryWatch memory;
    return detail::give(system.solve(rankTolerance_, *reporter_), memory, dimension_, x,
                        {undetermined_, conflicting_, residualSquares_});
  };
  return onSystem(system_, unknowns_, order_, dimension_, spans_, operation);
}

int BandedLeastSquares::solve(DoubleVec* x) {
  if (x == nullptr || dimension_ != 1) return kBadArgument;
  TtupleVector points;
  const int code = solve(&points);
  DoubleVec values = points.data();
  if (code == kSolved) detail::give(values, x);
  return code;
}

const IntVec& BandedLeastSquares::undetermined() const { return undetermined_; }
const IntVec& BandedLeastSquares::conflicting() const { return conflicting_; }
const DoubleVec& BandedLeastSquares::residualSquares() const { return residualSquares_; }
std::size_t BandedLeastSquares::rows() const { return system_ ? system_->rowCount() : 0; }
int BandedLeastSquares::constraints() const { return system_ ? system_->constraintCount() : 0; }
int BandedLeastSquares::unknowns() const { return unknowns_; }
double& BandedLeastSquares::rankTolerance() { return rankTolerance_; }
int& BandedLeastSquares::threads() { return threads_; }

}  // namespace knotwork
