// SPDX-License-Identifier: MIT
// The element kernels: strided loops without any sum across elements.
#pragma once

#include "kernels/run.h"

namespace knotwork::detail {

/// Every kernel works in index order as if one element at a time, so a result may overlap its
/// operands. A count of 0 does nothing.
template <class T>
struct ElementKernels {
  using Binary = void (*)(std::size_t n, Run<T> r, Run<const T> a, Run<const T> b);
  using WithScalar = void (*)(std::size_t n, Run<T> r, Run<const T> a, T scalar);
  using Unary = void (*)(std::size_t n, Run<T> r, Run<const T> a);

  Binary add, subtract, multiply, divide;      ///< r[i] = a[i] op b[i]
  WithScalar addScalar, multiplyScalar;        ///< r[i] = a[i] op scalar
  WithScalar divideByScalar;                   ///< r[i] = a[i] / scalar
  WithScalar subtractFrom, divideInto;         ///< r[i] = scalar op a[i]
  Unary copy, negate, absolute;                ///< r[i] = a[i], -a[i], |a[i]|
  void (*fill)(std::size_t n, Run<T> r, T x);  ///< r[i] = x
};

}  // namespace knotwork::detail
