// SPDX-License-Identifier: MIT
// AP_GEOMETRIC: the control-point array and its box.
//
// Behind the control points stand spare doubles, as many as the triangular scheme of a high degree
// takes: so evaluation needs no memory of its own, and works where there is none left.
#include "knotwork/kernel/geometric.h"

#include <algorithm>
#include <climits>

#include "kernel/storage.h"

AP_GEOMETRIC::AP_GEOMETRIC(int dim)
    : cv_(nullptr),
      spare_(0),
      count_(0),
      dim_(std::clamp(dim, 0, INT_MAX - 1)),
      box_(dim_),
      boxValid_(0) {}

AP_GEOMETRIC::~AP_GEOMETRIC() { delete[] cv_; }

double* AP_GEOMETRIC::CV() { return cv_; }

const double* AP_GEOMETRIC::CV() const { return cv_; }

int AP_GEOMETRIC::Capacity() const { return count_; }

int AP_GEOMETRIC::Dim() const { return dim_; }

void AP_GEOMETRIC::allocate(long long points, int coords, long long spare) {
  const long long size = points > INT_MAX ? -1 : knotwork::detail::sizeProduct(points, coords);
  double* const grown = knotwork::detail::newArray<double>(size < 0 ? -1 : size + spare).release();
  std::copy_n(cv_, std::min<long long>(spare_, size), grown);
  delete[] cv_;
  cv_ = grown;
  spare_ = static_cast<std::ptrdiff_t>(size);
  count_ = static_cast<int>(points);
}

void AP_GEOMETRIC::reserve(long long points, int coords, int step, long long spare) {
  if (points <= count_) return;
  const long long steps = (points - count_ + step - 1) / step;
  allocate(count_ + steps * step, coords, spare);
}

double* AP_GEOMETRIC::spare() const { return cv_ + spare_; }

void AP_GEOMETRIC::write(std::ptrdiff_t at, std::ptrdiff_t doubles, const double* values, int n) {
  if (values && n > 0 && at < doubles) {
    std::copy_n(values, std::min<std::ptrdiff_t>(n, doubles - at), cv_ + at);
  }
}

AP_MMBOX& AP_GEOMETRIC::bound(std::ptrdiff_t points, int coords, int force) {
  if (boxValid_ && !force) return box_;
  const int rational = coords > dim_;
  if (points > 0) box_.init(cv_, rational);
  for (std::ptrdiff_t i = 1; i < points; ++i) box_.extend(cv_ + i * coords, rational);
  boxValid_ = 1;
  return box_;
}
