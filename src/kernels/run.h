// SPDX-License-Identifier: MIT
// A strided run of elements.
#pragma once

#include <cstddef>
#include <type_traits>

namespace knotwork::detail {

/// Element i is start[i * stride]; the stride may be negative or zero.
template <class T>
struct Run {
  T* start;
  std::ptrdiff_t stride;

  T& operator[](std::ptrdiff_t i) const { return start[i * stride]; }
  operator Run<const T>() const requires(!std::is_const_v<T>) { return {start, stride}; }
};

}  // namespace knotwork::detail
