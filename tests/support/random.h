// SPDX-License-Identifier: MIT
// Random numbers, vectors, matrices and points: the same ones on every platform.
#pragma once

#include <concepts>
#include <random>

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/matrix/double_gen_mat.h"

namespace knotwork::test {

/// Numbers with full mantissas.
class Random {
 public:
  explicit Random(unsigned seed) : bits_(seed) {}
  /// In [-1, 1).
  double number() { return static_cast<double>(bits_() >> 10) * 0x1p-53 - 1.0; }
  double uniform(double from, double to) { return from + (to - from) * (0.5 * number() + 0.5); }
  int below(int bound) { return static_cast<int>(bits_() % static_cast<unsigned>(bound)); }
  int within(int from, int to) { return from + below(to - from + 1); }
  DoubleVec vector(std::integral auto n) {
    DoubleVec v(static_cast<unsigned>(n));
    for (int i = 0; i < static_cast<int>(n); ++i) v(i) = number();
    return v;
  }
  DoubleGenMat matrix(std::integral auto rows, std::integral auto cols) {
    return DoubleGenMat(vector(rows * cols), unsigned(rows), unsigned(cols));
  }
  TtupleVector points(int dimension, int n) {
    DoubleVec flat = vector(dimension * n);
    return TtupleVector(dimension, flat);
  }

 private:
  std::mt19937_64 bits_;
};

}  // namespace knotwork::test
