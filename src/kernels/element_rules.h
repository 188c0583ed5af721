// SPDX-License-Identifier: MIT
// All that the element types do differently: integers wrap through their unsigned type and divide
// truly, doubles follow IEEE arithmetic and are divided by a scalar through its reciprocal.
#pragma once

#include <type_traits>

namespace knotwork::detail {

template <class T>
struct ElementRules {
  using Text = int;  // what streams insert and extract
  static constexpr bool kDividesByReciprocal = false;

  static constexpr T add(T a, T b) { return wrap(bits(a) + bits(b)); }
  static constexpr T subtract(T a, T b) { return wrap(bits(a) - bits(b)); }
  static constexpr T multiply(T a, T b) { return wrap(bits(a) * bits(b)); }
  static constexpr T negate(T a) { return wrap(0u - bits(a)); }
  // By -1 the quotient wraps too; by 0 it is what the machine makes of it.
  static constexpr T divide(T a, T b) { return b == T(-1) ? negate(a) : static_cast<T>(a / b); }
  static constexpr T absolute(T a) { return a < 0 ? negate(a) : a; }
  static constexpr T fromText(Text value) { return static_cast<T>(value); }

 private:
  static constexpr unsigned bits(T a) { return static_cast<unsigned>(a); }
  static constexpr T wrap(unsigned a) { return static_cast<T>(a); }
};

template <>
struct ElementRules<double> {
  using Text = double;
  static constexpr bool kDividesByReciprocal = true;

  static constexpr double add(double a, double b) { return a + b; }
  static constexpr double subtract(double a, double b) { return a - b; }
  static constexpr double multiply(double a, double b) { return a * b; }
  static constexpr double negate(double a) { return -a; }
  static constexpr double divide(double a, double b) { return a / b; }
  static constexpr double absolute(double a) { return __builtin_fabs(a); }
  static constexpr double fromText(Text value) { return value; }
};

}  // namespace knotwork::detail
