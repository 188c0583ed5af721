// SPDX-License-Identifier: MIT
// AP_MMBOX: one array holds both bounds.
#include "knotwork/kernel/mmbox.h"

#include <algorithm>

#include "kernel/storage.h"

AP_MMBOX::AP_MMBOX(int size)
    : dim(std::max(size, 0)),
      min(knotwork::detail::newArray<double>(2LL * dim).release()),
      max(min + dim) {
  std::fill(min, max + dim, 0.0);
}

AP_MMBOX::~AP_MMBOX() { delete[] min; }

void AP_MMBOX::init(const double* point, int rational) {
  for (int c = 0; c < dim; ++c) min[c] = max[c] = rational ? point[c] / point[dim] : point[c];
}

void AP_MMBOX::extend(const double* point, int rational) {
  for (int c = 0; c < dim; ++c) {
    const double x = rational ? point[c] / point[dim] : point[c];
    min[c] = std::min(min[c], x);
    max[c] = std::max(max[c], x);
  }
}
