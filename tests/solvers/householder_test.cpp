// SPDX-License-Identifier: MIT
// Decisions, corrections and sharing of the Householder solver; its numbers are those of its
// definition, bit for bit, in another file.
#include "knotwork/solvers/householder.h"

#include <gtest/gtest.h>

#include <cmath>

#include "knotwork/platform/foundation/string.h"
#include "solvers/open_solver.h"
#include "solvers/systems.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

TEST(Householder, AcceptsFewerThan65536RowsOrColumns) {
  for (const unsigned size : {65535u, 65536u, 70000u}) {
    for (const bool wide : {false, true}) {
      const DoubleGenMat a(wide ? 1 : size, wide ? size : 1, 0.5);
      Thouseholder solver(1e-10, 0, false);
      EXPECT_EQ(solver.setMatrix(a, 0, false, true, false), size < 65536 ? 0 : -1);
      DoubleVec x(1, 7.0);
      EXPECT_EQ(solver.solve(DoubleVec(a.rows(), 1.0), &x, false), size < 65536 ? 0 : 5);
      EXPECT_EQ(x.length(), wide && size < 65536 ? size : 1);
    }
  }
}

TEST(Householder, CorrectedSolutionsAgreeWithThePlainOne) {
  Random random(16);
  DoubleGenMat a = splineSystem(random, 90, 3, 12);
  a.row(20) = 0.0;  // dropped
  a.col(5) = 0.0;
  const TtupleVector rhs = random.points(2, 93);
  for (const bool normalise : {false, true}) {
    Thouseholder solver(1e-14, 0, false);
    EXPECT_EQ(solver.altSolve(rhs, 1).points(), 0);
    ASSERT_EQ(solver.setMatrix(a, 3, normalise, true, false), 0);
    const TtupleVector x = solver.solve(rhs);
    for (const int turns : {-1, 0, 1, 4}) {
      const TtupleVector corrected = solver.altSolve(rhs, turns);
      ASSERT_EQ(corrected.points(), 12);
      EXPECT_LE(maxValue(abs(corrected.data() - x.data())), turns > 0 ? 1e-11 : 0.0);
      EXPECT_EQ(corrected.point(5)(0), 0.0);
    }
    EXPECT_EQ(sum(abs(solver.altSolve(random.points(2, 7), 2).data())), 0.0);
  }
}

// Every pivot counts for less work than the one before; a line for every 10000 units of work.
std::string progressOf(int pivots, int weight) {
  std::string lines;
  const auto add = [&lines](double part) {
    lines += "Constraint solving ... ";
    lines += Tstring().setDouble(part * 100).asChar() + std::string(" completed.\n");
  };
  double work = 0;
  for (int step = 1; step <= pivots; ++step) {
    const double done = double(step) / pivots;
    work += std::floor((1 - done) * weight + 0.5);
    if (work > 10000) work -= 10000, add(done);
  }
  add(1);
  return lines;
}

TEST(Householder, ReportsTheProgressOfBothPhases) {
  struct Collecting : TsolverReporter {
    Collecting() : TsolverReporter(false) {}
    void reportMessage(const char* text) override { lines.append(text).append("\n"); }
    std::string lines;
  } reporter;
  Random random(18);
  Thouseholder solver(reporter, 1e-12, 0, false);
  ASSERT_EQ(solver.setMatrix(random.matrix(260, 220), 110, false, false, false), 0);
  EXPECT_EQ(reporter.lines,
            " Region cutoff value set to 0.000000\n" + progressOf(110, 220) + progressOf(110, 260));
}

// ---- Sharing ------------------------------------------------------------------------------------

TEST(Householder, ReferringTakesOverEveryMember) {
  Random random(17);
  TsolverReporter reporter(true);
  Thouseholder original(reporter, 1e-3, 2, true), other(1e-12, 0, false);
  original.*Open::copyRhs = false;
  ASSERT_EQ(original.setMatrix(random.matrix(9, 4), indices({2}), 1, true, true, false), 0);
  Thouseholder copy(original);
  other.reference(original);
  for (const Thouseholder* s : {&copy, &other}) {
    EXPECT_EQ(Open::scalars(*s), Open::scalars(original));
    EXPECT_EQ(Open::places(*s), Open::places(original));
  }
  other.deepenShallowCopy();
  for (std::size_t i = 0; i < Open::places(other).size(); ++i) {
    EXPECT_EQ(Open::places(other)[i] == Open::places(original)[i], i < 2) << i;
  }
}

template <class Solver>
void expectCopiesToStand(Solver original) {
  Random random(29);
  Solver referring(original);
  ASSERT_EQ(original.setMatrix(random.matrix(9, 4), 1, true, false, false), 0);
  const DoubleVec rhs = random.vector(9), x = original.solve(rhs);
  Solver copy(original), deepened(original);
  referring.reference(original);
  deepened.deepenShallowCopy();
  ASSERT_EQ(original.setMatrix(random.matrix(9, 4), 0, false, false, false), 0);
  for (const Solver* s : {&copy, &referring, &deepened}) EXPECT_TRUE(s->solve(rhs) == x);
}

TEST(Sharing, CopiesKeepTheSystemTheyWereMadeOf) {
  expectCopiesToStand(BothSolvers().householder);
  expectCopiesToStand(BothSolvers().qr);
}

}  // namespace
}  // namespace knotwork::test
