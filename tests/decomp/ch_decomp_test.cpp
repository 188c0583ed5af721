// SPDX-License-Identifier: MIT
// Cholesky decomposition: what holds for every matrix, what its changes keep, and what is
// deliberate.
#include "knotwork/decomp/double_ch_decomp.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "knotwork/matrix/int_gen_mat.h"
#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

DoubleGenMat gram(const DoubleGenMat& m) { return transposeProduct(m, m); }
DoubleGenMat gramOf(const DoubleChDecomp& ch) {
  return gram(upperTriangle(ch.factors(), ch.factors().cols()));
}

DoubleChDecomp factored(const DoubleGenMat& a, int pivoting) {
  DoubleChDecomp ch;
  ch.doPivoting(pivoting);
  ch.factor(a);
  return ch;
}

/// The symmetric matrices of data whose squares stay in range.
std::vector<TestMatrix> positiveDefinite() {
  std::vector<TestMatrix> some;
  for (const TestMatrix& m : allShapesAndSpectra())
    if (m.a.rows() >= m.a.cols() && m.rank == static_cast<int>(m.a.cols()) &&
        m.name.find("1e12") == std::string::npos)
      some.push_back({m.name, gram(m.a), m.rank});
  some.push_back({"Hilbert 9", hilbert(9), 9});
  for (const unsigned n : {8u, 17u, 33u, 90u})
    some.push_back({"random " + std::to_string(n), gram(Random(n).matrix(2 * n, n)), int(n)});
  return some;
}

TEST(ChDecomp, ReproducesEverySpectrumFromTheUpperTriangleAlone) {
  for (const TestMatrix& m : positiveDefinite()) {
    for (const int pivoting : {0, 1}) {
      SCOPED_TRACE(m.name + (pivoting ? " pivoted" : ""));
      DoubleGenMat half = m.a.copy();
      for (int j = 0; j < static_cast<int>(half.cols()); ++j)
        for (int i = j + 1; i < static_cast<int>(half.rows()); ++i) half(i, j) = -77.0;
      const DoubleChDecomp ch = factored(half, pivoting);
      ASSERT_TRUE(ch.isPD() && ch.good());
      EXPECT_EQ(ch.factors()(static_cast<int>(half.rows()) - 1, 0),
                m.rank > 1 ? -77.0 : ch.factors()(0, 0));
      const DoubleGenMat permuted =
          pivoting ? transpose(columnsOf(transpose(columnsOf(m.a, ch.pivots())), ch.pivots()))
                   : m.a;
      EXPECT_LT(relativeDifference(permuted, gramOf(ch)), 10);
      const DoubleVec b = Random(31).vector(m.a.rows()) * norm(m.a);
      const DoubleVec x = ch.solve(reverse(reverse(b).copy()));
      const double unit = kEps * m.a.rows() * (norm(m.a) * norm(x) + norm(b));
      EXPECT_LT(norm(product(m.a, x) - b), 10 * unit);
    }
  }
}

/// The factorisation as it is told: one row after the other, each taken from all that is below.
int factorRowByRow(DoubleGenMat& a, int pivoting) {
  const int n = static_cast<int>(a.cols());
  for (int k = 0; k < n; ++k) {
    int place = k;
    for (int q = k + 1; q < n && pivoting; ++q)
      if (!(a(q, q) <= a(place, place))) place = q;
    if (!(a(place, place) > 0.0)) return k;
    const auto element = [&](int i, int j) -> double& { return a(std::min(i, j), std::max(i, j)); };
    for (int i = 0; i < n && place != k; ++i)
      if (i != k && i != place) std::swap(element(i, k), element(i, place));
    if (place != k) std::swap(a(k, k), a(place, place));
    a(k, k) = std::sqrt(a(k, k));
    for (int j = k + 1; j < n; ++j) {
      a(k, j) /= a(k, k);
      for (int i = k + 1; i <= j && a(k, j) != 0.0; ++i) a(i, j) += -a(k, j) * a(k, i);
    }
  }
  return n;
}

