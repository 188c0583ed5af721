// SPDX-License-Identifier: MIT
// A slow, independent model of B-splines: basis functions by their recursion, in long double.
#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "knotwork/kernel/spline.h"
#include "knotwork/kernel/surface.h"

namespace knotwork::test {

using Real = long double;
using Reals = std::vector<Real>;

/// Index of an element: the tests count with int throughout.
inline std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// One direction: knots with the outermost ones, which take no part, as NaN.
struct Basis {
  explicit Basis(const KnotRecord& k) : degree(k.degree()), spans(k.spans()), knots(1, NAN) {
    for (int i = k.first(); i <= k.last(); ++i) knots.push_back(k(i));
    knots.push_back(NAN);
  }

  /// The span by definition: at a knot to its right, else the nearest that is not empty.
  int span(double t) const {
    if (degree == 0) {
      int j = 0;
      while (j < spans - 1 && knots[at(j + 1)] <= t) ++j;
      return j;
    }
    int before = -1, after = -1;
    for (int j = spans - 1; j >= 0; --j) {
      if (!(knot(j) < knot(j + 1))) continue;
      if (knot(j) <= t && before < 0) before = j;
      if (knot(j) > t) after = j;
    }
    return before >= 0 ? before : after;
  }

  Real knot(int k) const { return knots[at(k + degree)]; }

  /// Derivative of order q of basis function i of degree p, in the polynomial of span j.
  Real value(int i, int p, int q, int j, Real t) const {
    const auto over = [](Real a, Real b) { return b != 0 ? a / b : 0; };
    if (p == 0) return i == j + degree && q == 0 ? 1 : 0;
    const Real first =
        i + p < degree + j || i > degree + j ? 0 : value(i, p - 1, q > 0 ? q - 1 : 0, j, t);
    const Real second = i + 1 > degree + j ? 0 : value(i + 1, p - 1, q > 0 ? q - 1 : 0, j, t);
    const auto u = [&](int k) { return knots[at(k)]; };
    if (q > 0) {
      return p * ((first != 0 ? over(first, u(i + p) - u(i)) : 0) -
                  (second != 0 ? over(second, u(i + p + 1) - u(i + 1)) : 0));
    }
    return (first != 0 ? over((t - u(i)) * first, u(i + p) - u(i)) : 0) +
           (second != 0 ? over((u(i + p + 1) - t) * second, u(i + p + 1) - u(i + 1)) : 0);
  }

  int degree;
  int spans;
  Reals knots;
};

/// A sum and the largest of its terms.
struct Sum {
  Real value = 0;
  Real largest = 0;
  void add(Real term) {
    value += term;
    largest = std::max(largest, std::fabs(term));
  }
};

/// Derivative q of stored coordinate c.
inline Sum derivative(const AP_SPLINE& s, double t, int q, int c) {
  const Basis basis(s.Knots());
  const int j = basis.span(t);
  Sum sum;
  for (int i = j; i <= j + s.Degree(); ++i) sum.add(basis.value(i, s.Degree(), q, j, t) * s[i][c]);
  return sum;
}

/// Partial (p, q) of stored coordinate c.
inline Sum partial(const AP_SURFACE& s, double u, double v, int p, int q, int c) {
  const Basis bu(s.uKnots()), bv(s.vKnots());
  const int ju = bu.span(u), jv = bv.span(v);
  Sum sum;
  for (int i = jv; i <= jv + s.vDegree(); ++i) {
    for (int j = ju; j <= ju + s.uDegree(); ++j) {
      sum.add(bv.value(i, s.vDegree(), q, jv, v) * bu.value(j, s.uDegree(), p, ju, u) *
              s.index(i, j)[c]);
    }
  }
  return sum;
}

/// Seeded objects: knots with repetitions, clamped or not; weights, where there are any, in [0.5,
/// 2].
class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  int upTo(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n + 1)); }
  double real(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }

  /// Knots that rise by steps from a tenth to ten, each interior one repeated up to `degree` times.
  void fill(KnotRecord& k) {
    std::vector<double> knots;
    const bool clamped = upTo(2) > 0;
    double t = real(-3, 3);
    for (int i = k.first(), run = 0; i <= k.last(); ++i, ++run) {
      const bool held = clamped && (i <= 0 || i > k.spans());
      const bool repeat = i > 0 && i < k.spans() && run < k.degree() && upTo(3) == 0;
      if (i > k.first() && !held && !repeat) t += std::exp(real(-2.3, 2.3)), run = 0;
      knots.push_back(t);
    }
    k.assign(knots.data(), static_cast<int>(knots.size()));
  }

  void fill(double* points, int count, int dim, bool rational) {
    for (int i = 0; i < count; ++i) {
      const double weight = rational ? real(0.5, 2) : 1;
      for (int c = 0; c < dim; ++c) *points++ = weight * real(-10, 10);
      if (rational) *points++ = weight;
    }
  }

  AP_SPLINE curve(int dim, int degree, int spans, int rational) {
    AP_SPLINE s(dim, degree, spans, rational);
    fill(s.Knots());
    fill(s.CV(), s.Count(), dim, rational != 0);
    return s;
  }

  AP_SURFACE surface(int dim, int uDegree, int vDegree, int uSpans, int vSpans, int rational) {
    AP_SURFACE s(dim, uDegree, vDegree, uSpans, vSpans, rational & 1, rational & 2);
    fill(s.uKnots());
    fill(s.vKnots());
    fill(s.CV(), s.uCount() * s.vCount(), dim, rational != 0);
    return s;
  }

  /// A parameter inside, at a knot, or a little outside the domain.
  double parameter(const KnotRecord& k) {
    if (k.last() < k.first()) return real(-1, 1);
    const double low = k.degree() ? k(0) : k(1), high = k.degree() ? k(k.spans()) : k(k.last());
    const int kind = upTo(9);
    if (kind == 0) return k(k.first() + upTo(k.last() - k.first()));
    if (kind == 1) return low;
    if (kind == 2) return high;
    const double margin = kind == 3 ? 0.05 * (high - low) : 0.0;
    return real(low - margin, high + margin);
  }

 private:
  std::mt19937 random_;
};

/// |a - b| in units of the last place of `scale`.
inline double ulps(double a, Real b, Real scale) {
  const double s = static_cast<double>(std::fabs(scale));
  const double unit = s > 0 ? std::nextafter(s, INFINITY) - s : 4e-324;
  return static_cast<double>(std::fabs(a - b) / unit);
}

}  // namespace knotwork::test
