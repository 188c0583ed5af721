// SPDX-License-Identifier: MIT
// The square root that results depend on, and the length of a vector in space.
#pragma once

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#else
#include <cmath>
#endif

namespace knotwork::detail {

/// The square root of x, correctly rounded: the processor's own instruction.
///
/// std::sqrt becomes that instruction where the compiler optimises, and a call to the C library
/// where it does not; 32-bit ones compute it in x87 registers, and round it twice.
[[gnu::always_inline]] inline double squareRoot(double x) {
#if defined(__SSE2__)
  const __m128d lanes = _mm_set_sd(x);
  return _mm_cvtsd_f64(_mm_sqrt_sd(lanes, lanes));
#else
  return std::sqrt(x);
#endif
}

/// The length of (x, y, z), scaled by the largest magnitude so that no square overflows; standard
/// libraries differ in how they compute it, and call the C library's square root.
inline double lengthOf(double x, double y, double z) {
  const double largest = std::max({__builtin_fabs(x), __builtin_fabs(y), __builtin_fabs(z)});
  if (largest == 0) return 0;
  const double a = x / largest, b = y / largest, c = z / largest;
  return largest * squareRoot(a * a + b * b + c * c);
}

}  // namespace knotwork::detail
