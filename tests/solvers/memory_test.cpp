// SPDX-License-Identifier: MIT
// Every operation of every solver, with every request for memory failing in turn, alone or with all
// after it: either there is no result and nothing has changed, and the same objects then work, or
// the result has the bits that it has with memory enough.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/banded_least_squares.h"
#include "knotwork/solvers/householder.h"
#include "knotwork/solvers/solve_constrained_lsq_qr.h"
#include "knotwork/solvers/solve_tensor_product_lsq.h"
#include "knotwork/vector/math_error.h"
#include "solvers/systems.h"
#include "support/failing_new.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

struct LetterCounter : TsolverReporter {
  LetterCounter() : TsolverReporter(false) {}
  void reportMessage(const char* text) override { letters += std::string_view(text).size(); }
  std::size_t letters = 0;
};

// A class of a host: asked for one side after the other.
struct Derived : Thouseholder {
  using Thouseholder::Thouseholder;
};

// Takes what an operation returned, unless it is nothing or zeros.
template <class Result>
int take(Result& target, Result result) {
  const DoubleVec& values = result;
  if (sum(abs(values)) == 0) return 4;
  target.reference(result);
  return 0;
}

// Solvers, systems and data for an operation, the same ones each time.
template <class Solver, class... Limit>
struct Bench {
  Random random{30};
  LetterCounter listener;
  Solver u, v, copy;
  TsolveTensorProductLsq grid{u, v};
  DoubleGenMat a = random.matrix(9, 4), other = random.matrix(7, 3);
  DoubleVec rhs = random.vector(9), x = random.vector(4), damped;
  TtupleVector points = random.points(6, 9), found = random.points(6, 4), line{2, 3, 7.0};
  DoubleGenMat data = random.matrix(9, 7), net = random.matrix(4, 3);
  DoubleVec flatData = random.vector(126), flatNet = random.vector(24);
  TtupleMatrix pointData{2, 9, 7, flatData}, pointNet{2, 4, 3, flatNet};
  IntGenMat mask{4, 3, 0};
  IntVec fixed = indices({2}), rows, cols;

  explicit Bench(Limit... limit)
      : u(listener, 1e-12, limit..., true), v(1e-12, Limit{}..., false), copy(u) {
    mask(1, 0) = mask(2, 0) = mask(0, 2) = 1;
  }

  int set(int flags = 3) { return u.setMatrix(a, fixed, 1, flags & 1, flags & 2, flags & 4); }
  int setOther() { return u.setMatrix(other, 0, false, false, false); }
  int setGrid() { return grid.setMatrix(a, other, 1, 0, true, false, true, false, false, false); }
  int solve() { return u.solve(rhs, &x, false); }
  int solveGrid() { return grid.solve(data, &net); }
  int solveFixed() { return grid.solveFixed(a, other, mask, data, &net); }

  // All that an operation may change.
  Values state() const {
    Values all;
    for (const DoubleVec& part : {x, DoubleVec(found), flatNet, net.dataVec(), damped,
                                  DoubleVec(rows), DoubleVec(cols), copy.solve(rhs)}) {
      const Values values = valuesOf(part);
      all.insert(all.end(), values.begin(), values.end());
    }
    return all;
  }
};

template <class B>
struct Operation {
  std::string name;
  std::function<void(B&)> prepare;
  std::function<int(B&)> run;
};

template <class B>
std::vector<Operation<B>> operations() {
  const auto nothing = [](B&) {};
  const auto set = [](B& b) { b.set(); };
  const auto setGrid = [](B& b) { b.setGrid(); };
  const auto setCopy = [](B& b) { b.set(), b.copy.reference(b.u); };
  std::vector<Operation<B>> all{
      {"prescribed", set, [](B& b) { return b.u.solve(b.rhs, &b.x, true); }},
      {"prescribed points", set, [](B& b) { return b.u.solve(b.points, &b.found, true); }},
      {"another length", [](B& b) { b.set(), b.x.reference(DoubleVec(2, 7.0)); }, &B::solve},
      {"another dimension", [](B& b) { b.set(), b.found.reference(b.line); },
       [](B& b) { return b.u.solve(b.points, &b.found, false); }},
      {"in place", [](B& b) { std::ignore = b.u.setMatrix(b.a, 1, true, false, false); },
       [](B& b) { return b.u.solveInPlace(b.points, &b.found); }},
      {"value", set, [](B& b) { return take(b.x, b.u.solve(b.rhs)); }},
      {"points", set, [](B& b) { return take(b.found, b.u.solve(b.points)); }},
      {"damped", set, [](B& b) { return take(b.damped, b.u.altMatrix().dataVec()); }},
      {"copies", setCopy, &B::setOther},
      {"deep copies", setCopy, [](B& b) { return b.copy.deepenShallowCopy(), b.setOther(); }},
      {"zeros", nothing,
       [](B& b) { return TsolveSystems::findZero(b.a, b.fixed, b.rows, b.cols, 0.5) ? 0 : 4; }},
      {"grid", setGrid, &B::solveGrid},
      {"grid of points", setGrid, [](B& b) { return b.grid.solve(b.pointData, &b.pointNet); }},
      {"set and solve grid", nothing, [](B& b) { return b.setGrid() == 0 ? b.solveGrid() : 4; }},
      {"fixed", nothing, &B::solveFixed},
      {"none fixed", [](B& b) { b.mask = 0; }, &B::solveFixed},
      {"fixed, none cleaned", [](B& b) { b.a = -abs(b.a); }, &B::solveFixed},
      {"fixed points", nothing,
       [](B& b) { return b.grid.solveFixed(b.a, b.other, b.mask, b.pointData, &b.pointNet); }},
  };
  for (int flags = 0; flags < 8; ++flags) {
    all.push_back({"set and solve, " + std::to_string(flags), nothing,
                   [flags](B& b) { return b.set(flags) == 0 ? b.solve() : 4; }});
  }
  return all;
}

