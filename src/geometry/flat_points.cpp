// SPDX-License-Identifier: MIT
// What the containers of points share: sizes, checked views and transformation of flat coordinates.
#include "geometry/flat_points.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "knotwork/platform/foundation/4d_dbl_point.h"
#include "vector/shared_block.h"

namespace knotwork::detail {

unsigned elementCount(std::initializer_list<int> factors) {
  constexpr std::uint64_t kMost =
      std::min<std::uint64_t>(std::numeric_limits<unsigned>::max(), SIZE_MAX / sizeof(double));
  std::uint64_t count = 1;
  for (const std::int64_t factor : factors) {
    count = std::min(count * static_cast<std::uint64_t>(factor < 0 ? -factor : factor), kMost + 1);
  }
  if (count <= kMost) return static_cast<unsigned>(count);
  reportOutOfMemory();
  return 0;
}

int clampToInt(long long value) {
  using Int = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<long long>(value, Int::min(), Int::max()));
}

DoubleVec checkedSlice(const DoubleVec& flat, long long first, unsigned n, long long stride) {
  const int from = clampToInt(first);
  const int step = clampToInt(stride);
  const auto inside = [&flat](long long i) { return i >= 0 && i < flat.length(); };
  if (n == 0) return flat.slice(0, 0, 1);
  if (inside(from) && inside(from + (static_cast<long long>(n) - 1) * step)) {
    return flat.slice(from, n, step);
  }
  flat.sliceCheck(from, n, step);
  return DoubleVec();
}

void transformPoint(DoubleVec& flat, long long first, int dim, const T4dDblMatrix& matrix) {
  if (checkedSlice(flat, first, static_cast<unsigned>(dim)).length() == 0) return;
  const int x = static_cast<int>(first);
  const int stored = static_cast<int>(std::min<long long>(dim > 3 ? 4 : 3, flat.length() - first));
  T4dDblPoint p;
  double* const coordinates[] = {&p.x, &p.y, &p.z, &p.w};
  for (int c = 0; c < stored; ++c) *coordinates[c] = flat(x + c);
  p.postmultBy(matrix);
  for (int c = 0; c < stored; ++c) flat(x + c) = *coordinates[c];
}

}  // namespace knotwork::detail
