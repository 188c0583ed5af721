// SPDX-License-Identifier: MIT
// Functions of whole vectors, written once for every element type. Sums run in index order.
#pragma once

#include <algorithm>
#include <utility>

#include "kernels/element_rules.h"
#include "kernels/kernels.h"
#include "knotwork/vector/int_vec.h"

namespace knotwork::detail {

template <class Vec>
using ElementOf = typename Vec::value_type;

template <class Vec>
auto runOf(Vec& v) {
  return Run<ElementOf<Vec>>{v.data(), v.stride()};
}

template <class Vec>
auto runOf(const Vec& v) {
  return Run<const ElementOf<Vec>>{v.data(), v.stride()};
}

template <class Vec>
std::ptrdiff_t sizeOf(const Vec& v) {
  return static_cast<std::ptrdiff_t>(v.length());
}

// ---- New vectors --------------------------------------------------------------------------------

/// r[i] = a[i] op b[i], as long as b. Where a reporting handler returned from a length mismatch,
/// elements of b without a partner give 0.
template <class Vec>
Vec combine(const Vec& a, const Vec& b,
            typename ElementKernels<ElementOf<Vec>>::Binary ElementKernels<ElementOf<Vec>>::*op) {
  using T = ElementOf<Vec>;
  a.lengthCheck(b.length());
  Vec r(b.length());
  const unsigned paired = std::min(a.length(), r.length());
  (kernels<T>().*op)(paired, runOf(r), runOf(a), runOf(b));
  std::fill(r.data() + paired, r.data() + r.length(), T{});
  return r;
}

/// r[i] = op(a[i], s)
template <class Vec>
Vec combine(
    const Vec& a, ElementOf<Vec> s,
    typename ElementKernels<ElementOf<Vec>>::WithScalar ElementKernels<ElementOf<Vec>>::*op) {
  Vec r(a.length());
  (kernels<ElementOf<Vec>>().*op)(r.length(), runOf(r), runOf(a), s);
  return r;
}

/// r[i] = op(a[i])
template <class Vec>
Vec combine(const Vec& a,
            typename ElementKernels<ElementOf<Vec>>::Unary ElementKernels<ElementOf<Vec>>::*op) {
  Vec r(a.length());
  (kernels<ElementOf<Vec>>().*op)(r.length(), runOf(r), runOf(a));
  return r;
}

template <class Vec>
Vec add(const Vec& a, const Vec& b) {
  return combine(a, b, &ElementKernels<ElementOf<Vec>>::add);
}

template <class Vec>
Vec subtract(const Vec& a, const Vec& b) {
  return combine(a, b, &ElementKernels<ElementOf<Vec>>::subtract);
}

template <class Vec>
Vec multiply(const Vec& a, const Vec& b) {
  return combine(a, b, &ElementKernels<ElementOf<Vec>>::multiply);
}

template <class Vec>
Vec divide(const Vec& a, const Vec& b) {
  return combine(a, b, &ElementKernels<ElementOf<Vec>>::divide);
}

template <class Vec>
Vec addScalar(const Vec& a, ElementOf<Vec> s) {
  return combine(a, s, &ElementKernels<ElementOf<Vec>>::addScalar);
}

template <class Vec>
Vec multiplyScalar(const Vec& a, ElementOf<Vec> s) {
  return combine(a, s, &ElementKernels<ElementOf<Vec>>::multiplyScalar);
}

/// True division, for doubles too.
template <class Vec>
Vec divideByScalar(const Vec& a, ElementOf<Vec> s) {
  return combine(a, s, &ElementKernels<ElementOf<Vec>>::divideByScalar);
}

/// s - a[i]
template <class Vec>
Vec subtractFrom(ElementOf<Vec> s, const Vec& a) {
  return combine(a, s, &ElementKernels<ElementOf<Vec>>::subtractFrom);
}

/// s / a[i]
template <class Vec>
Vec divideInto(ElementOf<Vec> s, const Vec& a) {
  return combine(a, s, &ElementKernels<ElementOf<Vec>>::divideInto);
}

template <class Vec>
Vec negate(const Vec& a) {
  return combine(a, &ElementKernels<ElementOf<Vec>>::negate);
}

template <class Vec>
Vec absolute(const Vec& a) {
  return combine(a, &ElementKernels<ElementOf<Vec>>::absolute);
}

template <class To, class From, class F>
To convert(const From& a, F f) {
  To r(a.length());
  const auto from = runOf(a);
  for (std::ptrdiff_t i = 0; i < sizeOf(r); ++i) r.data()[i] = f(from[i]);
  return r;
}

template <class Vec>
Vec cumsum(const Vec& v) {
  using T = ElementOf<Vec>;
  T total{};
  return convert<Vec>(v, [&](T x) { return total = ElementRules<T>::add(total, x); });
}

template <class Vec>
Vec delta(const Vec& v) {
  using T = ElementOf<Vec>;
  T before{};
  return convert<Vec>(v,
                      [&](T x) { return ElementRules<T>::subtract(x, std::exchange(before, x)); });
}

template <class Vec>
Vec reverse(const Vec& v) {
  return v.slice(static_cast<int>(v.length()) - 1, v.length(), -1);
}

// ---- Reductions ---------------------------------------------------------------------------------

template <class Vec>
ElementOf<Vec> dot(const Vec& a, const Vec& b) {
  using Rules = ElementRules<ElementOf<Vec>>;
  a.lengthCheck(b.length());
  const auto n = static_cast<std::ptrdiff_t>(std::min(a.length(), b.length()));
  const auto x = runOf(a);
  const auto y = runOf(b);
  ElementOf<Vec> total{};
  for (std::ptrdiff_t i = 0; i < n; ++i) total = Rules::add(total, Rules::multiply(x[i], y[i]));
  return total;
}

template <class Vec, class F>
ElementOf<Vec> reduce(const Vec& v, ElementOf<Vec> start, F f) {
  const auto x = runOf(v);
  for (std::ptrdiff_t i = 0; i < sizeOf(v); ++i) start = f(start, x[i]);
  return start;
}

template <class Vec>
ElementOf<Vec> sum(const Vec& v) {
  return reduce(v, {}, ElementRules<ElementOf<Vec>>::add);
}

template <class Vec>
ElementOf<Vec> prod(const Vec& v) {
  return reduce(v, 1, ElementRules<ElementOf<Vec>>::multiply);
}

// ---- Searches -----------------------------------------------------------------------------------

/// Index of the first of the elements that none is better than; a NaN is never better, nor is
/// anything better than one in place 0. -1, with a warning that names `fname`, for an empty vector.
template <class Vec, class Better>
int extremeIndex(const Vec& v, const char* fname, Better better) {
  if (v.length() == 0) {
    v.emptyErr(fname);
    return -1;
  }
  int best = 0;
  ElementOf<Vec> extreme = v(0);
  for (int i = 1; i < static_cast<int>(v.length()); ++i) {
    if (!better(v(i), extreme)) continue;
    best = i;
    extreme = v(i);
  }
  return best;
}

template <class Vec>
int maxIndex(const Vec& v) {
  return extremeIndex(v, "maxIndex", [](auto x, auto y) { return x > y; });
}

template <class Vec>
int minIndex(const Vec& v) {
  return extremeIndex(v, "minIndex", [](auto x, auto y) { return x < y; });
}

/// The element at an index that a search gave; 0 where it found none.
template <class Vec>
ElementOf<Vec> valueAt(const Vec& v, int index) {
  return index < 0 ? ElementOf<Vec>{} : v(index);
}

template <class Vec, class P>
int allOf(const Vec& v, P holds) {
  const auto x = runOf(v);
  for (std::ptrdiff_t i = 0; i < sizeOf(v); ++i) {
    if (!holds(x[i])) return 0;
  }
  return 1;
}

template <class Vec>
int equal(const Vec& a, const Vec& b) {
  if (a.length() != b.length()) return 0;
  const auto x = runOf(a);
  const auto y = runOf(b);
  for (std::ptrdiff_t i = 0; i < sizeOf(a); ++i) {
    if (!(x[i] == y[i])) return 0;
  }
  return 1;
}

template <class Vec, class P>
int countWhere(const Vec& v, P holds) {
  int count = 0;
  const auto x = runOf(v);
  for (std::ptrdiff_t i = 0; i < sizeOf(v); ++i) count += holds(x[i]) ? 1 : 0;
  return count;
}

/// Ascending, as a slice of a block as long as v.
template <class Vec, class P>
IntVec indicesWhere(const Vec& v, P holds) {
  IntVec indices(v.length());
  if (indices.length() != v.length()) return indices;
  unsigned count = 0;
  for (int i = 0; i < static_cast<int>(v.length()); ++i) {
    if (holds(v(i))) indices.sub(static_cast<int>(count++)) = i;
  }
  return indices.slice(0, count, 1);
}

}  // namespace knotwork::detail
