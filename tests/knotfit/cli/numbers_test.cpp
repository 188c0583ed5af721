// SPDX-License-Identifier: MIT
// Fits of measured data against the results of independent software.
#include <cmath>

#include "base/fault.h"
#include "cli/report.h"
#include "points.h"
#include "run.h"

namespace knotfit::test {
namespace {

struct CurveCase {
  const char* file;
  int controls;
  const char* ends;
  const char* param;
  double rms, max, within;
};

TEST(Numbers, CurvesAgreeWithIndependentSoftware) {
  const Folder folder;
  const char *air = "rae2822_measured.csv", *protein = "lysozyme_1hel_ca.csv";
  const CurveCase cases[] = {
      {air, 20, "exact", "chord", 1.964422438661e-03, 6.512854442109e-03, 1e-9},
      {air, 20, "exact", "centripetal", 8.219312058072e-04, 2.882110512e-03, 1e-9},
      {air, 40, "exact", "chord", 1.416067902145e-04, 6.435789579630e-04, 1e-9},
      {air, 40, "exact", "centripetal", 5.644307481471e-05, 2.413114866482e-04, 1e-9},
      {air, 40, "free", "chord", 1.415601774456e-04, 6.435789533327e-04, 1e-9},
      {air, 40, "free", "centripetal", 5.633858308776e-05, 2.413114631170e-04, 1e-9},
      {protein, 40, "exact", "chord", 2.012211274099, 3.090435619535, 1e-9},
      {protein, 40, "exact", "centripetal", 2.011614981377, 3.090380261263, 1e-9},
      {protein, 60, "exact", "chord", 1.642158, 2.812182, 5e-7},
      {protein, 60, "exact", "centripetal", 1.641915, 2.815900, 5e-7}};
  for (const CurveCase& c : cases) {
    for (const char* solver : {"householder", "qr", "banded"}) {
      if (solver == std::string("qr") && c.ends == std::string("exact")) continue;
      SCOPED_TRACE(std::string(c.file) + " " + std::to_string(c.controls) + c.ends + c.param +
                   solver);
      const Json r = report({"curve", data(c.file), "--controls", std::to_string(c.controls),
                             "--ends", c.ends, "--param", c.param, "--solver", solver});
      EXPECT_NEAR(r["error"]["rms"].get<double>() / c.rms, 1, c.within);
      EXPECT_NEAR(r["error"]["max"].get<double>() / c.max, 1, c.within);
      EXPECT_EQ(r["ends"]["miss"], 0.0);
      EXPECT_EQ(r["system"]["rank"], c.controls);
      EXPECT_EQ(r["system"]["solver"], solver);
      const Json& condition = r["system"]["condition"];
      EXPECT_EQ(condition.is_null(), solver == std::string("banded"));
      EXPECT_LT(condition.is_null() ? 0 : condition.get<double>(), 15);
    }
  }
}

TEST(Numbers, HeightsAgreeWithIndependentSoftware) {
  const Folder folder;
  const struct {
    const char* controls;
    double rms, max;
  } cases[] = {
      {"15,11", 1.687837, 7.553407}, {"30,21", 0.647402, 4.251594}, {"60,42", 0.328834, 1.959256}};
  for (const auto& c : cases) {
    for (const char* solver : {"householder", "qr"}) {
      const Json r = report({"surface", data("maunga_whau_87x61.csv"), "--height", "--spacing",
                             "10,10", "--knots", "uniform", "--param", "uniform", "--controls",
                             c.controls, "--solver", solver});
      EXPECT_NEAR(r["error"]["rms"].get<double>(), c.rms, 5e-7);
      EXPECT_NEAR(r["error"]["max"].get<double>(), c.max, 5e-7);
    }
  }
}

TEST(Numbers, TolerancesNeedNoMoreControlPointsThanAnotherModeller) {
  const Folder folder;
  const struct {
    const char *file, *tolerance;
    int most;
  } cases[] = {{"rae2822_measured.csv", "1e-4", 62}, {"lysozyme_1hel_ca.csv", "1", 115}};
  for (const auto& c : cases) {
    const Json r = report({"curve", data(c.file), "--tol", c.tolerance});
    EXPECT_LE(r["controls"][0].get<int>(), c.most);
    EXPECT_LE(r["nearest"]["max"].get<double>(), std::stod(c.tolerance));
    EXPECT_EQ(r["ends"]["miss"], 0.0);
  }
}

// What a report claims to be met was measured: beyond rounding it says so.
TEST(Numbers, ReportClaimsNothingThatWasMissed) {
  PointSet points = wave(30, 2, 1);
  FitOptions o;
  o.pass = {7};
  CurveFit fit = fitCurve(points, o);
  EXPECT_TRUE(fit.met);
  EXPECT_NE(curveReport(fit, o, {}, fit.distances)
                .text.find("ends     met exactly, 1 point passed (largest"),
            std::string::npos);
  fit.met = false;
  fit.miss = 0.25;
  EXPECT_NE(curveReport(fit, o, {}, fit.distances)
                .text.find("ends     not met, 1 point not passed (largest miss 0.25)"),
            std::string::npos);
  o.closed = true;
  EXPECT_NE(curveReport(fit, o, {}, fit.distances)
                .text.find("closed, not smooth at the seam, first point not met"),
            std::string::npos);
}

TEST(Numbers, SolverOfDataAloneMakesNoClaims) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  const Json r = report({"curve", "spring.csv", "--solver", "qr"});
  EXPECT_EQ(r["ends"]["mode"], "free");
  EXPECT_EQ(r["ends"]["constraints"], 0);
  EXPECT_EQ(knotfit({"surface", "hill.csv", "--height", "--edges", "exact", "--solver", "qr"}).err,
            "--solver qr cannot meet --edges exact; use --solver householder, or leave it out\n");
}

TEST(Numbers, ReportReadsAsShown) {
  EXPECT_EQ(knotfit({"curve", data("lysozyme_1hel_ca.csv"), "--controls", "40"}).out,
            "curve    129 points (3 columns) -> degree 3, 40 control points, 37 spans, "
            "chord-length parameters, averaged knots\n"
            "ends     met exactly (largest miss 0)\n"
            "error    at the parameters: rms 2.012211, max 3.090436 (point 13, u = 0.09374)\n"
            "         nearest distance:  rms 1.889871, max 3.081445 (point 82)\n"
            "system   129 x 40, rank 40, condition 4.7, householder\n");
}

// Correct digits of the worst parameter, from the exact answers in column 4 of the certified file.
double correctDigits(const Json& r, const std::string& set) {
  std::ifstream file(set + "_certified.csv");
  std::string line;
  std::getline(file, line);
  double worst = 15;
  for (const Json& p : r["parameters"]) {
    std::getline(file, line);
    std::istringstream fields(line);
    std::string field;
    for (int i = 0; i < 4; ++i) std::getline(fields, field, ',');
    const double exact = std::stod(field), got = p["estimate"];
    if (got != exact) worst = std::min(worst, -std::log10(std::abs(got - exact) / std::abs(exact)));
  }
  return worst;
}

TEST(Numbers, RegressionHasAllDigitsOfTheYardstickByEverySolver) {
  const Folder folder;
  const struct {
    const char *set, *model;
    double digits;
  } cases[] = {
      {"norris", "poly:1", 13.5},   {"pontius", "poly:2", 12.5},
      {"longley", "linear", 11.1},  {"wampler1", "poly:5", 9.6},
      {"wampler2", "poly:5", 12.7}, {"filip", "poly:10", 14.0}};  // by QR of doubled powers 13.3
  for (const auto& c : cases) {
    const bool ours = std::string(c.set) == "filip";
    const std::string set = (ours ? KNOTWORK_TEST_DATA "/regression/" : data("strd/")) + c.set;
    for (const char* solver : {"householder", "qr", "svd", "cholesky", "lu"}) {
      SCOPED_TRACE(std::string(c.set) + " " + solver);
      const Json r = report({"lsq", set + ".csv", "--model", c.model, "--solver", solver});
      EXPECT_GE(correctDigits(r, set), c.digits);
    }
  }
  const Json longley = report({"lsq", data("strd/longley.csv"), "--model", "linear"});
  EXPECT_NEAR(longley["parameters"][0]["error"].get<double>() / 890420.383607373, 1, 1e-13);
  EXPECT_NEAR(longley["residual_standard_deviation"].get<double>() / 304.854073561965, 1, 1e-13);
  EXPECT_NEAR(longley["r_squared"].get<double>(), 0.995479004577296, 1e-14);
}

TEST(Numbers, RegressionNamesWhatLeavesTheRangeOfNumbers) {
  const Folder folder;
  write("y.csv", "1e200,1\n3e200,2\n2e200,3\n5e200,4\n");
  const Json r = report({"lsq", "y.csv", "--model", "linear"});
  EXPECT_FALSE(r.contains("sum_of_squares"));
  EXPECT_NEAR(r["parameters"][1]["estimate"].get<double>() / 1.1e200, 1, 1e-14);
  EXPECT_NE(knotfit({"lsq", "y.csv", "--model", "linear"}).out.find("beyond the range"),
            std::string::npos);
  for (const char* x : {"e200", "e-200"}) {  // estimates of 0 and of infinity
    const std::string e = x;
    write("x.csv", "1,1" + e + "\n3,2" + e + "\n2,3" + e + "\n5,4" + e + "\n");
    const Outcome o = knotfit({"lsq", "x.csv", "--model", "poly:2"});
    EXPECT_EQ(o.code, kNoSolution);
    EXPECT_EQ(o.err,
              "B2 or its standard error leaves the range of numbers; measure in other units\n");
  }
}

}  // namespace
}  // namespace knotfit::test
