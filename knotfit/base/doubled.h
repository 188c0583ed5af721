// SPDX-License-Identifier: MIT
// Sums and products in doubled precision.
// Source: T. J. Dekker, A floating-point technique for extending the available precision (1971).
#pragma once

#include <cmath>

namespace knotfit {

/// An unevaluated sum high + low.
struct Doubled {
  double high = 0, low = 0;

  double value() const { return high + low; }

  Doubled& operator+=(double x) {
    const double sum = high + x, part = sum - high;
    low += (high - (sum - part)) + (x - part);
    high = sum;
    return *this;
  }
  Doubled& operator+=(const Doubled& x) {
    *this += x.high;
    low += x.low;
    return *this;
  }
  /// Adds the exact product a b.
  void addProduct(double a, double b) {
    const double product = a * b;
    *this += product;
    low += std::fma(a, b, -product);
  }
  /// Adds the product of doubled factors, but for that of their low parts.
  void addProduct(const Doubled& a, const Doubled& b) {
    addProduct(a.high, b.high);
    low += a.high * b.low + a.low * b.high;
  }
};

/// @return the product in doubled precision.
inline Doubled operator*(const Doubled& a, const Doubled& b) {
  const double product = a.high * b.high;
  const double rest = std::fma(a.high, b.high, -product) + (a.high * b.low + a.low * b.high);
  const double sum = product + rest;
  return {sum, rest - (sum - product)};
}
inline Doubled operator*(const Doubled& a, double b) { return a * Doubled{b, 0}; }

inline Doubled operator-(const Doubled& a) { return {-a.high, -a.low}; }

}  // namespace knotfit
