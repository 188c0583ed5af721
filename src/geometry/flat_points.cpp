// SPDX-License-Identifier: MIT
// What points and knots share: sizes, checked views and transformation of flat coordinates.
#include "geometry/flat_points.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "knotwork/platform/foundation/4d_dbl_point.h"
#include "vector/shared_block.h"

namespace knotwork::detail {

unsigned elementCount(std::initializer_list<int> factors) {
  constexpr std::uint64_t kMost = std::min<std::uint64_t>(UINT_MAX, SIZE_MAX / sizeof(double));
  // Cut off just above what can be had: the product of that and any int does not overflow.
  std::uint64_t count = 1;
  for (const std::int64_t factor : factors) {
    count = std::min(count * static_cast<std::uint64_t>(factor < 0 ? -factor : factor), kMost + 1);
  }
  if (count <= kMost) return static_cast<unsigned>(count);
  reportOutOfMemory();
  return 0;
}

unsigned countOrReport(long long n) {
  if (0 <= n && n <= INT_MAX) return elementCount({static_cast<int>(n)});
  reportOutOfMemory();
  return 0;
}

int clampToInt(long long value) {
  return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

DoubleVec checkedSlice(const DoubleVec& flat, long long first, long long n, long long stride) {
  const auto count = static_cast<unsigned>(std::min<long long>(n, UINT_MAX));
  const int from = clampToInt(first);
  const int step = clampToInt(stride);
  const int reach = clampToInt(flat.length());  // a step beyond has no second element
  const auto inside = [&flat](long long i) { return i >= 0 && i < flat.length(); };
  if (count == 0) return flat.slice(0, 0, 1);
  if (inside(from) && inside(from + (static_cast<long long>(count) - 1) * step)) {
    return flat.slice(from, count, std::clamp(step, -reach, reach));
  }
  flat.sliceCheck(from, count, step);
  return DoubleVec();
}

void transformPoint(DoubleVec& flat, long long first, int dim, const T4dDblMatrix& matrix) {
  if (checkedSlice(flat, first, dim).length() == 0) return;
  const int x = static_cast<int>(first);
  const int stored = static_cast<int>(std::min<long long>(dim > 3 ? 4 : 3, flat.length() - first));
  T4dDblPoint p;
  double* const coordinates[] = {&p.x, &p.y, &p.z, &p.w};
  for (int c = 0; c < stored; ++c) *coordinates[c] = flat(x + c);
  p.postmultBy(matrix);
  for (int c = 0; c < stored; ++c) flat(x + c) = *coordinates[c];
}

}  // namespace knotwork::detail
