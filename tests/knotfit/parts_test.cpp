// SPDX-License-Identifier: MIT
// Parts of the program against slow models, on random data of fixed seeds.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "base/fault.h"
#include "base/text.h"
#include "fit/doubled.h"
#include "fit/nearest.h"
#include "fit/parameters.h"
#include "fit/regression.h"
#include "fit/solver.h"
#include "fit/surface_fit.h"
#include "fit/system.h"
#include "io/writers.h"
#include "run.h"

namespace knotfit::test {
namespace {

std::vector<double> ascending(std::mt19937& random, std::size_t n) {
  std::uniform_real_distribution<double> place(0, 1);
  std::vector<double> u(n);
  for (double& x : u) x = std::pow(place(random), 2);
  std::sort(u.begin(), u.end());
  u.front() = 0;
  u.back() = 1;
  return u;
}

TEST(Text, NumbersReadBackTheSameAndOtherTokensAreNone) {
  std::mt19937_64 random(3);
  for (int trial = 0; trial < 2000; ++trial) {
    const std::uint64_t bits = random();
    double x, back;
    std::memcpy(&x, &bits, sizeof x);
    if (!std::isfinite(x)) continue;
    EXPECT_EQ(parseNumber(shortest(x), back), NumberFault::kNone) << shortest(x);
    EXPECT_EQ(back, x);
  }
  double x;
  for (const char* token : {"", " 1", "1 ", "1,5", "0x10", "nan", "inf", "-", "+-1", "1e", "--1"}) {
    EXPECT_EQ(parseNumber(token, x), NumberFault::kNotANumber) << token;
  }
  for (const char* token : {"1e999", "-1e999", "1e-999"}) {
    EXPECT_EQ(parseNumber(token, x), NumberFault::kOutOfRange) << token;
  }
  EXPECT_EQ(measured(2.0122112741), "2.012211");
  EXPECT_EQ(measured(1.416067902145e-4), "0.0001416068");
  EXPECT_EQ(inQuotes(std::string(50, 'a')), "'" + std::string(40, 'a') + "...'");
}

TEST(Doubled, KeepsWhatADoubleLoses) {
  Doubled sum;
  for (const double x : {1e16, 1.0, 1e-3, -1e16}) sum += x;
  EXPECT_DOUBLE_EQ(sum.value(), 1.001);
  Doubled product;
  product.addProduct(1 + 0x1p-40, 1 + 0x1p-40);
  product += -1.0;
  product += -0x1p-39;
  EXPECT_EQ(product.value(), 0x1p-80);
}

TEST(Knots, AveragedOnesLeaveADatumInEverySpan) {
  std::mt19937 random(5);
  for (int trial = 0; trial < 200; ++trial) {
    const int degree = 1 + trial % 5;
    const std::vector<double> u = ascending(random, 30 + static_cast<std::size_t>(trial));
    const std::size_t least = static_cast<std::size_t>(degree) + 1;
    const std::size_t n = least + random() % (u.size() - least + 1);
    const std::vector<double> t = averagedKnots(u, degree, n);
    ASSERT_EQ(t.size(), n + least);
    EXPECT_TRUE(std::is_sorted(t.begin(), t.end()));
    for (std::size_t k = least - 1; k < n && n < u.size(); ++k) {
      EXPECT_TRUE(
          std::any_of(u.begin(), u.end(), [&](double x) { return x >= t[k] && x <= t[k + 1]; }));
    }
    EXPECT_TRUE(n < u.size() || isDetermined(t, degree, u));
  }
}

// Whether every control point can have a datum of its own within its function's support: by search
// for augmenting paths.
class Matching {
 public:
  Matching(const std::vector<double>& t, std::size_t order, const std::vector<double>& u)
      : t_(t), order_(order), u_(u), owner_(u.size(), -1) {}
  bool perfect() {
    for (std::size_t j = 0; j + order_ < t_.size(); ++j) {
      seen_.assign(u_.size(), false);
      if (!place(static_cast<int>(j))) return false;
    }
    return true;
  }

