// SPDX-License-Identifier: MIT
// The loops of the element kernels, for the vectoriser.
//
// Elements do not depend on each other, so that the compiler may treat as many at once as a
// register holds, with the bits of one by one. It is in doubt where a result overlaps an operand:
// then it tests for that at run time, and falls back to the plain loop, in index order.
#pragma once

#include "kernels/element_kernels.h"
#include "kernels/element_rules.h"

namespace {

using knotwork::detail::ElementKernels;
using knotwork::detail::ElementRules;
using knotwork::detail::Run;

// r[i] = f(a[i]); unit strides and updates in place have loops of their own, which vectorise.
template <class T, class F>
inline void mapOne(std::size_t n, Run<T> r, Run<const T> a, F f) {
  if (r.stride == 1 && a.stride == 1) {
    T* out = r.start;
    const T* in = a.start;
    if (out == in) {
      for (std::size_t i = 0; i < n; ++i) out[i] = f(out[i]);
    } else {
      for (std::size_t i = 0; i < n; ++i) out[i] = f(in[i]);
    }
    return;
  }
  for (std::size_t i = 0; i < n; ++i) {
    const auto k = static_cast<std::ptrdiff_t>(i);
    r[k] = f(a[k]);
  }
}

// r[i] = f(a[i], b[i]), likewise.
template <class T, class F>
inline void mapTwo(std::size_t n, Run<T> r, Run<const T> a, Run<const T> b, F f) {
  if (r.stride == 1 && a.stride == 1 && b.stride == 1) {
    T* out = r.start;
    const T* left = a.start;
    const T* right = b.start;
    if (out == left) {
      for (std::size_t i = 0; i < n; ++i) out[i] = f(out[i], right[i]);
    } else {
      for (std::size_t i = 0; i < n; ++i) out[i] = f(left[i], right[i]);
    }
    return;
  }
  for (std::size_t i = 0; i < n; ++i) {
    const auto k = static_cast<std::ptrdiff_t>(i);
    r[k] = f(a[k], b[k]);
  }
}

template <class T>
struct ElementLoops {
  using Rules = ElementRules<T>;
  using Out = Run<T>;
  using In = Run<const T>;

  static void add(std::size_t n, Out r, In a, In b) { mapTwo<T>(n, r, a, b, Rules::add); }
  static void subtract(std::size_t n, Out r, In a, In b) { mapTwo<T>(n, r, a, b, Rules::subtract); }
  static void multiply(std::size_t n, Out r, In a, In b) { mapTwo<T>(n, r, a, b, Rules::multiply); }
  static void divide(std::size_t n, Out r, In a, In b) { mapTwo<T>(n, r, a, b, Rules::divide); }

  static void addScalar(std::size_t n, Out r, In a, T s) {
    mapOne<T>(n, r, a, [s](T x) { return Rules::add(x, s); });
  }
  static void multiplyScalar(std::size_t n, Out r, In a, T s) {
    mapOne<T>(n, r, a, [s](T x) { return Rules::multiply(x, s); });
  }
  static void divideByScalar(std::size_t n, Out r, In a, T s) {
    mapOne<T>(n, r, a, [s](T x) { return Rules::divide(x, s); });
  }
  static void subtractFrom(std::size_t n, Out r, In a, T s) {
    mapOne<T>(n, r, a, [s](T x) { return Rules::subtract(s, x); });
  }
  static void divideInto(std::size_t n, Out r, In a, T s) {
    mapOne<T>(n, r, a, [s](T x) { return Rules::divide(s, x); });
  }

  static void copy(std::size_t n, Out r, In a) {
    mapOne<T>(n, r, a, [](T x) { return x; });
  }
  static void negate(std::size_t n, Out r, In a) { mapOne<T>(n, r, a, Rules::negate); }
  static void absolute(std::size_t n, Out r, In a) { mapOne<T>(n, r, a, Rules::absolute); }

  static void fill(std::size_t n, Out r, T x) {
    if (r.stride == 1) {
      for (std::size_t i = 0; i < n; ++i) r.start[i] = x;
    } else {
      for (std::size_t i = 0; i < n; ++i) r[static_cast<std::ptrdiff_t>(i)] = x;
    }
  }

  static constexpr ElementKernels<T> kTable = {
      add,        subtract,       multiply,       divide,
      addScalar,  multiplyScalar, divideByScalar, subtractFrom,
      divideInto, copy,           negate,         absolute,
      fill};
};

}  // namespace