double largestDifference(const Values& a, const Values& b) {
  return a.size() == b.size() ? maxValue(abs(vectorOf(a) - vectorOf(b))) : HUGE_VAL;
}

template <class B, class... Limit>
void expectResultsOrNone(const std::vector<Operation<B>>& all, Limit... limit) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
  for (const Operation<B>& operation : all) {
    SCOPED_TRACE(operation.name);
    std::optional<B> bench;
    std::vector<DoubleVec> heldBlocks;
    Values given;
    const auto renew = [&] {
      heldBlocks.clear();
      bench.emplace(limit...);
      operation.prepare(*bench);
      given = bench->state();
      heldBlocks.resize(6);  // those of the cache
    };
    renew();
    EXPECT_EQ(operation.run(*bench), 0);
    const Values expected = bench->state();
    renew();
    int code = 0, refusals = 0;
    failEveryAllocation([&] { code = operation.run(*bench); },
                        [&] {
                          refusals += code != 0;
                          ASSERT_EQ(bench->state(), code == 0 ? expected : given);
                          ASSERT_EQ(operation.run(*bench), 0);
                          // Factored twice a system may give other bits: QR keeps its order of
                          // columns.
                          ASSERT_LE(largestDifference(bench->state(), expected), 1e-12);
                          renew();
                        });
    EXPECT_GT(refusals, 5);
  }
  setMathErrorHandler(before);
}

TEST(ExhaustedMemory, LeavesSolversWithoutAResult) {
  using B = Bench<Thouseholder, int>;
  std::vector<Operation<B>> all = operations<B>();
  all.push_back({"corrected", [](B& b) { b.set(); },
                 [](B& b) { return take(b.found, b.u.altSolve(b.points, 2)); }});
  expectResultsOrNone(all, 2);
  expectResultsOrNone(operations<Bench<TsolveConstrainedLsqQR>>());
  expectResultsOrNone(operations<Bench<Derived, int>>(), 0);
}

TEST(ExhaustedMemory, LeavesABandedSystemWithoutAResult) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
  Random random{31};
  const int first[] = {0, 1, 2, 3, 4, 5, 6, 7, 6, 5, 4, 3, 2, 1, 0, 7, 7};
  constexpr unsigned count = std::size(first);
  const DoubleVec values = random.vector(3 * count), sides = random.vector(2 * count);
  const DoubleVec entries = random.vector(3), two = random.vector(2), one(1, 2.0);
  const IntVec wide = indices({0, 4, 9}), narrow = indices({2});
  for (const bool periodic : {false, true}) {
    BandedLeastSquares solver(10, 3, 2, periodic);
    solver.threads() = kThreadsWithoutMemory;
    TtupleVector x;
    const auto fill = [&] {
      solver.clear();
      int code = solver.prescribe(8, two);
      if (code == 0) code = solver.addRows(count, first, values.data(), sides.data());
      if (code == 0) code = solver.addConstraint(wide, entries, two);
      if (code == 0) code = solver.addConstraint(narrow, one, two);
      return code == 0 ? solver.solve(&x) : code;
    };
    ASSERT_EQ(fill(), 0);
    const Values expected = valuesOf(DoubleVec(x)), nothing = {7, 7};
    const auto renew = [&] {
      TtupleVector untouched(2, 1, 7.0);
      x.reference(untouched);
    };
    renew();
    int code = 0, refusals = 0;
    failEveryAllocation([&] { code = fill(); },
                        [&] {
                          refusals += code != 0;
                          ASSERT_TRUE(code == 0 || code == -1) << code;
                          ASSERT_EQ(valuesOf(DoubleVec(x)), code == 0 ? expected : nothing);
                          ASSERT_EQ(fill(), 0);
                          ASSERT_EQ(valuesOf(DoubleVec(x)), expected);
                          renew();
                        });
    EXPECT_GT(refusals, 50);
  }
  setMathErrorHandler(before);
}

TEST(ExhaustedMemory, DoesNotKeepReportersFromReporting) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  constexpr std::string_view line = "Constraint solving ... 33.33333333333333 completed.";
  LetterCounter listener;
  failEveryAllocation([&] { listener.reportProgress(1.0 / 3); },
                      [&] { EXPECT_EQ(std::exchange(listener.letters, 0), line.size()); });
}

}  // namespace
}  // namespace knotwork::test
