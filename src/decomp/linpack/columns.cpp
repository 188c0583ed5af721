// SPDX-License-Identifier: MIT
// Operations on several columns at once: groups through the kernels. What makes these operations
// LINPACK's stands here: a factor of 0 leaves its column out, so that what is not finite there does
// not spread.
#include "decomp/linpack/columns.h"

#include <algorithm>

#include "kernels/kernels.h"

namespace knotwork::linpack {
namespace {

using detail::columnKernels;

// y = y + t x.
void addColumn(int q, double t, const double* x, double* y) {
  columnKernels<double>().addColumns(static_cast<std::size_t>(q), 1, x, 0, &t, y);
}

}  // namespace

void reflectColumns(int q, const double* v, int count, double* y, std::ptrdiff_t ld) {
  for (; count > 0; count -= kGroup, y += kGroup * ld) {
    const int columns = std::min(count, kGroup);
    double t[kGroup] = {};
    columnKernels<double>().addColumnDots(static_cast<std::size_t>(q),
                                          static_cast<std::size_t>(columns), v, y, ld, t);
    for (int j = 0; j < columns; ++j) t[j] = -t[j] / v[0];
    addToColumns(q, columns, t, v, y, ld);
  }
}

void addToColumns(int q, int count, const double* t, const double* v, double* y,
                  std::ptrdiff_t ld) {
  for (int j = 0; j < count; ++j)
    if (t[j] != 0.0) addColumn(q, t[j], v, y + j * ld);
}

void addColumns(int q, int count, const double* t, const double* x, std::ptrdiff_t ld, double* y) {
  for (; count > 0; count -= kGroup, t += kGroup, x += kGroup * ld) {
    const int columns = std::min(count, kGroup);
    if (std::find(t, t + columns, 0.0) == t + columns) {
      columnKernels<double>().addColumns(static_cast<std::size_t>(q),
                                         static_cast<std::size_t>(columns), x, ld, t, y);
    } else {
      for (int j = 0; j < columns; ++j)
        if (t[j] != 0.0) addColumn(q, t[j], x + j * ld, y);
    }
  }
}

void rotateSweep(int q, int count, const double* c, const double* s, double* x, std::ptrdiff_t ld) {
  detail::activeKernels->rotateSweep(q, count, c, s, x, ld);
}

}  // namespace knotwork::linpack