TEST(ChDecomp, GroupsOfRowsGiveTheBitsOfOneRowAfterTheOther) {
  RecordedErrors errors;
  for (const unsigned n : {1u, 7u, 8u, 9u, 16u, 25u, 40u}) {
    const DoubleGenMat full = gram(Random(n).matrix(n + 2, n));
    DoubleGenMat late = full.copy(), infinite = full.copy();
    late(static_cast<int>(n) - 1, static_cast<int>(n) - 1) = -1.0;
    infinite(0, static_cast<int>(n) / 2) = HUGE_VAL;
    infinite(0, static_cast<int>(n) - 1) = 0.0;
    for (const DoubleGenMat& a :
         {full, late, gram(Random(n).matrix((n + 1) / 2, n)), infinite, full - 3.0})
      for (const int pivoting : {0, 1}) {
        DoubleGenMat expected = a.copy();
        const int k = factorRowByRow(expected, pivoting);
        const DoubleChDecomp ch = factored(a, pivoting);
        EXPECT_EQ(ch.lastPosFactor() + 1, k);
        for (int j = 0; j < static_cast<int>(n); ++j)
          for (int i = 0; i <= j; ++i) {
            const double got = ch.factors()(i, j), want = expected(i, j);
            ASSERT_TRUE(got == want || (std::isnan(got) && std::isnan(want))) << i << ' ' << j;
          }
      }
  }
}

TEST(ChDecomp, PivotingFindsTheRankOfASemidefiniteMatrix) {
  for (const int rank : {1, 2, 5, 11}) {
    DoubleGenMat data = Random(32).matrix(static_cast<unsigned>(rank), 12);
    for (int j = 0; j < 12; ++j)
      for (int i = 0; i < rank; ++i) data(i, j) = std::round(100 * data(i, j));  // exact products
    const DoubleChDecomp ch(gram(data));
    EXPECT_GE(ch.lastPosFactor() + 1, rank);
    for (int i = rank; i < 12; ++i) EXPECT_LT(std::abs(ch.factors()(i, i)), 1e-4);
    EXPECT_LT(relativeDifference(
                  transpose(columnsOf(transpose(columnsOf(gram(data), ch.pivots())), ch.pivots())),
                  gram(upperTriangle(ch.factors(), static_cast<unsigned>(rank)))),
              10);
  }
}

TEST(ChDecomp, ConditionIsZeroUnlessAllPivotsButTheLastArePositive) {
  RecordedErrors errors;
  EXPECT_EQ(DoubleChDecomp(identity(2)).condition(), 0.0);  // k is 2, not 1
  EXPECT_EQ(DoubleChDecomp().condition(), 0.0);
  DoubleGenMat a = 4.0 * identity(3);
  a(1, 1) = -1.0;
  DoubleChDecomp ch(a);
  EXPECT_EQ(ch.lastPosFactor(), 1);
  EXPECT_FALSE(ch.isPD());
  EXPECT_TRUE(ch.fail());
  EXPECT_EQ(ch.condition(), 0.25);  // what the factorisation stopped at, over R(0, 0), squared
  EXPECT_EQ(errors.takeText(), "");
  ch.doPivoting(0);
  EXPECT_EQ(ch.condition(), -1.0);
  EXPECT_EQ(errors.takeText(), "5001 Condition number not calculated");
}

TEST(ChDecomp, ConstraintsHoldOnceThenPivotsBind) {
  DoubleGenMat a(4, 4, 0.0);
  a.diagonal() = DoubleVec(4, 1.0, 1.0);
  DoubleChDecomp ch;
  EXPECT_EQ(ch.setPivoting(3, DoubleChDecomp::FINAL), 0);
  EXPECT_EQ(ch.setPivoting(1, DoubleChDecomp::INITIAL), 0);
  EXPECT_EQ(ch.setPivoting(3, DoubleChDecomp::FINAL), DoubleChDecomp::FINAL);
  ch.factor(a);
  const auto pivots = [&] {
    return DoubleVec(DoubleGenMat(IntGenMat(ch.pivots(), 4, 1)).dataVec());
  };
  EXPECT_EQ(valuesOf(pivots()), (Values{1, 2, 0, 3}));
  ch.factor(a);  // column 2 had the 0
  EXPECT_EQ(valuesOf(pivots()), (Values{0, 1, 3, 2}));
}

