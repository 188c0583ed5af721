// SPDX-License-Identifier: MIT
// The built-in level-1 routines: sums in index order, every product and sum rounded by itself.
// Source: Lawson, Hanson, Kincaid, Krogh (1979), Basic Linear Algebra Subprograms; for dnrm2 and
// drotg Anderson (2017), Algorithm 978: Safe Scaling in the Level 1 BLAS.
#pragma once

#include <algorithm>
#include <cmath>
#include <utility>

#include "kernels/level1_kernels.h"
#include "kernels/square_root.h"

namespace {

using knotwork::detail::squareRoot;

constexpr double kTiny = 0x1p-511;       // squares of smaller numbers lose digits
constexpr double kHuge = 0x1p486;        // sums of squares of larger numbers may overflow
constexpr double kTinyScale = 0x1p537;   // brings the tiny ones up
constexpr double kHugeScale = 0x1p-538;  // brings the huge ones down

/// Sums of squares in index order, one for each range of magnitudes.
struct SumsOfSquares {
  double tiny = 0.0, middle = 0.0, huge = 0.0;

  void add(double magnitude) {
    if (magnitude > kHuge) {
      huge += (magnitude * kHugeScale) * (magnitude * kHugeScale);
    } else if (magnitude < kTiny) {
      if (huge == 0.0) tiny += (magnitude * kTinyScale) * (magnitude * kTinyScale);
    } else {
      middle += magnitude * magnitude;
    }
  }
};

double lengthOfTinyAndMiddle(double tiny, double middle) {
  const double middleLength = squareRoot(middle);
  const double tinyLength = squareRoot(tiny) / kTinyScale;
  const double larger = tinyLength > middleLength ? tinyLength : middleLength;
  const double smaller = tinyLength > middleLength ? middleLength : tinyLength;
  const double ratio = smaller / larger;
  return squareRoot(larger * larger * (1.0 + ratio * ratio));
}

struct Blas1Loops {
  static double ddot(int n, const double* x, const double* y) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += x[i] * y[i];
    return sum;
  }

  static void daxpy(int n, double a, const double* x, double* y) {
    if (a == 0.0) return;  // an infinity or NaN in x does not reach y
    for (int i = 0; i < n; ++i) y[i] += a * x[i];
  }

  static void dscal(int n, double a, double* x) {
    for (int i = 0; i < n; ++i) x[i] = a * x[i];
  }

  static void dcopy(int n, const double* x, double* y) {
    for (int i = 0; i < n; ++i) y[i] = x[i];
  }

  static void dswap(int n, double* x, double* y) {
    for (int i = 0; i < n; ++i) std::swap(x[i], y[i]);
  }

  static double dasum(int n, const double* x) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += std::abs(x[i]);
    return sum;
  }

  static double dnrm2(int n, const double* x) {
    SumsOfSquares sums;
    for (int i = 0; i < n; ++i) sums.add(std::abs(x[i]));
    if (sums.huge > 0.0) {
      if (sums.middle > 0.0 || std::isnan(sums.middle))
        sums.huge += (sums.middle * kHugeScale) * kHugeScale;
      return 1.0 / kHugeScale * squareRoot(sums.huge);
    }
    if (sums.tiny > 0.0) {
      if (sums.middle == 0.0) return 1.0 / kTinyScale * squareRoot(sums.tiny);
      return lengthOfTinyAndMiddle(sums.tiny, sums.middle);
    }
    return squareRoot(sums.middle);
  }

  static void drot(int n, double* x, double* y, double c, double s) {
    for (int i = 0; i < n; ++i) {
      const double turned = c * x[i] + s * y[i];
      y[i] = c * y[i] - s * x[i];
      x[i] = turned;
    }
  }

  static void drotg(double* a, double* b, double* c, double* s) {
    const double sizeA = std::abs(*a);
    const double sizeB = std::abs(*b);
    if (sizeB == 0.0) {
      *c = 1.0;
      *s = 0.0;
    } else if (sizeA == 0.0) {
      *c = 0.0;
      *s = 1.0;
      *a = *b;
    } else {
      // r has the sign of the larger of a and b, of b when they are equal in size.
      const double scale = std::clamp(std::max(sizeA, sizeB), 0x1p-1022, 0x1p1023);
      const double scaledA = *a / scale;
      const double scaledB = *b / scale;
      const double size = scale * squareRoot(scaledA * scaledA + scaledB * scaledB);
      const double r = std::copysign(size, sizeA > sizeB ? *a : *b);
      *c = *a / r;
      *s = *b / r;
      *a = r;
    }
  }

  static int idamax(int n, const double* x) {
    if (n < 1) return 0;
    int place = 0;
    for (int i = 1; i < n; ++i)
      if (std::abs(x[i]) > std::abs(x[place])) place = i;
    return place + 1;
  }

  static constexpr knotwork::blas1::Table kTable = {ddot,  daxpy, dscal, dcopy, dswap,
                                                    dasum, dnrm2, drot,  drotg, idamax};
};

}  // namespace
