// SPDX-License-Identifier: MIT
// The codes and reports around a scattered system.
#include "knotwork/solvers/scattered_least_squares.h"

#include <algorithm>
#include <limits>
#include <new>
#include <vector>

#include "knotwork/solvers/solve_codes.h"
#include "solvers/lsq_values.h"
#include "solvers/scattered_system.h"

namespace knotwork {
namespace {

detail::CellAxis axisOf(const TensorDirection& d) { return {d.unknowns, d.order, d.periodic}; }

// Unknowns, and the entries of a row, are counted by int.
bool areValid(const TensorDirection& u, const TensorDirection& v, int dimension) {
  constexpr int kMost = std::numeric_limits<int>::max();
  constexpr int kMostEntries = 1 << 16;
  for (const TensorDirection* d : {&u, &v}) {
    if (d->order < 1 || d->unknowns < d->order || d->order > kMostEntries) return false;
  }
  return dimension >= 1 && dimension <= kMostEntries && u.unknowns <= kMost / v.unknowns &&
         u.order <= kMostEntries / v.order;
}

bool isCell(const TensorDirection& d, int first) { return first >= 0 && first < axisOf(d).cells(); }

// What the operation returns, or the code of memory that ran out.
template <class Operation>
int coded(Operation operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return kNotSolvable;
  }
}

}  // namespace

ScatteredLeastSquares::ScatteredLeastSquares(const TensorDirection& u, const TensorDirection& v,
                                             int dimension)
    : ScatteredLeastSquares(detail::silentReporter(), u, v, dimension) {}

ScatteredLeastSquares::ScatteredLeastSquares(TsolverReporter& reporter, const TensorDirection& u,
                                             const TensorDirection& v, int dimension)
    : reporter_(&reporter),
      u_(u),
      v_(v),
      dimension_(dimension),
      isValid_(areValid(u, v, dimension)) {}

ScatteredLeastSquares::~ScatteredLeastSquares() = default;

void ScatteredLeastSquares::clear() { system_.reset(); }

// The system is made when it is first needed. Throws std::bad_alloc.
detail::ScatteredSystem& ScatteredLeastSquares::system() {
  if (!system_) {
    system_ = std::make_unique<detail::ScatteredSystem>(axisOf(u_), axisOf(v_), dimension_);
  }
  return *system_;
}

int ScatteredLeastSquares::prescribe(int unknown, const DoubleVec& value) {
  return coded([&]() -> int {
    if (rows() > 0 || constraints() > 0 || unknown < 0 || unknown >= unknowns() ||
        static_cast<int>(value.length()) != dimension_ || !detail::allFinite(value)) {
      return kBadArgument;
    }
    system().prescribe(unknown, detail::toStd(value).data());
    return kSolved;
  });
}

int ScatteredLeastSquares::addRows(std::size_t count, const int* firstU, const int* firstV,
                                   const double* valuesU, const double* valuesV,
                                   const double* rhs) {
  if (!isValid_) return kBadArgument;
  const auto orderU = static_cast<std::size_t>(u_.order),
             orderV = static_cast<std::size_t>(v_.order);
  const auto sides = static_cast<std::size_t>(dimension_);
  if (!detail::allFinite(count * orderU, valuesU) || !detail::allFinite(count * orderV, valuesV) ||
      !detail::allFinite(count * sides, rhs)) {
    return kBadArgument;
  }
  const int code = coded([&]() -> int {
    std::vector<int> cells(count);
    for (std::size_t k = 0; k < count; ++k) {
      if (!isCell(u_, firstU[k]) || !isCell(v_, firstV[k])) return kBadArgument;
      cells[k] = cellOf(firstU[k], firstV[k]);
    }
    system().addRows(
        count, cells.data(),
        [&](std::size_t k, double* row) {
          for (std::size_t a = 0; a < orderU; ++a) {
            const double factor = valuesU[k * orderU + a];
            for (std::size_t b = 0; b < orderV; ++b) *row++ = factor * valuesV[k * orderV + b];
          }
          std::copy_n(rhs + k * sides, sides, row);
        },
        threads_);
    return kSolved;
  });
  if (code == kNotSolvable) clear();
  return code;
}

int ScatteredLeastSquares::addCellRows(int firstU, int firstV, std::size_t count,
                                       const double* values, const double* rhs) {
  if (!isValid_ || !isCell(u_, firstU) || !isCell(v_, firstV)) return kBadArgument;
  const auto order = static_cast<std::size_t>(u_.order) * static_cast<std::size_t>(v_.order);
  const auto sides = static_cast<std::size_t>(dimension_);
  if (!detail::allFinite(count * order, values) || !detail::allFinite(count * sides, rhs)) {
    return kBadArgument;
  }
  const int code = coded([&]() -> int {
    const std::vector<int> cells(count, cellOf(firstU, firstV));
    system().addRows(
        count, cells.data(),
        [&](std::size_t k, double* row) {
          std::copy_n(values + k * order, order, row);
          std::copy_n(rhs + k * sides, sides, row + order);
        },
        1);
    return kSolved;
  });
  if (code == kNotSolvable) clear();
  return code;
}

int ScatteredLeastSquares::addConstraint(const IntVec& columns, const DoubleVec& values,
                                         const DoubleVec& rhs) {
  return coded([&]() -> int {
    const auto row = detail::constraintRow(columns, values, rhs, unknowns(), dimension_);
    if (!row) return kBadArgument;
    system().addConstraint(*row);
    return kSolved;
  });
}

int ScatteredLeastSquares::solve(TtupleVector* x) {
  undetermined_.resize(0);
  conflicting_.resize(0);
  if (x == nullptr || !isValid_) return kBadArgument;
  return coded([&] {
    const detail::MemoryWatch memory;
    return detail::give(system().solve(rankTolerance_, threads_, *reporter_), memory, dimension_, x,
                        {undetermined_, conflicting_, residualSquares_});
  });
}

const IntVec& ScatteredLeastSquares::undetermined() const { return undetermined_; }
const IntVec& ScatteredLeastSquares::conflicting() const { return conflicting_; }
const DoubleVec& ScatteredLeastSquares::residualSquares() const { return residualSquares_; }
std::size_t ScatteredLeastSquares::rows() const { return system_ ? system_->rowCount() : 0; }
int ScatteredLeastSquares::constraints() const { return system_ ? system_->constraintCount() : 0; }
int ScatteredLeastSquares::unknowns() const { return isValid_ ? u_.unknowns * v_.unknowns : 0; }
double& ScatteredLeastSquares::rankTolerance() { return rankTolerance_; }
int& ScatteredLeastSquares::threads() { return threads_; }

// Cells are numbered along v first.
int ScatteredLeastSquares::cellOf(int firstU, int firstV) const {
  return firstU * axisOf(v_).cells() + firstV;
}

}  // namespace knotwork
