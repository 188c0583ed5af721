// SPDX-License-Identifier: MIT
// Element arithmetic to compare the vectors with: one element at a time, integers in 64 bits and
// cut down; and random elements that find the edges.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/int_vec.h"
#include "knotwork/vector/schar_vec.h"

using AllVectors = testing::Types<DoubleVec, IntVec, SCharVec>;

using Random = std::mt19937;

// A number in [low, high]; the library's distributions differ between platforms.
inline int numberIn(Random& random, int low, int high) {
  return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
}

template <class T>
struct Oracle {
  using Wide = std::conditional_t<std::is_floating_point_v<T>, double, std::int64_t>;

  static T add(T a, T b) { return static_cast<T>(Wide{a} + Wide{b}); }
  static T subtract(T a, T b) { return static_cast<T>(Wide{a} - Wide{b}); }
  static T multiply(T a, T b) { return static_cast<T>(Wide{a} * Wide{b}); }
  static T divide(T a, T b) { return static_cast<T>(Wide{a} / Wide{b}); }
  static T negate(T a) { return static_cast<T>(-Wide{a}); }
  static T absolute(T a) { return static_cast<T>(std::abs(Wide{a})); }
  // What `/=` with a scalar does.
  static T scaleDown(T a, T s) {
    if constexpr (std::is_floating_point_v<T>) return a * (1.0 / s);
    return divide(a, s);
  }
};

template <class T>
T randomElement(Random& random) {
  if constexpr (std::is_floating_point_v<T>) {
    const double size = std::ldexp(static_cast<double>(random()), numberIn(random, -60, 20));
    constexpr double edges[] = {0.0, 5e-324, 1.0, 1.7e308};
    const double x = random() % 8 == 0 ? edges[random() % 4] : size;
    return random() % 2 == 0 ? x : -x;
  } else {
    constexpr T edges[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), -1, 0, 1};
    return random() % 4 == 0 ? edges[random() % 5] : static_cast<T>(random());
  }
}

// For divisors: nothing traps.
template <class T>
T nonZero(T x) {
  return x == T{} ? T{3} : x;
}

// Equal bits; any NaN equals any other, since the processor may keep either operand's.
inline bool sameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}
template <std::integral T>
bool sameBits(T a, T b) {
  return a == b;
}

template <class Vec, class T = typename Vec::value_type>
testing::AssertionResult holds(const Vec& v, const std::vector<T>& expected) {
  if (v.length() != expected.size()) return testing::AssertionFailure() << "length " << v.length();
  for (int i = 0; i < static_cast<int>(v.length()); ++i) {
    const T wanted = expected[static_cast<std::size_t>(i)];
    if (sameBits(v(i), wanted)) continue;
    return testing::AssertionFailure() << "[" << i << "] is " << +v(i) << ", not " << +wanted;
  }
  return testing::AssertionSuccess();
}

// Reports of class `name`, each a tag and a text, one a line.
inline std::string messages(const std::string& name,
                            const std::vector<std::pair<std::string, std::string>>& reports) {
  std::string all;
  for (const auto& [tag, text] : reports) all += "[" + tag + ": " + name + "]: " + text + "\n";
  return all;
}
inline std::string lengthsDiffer(std::size_t left, std::size_t right) {
  return "Vector lengths do not match (" + std::to_string(left) + " vs " + std::to_string(right) +
         ")";
}

template <class Vec, class T = typename Vec::value_type>
Vec vectorOf(const std::vector<T>& elements) {
  return Vec(elements.data(), static_cast<unsigned>(elements.size()));
}
