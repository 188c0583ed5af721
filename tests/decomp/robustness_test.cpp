// SPDX-License-Identifier: MIT
// Decompositions under hostile input: what is not finite, empty, of the wrong shape, far out of
// range or out of memory. Nothing runs for ever, nothing is touched outside storage (the sanitizers
// watch), no result depends on memory that nobody wrote.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "knotwork/decomp/double_gen_fact.h"
#include "knotwork/decomp/double_least_sq_ch.h"
#include "knotwork/decomp/double_least_sq_inc.h"
#include "knotwork/decomp/double_least_sq_qr.h"
#include "knotwork/decomp/double_sv_decomp.h"
#include "support/failing_new.h"
#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

/// Everything that came out, number after number.
class Results {
 public:
  template <class... Parts>
  void add(const Parts&... parts) {
    (append(parts), ...);
  }

  bool sameBits(const Results& other) const {
    return all_.size() == other.all_.size() &&
           std::memcmp(all_.data(), other.all_.data(), all_.size() * sizeof(double)) == 0;
  }

 private:
  void append(double x) { all_.push_back(x); }
  void append(const DoubleGenMat& m) { append(m.dataVec()); }
  template <class Vec>
  requires requires(const Vec& v) { valuesOf(v); }
  void append(const Vec& v) {
    for (const double x : valuesOf(v)) append(x);
  }

  Values all_;
};

// Every member of an object, with right-hand sides of the lengths of its rows and of its columns.

void use(Results& to, DoubleGenFact& lu, const DoubleVec& b, const DoubleVec& x) {
  to.add(lu.factors(), lu.pivots(), lu.condition(), lu.isSingular());
  to.add(lu.solve(b), lu.solve(x), lu.determinant(), lu.inverse());
}

void use(Results& to, DoubleLeastSqQR& qr, const DoubleVec& b, const DoubleVec& x) {
  to.add(qr.factors(), qr.pivots(), qr.rank(), qr.isSingular());
  for (const int k : {-1, 0, 1, 1000, INT_MIN, INT_MAX}) {
    to.add(qr.partialSolve(b, k), qr.computeQy(x, k), qr.computeQTy(b, k));
    to.add(qr.computeXb(b, k), qr.computeResidualVec(x, k));
  }
  for (const double tolerance : {0.0, 0.5}) {
    qr.setTolerance(tolerance);
    to.add(qr.solve(b), qr.residual(x), qr.DoubleQRDecomp::solve(x), qr.numFreeCols());
  }
  qr.doPivoting(1 - qr.doPivoting(0));
  to.add(qr.permute(b), qr.unpermute(x));
}

void use(Results& to, DoubleLeastSqCh& ch, const DoubleVec& b, const DoubleVec& x) {
  to.add(ch.factors(), ch.pivots(), ch.lastPosFactor(), ch.condition(), ch.fail());
  for (const double tolerance : {0.0, 0.5}) {
    ch.setTolerance(tolerance);
    to.add(ch.solve(b), ch.residual(x), ch.DoubleChDecomp::solve(x), ch.numFreeCols());
  }
  for (const int n : {1, 1000, INT_MIN, INT_MAX}) to.add(ch.partialSolve(b, n));
  DoubleGenMat Z(b.length(), 2, 1.0);
  DoubleVec rho(2, 1.0), y(2, 1.0), c(x.length(), 0.0), s(1, 0.0);
  ch.shift(INT_MIN, INT_MAX, INT_MIN, &Z, &s, &c);
  for (const int direction : {0, 1}) ch.shift(0, 1 + 3 * direction, direction, &Z, &s, &c);
  ch.update(x, &Z, &y, &rho, &c, &s);
  to.add(ch.downdate(b, &Z, &y, &rho, nullptr, &s), ch.downdate(x, &Z, nullptr, &rho, &c, nullptr));
  to.add(ch.factors(), Z, rho, c, s);
}

void use(Results& to, DoubleSVDecomp& sv, const DoubleVec&, const DoubleVec&) {
  to.add(sv.singularValues(), sv.eValues(), sv.leftVecs(), sv.rightVecs(), sv.numSVsFound());
}

