// SPDX-License-Identifier: MIT
// Numbers as printf() writes them in the C locale, whatever locale the host has set.
#pragma once

#include <charconv>
#include <cstdio>

namespace knotwork::detail {

/// Writes a space, then x: by printf()'s %f or %e, for std::chars_format::fixed or scientific.
inline void printNumber(std::FILE* file, double x, std::chars_format format, int width,
                        int precision) {
  char text[320];  // the longest double has 309 digits before the point; then a sign and two more
  char* const end = std::to_chars(text, text + sizeof text - 1, x, format, precision).ptr;
  *end = 0;
  std::fprintf(file, " %*s", width, text);
}

}  // namespace knotwork::detail
