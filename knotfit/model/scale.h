// SPDX-License-Identifier: MIT
// Scaling by powers of two, which rounds nothing.
//
// Squares of coordinates beyond 1e154 or below 1e-154 leave the range of numbers. So work on
// distances goes on at a size near 1, and the results are scaled back. The powers are even: then
// square roots of lengths scale without rounding too, and data of any size give the same digits.
#pragma once

#include <cstddef>
#include <vector>

#include "model/points.h"
#include "model/spline.h"

namespace knotfit {

/// @return the even e for which 2^-e brings the largest magnitude to 1 .. 4; 0 for zeros alone.
int evenExponent(const std::vector<double>& values);

/// @return evenExponent(values) where squares of such numbers, or of their rounding, may come near
/// an end of the range; else 0: then work on distances needs no scaling.
int rangeExponent(const std::vector<double>& values);

/// Multiplies by 2^exponent.
void scaleBy(std::vector<double>& values, int exponent);
void scaleBy(Spline& spline, int exponent);
void scaleBy(PointGrid& grid, int exponent);

/// @return a power of two that brings the largest magnitude to about 2^40; 1 for zeros alone. The
/// solvers leave out products of about 1e-11 and less, so right-hand sides are handed over large.
double solverScale(const double* values, std::size_t n);

/// The same for columns that stand side by side, each by a power of its own: one of large numbers
/// must not let another's count as nothing.
class ColumnScale {
 public:
  /// @param values  n numbers, those of a row one after the other.
  ColumnScale(const double* values, std::size_t n, std::size_t columns);
  void enlarge(double* values, std::size_t n) const { apply(values, n, 1); }
  void restore(double* values, std::size_t n) const { apply(values, n, -1); }

 private:
  void apply(double* values, std::size_t n, int sign) const;

  std::vector<int> exponents_;
};

}  // namespace knotfit