void useEverything(Results& to, const DoubleGenMat& a, const DoubleVec& b, const DoubleVec& x) {
  for (const int option : {0, 1}) {
    DoubleGenFact lu(a, option);
    use(to, lu, b, x);
    DoubleLeastSqQR qr;
    qr.doPivoting(option);
    for (int i = 0; i < 2; ++i) qr.factor(a);
    use(to, qr, b, x);
    DoubleLeastSqCh ch;
    ch.doPivoting(option);
    ch.factor(a);
    use(to, ch, b, x);
    ch.DoubleChDecomp::factor(a);
    use(to, ch, b, x);
  }
  DoubleSVDecomp sv(a);
  use(to, sv, b, x);
  sv.computeAllLeftVecs(0);
  sv.factor(a);
  use(to, sv, b, x);

  DoubleLeastSqInc inc(a.cols(), 2);
  DoubleLeastSqInc copy = inc.copy();
  const DoubleGenMat whole = a.deepCopy();
  for (int i = 0; i < static_cast<int>(whole.rows()); ++i) {
    DoubleVec row = whole.row(i);
    inc.addEquation(row, DoubleVec(2, 1.0));
    to.add(copy.deleteEquation(row, 2.0), copy.residualNorm(1));
  }
  to.add(inc.factors(), inc.solve(1), copy.solve(INT_MIN), copy.residualNorm(INT_MAX));
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
    // a matrix whose vector is too short for its dimensions
    all.push_back(DoubleGenMat(DoubleVec(rows, 1.0), rows, cols + 1));
  }
  return all;
}

TEST(Decompositions, EndOnEveryHostileMatrixWithoutLeavingTheirStorage) {
  RecordedErrors errors;
  for (const DoubleGenMat& a : hostileMatrices()) {
    const DoubleVec before = a.dataVec().copy();
    Results plain, backwards;
    const DoubleVec b(a.rows(), 1.0, 0.5), x(a.cols(), 1.0, -0.25);
    useEverything(plain, a, b, x);
    EXPECT_TRUE(a.dataVec() == before || std::isnan(norm(a)));  // never changed
    const DoubleVec reversed = reverse(a.dataVec()).copy();
    useEverything(backwards, DoubleGenMat(reverse(reversed), a.rows(), a.cols()),
                  reverse(reverse(b).copy()), reverse(reverse(x).copy()));
    EXPECT_TRUE(backwards.sameBits(plain));  // whatever the stride
  }
  EXPECT_FALSE(errors.all().empty());
}

TEST(Decompositions, HandOutNothingThatNobodyWrote) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own here";
  RecordedErrors errors;
  for (const DoubleGenMat& a : hostileMatrices()) {
    Results zeros, numbers;
    for (const auto& [results, byte] : {std::pair{&zeros, 0x00}, {&numbers, 0x43}}) {
      const PoisonedNew poisoned(static_cast<unsigned char>(byte));
      useEverything(*results, a, DoubleVec(a.rows(), 1.0), DoubleVec(a.cols(), 1.0));
    }
    EXPECT_TRUE(zeros.sameBits(numbers)) << a.rows() << 'x' << a.cols();
  }
}

/// Assigns a larger and a smaller decomposition to one another and uses all.
template <class Decomposition>
void crossAssign() {
  Decomposition small(identity(2)), large(hilbert(7)), empty;
  empty = large;
  small = large;
  large = Decomposition(identity(2));
  Results results;
  for (Decomposition* const one : {&small, &large, &empty})
    for (const unsigned n : {0u, 2u, 7u}) use(results, *one, DoubleVec(n, 1.0), DoubleVec(n, 1.0));
}

TEST(Decompositions, StayInTheirStorageAfterAssignmentBetweenSizes) {
  RecordedErrors errors;
  crossAssign<DoubleGenFact>();
  crossAssign<DoubleLeastSqQR>();
  crossAssign<DoubleLeastSqCh>();
  crossAssign<DoubleSVDecomp>();
  EXPECT_EQ(errors.all().at(0).code, 0x4004u);
}

