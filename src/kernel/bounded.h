// SPDX-License-Identifier: MIT
// Numbers that carry a bound of their own rounding error: running error analysis.
//
// A Bounded x stands for an exact number X with |x.value - X| <= x.error. Every operation rounds
// its value as double does, off by at most u = 2^-53 of the result, and hands on what its operands
// carry:
//   x + y, x - y:  ex + ey                            + u |value|
//   x y:           |x| ey + |y| ex + ex ey            + u |value|
//   x / y:         (ex + |value| ey) / (|y| - ey)     + u |value|
// What is added is twice u, so that the rounding of the bounds themselves is covered as well. A
// computation written once for any type of number, run in Bounded, so tells which of its results
// are no more than rounding. Underflow is not followed.
// Source: J. H. Wilkinson, Error analysis revisited, IMA Bulletin 22 (1986); N. J. Higham, Accuracy
// and Stability of Numerical Algorithms, 2nd ed., section 3.3.
#pragma once

#include <cmath>
#include <limits>

namespace knotwork::detail {

struct Bounded {
  // Conversion from what is exact is meant: knots, parameters and small integers enter sums so.
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr Bounded(double exact = 0.0) : value(exact), error(0.0) {}
  constexpr Bounded(double rounded, double bound) : value(rounded), error(bound) {}

  double value;
  double error;
};

/// @return the result of one operation, given the bound that its operands hand on.
inline Bounded rounded(double value, double handedOn) {
  return {value, handedOn + std::numeric_limits<double>::epsilon() * std::abs(value)};
}

inline Bounded operator+(const Bounded& x, const Bounded& y) {
  return rounded(x.value + y.value, x.error + y.error);
}

inline Bounded operator-(const Bounded& x, const Bounded& y) {
  return rounded(x.value - y.value, x.error + y.error);
}

inline Bounded operator*(const Bounded& x, const Bounded& y) {
  return rounded(x.value * y.value,
                 std::abs(x.value) * y.error + std::abs(y.value) * x.error + x.error * y.error);
}

inline Bounded operator/(const Bounded& x, const Bounded& y) {
  const double value = x.value / y.value;
  return rounded(value, (x.error + std::abs(value) * y.error) / (std::abs(y.value) - y.error));
}

inline Bounded& operator+=(Bounded& x, const Bounded& y) { return x = x + y; }
inline Bounded& operator-=(Bounded& x, const Bounded& y) { return x = x - y; }
inline Bounded& operator*=(Bounded& x, const Bounded& y) { return x = x * y; }
inline Bounded& operator/=(Bounded& x, const Bounded& y) { return x = x / y; }

/// The number itself, where an algorithm that is written for any type chooses by size.
inline double valueOf(double x) { return x; }
inline double valueOf(const Bounded& x) { return x.value; }

/// x - y for two control points. Coordinates that are equal are meant to be equal, however they
/// came about: their distance is exactly 0.
inline double leg(double x, double y) { return x - y; }
inline Bounded leg(const Bounded& x, const Bounded& y) {
  return x.value == y.value ? Bounded{} : x - y;
}

}  // namespace knotwork::detail
