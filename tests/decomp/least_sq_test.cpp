// SPDX-License-Identifier: MIT
// The three least-squares classes: agreement with each other, certified regressions, and what is
// deliberate.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "knotwork/decomp/double_least_sq_ch.h"
#include "knotwork/decomp/double_least_sq_inc.h"
#include "knotwork/decomp/double_least_sq_qr.h"
#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

/// All rows of (A, y) added one by one.
DoubleLeastSqInc accumulated(const DoubleGenMat& a, const DoubleVec& y) {
  DoubleLeastSqInc lsq(a.cols(), 1);
  for (int i = 0; i < static_cast<int>(a.rows()); ++i) {
    DoubleVec row = a.row(i).copy();
    lsq.addEquation(row, y(i));
  }
  return lsq;
}

TEST(LeastSq, AllThreeFindTheSameSolutionAndResidual) {
  for (const auto& [rows, cols] : {std::pair{5u, 5u}, {12u, 5u}, {90u, 40u}, {3u, 1u}}) {
    const DoubleGenMat a = withSpectrum(rows, cols, geometric(static_cast<int>(cols), 0.01), 51);
    const DoubleVec b = Random(52).vector(rows);
    const DoubleLeastSqQR qr(a);
    const DoubleLeastSqCh ch(a);
    const DoubleLeastSqInc inc = accumulated(a, b);
    EXPECT_FALSE(qr.isUnderDetermined() || ch.isUnderDetermined() || inc.isUnderDetermined());
    const DoubleVec x = qr.solve(b);
    EXPECT_LT(norm(ch.solve(b) - x), 1e6 * kEps * norm(x));
    EXPECT_LT(norm(inc.solve(0) - x), 1e4 * kEps * norm(x));
    EXPECT_LT(norm(ch.residual(b) - qr.residual(b)), 1e5 * kEps);
    EXPECT_NEAR(inc.residualNorm(0), norm(qr.residual(b)), 1e3 * kEps);
    EXPECT_EQ(qr.numEquations(), rows);
    EXPECT_EQ(ch.numEquations(), rows);
  }
}

// ---- Certified regressions --------------------------------------------------------------------

/// The numbers of a CSV file below its line of names; other columns are NaN.
std::vector<Values> readTable(const std::string& name) {
  std::ifstream file(std::string(KNOTWORK_TEST_DATA) + "/../../data/strd/" + name + ".csv");
  std::vector<Values> rows;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream cells(line);
    Values row;
    for (std::string cell; std::getline(cells, cell, ',');) {
      char* end = nullptr;
      const double value = std::strtod(cell.c_str(), &end);
      row.push_back(end == cell.c_str() ? std::nan("") : value);
    }
    rows.push_back(row);
  }
  return rows;
}

/// A regression on the powers or the columns of x, with an intercept.
struct Regression {
  DoubleGenMat a;
  DoubleVec y;
  Values exact;
  double residualSum;
};

Regression readRegression(const std::string& name) {
  const std::vector<Values> data = readTable(name), certified = readTable(name + "_certified");
  const unsigned count =
      static_cast<unsigned>(certified.size()) - 4;  // the last four are no parameters
  const auto rows = static_cast<unsigned>(data.size());
  Regression r{DoubleGenMat(rows, count, 1.0), DoubleVec(rows), {}, 0.0};
  for (int i = 0; i < static_cast<int>(rows); ++i) {
    const Values& line = data[static_cast<std::size_t>(i)];
    r.y(i) = line[0];
    for (int j = 1; j < static_cast<int>(count); ++j) {
      const bool powers = line.size() == 2;
      r.a(i, j) = powers ? r.a(i, j - 1) * line[1] : line[static_cast<std::size_t>(j)];
    }
  }
  for (unsigned j = 0; j < count; ++j) r.exact.push_back(certified[j][3]);
  r.residualSum = certified[count + 2][3];
  return r;
}

/// Correct digits of the worst parameter, at most 15.
double correctDigits(const DoubleVec& x, const Values& exact) {
  double worst = 1e-15;
  for (int i = 0; i < static_cast<int>(x.length()); ++i) {
    const double right = exact[static_cast<std::size_t>(i)];
    worst = std::max(worst, std::abs(x(i) - right) / std::abs(right));
  }
  return -std::log10(worst);
}