 private:
  bool reaches(std::size_t j, double x) const {
    const bool within = x > t_[j] && x < t_[j + order_];
    return within || (j == 0 && x == t_[0]) || (j + order_ + 1 == t_.size() && x == t_.back());
  }
  bool place(int j) {
    for (std::size_t i = 0; i < u_.size(); ++i) {
      if (seen_[i] || !reaches(static_cast<std::size_t>(j), u_[i])) continue;
      seen_[i] = true;
      if (owner_[i] < 0 || place(owner_[i])) {
        owner_[i] = j;
        return true;
      }
    }
    return false;
  }
  const std::vector<double>& t_;
  std::size_t order_;
  const std::vector<double>& u_;
  std::vector<int> owner_;
  std::vector<bool> seen_;
};

TEST(System, DeterminedMeansThatEveryControlPointHasADatumOfItsOwn) {
  std::mt19937 random(8);
  int determined = 0;
  for (int trial = 0; trial < 500; ++trial) {
    const int degree = 1 + trial % 4;
    const std::size_t order = static_cast<std::size_t>(degree) + 1;
    const std::vector<double> u = ascending(random, 8 + random() % 12);
    std::vector<double> t(order, 0.0), inner = ascending(random, 2 + random() % 7);
    for (std::size_t k = 1; k + 1 < inner.size(); ++k) {
      t.push_back(random() % 3 ? inner[k] : u[1 + random() % (u.size() - 2)]);
    }
    std::sort(t.begin() + static_cast<std::ptrdiff_t>(order), t.end());
    t.insert(t.end(), order, 1.0);
    const bool expected = Matching(t, order, u).perfect();
    EXPECT_EQ(isDetermined(t, degree, u), expected);
    determined += expected;
    if (expected) {
      EXPECT_NO_THROW(checkDetermined(t, degree, u));
    } else {
      EXPECT_THROW(checkDetermined(t, degree, u), Fault);
    }
  }
  EXPECT_GT(determined, 50);
  EXPECT_LT(determined, 450);
}

TEST(System, BothSolversFindTheSameMinimum) {
  std::mt19937 random(21);
  std::uniform_real_distribution<double> place(-1, 1);
  for (int trial = 0; trial < 20; ++trial) {
    const std::vector<double> u = ascending(random, 60);
    const std::vector<double> t = averagedKnots(u, 3, 12);
    FitSystem system;
    system.unknowns = 12;
    system.dim = 2;
    for (const double at : u) {
      const double datum[] = {1e-7 * place(random), 1e9 * place(random)};  // sizes apart
      system.add(SparseRow(basisRow(t, 3, at)), datum);
    }
    std::vector<double> x[2];
    for (const Method method : {Method::kHouseholder, Method::kQr}) {
      SolverOptions options;
      options.method = method;
      x[method == Method::kQr] = FactoredSystem(system, options).solve(system.rhs, 2);
    }
    const std::vector<double> r = system.residual(system.rhs, x[0], 2);
    for (std::size_t k = 0; k < x[0].size(); ++k) {
      const double size = k % 2 ? 1e9 : 1e-7;
      EXPECT_NEAR(x[0][k], x[1][k], 1e-10 * size) << k;
      double slope = 0;  // of half the sum of squares
      for (std::size_t i = 0; i < system.rows.size(); ++i) {
        const SparseRow& row = system.rows[i];
        for (std::size_t e = 0; e < row.columns.size(); ++e) {
          if (row.columns[e] == k / 2) slope += row.values[e] * r[2 * i + k % 2];
        }
      }
      EXPECT_NEAR(slope, 0, 1e-10 * size);
    }
  }
}

PointGrid plane(std::size_t rows, std::size_t columns) {
  PointGrid grid;
  grid.rows = rows;
  grid.columns = columns;
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < columns; ++j) {
      const double x = static_cast<double>(i), y = 0.5 * static_cast<double>(j);
      grid.coords.insert(grid.coords.end(), {x, y, 3 + 2 * x - y + 0.1 * x * y});
    }
  }
  return grid;
}

TEST(Surfaces, ReproduceWhatTheirSpaceHolds) {
  const PointGrid grid = plane(14, 11);
  for (const Edges edges : {Edges::kFree, Edges::kExact, Edges::kCorners}) {
    for (const Method method : {Method::kHouseholder, Method::kQr}) {
      FitOptions o;
      o.degree = {2, 3};
      o.controls = {6, 5};
      o.spacing = Spacing::kUniform;
      o.edges = edges;
      o.solver.method = method;
      const SurfaceFit fit = fitSurface(grid, o);
      EXPECT_LT(summaryOf(distancesAt(fit, grid)).max, 1e-12);
      EXPECT_LT(summaryOf(nearestDistances(fit, grid)).max, 1e-12);
    }
  }
}

