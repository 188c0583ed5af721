// SPDX-License-Identifier: MIT
// De Boor's triangle for point and derivatives, from either end of a span.
#pragma once

#include "kernel/span_search.h"

namespace knotwork::detail {

/// Point and derivatives of a span's polynomial.
///
/// @param points  first control point of the span; the next one lies `stride` doubles on.
/// @param work    room for `degree` rows of `width` doubles, apart from `points` and `out`.
/// @param out     nderiv + 1 rows of `width` doubles: row k is the derivative of order k, exactly 0
///                above the degree.
/// @param width   doubles per control point.
/// @param end     the span, from its end nearer to t.
void triangularScheme(const double* points, std::ptrdiff_t stride, double* work, double* out,
                      int width, int degree, int nderiv, const NearEnd& end, double t);

}  // namespace knotwork::detail
