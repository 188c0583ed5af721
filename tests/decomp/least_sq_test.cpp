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

const std::string kNotFactored =
    "5011 Can't solve system of equations, matrix not successfully factorized";

/// All rows of (A, y) added one by one.
DoubleLeastSqInc accumulated(const DoubleGenMat& a, const DoubleVec& y) {
  DoubleLeastSqInc lsq(a.cols(), 1);
  for (int i = 0; i < static_cast<int>(a.rows()); ++i) {
    DoubleVec row = a.row(i).copy();
    lsq.addEquation(row, y(i));
  }
  return lsq;
}

/// A linear regression with its certified parameters and sum of squared residuals.
struct Regression {
  DoubleGenMat a;
  DoubleVec y;
  Values exact;
  double residualSum;
};

/// The numbers of a CSV file below its line of names; other cells are NaN.
std::vector<Values> readTable(const std::string& name) {
  std::ifstream file(std::string(KNOTWORK_TEST_DATA) + "/../../data/strd/" + name + ".csv");
  std::vector<Values> rows;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream cells(line);
    rows.emplace_back();
    for (std::string cell; std::getline(cells, cell, ',');) {
      char* end = nullptr;
      const double value = std::strtod(cell.c_str(), &end);
      rows.back().push_back(end == cell.c_str() ? std::nan("") : value);
    }
  }
  return rows;
}

/// y on an intercept and the powers of x, if there is one x, or all of them.
Regression readRegression(const std::string& name) {
  const std::vector<Values> data = readTable(name), certified = readTable(name + "_certified");
  const std::size_t count = certified.size() - 4;  // the last four are no parameters
  const auto rows = static_cast<unsigned>(data.size());
  Regression r{DoubleGenMat(rows, static_cast<unsigned>(count), 1.0), DoubleVec(rows), {}, 0.0};
  for (std::size_t i = 0; i < data.size(); ++i) {
    DoubleVec row = r.a.row(static_cast<int>(i));
    r.y(static_cast<int>(i)) = data[i][0];
    for (std::size_t j = 1; j < count; ++j) {
      const int at = static_cast<int>(j);
      row(at) = data[i].size() == 2 ? row(at - 1) * data[i][1] : data[i][j];
    }
  }
  for (std::size_t j = 0; j < count; ++j) r.exact.push_back(certified[j][3]);
  r.residualSum = certified[count + 2][3];
  return r;
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
    const DoubleLeastSqCh normal(r.a);
    const auto digits = [&](const DoubleVec& x) {  // of the worst parameter
      const DoubleVec exact = vectorOf(r.exact);
      return -std::log10(maxValue(abs(x - exact) / abs(exact)));
    };
    // One digit less is rounding's luck; the incremental class squares no condition either.
    EXPECT_GT(digits(factored<DoubleLeastSqQR>(r.a, 0).solve(r.y)), set.plain - 1);
    EXPECT_GT(digits(pivoted.solve(r.y)), set.pivoted - 1);
    EXPECT_GT(digits(accumulated(r.a, r.y).solve(0)), set.pivoted - 1);
    EXPECT_GT(digits(normal.solve(r.y)), set.normal - 1);
    EXPECT_TRUE(pivoted.numEquations() == r.y.length() && normal.numEquations() == r.y.length());
    EXPECT_NEAR(dot(pivoted.residual(r.y), pivoted.residual(r.y)), r.residualSum,
                1e-10 * r.residualSum + 1e-14 * dot(r.y, r.y));
  }
}