TEST(Surfaces, NearestPlacesAgreeWithDenseSampling) {
  const PointGrid grid = plane(10, 10);
  FitOptions o;
  o.controls = {6, 6};
  Spline s = fitSurface(grid, o).spline;
  for (std::size_t i = 2; i < s.controls.size(); i += 3) {
    s.controls[i] += std::sin(static_cast<double>(i));
  }
  const SurfaceProjector projector(s);
  std::mt19937 random(2);
  std::uniform_real_distribution<double> place(-1, 10);
  for (int trial = 0; trial < 20; ++trial) {
    const double p[] = {place(random), place(random) / 2, 2 * place(random)};
    double sampled = 1e9;
    for (int i = 0; i <= 150; ++i) {
      for (int j = 0; j <= 150; ++j) {
        const auto at = projector.shape().point(i / 150.0, j / 150.0);
        sampled = std::min(sampled, std::hypot(at[0] - p[0], at[1] - p[1], at[2] - p[2]));
      }
    }
    const double found = projector.nearest(p, NAN, NAN).distance;
    EXPECT_LE(found, sampled + 1e-9);
    EXPECT_GT(found, sampled - 0.1);
  }
}

TEST(Regression, RefusesColumnsThatDependOnEachOther) {
  RegressionProblem p;
  p.names = {"B0", "B1", "B2"};
  p.columns = {{1, 1, 1, 1, 1}, {1, 2, 3, 4, 5}, {2, 4, 6, 8, 10}};
  p.response = {1, 2, 4, 8, 16};
  for (const RegressionMethod m :
       {RegressionMethod::kHouseholder, RegressionMethod::kQr, RegressionMethod::kSvd,
        RegressionMethod::kCholesky, RegressionMethod::kLu}) {
    EXPECT_THROW(regression(p, m), Fault) << static_cast<int>(m);
  }
  p.columns.pop_back();
  p.names.pop_back();
  EXPECT_NEAR(regression(p, RegressionMethod::kLu).estimates[1], 3.6, 1e-14);
}

TEST(Flags, PlanarAndClosedAreToldTruthfully) {
  Spline s;
  s.size[0] = 5;
  s.controls = {0, 0, 0, 1, 0, 1, 2, 1, 3, 3, 0, 3, 0, 0, 0};  // in the plane z = x + y
  ASSERT_TRUE(planeNormal(s));
  EXPECT_NEAR(std::abs((*planeNormal(s))[2]), 1 / std::sqrt(3.0), 1e-15);
  EXPECT_TRUE(meetsItself(s, 0));
  s.controls[5] += 1e-6;
  EXPECT_FALSE(planeNormal(s));
  s.controls[12] += 1e-15;
  EXPECT_FALSE(meetsItself(s, 0));
  s.controls = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4};
  ASSERT_TRUE(planeNormal(s));
  const auto n = *planeNormal(s);
  EXPECT_NEAR(n[0] + n[1] + n[2], 0, 1e-15);
}

TEST(Manual, EveryOptionStandsInTheManualAndTheCompletion) {
  const std::string manual = contents(KNOTFIT_SOURCES "/knotfit.1");
  const std::string completion = contents(KNOTFIT_SOURCES "/completion.bash");
  for (const char* command :
       {"curve", "surface", "eval", "check", "insert", "convert", "info", "lsq", "demo"}) {
    const std::string help = knotfit({command, "--help"}).out;
    for (std::size_t at = help.find("--"); at != std::string::npos; at = help.find("--", at + 2)) {
      const std::size_t end = help.find_first_of(" ,\n.;]", at);
      const std::string name = help.substr(at, end - at);
      if (name == "--help") continue;
      EXPECT_NE(completion.find(name), std::string::npos) << command << " " << name;
      std::string troff;
      for (const char c : name) troff += c == '-' ? std::string("\\-") : std::string(1, c);
      const bool letter = name == "--output" || name == "--quiet" || name == "--verbose";
      EXPECT_TRUE(letter || manual.find(troff) != std::string::npos) << command << " " << name;
    }
  }
}

}  // namespace
}  // namespace knotfit::test
