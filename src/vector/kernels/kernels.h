// SPDX-License-Identifier: MIT
// The element kernels: strided loops without any sum across elements, one table per element type;
// and the kernels of matrix products, see product_kernels.h.
//
// Every element kernel works in index order as if one element at a time, so a result may overlap
// its operands. Strides are in elements and may be negative or zero; a count of 0 does nothing.
// Several sets exist, compiled for different instruction sets from the same source; they give equal
// bits.
#pragma once

#include <cstddef>
#include <type_traits>

#include "vector/kernels/product_kernels.h"

namespace knotwork::detail {

// A strided run of elements.
template <class T>
struct Run {
  T* start;
  std::ptrdiff_t stride;

  T& operator[](std::ptrdiff_t i) const { return start[i * stride]; }
  operator Run<const T>() const requires(!std::is_const_v<T>) { return {start, stride}; }
};

template <class T>
struct ElementKernels {
  using Binary = void (*)(std::size_t n, Run<T> r, Run<const T> a, Run<const T> b);
  using WithScalar = void (*)(std::size_t n, Run<T> r, Run<const T> a, T scalar);
  using Unary = void (*)(std::size_t n, Run<T> r, Run<const T> a);

  Binary add, subtract, multiply, divide;      // r[i] = a[i] op b[i]
  WithScalar addScalar, multiplyScalar;        // r[i] = a[i] op scalar
  WithScalar divideByScalar;                   // r[i] = a[i] / scalar
  WithScalar subtractFrom, divideInto;         // r[i] = scalar op a[i]
  Unary copy, negate, absolute;                // r[i] = a[i], -a[i], |a[i]|
  void (*fill)(std::size_t n, Run<T> r, T x);  // r[i] = x
};

// One table for each element type.
struct KernelSet {
  ElementKernels<double> forDouble;
  ElementKernels<int> forInt;
  ElementKernels<signed char> forSChar;
  ProductKernels<double> productsOfDouble;
  ProductKernels<int> productsOfInt;
};

extern const KernelSet baselineKernels;
#if defined(KNOTWORK_HAVE_AVX2)
extern const KernelSet avx2Kernels;
#endif

// The set in use: chosen once at load, the fastest that the processor runs unless the environment
// variable KNOTWORK_KERNELS names another.
extern const KernelSet* activeKernels;

template <class T>
const ElementKernels<T>& kernels();
template <>
inline const ElementKernels<double>& kernels() {
  return activeKernels->forDouble;
}
template <>
inline const ElementKernels<int>& kernels() {
  return activeKernels->forInt;
}
template <>
inline const ElementKernels<signed char>& kernels() {
  return activeKernels->forSChar;
}

template <>
inline const ProductKernels<double>& productKernels() {
  return activeKernels->productsOfDouble;
}
template <>
inline const ProductKernels<int>& productKernels() {
  return activeKernels->productsOfInt;
}

}  // namespace knotwork::detail
