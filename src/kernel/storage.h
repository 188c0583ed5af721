// SPDX-License-Identifier: MIT
// Arrays of numbers and nodes. All of it throws std::bad_alloc, also for sizes that no array has.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace knotwork::detail {

/// @return an array of n elements, not initialised.
template <class T>
std::unique_ptr<T[]> newArray(long long n) {
  if (n < 0 || n > PTRDIFF_MAX / static_cast<long long>(sizeof(T))) throw std::bad_alloc();
  return std::unique_ptr<T[]>(new T[static_cast<std::size_t>(n)]);
}

/// @return a * b, or -1 if either is negative or the product exceeds what arrays are indexed by.
inline long long sizeProduct(long long a, long long b) {
  if (a < 0 || b < 0) return -1;
  return b != 0 && a > INT64_MAX / 16 / b ? -1 : a * b;
}

/// Room for n elements, on the stack where they are few.
template <class T, int kFew>
class Scratch {
 public:
  explicit Scratch(long long n) : many_(0 <= n && n <= kFew ? nullptr : newArray<T>(n)) {}

  T* data() { return many_ ? many_.get() : few_; }

 private:
  T few_[kFew];
  std::unique_ptr<T[]> many_;
};

/// The area of the static evaluations: it grows on demand and is kept.
class ResultArea {
 public:
  /// @return `doubles` doubles, good until the next call.
  double* take(long long doubles) {
    if (doubles < 0 || doubles > size_) {
      values_ = newArray<double>(doubles);
      size_ = doubles;
    }
    return values_.get();
  }

 private:
  std::unique_ptr<double[]> values_;
  long long size_ = 0;
};

/// Builds the list of `count` control points of `coords` doubles each.
template <class Node>
std::unique_ptr<Node[]> listNodes(double* points, long long count, int coords) {
  std::unique_ptr<Node[]> nodes = newArray<Node>(count);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
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
