// SPDX-License-Identifier: MIT
// The control points of a curve, or the rows of a surface, after one knot more.
#pragma once

#include "knotwork/kernel/knot_record.h"

namespace knotwork::detail {

/// Inserts a row into `count` rows of `width` doubles, for a knot that `knots` already holds.
///
/// @param rows   room for count + 1 rows.
/// @param s      number of the new knot t.
void insertRow(double* rows, long long count, long long width, const KnotRecord& knots, int s,
               double t);

}  // namespace knotwork::detail