TEST(LeastSq, ReachesTheDigitsOfCertifiedRegressions) {
  // Digits that LAPACK reaches on the raw columns: QR without and with pivoting, normal equations.
  const struct {
    const char* name;
    double plain, pivoted, normal;
  } sets[] = {{"norris", 13.3, 13.5, 12.1},
              {"pontius", 12.4, 12.5, 11.2},
              {"longley", 10.9, 11.1, 7.4},
              {"wampler1", 9.6, 9.4, 6.1},
              {"wampler2", 12.7, 12.5, 9.3}};
  for (const auto& set : sets) {
    SCOPED_TRACE(set.name);
    const Regression r = readRegression(set.name);
    ASSERT_GE(r.exact.size(), 2u);
    const DoubleLeastSqQR pivoted(r.a);
    DoubleLeastSqQR plain;
    plain.doPivoting(0);
    plain.factor(r.a);
    const DoubleLeastSqCh normal(r.a);
    const DoubleLeastSqInc inc = accumulated(r.a, r.y);
    const auto digits = [&](const DoubleVec& x) { return correctDigits(x, r.exact); };
    // One digit less is rounding's luck; the incremental class squares no condition either.
    EXPECT_GT(digits(plain.solve(r.y)), set.plain - 1);
    EXPECT_GT(digits(pivoted.solve(r.y)), set.pivoted - 1);
    EXPECT_GT(digits(inc.solve(0)), set.pivoted - 1);
    EXPECT_GT(digits(normal.solve(r.y)), set.normal - 1);
    EXPECT_NEAR(dot(pivoted.residual(r.y), pivoted.residual(r.y)), r.residualSum,
                1e-10 * r.residualSum + 1e-14 * dot(r.y, r.y));
  }
}

// ---- Rank, tolerances, oddities -----------------------------------------------------------------

TEST(LeastSqQR, ToleranceFreesUnknownsAndIsResetByFactor) {
  DoubleGenMat a = Random(53).matrix(4, 3);
  a.col(2) = a.col(0);
  DoubleLeastSqQR lsq;
  lsq.setTolerance(1e-10);
  lsq.factor(a);
  EXPECT_EQ(lsq.setTolerance(1e-10), 0.0);
  EXPECT_EQ(lsq.numFreeCols(), 1u);
  EXPECT_TRUE(lsq.isUnderDetermined());
  const DoubleVec b = Random(54).vector(4);
  const DoubleVec x = lsq.solve(b);
  EXPECT_EQ(x(lsq.pivots()(2)), 0.0);  // in the column order of A
  EXPECT_LT(norm(b - product(a, x) - lsq.residual(b)), 20 * kEps);
  EXPECT_LT(norm(product(lsq.residual(b), a)), 20 * kEps);
  lsq.factor(a);
  EXPECT_EQ(lsq.setTolerance(5.0), 0.0);
  EXPECT_EQ(lsq.numFreeCols(), 3u);  // all
  EXPECT_EQ(valuesOf(lsq.solve(b)), (Values{0, 0, 0}));
  EXPECT_TRUE(lsq.residual(b) == b);
  EXPECT_GE(DoubleLeastSqQR(Random(55).matrix(2, 4)).numFreeCols(), 2u);
}

TEST(LeastSqQR, ANaNOnTheDiagonalIsNotFree) {
  DoubleLeastSqQR lsq(DoubleGenMat(3, 3, std::nan("")));
  lsq.setTolerance(1e300);
  EXPECT_EQ(lsq.numFreeCols(), 0u);
}

TEST(LeastSqQR, ReportsTheLengthOnceItselfAndOnceFromTheDecomposition) {
  RecordedErrors errors;
  const std::string wrongLength = "5002 b vector length wrong (2!=3)";
  const DoubleLeastSqQR lsq(identity(3));
  EXPECT_EQ(lsq.solve(DoubleVec(2, 1.0)).length(), 3u);
  EXPECT_EQ(errors.takeText(), wrongLength + "\n" + wrongLength);
  EXPECT_EQ(lsq.residual(DoubleVec(2, 1.0)).length(), 3u);
  EXPECT_EQ(errors.takeText(), wrongLength + "\n" + wrongLength);
  EXPECT_EQ(DoubleLeastSqQR().solve(DoubleVec()).length(), 0u);
  EXPECT_EQ(DoubleLeastSqQR().residual(DoubleVec()).length(), 0u);
  const std::string notFactored =
      "5011 Can't solve system of equations, matrix not successfully factorized";
  EXPECT_EQ(errors.takeText(), notFactored + "\n" + notFactored);
}

