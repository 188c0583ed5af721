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

double first(const DoubleVec& v) { return v.length() > 0 ? v(0) : 1.0; }

// Every member of an object, with right-hand sides of the lengths of its rows and of its columns.
// The sums depend on all results.

double use(DoubleGenFact& lu, const DoubleVec& b, const DoubleVec& x) {
  return first(lu.solve(b)) + first(lu.solve(x)) + lu.determinant() + lu.inverse().rows() +
         lu.isSingular() + lu.condition();
}

double use(DoubleLeastSqQR& qr, const DoubleVec& b, const DoubleVec& x) {
  double total = 0.0;
  for (const int k : {-1, 0, 1, 1000})
    for (const DoubleVec& v : {qr.partialSolve(b, k), qr.computeQy(x, k), qr.computeXb(b, k)})
      total += first(v);
  qr.setTolerance(0.5);
  total += first(qr.solve(b)) + first(qr.residual(x));
  qr.doPivoting(1 - qr.doPivoting(0));
  return total + first(qr.permute(b));
}

double use(DoubleLeastSqCh& ch, const DoubleVec& b, const DoubleVec& x) {
  ch.setTolerance(0.5);
  double total = first(ch.solve(b)) + first(ch.residual(x)) + first(ch.DoubleChDecomp::solve(x)) +
                 first(ch.partialSolve(b, 1000)) + ch.condition() + ch.fail() + ch.numFreeCols();
  DoubleGenMat Z(b.length(), 2, 1.0);
  DoubleVec rho(2, 1.0), y(2, 1.0), c(x.length()), s(1);
  for (const int direction : {0, 1}) ch.shift(0, 1 + 3 * direction, direction, &Z, &s, &c);
  ch.update(x, &Z, &y, &rho, &c, &s);
  return total + ch.downdate(b, &Z, &y, &rho, nullptr, &s) +
         ch.downdate(x, &Z, nullptr, &rho, &c, nullptr);
}

double use(DoubleSVDecomp& sv, const DoubleVec&, const DoubleVec&) {
  return first(sv.singularValues()) + first(sv.eValues()) + sv.numSVsFound();
}

double useEverything(const DoubleGenMat& a) {
  const DoubleVec b(a.rows(), 1.0), x(a.cols(), 1.0);
  double total = 0.0;
  for (const int option : {0, 1}) {
    DoubleGenFact lu(a, option);
    DoubleLeastSqQR qr;
    qr.doPivoting(option);
    for (int i = 0; i < 2; ++i) qr.factor(a);
    DoubleLeastSqCh ch;
    ch.doPivoting(option);
    ch.factor(a);
    total += use(lu, b, x) + use(qr, b, x) + use(ch, b, x);
    ch.DoubleChDecomp::factor(a);
    total += use(ch, b, x);
  }
  DoubleSVDecomp sv(a);
  sv.computeAllLeftVecs(0);
  sv.factor(a);
  total += use(sv, b, x);

  DoubleLeastSqInc inc(a.cols(), 2);
  DoubleLeastSqInc copy = inc.copy();
  const DoubleGenMat whole = a.deepCopy();
  for (int i = 0; i < static_cast<int>(whole.rows()); ++i) {
    DoubleVec row = whole.row(i);
    inc.addEquation(row, DoubleVec(2, 1.0));
    total += copy.deleteEquation(row, 2.0) + copy.residualNorm(1);
  }
  return total + first(inc.solve(1));
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

/// Assigns a larger and a smaller decomposition to one another and uses all.
template <class Decomposition>
void crossAssign() {
  Decomposition small(identity(2)), large(hilbert(7)), empty;
  empty = large;
  small = large;
  large = Decomposition(identity(2));
  for (Decomposition* const one : {&small, &large, &empty})
    for (const unsigned n : {0u, 2u, 7u}) use(*one, DoubleVec(n, 1.0), DoubleVec(n, 1.0));
}

TEST(Decompositions, StayInTheirStorageAfterAssignmentBetweenSizes) {
  RecordedErrors errors;
  crossAssign<DoubleGenFact>();
  crossAssign<DoubleLeastSqQR>();
  crossAssign<DoubleLeastSqCh>();
  crossAssign<DoubleSVDecomp>();
  EXPECT_EQ(errors.all().at(0).code, 0x4004u);
  DoubleGenFact small(identity(2));
  small = DoubleGenFact(hilbert(7));
  EXPECT_EQ(small.rows(), 2u);
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