/// Whether a result is there; one that is must be right.
bool isRight(const DoubleGenMat& got, const DoubleGenMat& want) {
  const bool there = got.dataVec().length() > 0;
  EXPECT_TRUE(!there || (got.rows() == want.rows() && norm(got - want) <= 1e-12 * norm(want)));
  return there;
}
bool isRight(const DoubleVec& got, const DoubleVec& want) {
  return isRight(DoubleGenMat(got, got.length(), 1), DoubleGenMat(want, want.length(), 1));
}

/// What each class makes of a x = b, in objects that outlive every failure. Everything else that
/// the test needs is made beforehand.
struct UnderFailure {
  const DoubleGenMat a = Random(64).matrix(5, 3), square = Random(65).matrix(3, 3);
  const DoubleVec x = Random(66).vector(3);
  const DoubleVec b = product(a, x), sides = product(square, x);
  const DoubleGenMat inverse = DoubleGenFact(square).inverse();
  const double determinant = DoubleGenFact(square).determinant();
  const DoubleVec values = DoubleSVDecomp(a).singularValues();
  const DoubleGenMat wide = transpose(a), gram = transposeProduct(a, a);
  const DoubleVec gramSides = product(b, a);
  DoubleGenFact lu;
  DoubleLeastSqQR qr;
  DoubleLeastSqCh normal;
  DoubleChDecomp ch;
  DoubleSVDecomp sv;
  bool complete = false;

  void run() {
    lu.factor(square);
    complete = isRight(lu.solve(sides), x) & isRight(lu.inverse(), inverse);
    const bool kept = lu.rows() == 3;
    EXPECT_TRUE(kept ? std::abs(lu.determinant() - determinant) < 1e-12 : lu.determinant() == 0.0);
    EXPECT_FALSE(lu.isSingular());

    qr.factor(a);
    complete &= isRight(qr.solve(b), x) & isRight(qr.computeXb(b, 3), b);
    const DoubleVec residual = qr.residual(b);
    EXPECT_LT(norm(residual), 1e-12);
    complete &= isRight(qr.unpermute(qr.partialSolve(b, 3)), x) & (residual.length() == 5);
    qr.setTolerance(10.0);
    EXPECT_EQ(norm(qr.solve(b)), 0.0);

    normal.factor(a);
    complete &= isRight(normal.solve(b), x) & (normal.residual(b).length() == 5);
    EXPECT_LT(norm(normal.residual(b)), 1e-12);
    EXPECT_TRUE(normal.numEquations() == 5 || normal.numEquations() == 0);
    normal.setTolerance(10.0);
    EXPECT_EQ(norm(normal.solve(b)), 0.0);
    normal.setTolerance(0.0);

    ch.factor(gram);
    complete &= ch.rows() == 3 && isRight(ch.solve(gramSides), x);
    sv.factor(wide);
    complete &= isRight(sv.singularValues(), values) & sv.good();
    EXPECT_EQ(sv.good(), sv.numSVsFound() == 3);
    accumulate();
  }

  // Equations that there was no memory for are not added, not even a part of them.
  void accumulate() {
    DoubleLeastSqInc inc(3, 1);
    for (int i = 0; i < 5; ++i) {
      DoubleVec row = wide.col(i);
      DoubleLeastSqInc copy = inc.copy();
      const double norm = copy.residualNorm(0);
      inc.addEquation(row, b(i) + 1e-14);
      EXPECT_EQ(copy.residualNorm(0), norm);
    }
    const bool determined = inc.cols() == 3 && inc.good();
    complete &= determined && isRight(inc.solve(0), x);
  }
};

TEST(Decompositions, ReportEveryFailedAllocationAndHandOutNothingWrong) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own here";
  UnderFailure all;
  knotwork::test::expectEveryFailureReported([&] { all.run(); });
  all.run();
  EXPECT_TRUE(all.complete);  // the objects work as if nothing had been
}

}  // namespace
