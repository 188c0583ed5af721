// SPDX-License-Identifier: MIT
// Between the vectors of callers and the plain numbers of the sparse least-squares systems.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/solvers/solver_reporter.h"
#include "knotwork/vector/int_vec.h"
#include "solvers/exact_rows.h"
#include "solvers/point_values.h"
#include "vector/memory_watch.h"

namespace knotwork::detail {

/// Like the library's other solvers, one without a reporter is silent.
TsolverReporter& silentReporter();

bool allFinite(std::size_t count, const double* values);
bool allFinite(const DoubleVec& values);

/// Throws std::bad_alloc, as do the others.
std::vector<double> toStd(const DoubleVec& values);

/// @return the row in plain numbers, without its zeros; nothing if columns are outside 0 ..
/// unknowns - 1 or repeated, lengths do not match, numbers are not finite or all are 0.
std::optional<ConstraintRow> constraintRow(const IntVec& columns, const DoubleVec& values,
                                           const DoubleVec& rhs, int unknowns, int dimension);

/// What a system tells its caller besides the solution.
struct LsqOutcome {
  IntVec& undetermined;
  IntVec& conflicting;
  DoubleVec& squares;
};

/// Hands a solution over. @return the code; *x and the squares are touched only if it is 0.
/// @param memory  made before the solution was begun: the small dense systems in it go on where a
///                vector found no memory, and then their answer is none.
int give(const LsqSolution& solution, const MemoryWatch& memory, int dimension, TtupleVector* x,
         const LsqOutcome& outcome);

/// A result of the right shape keeps its storage, which may be part of something larger.
template <class Values>
void give(Values& values, Values* x) {
  if (hasShape(*x, dimensionOf(values), pointsOf(values))) {
    *x = values;
  } else {
    x->reference(values);
  }
}

}  // namespace knotwork::detail
