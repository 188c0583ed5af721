// SPDX-License-Identifier: MIT
// Forms Householder reflections; the kernels apply them.
#pragma once

#include <cstddef>

namespace knotwork::detail {

/// What the entries v[0 .. count) of a row or column make of its pivot.
struct Pivot {
  double sigma = 0, beta = 0;
  bool isApplied = false;
};

/// Turns the entry v[pivot] into that of the reflection I + beta v v', which sends the entries to
/// sigma in the pivot's place. Entries of at most `skip` are left as they are.
Pivot formReflection(double* v, std::ptrdiff_t count, std::ptrdiff_t pivot, double skip);

}  // namespace knotwork::detail
