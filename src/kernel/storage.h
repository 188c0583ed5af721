// SPDX-License-Identifier: MIT
// Arrays that are null, rather than thrown for, when they cannot be had.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace knotwork::detail {

/// @return an array of n elements, not initialised; null if n is negative or memory runs out.
template <class T>
std::unique_ptr<T[]> tryArray(long long n) {
  if (n < 0 || n > PTRDIFF_MAX / static_cast<long long>(sizeof(T))) return nullptr;
  return std::unique_ptr<T[]>(new (std::nothrow) T[static_cast<std::size_t>(n)]);
}

/// @return a * b, or -1 if either is negative or the product exceeds what arrays are indexed by.
inline long long sizeProduct(long long a, long long b) {
  if (a < 0 || b < 0) return -1;
  return b != 0 && a > INT64_MAX / 16 / b ? -1 : a * b;
}

/// The area of the static evaluations: it grows on demand and is kept.
class ResultArea {
 public:
  /// @return `doubles` doubles, good until the next call; null if memory runs out.
  double* take(long long doubles) {
    if (doubles < 0 || doubles > size_) {
      values_ = tryArray<double>(doubles);
      size_ = values_ ? doubles : 0;
    }
    return values_.get();
  }

 private:
  std::unique_ptr<double[]> values_;
  long long size_ = 0;
};

/// Builds the list of `count` control points of `coords` doubles each. @return null without memory.
template <class Node>
std::unique_ptr<Node[]> listNodes(double* points, long long count, int coords) {
  std::unique_ptr<Node[]> nodes = tryArray<Node>(count);
  for (std::ptrdiff_t i = 0; nodes && i < count; ++i) {
    Node* const node = nodes.get() + i;
    *node = {i + 1 < count ? node + 1 : nullptr, i > 0 ? node - 1 : nullptr, points + i * coords};
  }
  return nodes;
}

/// max(a, b) as unsigned numbers, so that a negative k exceeds every degree.
inline unsigned unsignedMax(int a, int b) {
  return std::max(static_cast<unsigned>(a), static_cast<unsigned>(b));
}

}  // namespace knotwork::detail
