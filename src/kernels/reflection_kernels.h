// SPDX-License-Identifier: MIT
// The inner loops of the solvers' Householder reflections.
#pragma once

#include <cstddef>

namespace knotwork::detail {

/// The places of a reflection's entries in a column, one by one: entry t stands in place places[t].
struct ListedPlaces {
  const int* places;
  std::ptrdiff_t count;

  /// Calls visit(t, place of entry t) in order.
  template <class Visit>
  void each(Visit visit) const {
    for (std::ptrdiff_t t = 0; t < count; ++t) visit(t, static_cast<std::ptrdiff_t>(places[t]));
  }
};

/// The places of a reflection's entries where they are all but a gap: the first `head` entries
/// stand in places 0 .. head - 1, the others behind `gap` places that take no part.
struct RunsOfPlaces {
  std::ptrdiff_t head, gap, count;
};

/// The reflection I + beta v v', where products with v of at most `skip` are not applied.
struct Reflector {
  const double* v;
  double beta, skip;
};

/// Columns x, x + step, x + 2 step, ...
struct ReflectedColumns {
  double* x;
  std::ptrdiff_t step;
  int count;
};

/// The first `count` rows of a matrix whose columns begin at x, x + step, x + 2 step, ...
struct ReflectedRows {
  double* x;
  std::ptrdiff_t step;
  int count;
};

struct ReflectionKernels {
  /// The largest magnitude of v[0 .. count); -1 where every entry is a NaN, or there is none.
  double (*largestMagnitude)(const double* v, std::ptrdiff_t count);

  /// The length of v, whose largest magnitude is `largest`: entries are scaled by 1 / largest, so
  /// that no square overflows, and their squares summed in index order.
  double (*scaledLength)(const double* v, std::ptrdiff_t count, double largest);

  /// x_j += (beta x_j'v) v for each column, where the sum x_j'v, in index order from 0, exceeds the
  /// threshold in magnitude.
  void (*reflectListed)(const ListedPlaces& at, const Reflector& h,
                        const ReflectedColumns& columns);
  void (*reflectRuns)(const RunsOfPlaces& at, const Reflector& h, const ReflectedColumns& columns);

  /// The same for rows, whose places are columns; `products` and `moved` are room for a number per
  /// row.
  void (*reflectRows)(const ListedPlaces& at, const Reflector& h, const ReflectedRows& rows,
                      double* products, int* moved);

  /// sums[i] += x[i]^2
  void (*addSquares)(const double* x, std::ptrdiff_t count, double* sums);
};

}  // namespace knotwork::detail