TEST(LeastSqCh, ToleranceTakesNoAbsoluteValueAndOutlivesFactor) {
  DoubleGenMat a = Random(56).matrix(6, 3);
  a.col(1) = a.col(2) * 2.0;
  DoubleLeastSqCh lsq(a);
  EXPECT_EQ(lsq.setTolerance(1e-6), 0.0);
  EXPECT_EQ(lsq.numFreeCols(), 1u);
  const DoubleVec b = Random(57).vector(6);
  const DoubleVec x = lsq.solve(b);
  EXPECT_EQ(x(lsq.pivots()(2)), 0.0);
  EXPECT_LT(norm(product(lsq.residual(b), a)), 1e-10);
  lsq.factor(identity(2));
  EXPECT_EQ(lsq.setTolerance(-1.0), 1e-6);
  EXPECT_EQ(lsq.numFreeCols(), 0u);
  EXPECT_EQ(DoubleLeastSqCh().numFreeCols(), 0u);
  EXPECT_EQ(DoubleLeastSqCh().solve(DoubleVec(3)).length(), 0u);
  RecordedErrors errors;
  EXPECT_EQ(lsq.solve(DoubleVec(3, 1.0)).length(), 2u);
  EXPECT_EQ(errors.all().at(0).text, "b vector length wrong (3!=2)");
}

TEST(LeastSqInc, EquationsComeAndGo) {
  RecordedErrors errors;
  DoubleLeastSqInc lsq(3, 2);
  EXPECT_TRUE(lsq.fail());
  const DoubleGenMat a = Random(58).matrix(3, 3), x = Random(59).matrix(3, 2);
  const DoubleGenMat y = product(a, x);
  for (int i = 0; i < 3; ++i) {
    DoubleVec row = a.row(i).copy();
    lsq.addEquation(row, y.row(i).copy());
  }
  EXPECT_TRUE(lsq.good());
  for (int j = 0; j < 2; ++j) {
    EXPECT_LT(norm(lsq.solve(j) - x.col(j)), 100 * kEps);
    EXPECT_EQ(lsq.residualNorm(j), 0.0);  // fresh rows leave exact zeros
  }
  DoubleVec extra(3, 1.0);
  const DoubleVec inconsistent(2, 100.0);
  lsq.addEquation(extra, inconsistent);
  EXPECT_GT(lsq.residualNorm(0), 1.0);
  EXPECT_EQ(lsq.deleteEquation(extra, inconsistent), 0);
  EXPECT_LT(norm(lsq.solve(1) - x.col(1)), 1e-11);
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(lsq.residualNorm(2), 0.0);
  EXPECT_EQ(lsq.solve(-1).length(), 0u);
  EXPECT_EQ(errors.takeText(),
            "500b Data 2 doesn't exist, only 2 data columns\n"
            "500b Data -1 doesn't exist, only 2 data columns");
}

TEST(LeastSqInc, RemovingZeroFromAZeroResidualLeavesZero) {
  DoubleLeastSqInc lsq(1, 1);
  DoubleVec x(1, 3.0);
  lsq.addEquation(x, 0.0);
  x(0) = 4.0;
  lsq.addEquation(x, 0.0);
  EXPECT_EQ(lsq.deleteEquation(x, 0.0), 0);
  EXPECT_EQ(lsq.residualNorm(0), 0.0);
}

TEST(LeastSqInc, CopiesShareTheFactorForGoodAndSeparateTheData) {
  DoubleLeastSqInc lsq(1, 1);
  DoubleVec x(1, 3.0);
  lsq.addEquation(x, 6.0);
  DoubleLeastSqInc copy = lsq.copy();
  x(0) = 4.0;
  copy.addEquation(x, 8.0);
  EXPECT_EQ(lsq.factors()(0, 0), copy.factors()(0, 0));
  EXPECT_DOUBLE_EQ(copy.solve(0)(0), 2.0);
  EXPECT_DOUBLE_EQ(lsq.solve(0)(0), 6.0 / 5.0);  // its data, the other's factor
  DoubleLeastSqInc shallow(lsq);
  shallow.addEquation(x, 1.0);
  EXPECT_EQ(shallow.residualNorm(0), lsq.residualNorm(0));
}

TEST(LeastSqInc, AnUnderdeterminedSystemIsReportedTwice) {
  RecordedErrors errors;
  const DoubleLeastSqInc lsq(2, 1);
  EXPECT_EQ(valuesOf(lsq.solve(0)), (Values{0, 0}));
  const std::string notFactored =
      "5011 Can't solve system of equations, matrix not successfully factorized";
  EXPECT_EQ(errors.takeText(), notFactored + "\n" + notFactored);
  const DoubleLeastSqInc none(0, 1);
  EXPECT_FALSE(none.isUnderDetermined());
  EXPECT_EQ(none.solve(0).length(), 0u);
  EXPECT_EQ(errors.takeText(), notFactored);
}

}  // namespace