/// Columns l and k of the order 0 .. n - 1 after a shift.
IntVec shifted(int n, int l, int k, int direction) {
  std::vector<int> order;
  for (int i = 0; i < n; ++i) order.push_back(i);
  const auto first = order.begin() + l, end = order.begin() + k + 1;
  direction == 0 ? std::rotate(first, first + 1, end) : std::rotate(first, end - 1, end);
  return indices(order);
}

TEST(ChDecomp, ShiftsAgreeWithANewFactorisation) {
  const int n = 9;
  const DoubleGenMat data = Random(33).matrix(2 * n, n);
  DoubleGenMat Z = Random(34).matrix(n, 3);
  DoubleChDecomp ch = factored(gram(data), 0);
  DoubleGenMat current = data.copy();
  DoubleGenMat products = transposeProduct(ch.factors(), Z);  // wrong below, replaced next
  products.reference(transposeProduct(upperTriangle(ch.factors(), n), Z));
  Random random(35);
  for (int step = 0; step < 40; ++step) {
    const int l = random.below(n - 1), k = l + 1 + random.below(n - 1 - l);
    const int direction = random.below(2);
    DoubleVec c(static_cast<unsigned>(k - l)), s(static_cast<unsigned>(k - l));
    ch.shift(l, k, direction, &Z, &c, &s);
    const IntVec order = shifted(n, l, k, direction);
    current.reference(columnsOf(current, order));
    products.reference(transpose(columnsOf(transpose(products), order)));
    EXPECT_LT(relativeDifference(gram(current), gramOf(ch)), 20);
    EXPECT_LT(relativeDifference(products, transposeProduct(upperTriangle(ch.factors(), n), Z)),
              20);
    const DoubleChDecomp fresh = factored(gram(current), 0);
    EXPECT_LT(relativeDifference(abs(upperTriangle(fresh.factors(), n)),
                                 abs(upperTriangle(ch.factors(), n))),
              1000);
    EXPECT_LT(norm(c * c + s * s - DoubleVec(c.length(), 1.0)), 10 * kEps);
  }
}

double sumOfSquares(const DoubleVec& v) { return dot(v, v); }

TEST(ChDecomp, DowndateUndoesUpdate) {
  for (const unsigned n : {1u, 2u, 7u, 20u}) {
    DoubleChDecomp ch = factored(gram(Random(n).matrix(3 * n, n)), 0);
    DoubleGenMat Z = Random(36).matrix(n, 2);
    DoubleVec rho(2, 1.0, 2.0);
    const DoubleGenMat R0 = ch.factors().copy(), Z0 = Z.copy();
    const DoubleVec x = Random(37).vector(n), y = Random(38).vector(2);
    const DoubleGenMat row(x, 1, n), values(y, 1, 2);
    const auto withData = [&](const DoubleGenMat& G) { return G + transposeProduct(row, values); };
    const DoubleGenMat gramBefore = gramOf(ch);
    const DoubleGenMat productsBefore = transposeProduct(upperTriangle(R0, n), Z);
    ch.update(x, &Z, &y, &rho, nullptr, nullptr);
    EXPECT_LT(relativeDifference(gramBefore + gram(row), gramOf(ch)), 10);
    EXPECT_LT(relativeDifference(withData(productsBefore),
                                 transposeProduct(upperTriangle(ch.factors(), n), Z)),
              10);
    for (int j = 0; j < 2; ++j)  // norms of the data columns, y included, stay
      EXPECT_NEAR(rho(j) * rho(j) + sumOfSquares(Z.col(j)),
                  (j == 0 ? 1.0 : 9.0) + sumOfSquares(Z0.col(j)) + y(j) * y(j), 1e-13);
    EXPECT_EQ(ch.downdate(x, &Z, &y, &rho, nullptr, nullptr), 0);
    EXPECT_LT(relativeDifference(abs(upperTriangle(R0, n)), abs(upperTriangle(ch.factors(), n))),
              1000);
    EXPECT_LT(relativeDifference(gramBefore, gramOf(ch)), 100);
    EXPECT_NEAR(rho(0), 1.0, 1e-12);
    EXPECT_NEAR(rho(1), 3.0, 1e-12);
  }
}

