// SPDX-License-Identifier: MIT
// Level-1 routines: which implementations may stand behind the factorisations.
#include "platform/blas1.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

namespace {

using knotwork::blas1::kBuiltin;
using knotwork::blas1::Table;
using knotwork::blas1::withReferenceBits;

double dotOfFourSums(int n, const double* x, const double* y) {
  double sums[4] = {};
  for (int i = 0; i < n; ++i) sums[i % 4] += x[i] * y[i];
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

double dotFusedFromSixtyFour(int n, const double* x, const double* y) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum = n >= 64 ? std::fma(x[i], y[i], sum) : sum + x[i] * y[i];
  return sum;
}

void fusedAxpy(int n, double a, const double* x, double* y) {
  for (int i = 0; i < n && a != 0.0; ++i) y[i] = std::fma(a, x[i], y[i]);
}

void axpyThatMultipliesByZero(int n, double a, const double* x, double* y) {
  for (int i = 0; i < n; ++i) y[i] += a * x[i];
}

void scalThatClears(int n, double a, double* x) {
  for (int i = 0; i < n; ++i) x[i] = a == 0.0 ? 0.0 : a * x[i];
}

double backwardAsum(int n, const double* x) {
  double sum = 0.0;
  for (int i = n - 1; i >= 0; --i) sum += std::abs(x[i]);
  return sum;
}

double wideNorm(int n, const double* x) {
  double sum = 0.0, lost = 0.0;  // compensated, as good as a wider sum
  for (int i = 0; i < n; ++i) {
    const double term = x[i] * x[i];
    const double next = sum + term;
    lost += std::abs(sum) >= term ? (sum - next) + term : (term - next) + sum;
    sum = next;
  }
  return std::sqrt(sum + lost);
}

double normByRunningMaximum(int n, const double* x) {
  double scale = 0.0, sum = 1.0;
  for (int i = 0; i < n; ++i) {
    const double size = std::abs(x[i]);
    if (size == 0.0) continue;
    sum = scale < size ? 1.0 + sum * (scale / size) * (scale / size)
                       : sum + (size / scale) * (size / scale);
    scale = std::max(scale, size);
  }
  return scale * std::sqrt(sum);
}

void rotgOfEarlierReleases(double* a, double* b, double* c, double* s) {
  const double scale = std::abs(*a) + std::abs(*b);
  if (scale == 0.0) return kBuiltin.drotg(a, b, c, s);
  const double size = scale * std::sqrt(*a / scale * (*a / scale) + *b / scale * (*b / scale));
  const double r = std::copysign(size, std::abs(*a) > std::abs(*b) ? *a : *b);
  *c = *a / r;
  *s = *b / r;
  *a = r;
}

int lastOfEquals(int n, const double* x) {
  int place = n < 1 ? -1 : 0;
  for (int i = 1; i < n; ++i)
    if (std::abs(x[i]) >= std::abs(x[place])) place = i;
  return place + 1;
}

TEST(Blas1, TakesEveryRoutineWithTheReferenceBits) {
  // The same ten behind other addresses.
  const Table same{
      [](int n, const double* x, const double* y) { return kBuiltin.ddot(n, x, y); },
      [](int n, double a, const double* x, double* y) { kBuiltin.daxpy(n, a, x, y); },
      [](int n, double a, double* x) { kBuiltin.dscal(n, a, x); },
      [](int n, const double* x, double* y) { kBuiltin.dcopy(n, x, y); },
      [](int n, double* x, double* y) { kBuiltin.dswap(n, x, y); },
      [](int n, const double* x) { return kBuiltin.dasum(n, x); },
      [](int n, const double* x) { return kBuiltin.dnrm2(n, x); },
      [](int n, double* x, double* y, double c, double s) { kBuiltin.drot(n, x, y, c, s); },
      [](double* a, double* b, double* c, double* s) { kBuiltin.drotg(a, b, c, s); },
      [](int n, const double* x) { return kBuiltin.idamax(n, x); }};
  const Table table = withReferenceBits(same);
  EXPECT_TRUE(table.ddot == same.ddot && table.daxpy == same.daxpy && table.dscal == same.dscal &&
              table.dcopy == same.dcopy && table.dswap == same.dswap && table.dasum == same.dasum &&
              table.dnrm2 == same.dnrm2 && table.drot == same.drot && table.drotg == same.drotg &&
              table.idamax == same.idamax);
}

TEST(Blas1, RefusesReorderedFusedAndOlderRoutines) {
  const auto refuses = [](auto Table::*routine, auto fake) {
    Table candidate = kBuiltin;
    candidate.*routine = fake;
    return withReferenceBits(candidate).*routine == kBuiltin.*routine;
  };
  EXPECT_TRUE(refuses(&Table::ddot, dotOfFourSums));
  EXPECT_TRUE(refuses(&Table::ddot, dotFusedFromSixtyFour));
  EXPECT_TRUE(refuses(&Table::daxpy, fusedAxpy));
  EXPECT_TRUE(refuses(&Table::daxpy, axpyThatMultipliesByZero));
  EXPECT_TRUE(refuses(&Table::dscal, scalThatClears));
  EXPECT_TRUE(refuses(&Table::dasum, backwardAsum));
  EXPECT_TRUE(refuses(&Table::dnrm2, wideNorm));
  EXPECT_TRUE(refuses(&Table::dnrm2, normByRunningMaximum));
  EXPECT_TRUE(refuses(&Table::drotg, rotgOfEarlierReleases));
  EXPECT_TRUE(refuses(&Table::idamax, lastOfEquals));
}

TEST(Blas1, UsesTheSystemsRoutinesUnlessToldOtherwise) {
  const char* wanted = std::getenv("KNOTWORK_BLAS");
  const bool builtin = wanted != nullptr && std::string(wanted) == "builtin";
  const Table* system = builtin ? nullptr : knotwork::blas1::systemTable();
  const Table expected = system ? withReferenceBits(*system) : kBuiltin;
  EXPECT_EQ(knotwork::blas1::active.dcopy, expected.dcopy);
  EXPECT_EQ(knotwork::blas1::active.daxpy, expected.daxpy);
  // A copy is a copy on every BLAS.
  EXPECT_EQ(expected.dcopy != kBuiltin.dcopy, system != nullptr);
}

}  // namespace
