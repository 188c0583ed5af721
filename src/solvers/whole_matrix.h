// SPDX-License-Identifier: MIT
// Matrices whose vector holds all their elements. Others come from the constructor that takes any
// vector; their elements must not be addressed one by one.
#pragma once

#include <cstddef>

namespace knotwork::detail {

template <class Mat>
bool isWhole(const Mat& m) {
  return m.dataVec().length() >= static_cast<std::size_t>(m.rows()) * m.cols();
}

}  // namespace knotwork::detail