TEST(LeastSqQR, ToleranceFreesUnknownsAndIsResetByFactor) {
  DoubleGenMat a = Random(53).matrix(4, 3);
  a.col(2) = a.col(0);
  DoubleLeastSqQR lsq;
  lsq.setTolerance(1e-10);
  lsq.factor(a);
  EXPECT_EQ(lsq.setTolerance(1e-10), 0.0);
  EXPECT_EQ(lsq.numFreeCols(), 1u);
  const DoubleVec b = Random(54).vector(4);
  EXPECT_EQ(lsq.solve(b)(lsq.pivots()(2)), 0.0);  // in the column order of A
  EXPECT_LT(norm(product(lsq.residual(b), a)), 20 * kEps);
  lsq.setTolerance(5.0);
  EXPECT_TRUE(lsq.isUnderDetermined());
  EXPECT_EQ(valuesOf(lsq.solve(b)), (Values{0, 0, 0}));
  EXPECT_TRUE(lsq.residual(b) == b);
  DoubleLeastSqQR notANumber(DoubleGenMat(3, 3, std::nan("")));
  notANumber.setTolerance(1e300);
  EXPECT_FALSE(notANumber.isUnderDetermined());
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
  EXPECT_EQ(errors.takeText(), kNotFactored + "\n" + kNotFactored);
}

TEST(LeastSqCh, ToleranceTakesNoAbsoluteValueAndOutlivesFactor) {
  DoubleLeastSqCh lsq(identity(2));
  EXPECT_EQ(lsq.setTolerance(2.0), 0.0);
  EXPECT_TRUE(lsq.isUnderDetermined());
  EXPECT_EQ(valuesOf(lsq.solve(DoubleVec(2, 1.0))), (Values{0, 0}));
  lsq.factor(identity(3));
  EXPECT_EQ(lsq.setTolerance(-2.0), 2.0);
  EXPECT_EQ(lsq.numFreeCols(), 0u);
  EXPECT_EQ(DoubleLeastSqCh().solve(DoubleVec(3)).length(), 0u);
  RecordedErrors errors;
  EXPECT_EQ(lsq.solve(DoubleVec(2, 1.0)).length(), 3u);
  EXPECT_EQ(errors.all().at(0).text, "b vector length wrong (2!=3)");
}

TEST(LeastSqCh, MayFactorItsOwnFactor) {
  DoubleLeastSqCh lsq(4.0 * identity(2));
  lsq.factor(lsq.factors());
  lsq.doPivoting(0);
  EXPECT_EQ(valuesOf(lsq.solve(DoubleVec(2, 8.0))), (Values{2, 2}));
}

TEST(LeastSqInc, EquationsComeAndGo) {
  RecordedErrors errors;
  const DoubleGenMat a = Random(58).matrix(3, 3);
  const DoubleVec x = Random(59).vector(3);
  DoubleLeastSqInc lsq = accumulated(a, product(a, x));
  EXPECT_TRUE(lsq.good() && DoubleLeastSqInc(3, 1).fail());
  EXPECT_LT(norm(lsq.solve(0) - x), 100 * kEps);
  EXPECT_EQ(lsq.residualNorm(0), 0.0);  // fresh rows leave exact zeros
  DoubleVec extra(3, 1.0);
  lsq.addEquation(extra, 100.0);
  EXPECT_GT(lsq.residualNorm(0), 1.0);
  EXPECT_EQ(lsq.deleteEquation(extra, 100.0), 0);
  EXPECT_LT(norm(lsq.solve(0) - x), 1e-11);
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(lsq.residualNorm(1), 0.0);
  EXPECT_EQ(lsq.solve(-1).length(), 0u);
  EXPECT_EQ(errors.takeText(),
            "500b Data 1 doesn't exist, only 1 data columns\n"
            "500b Data -1 doesn't exist, only 1 data columns");
}

TEST(LeastSqInc, RemovingZeroFromAZeroResidualLeavesZero) {
  DoubleVec x(1, 3.0), same(1, 4.0);
  DoubleLeastSqInc lsq(1, 1);
  lsq.addEquation(x, 0.0);
  lsq.addEquation(same, 0.0);
  EXPECT_EQ(lsq.deleteEquation(same, 0.0), 0);
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
  EXPECT_EQ(errors.takeText(), kNotFactored + "\n" + kNotFactored);
  const DoubleLeastSqInc none(0, 1);
  EXPECT_FALSE(none.isUnderDetermined());
  EXPECT_EQ(none.solve(0).length(), 0u);
  EXPECT_EQ(errors.takeText(), kNotFactored);
}

}  // namespace