TEST(ChDecomp, ARowThatWasNeverThereCannotBeRemoved) {
  DoubleChDecomp ch = factored(identity(3), 0);
  DoubleGenMat Z(3, 2, 0.0);
  DoubleVec rho(2, 1.0), c(3, 5.0), s(3, 5.0);
  const DoubleVec y(2, 0.5, 2.0);
  EXPECT_EQ(ch.downdate(DoubleVec(3, 2.0), &Z, &y, &rho, &c, &s), -1);
  EXPECT_TRUE(ch.factors() == identity(3) && c == DoubleVec(3, 5.0));  // untouched
  EXPECT_TRUE(s == DoubleVec(3, 2.0));
  EXPECT_EQ(ch.downdate(DoubleVec(3, 0.1), &Z, &y, &rho, &c, &s), 1);
  EXPECT_LT(ch.factors()(0, 0), 1.0);  // done all the same
  EXPECT_GT(rho(0), 0.0);
  EXPECT_EQ(rho(1), -1.0);
  ch.update(DoubleVec(3, 0.1), &Z, &y, &rho, nullptr, nullptr);
  EXPECT_EQ(rho(1), -1.0);  // a mark that stays
}

TEST(ChDecomp, SolvesAndReportsAsFarAsTheFactorGoes) {
  RecordedErrors errors;
  const std::string notFactored =
      "5011 Can't solve system of equations, matrix not successfully factorized";
  DoubleGenMat a = 4.0 * identity(3);
  a(2, 2) = -4.0;
  const DoubleChDecomp ch = factored(a, 0);
  EXPECT_EQ(valuesOf(ch.partialSolve(DoubleVec(2, 8.0), 2)), (Values{2, 2}));
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(ch.partialSolve(DoubleVec(3, 8.0), 3)(0), 2.0);
  EXPECT_EQ(errors.takeText(), notFactored);
  EXPECT_EQ(valuesOf(ch.partialSolve(DoubleVec(1, 8.0), 2)), (Values{2}));
  EXPECT_EQ(errors.takeText(), "5002 b vector length wrong (1!=2)");
  EXPECT_EQ(ch.partialSolve(DoubleVec(5, 8.0), 5).length(), 5u);
  EXPECT_EQ(ch.partialSolve(DoubleVec(), -1).length(), 0u);
  EXPECT_EQ(errors.takeText(), notFactored + "\n5002 b vector length wrong (0!=4294967295)");
  const DoubleChDecomp wide(DoubleGenMat(2, 3, 1.0));
  EXPECT_EQ(errors.takeText(),
            "5010 Matrix must have more rows than cols to be factorizable, but 2<3");
  EXPECT_EQ(wide.solve(DoubleVec(3, 1.0)).length(), 3u);
  DoubleGenMat tall(3, 2, 0.0);
  tall.diagonal() = 4.0;
  EXPECT_EQ(valuesOf(DoubleChDecomp(tall).solve(DoubleVec(2, 8.0))), (Values{2, 2}));
  EXPECT_FALSE(DoubleChDecomp(tall).isPD());  // k is 2, the number of rows 3
}

