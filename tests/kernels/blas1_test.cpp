// SPDX-License-Identifier: MIT
// Level-1 routines: which implementations may stand behind the factorisations.
#include "kernels/blas1.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstdlib>
#include <string>

#include "kernels/kernels.h"

namespace {

using knotwork::blas1::Table;

const Table& kBuiltin = knotwork::detail::baselineKernels.level1;

Table withReferenceBits(const Table& candidate) {
  return knotwork::blas1::withReferenceBits(candidate, kBuiltin);
}

/// Sum of products, fused from length 64 on, when the vector loops of a library set in.
double fusedDot(int n, const double* x, const double* y) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum = n >= 64 ? std::fma(x[i], y[i], sum) : sum + x[i] * y[i];
  return sum;
}

void axpyThatMultipliesByZero(int n, double a, const double* x, double* y) {
  for (int i = 0; i < n; ++i) y[i] += a * x[i];
}

void scalThatClears(int n, double a, double* x) {
  for (int i = 0; i < n; ++i) x[i] = a == 0.0 ? 0.0 : a * x[i];
}

double normInWiderRegisters(int n, const double* x) {
  long double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += static_cast<long double>(x[i]) * x[i];
  return static_cast<double>(std::sqrt(sum));
}

double normByRunningMaximum(int n, const double* x) {
  double scale = 0.0, sum = 1.0;
  for (int i = 0; i < n; ++i) {
    const double size = std::abs(x[i]), larger = std::max(scale, size);
    if (size == 0.0) continue;
    sum = scale < size ? 1.0 + sum * (scale / size) * (scale / size)
                       : sum + (size / scale) * (size / scale);
    scale = larger;
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

TEST(Blas1, RefusesReorderedFusedAndOlderRoutines) {
  const auto refuses = [](auto Table::*routine, auto... fakes) {
    const auto one = [=](auto fake) {
      Table candidate = kBuiltin;
      candidate.*routine = fake;
      return withReferenceBits(candidate).*routine == kBuiltin.*routine;
    };
    return (one(fakes) && ...);
  };
  EXPECT_TRUE(refuses(&Table::ddot, fusedDot));
  EXPECT_TRUE(refuses(&Table::daxpy, axpyThatMultipliesByZero));
  EXPECT_TRUE(refuses(&Table::dscal, scalThatClears));
  EXPECT_TRUE(refuses(&Table::dnrm2, normInWiderRegisters, normByRunningMaximum));
  EXPECT_TRUE(refuses(&Table::drotg, rotgOfEarlierReleases));
  EXPECT_TRUE(refuses(&Table::idamax, lastOfEquals));
}

#if defined(__GLIBC__)
TEST(Blas1, IsTriedWithoutATraceInTheHostsFloatingPointEnvironment) {
  std::fenv_t before;
  std::fegetenv(&before);
  std::feclearexcept(FE_ALL_EXCEPT);
  std::feraiseexcept(FE_UNDERFLOW);
  std::fesetround(FE_UPWARD);
  feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
  const Table table = withReferenceBits(kBuiltin);
  const int flags = std::fetestexcept(FE_ALL_EXCEPT), rounding = std::fegetround();
  const int traps = fegetexcept();
  std::fesetenv(&before);
  EXPECT_EQ(flags, FE_UNDERFLOW);
  EXPECT_EQ(rounding, FE_UPWARD);
  EXPECT_EQ(traps, FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
  EXPECT_EQ(table.ddot, kBuiltin.ddot);
}
#endif

TEST(Blas1, SaysThatAnUnknownWordIsNotObeyed) {
  const bool hasSystem = knotwork::blas1::systemTable() != nullptr;
  for (const char* word : {"build-in", "Builtin", "builtin ", "none"}) {
    const auto choice = knotwork::blas1::chooseSource(word);
    EXPECT_EQ(choice.system, hasSystem) << word;
    EXPECT_NE(choice.complaint.find(std::string("\"") + word + '"'), std::string::npos);
  }
  for (const char* word : {static_cast<const char*>(nullptr), "", "builtin"})
    EXPECT_EQ(knotwork::blas1::chooseSource(word).complaint, "");
  EXPECT_EQ(knotwork::blas1::chooseSource("system").complaint.empty(), hasSystem);
  EXPECT_FALSE(knotwork::blas1::chooseSource("builtin").system);
}

TEST(Blas1, UsesTheSystemsRoutinesUnlessToldOtherwise) {
  const char* wanted = std::getenv("KNOTWORK_BLAS");
  const bool builtin = wanted != nullptr && std::string(wanted) == "builtin";
  const Table* system = builtin ? nullptr : knotwork::blas1::systemTable();
  const Table& own = knotwork::detail::activeKernels->level1;
  const Table expected = system ? knotwork::blas1::withReferenceBits(*system, own) : own;
  EXPECT_EQ(knotwork::blas1::active().dcopy, expected.dcopy);
  EXPECT_EQ(knotwork::blas1::active().daxpy, expected.daxpy);
  // A copy is a copy on every BLAS.
  EXPECT_EQ(expected.dcopy != own.dcopy, system != nullptr);
}

}  // namespace
