// SPDX-License-Identifier: MIT
// Decompositions under hostile input: what is not finite, empty, of the wrong shape or out of
// memory. Nothing runs for ever, nothing is touched outside storage (the sanitizers watch).
#include <gtest/gtest.h>

#include "knotwork/decomp/double_gen_fact.h"
#include "knotwork/decomp/double_least_sq_ch.h"
#include "knotwork/decomp/double_least_sq_inc.h"
#include "knotwork/decomp/double_least_sq_qr.h"
#include "knotwork/decomp/double_sv_decomp.h"
#include "knotwork/vector/math_codes.h"
#include "support/failing_new.h"
#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

/// Every class on a, every member once. @return a number that depends on the results.
double useEverything(const DoubleGenMat& a) {
  const DoubleVec b(a.rows(), 1.0), x(a.cols(), 1.0);
  double total = 0.0;
  const auto add = [&](const DoubleVec& v) { total += v.length() > 0 ? v(0) : 1.0; };
  for (const int option : {0, 1}) {
    const DoubleGenFact lu(a, option);
    add(lu.solve(b));
    add(lu.solve(x));
    total += lu.determinant() + lu.inverse().rows() + lu.isSingular() + lu.condition();

    DoubleLeastSqQR qr;
    qr.doPivoting(option);
    for (int i = 0; i < 2; ++i) qr.factor(a);
    for (const int k : {-1, 0, 1, 1000})
      for (const DoubleVec& v : {qr.partialSolve(b, k), qr.computeQy(x, k), qr.computeXb(b, k)})
        add(v);
    qr.setTolerance(0.5);
    add(qr.solve(b));
    add(qr.residual(x));
    qr.doPivoting(1 - option);
    add(qr.permute(b));

    DoubleLeastSqCh ch;
    ch.doPivoting(option);
    ch.factor(a);
    ch.setTolerance(0.5);
    add(ch.solve(b));
    add(ch.residual(x));
    ch.DoubleChDecomp::factor(a);
    add(ch.DoubleChDecomp::solve(x));
    add(ch.partialSolve(b, 1000));
    total += ch.condition() + ch.fail();
    DoubleGenMat Z(a.rows(), 2, 1.0);
    DoubleVec rho(2, 1.0), y(2, 1.0), c(a.cols()), s(1);
    ch.shift(0, 1, option, &Z, &s, &c);
    ch.update(x, &Z, &y, &rho, &c, &s);
    total += ch.downdate(b, &Z, &y, &rho, nullptr, &s);
    total += ch.downdate(x, &Z, nullptr, &rho, &c, nullptr);
  }
  DoubleSVDecomp sv(a);
  sv.computeAllLeftVecs(0);
  sv.factor(a);
  add(sv.singularValues());
  add(sv.eValues());

  DoubleLeastSqInc inc(a.cols(), 2);
  DoubleLeastSqInc copy = inc.copy();
  const DoubleGenMat whole = a.deepCopy();
  for (int i = 0; i < static_cast<int>(whole.rows()); ++i) {
    DoubleVec row = whole.row(i);
    inc.addEquation(row, DoubleVec(2, 1.0));
    total += copy.deleteEquation(row, 2.0) + copy.residualNorm(1);
  }
  add(inc.solve(1));
  return total;
}

std::vector<DoubleGenMat> hostileMatrices() {
  const double numbers[] = {std::nan(""), HUGE_VAL, -HUGE_VAL, 0.0, 1e-310, 1e308};
  std::vector<DoubleGenMat> all;
  const std::pair<unsigned, unsigned> shapes[] = {{0, 0}, {0, 3}, {3, 0}, {1, 1},  {1, 4},
                                                  {4, 1}, {3, 5}, {5, 3}, {10, 10}};
  for (const auto& [rows, cols] : shapes) {
    all.push_back(Random(61).matrix(rows, cols));
    for (const double number : numbers) {
      all.push_back(DoubleGenMat(rows, cols, number));
      DoubleGenMat one = Random(62).matrix(rows, cols);
      if (rows * cols > 0) one(static_cast<int>(rows) / 2, static_cast<int>(cols) / 2) = number;
      all.push_back(one);
    }
  }
  return all;
}

TEST(Decompositions, EndOnEveryHostileMatrixWithoutLeavingTheirStorage) {
  RecordedErrors errors;
  for (const DoubleGenMat& a : hostileMatrices()) {
    const DoubleGenMat before = a.copy();
    useEverything(a);
    EXPECT_TRUE(a == before || std::isnan(norm(a)));  // never changed
    const DoubleGenMat backwards(reverse(a.dataVec()), a.rows(), a.cols());
    useEverything(backwards);
    // a matrix whose vector is too short for its dimensions
    useEverything(DoubleGenMat(DoubleVec(a.rows(), 1.0), a.rows(), a.cols() + 1));
  }
  EXPECT_FALSE(errors.all().empty());
}

/// Assigns a larger and a smaller decomposition to one another and uses both.
template <class Decomposition, class Use>
void crossAssign(Use use) {
  Decomposition small(identity(2)), large(hilbert(7)), empty;
  small = large;
  use(small, 2);
  empty = large;
  use(empty, 0);
  large = Decomposition(identity(2));
  use(large, 7);
}

TEST(Decompositions, StayInTheirStorageAfterAssignmentBetweenSizes) {
  RecordedErrors errors;
  crossAssign<DoubleGenFact>([](const DoubleGenFact& lu, unsigned n) {
    EXPECT_EQ(lu.rows(), n);
    lu.solve(DoubleVec(n, 1.0));
    lu.inverse();
    lu.determinant();
  });
  crossAssign<DoubleLeastSqQR>([](const DoubleLeastSqQR& qr, unsigned n) {
    EXPECT_EQ(qr.solve(DoubleVec(n, 1.0)).length(), n);
    qr.residual(DoubleVec(n, 1.0));
  });
  crossAssign<DoubleLeastSqCh>([](DoubleLeastSqCh& ch, unsigned n) {
    EXPECT_EQ(ch.solve(DoubleVec(n, 1.0)).length(), n);
    EXPECT_LE(ch.numFreeCols(), n);
    ch.condition();
    ch.shift(0, 4, 0, nullptr, nullptr, nullptr);
  });
  crossAssign<DoubleSVDecomp>(
      [](const DoubleSVDecomp& sv, unsigned n) { EXPECT_EQ(sv.singularValues().length(), n); });
  EXPECT_FALSE(errors.all().empty());
  EXPECT_EQ(errors.all()[0].code, 0x4004u);
}

TEST(Decompositions, SurviveTheFailureOfEveryAllocation) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own here";
  static int outOfMemory;  // a handler that allocates nothing
  const auto handler = [](MathErrorRecord record, va_list) {
    outOfMemory += record.code == knotwork::kOutOfMemory;
  };
  const MathErrorHandler outer = setMathErrorHandler(handler);
  for (const auto& [rows, cols] : {std::pair{5u, 3u}, {3u, 3u}}) {
    const DoubleGenMat a = Random(64).matrix(rows, cols);
    long allowed = 0;
    do {  // until it needs no more than it may have
      outOfMemory = 0;
      const FailingNew failing(allowed++);
      useEverything(a);
    } while (outOfMemory > 0);
    EXPECT_GT(allowed, 100);
  }
  setMathErrorHandler(outer);
}

}  // namespace
