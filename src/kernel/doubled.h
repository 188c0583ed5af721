// SPDX-License-Identifier: MIT
// Numbers of doubled precision: unevaluated sums high + low, for the few places where weights of
// both signs cancel. Products are split, not fused: a fused product is not one on every platform.
// Source: T. J. Dekker, A floating-point technique for extending the available precision (1971).
#pragma once

#include <cmath>

namespace knotwork::detail {

struct Doubled {
  // Conversion from what is exact is meant: knots, parameters and small integers enter sums so.
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr Doubled(double exact = 0.0) : high(exact) {}
  /// The sum of a number and of what its rounding left, which is nothing where that has no value.
  Doubled(double rounded, double rest) : high(rounded) {
    if (!std::isfinite(rest)) return;
    high = rounded + rest;
    low = rest - (high - rounded);
  }

  double high;
  double low = 0.0;
};

/// @return what the rounding of x + y to `sum` left.
inline double restOfSum(double x, double y, double sum) {
  const double part = sum - x;
  return (x - (sum - part)) + (y - part);
}

/// @return what the rounding of x y to `product` left.
inline double restOfProduct(double x, double y, double product) {
  constexpr double kSplit = 0x1p27 + 1;
  const double xs = kSplit * x, ys = kSplit * y;
  const double xh = xs - (xs - x), yh = ys - (ys - y);
  const double xl = x - xh, yl = y - yh;
  return ((xh * yh - product) + xh * yl + xl * yh) + xl * yl;
}

inline Doubled operator+(const Doubled& x, const Doubled& y) {
  const double sum = x.high + y.high;
  return {sum, restOfSum(x.high, y.high, sum) + (x.low + y.low)};
}

inline Doubled operator-(const Doubled& x, const Doubled& y) {
  const double sum = x.high - y.high;
  return {sum, restOfSum(x.high, -y.high, sum) + (x.low - y.low)};
}

inline Doubled operator*(const Doubled& x, const Doubled& y) {
  const double product = x.high * y.high;
  return {product, restOfProduct(x.high, y.high, product) + (x.high * y.low + x.low * y.high)};
}

inline Doubled operator/(const Doubled& x, const Doubled& y) {
  const double quotient = x.high / y.high;
  const Doubled rest = x - y * Doubled(quotient);
  return {quotient, rest.high / y.high};
}

inline Doubled& operator*=(Doubled& x, const Doubled& y) { return x = x * y; }

inline double valueOf(const Doubled& x) { return x.high; }

}  // namespace knotwork::detail
