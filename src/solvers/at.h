// SPDX-License-Identifier: MIT
// Indices are int, as in the formulas; containers want theirs unsigned.
#pragma once

#include <cstddef>

namespace knotwork::detail {

inline std::size_t at(int i) { return static_cast<std::size_t>(i); }

}  // namespace knotwork::detail
