// SPDX-License-Identifier: MIT
// What the matrix tests share: matrices as text, and elements on which every other order of a sum,
// and every product that is not rounded, gives other bits.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>
#include <string>

#include "knotwork/knotwork.h"
#include "support/recorded_errors.h"

template <class Mat>
std::string text(const Mat& m) {
  std::ostringstream out;
  out << m;
  return out.str();
}

// Magnitudes over 40 binary orders and many cancellations.
inline DoubleVec roughVector(unsigned n, unsigned seed) {
  std::mt19937 random(seed);
  DoubleVec v(n);
  for (int i = 0; i < static_cast<int>(n); ++i) {
    const double mantissa = static_cast<double>(random()) - 0x1p31;
    v(i) = std::ldexp(mantissa, static_cast<int>(random() % 40) - 50);
  }
  return v;
}
