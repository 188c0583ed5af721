// SPDX-License-Identifier: MIT
// What points and knots share: sizes, checked views and transformation of flat coordinates.
#pragma once

#include <initializer_list>

#include "knotwork/platform/foundation/4d_dbl_matrix.h"
#include "knotwork/vector/double_vec.h"

namespace knotwork::detail {

/// The product of the factors' absolute values, as a number of elements. Where a vector cannot have
/// that many, 0x3008 is reported and the result is 0.
unsigned elementCount(std::initializer_list<int> factors);

/// n as a number of elements that an int can tell; reports 0x3008, and gives 0, for any other.
unsigned countOrReport(long long n);

/// A count or position within the range of int.
int clampToInt(long long value);

/// View on elements first, first + stride, ..., n of them; empty, after a report of 0x300C, unless
/// all of them lie in `flat`.
DoubleVec checkedSlice(const DoubleVec& flat, long long first, long long n, long long stride = 1);

/// Transforms the point at elements first, ..., first + dim - 1 in place: (x, y, z, w) as a row
/// times the matrix, with w = 1 below dimension 4. Below dimension 3 the missing components are the
/// next elements; those behind the end count as 0. Reports as checkedSlice does.
void transformPoint(DoubleVec& flat, long long first, int dim, const T4dDblMatrix& matrix);

}  // namespace knotwork::detail