TEST(ChDecomp, ShiftReportsInOrderAndMovesWhereItCan) {
  RecordedErrors errors;
  DoubleChDecomp ch = factored(gram(Random(39).matrix(8, 4)), 0);
  DoubleChDecomp other = factored(gram(Random(39).matrix(8, 4)), 0);
  const DoubleGenMat before = ch.factors().copy();
  ch.shift(2, 1, 0, nullptr, nullptr, nullptr);
  ch.shift(-1, 2, 0, nullptr, nullptr, nullptr);
  ch.shift(0, 4, 1, nullptr, nullptr, nullptr);
  EXPECT_EQ(errors.takeText(),
            "5006 Invalid Cholesky shift columns (2,1)\n"
            "5006 Invalid Cholesky shift columns (-1,2)\n"
            "5006 Invalid Cholesky shift columns (0,4)");
  EXPECT_TRUE(ch.factors() == before);
  DoubleGenMat Z(2, 1, 1.0);
  DoubleVec c(1), s(5, 7.0);
  ch.shift(0, 2, 2, &Z, &c, &s);
  EXPECT_EQ(errors.takeText(),
            "5005 Invalid Cholesky shift direction\n"
            "5007 Data matrix wrong height (2!=4)\n"
            "5008 Vector to hold sines or cosines wrong length (1!=2)\n"
            "5008 Vector to hold sines or cosines wrong length (5!=2)");
  EXPECT_TRUE(Z == DoubleGenMat(2, 1, 1.0) && s(2) == 7.0);
  other.shift(0, 2, 1, nullptr, nullptr, nullptr);
  EXPECT_TRUE(ch.factors() == other.factors());
}

TEST(ChDecomp, RowChangesReportInOrderAndTakeTheDataThatIsThere) {
  RecordedErrors errors;
  DoubleChDecomp ch = factored(identity(2), 0);
  DoubleGenMat Z(3, 2, 1.0);
  DoubleVec rho(3, 1.0), c(1), s(2);
  const DoubleVec y(1, 1.0), x(6, 1.0);
  ch.update(x.slice(0, 3, 2), &Z, &y, &rho, &c, &s);
  EXPECT_EQ(errors.takeText(),
            "5007 Data matrix wrong height (3!=2)\n"
            "5008 Vector to hold sines or cosines wrong length (1!=2)\n"
            "500c vec pointers must have stride == 1\n"
            "5009 Different number of residuals than data columns (1!=2)\n"
            "5009 Different number of residuals than data columns (3!=2)\n"
            "300f [VNMATCH: DoubleVec]: Vector lengths do not match (3 vs 2)");
  EXPECT_NE(Z(0, 0), 1.0);
  EXPECT_TRUE(Z(2, 0) == 1.0 && Z.col(1) == DoubleVec(3, 1.0) && rho(1) == 1.0);
  DoubleChDecomp same = factored(identity(2), 0);
  same.update(DoubleVec(2, 1.0), nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_TRUE(same.factors() == ch.factors());
  EXPECT_EQ(errors.takeText(), "");
}

TEST(ChDecomp, DataColumnsAndNormsMayBeStrided) {
  const DoubleGenMat a = gram(Random(40).matrix(9, 4));
  DoubleChDecomp plain = factored(a, 0), strided = factored(a, 0);
  DoubleGenMat Z = Random(41).matrix(4, 2);
  DoubleVec twice(16), norms(4, 1.0), rho(2, 1.0), y(2, 3.0);
  DoubleGenMat view(twice.slice(15, 8, -2), 4, 2);
  view = Z;
  DoubleVec normsView = norms.slice(0, 2, 2);
  plain.shift(0, 3, 1, &Z, nullptr, nullptr);
  strided.shift(0, 3, 1, &view, nullptr, nullptr);
  RecordedErrors errors;
  plain.update(DoubleVec(4, 1.0), &Z, &y, &rho, nullptr, nullptr);
  strided.update(DoubleVec(4, 1.0), &view, &y, &normsView, nullptr, nullptr);
  EXPECT_EQ(errors.takeText(), "500c vec pointers must have stride == 1");
  EXPECT_TRUE(view == Z && normsView == rho && strided.factors() == plain.factors());
}

TEST(ChDecomp, ABadConstraintIsStoredAndReported) {
  RecordedErrors errors;
  DoubleChDecomp ch;
  EXPECT_EQ(ch.setPivoting(4, 2), 0);
  EXPECT_EQ(errors.takeText(),
            "5012 Pivoting position specifier must be INITIAL,FREE, or FINAL, not 2");
  EXPECT_EQ(ch.pivots().length(), 5u);
  EXPECT_EQ(ch.setPivoting(4, 0), 2);
  EXPECT_EQ(ch.setPivoting(-1, 0), 0);
  EXPECT_EQ(errors.take().at(0).code, 0x3005u);
}

}  // namespace
