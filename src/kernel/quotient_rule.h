// SPDX-License-Identifier: MIT
// From derivatives of homogeneous coordinates to derivatives of the point they stand for.
#pragma once

#include "kernel/bounded.h"

namespace knotwork::detail {

/// Turns partials of (x w, w) into partials of x, in place.
///
/// @param out     (uOrder + 1) * (vOrder + 1) blocks of dim + 1 numbers, block (uOrder + 1) j + i
///                the partial of order i in u and j in v; a curve has vOrder 0. The first dim
///                numbers of each are replaced, the last stays the weight's partial.
template <class Number>
void quotientRule(Number* out, int dim, int uOrder, int vOrder);

extern template void quotientRule(double*, int, int, int);
extern template void quotientRule(Bounded*, int, int, int);

}  // namespace knotwork::detail
