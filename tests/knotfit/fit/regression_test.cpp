// SPDX-License-Identifier: MIT
// Regression and the doubled precision that it rests on.
#include "fit/regression.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "base/doubled.h"
#include "base/fault.h"

namespace knotfit::test {
namespace {

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

constexpr RegressionMethod kMethods[] = {RegressionMethod::kHouseholder, RegressionMethod::kQr,
                                         RegressionMethod::kSvd, RegressionMethod::kCholesky,
                                         RegressionMethod::kLu};

std::string refusal(const RegressionProblem& p, RegressionMethod m) {
  try {
    regression(p, m);
  } catch (const Fault& fault) {
    return fault.what();
  }
  return "";
}

TEST(Regression, RefusesColumnsThatDependOnEachOther) {
  const std::vector<std::vector<double>> x = {{1, 2, 3, 4, 5}, {2, 4, 6, 8, 10}};
  const std::vector<double> y = {1, 2, 4, 8, 16};
  for (const RegressionMethod m : kMethods) {
    const bool squares = m == RegressionMethod::kCholesky || m == RegressionMethod::kLu;
    EXPECT_NE(refusal(linearProblem(x, y, true), m)
                  .find(squares ? "too ill-conditioned for " : "the columns depend on each other"),
              std::string::npos)
        << nameOf(m);
  }
}

TEST(Regression, WithoutInterceptRSquaredIsAboutZero) {
  const std::vector<std::vector<double>> x = {{1, 2, 3, 4}};
  const std::vector<double> y = {11, 12, 13, 14};
  const RegressionResult r = regression(linearProblem(x, y, false), RegressionMethod::kQr);
  EXPECT_NEAR(r.estimates[0], 13.0 / 3, 1e-14);  // x.y / x.x = 130 / 30
  EXPECT_NEAR(r.rSquared, 1 - r.sumOfSquares / 630, 1e-15);
  EXPECT_NEAR(regression(linearProblem(x, y, true), RegressionMethod::kLu).rSquared, 1, 1e-15);
}

__extension__ typedef __float128 Quad;

// The normal equations in numbers of 113 bits, for powers of (x + 6) / 3, which runs from -1 to 1;
// then multiplied out.
std::vector<double> quadPolynomial(const std::vector<double>& x, const std::vector<double>& y,
                                   std::size_t degree) {
  const std::size_t n = degree + 1;
  std::vector<std::vector<Quad>> a(n, std::vector<Quad>(n + 1, 0));
  for (std::size_t i = 0; i < x.size(); ++i) {
    std::vector<Quad> power(n, 1);
    for (std::size_t k = 1; k < n; ++k) {
      power[k] = power[k - 1] * (Quad(x[i]) + 6) / 3;
    }
    for (std::size_t r = 0; r < n; ++r) {
      for (std::size_t c = 0; c < n; ++c) a[r][c] += power[r] * power[c];
      a[r][n] += power[r] * Quad(y[i]);
    }
  }
  for (std::size_t k = 0; k < n; ++k) {  // symmetric and positive: needs no pivots
    for (std::size_t r = 0; r < n; ++r) {
      const Quad factor = r == k ? Quad(0) : a[r][k] / a[k][k];
      for (std::size_t c = k; c <= n; ++c) a[r][c] -= factor * a[k][c];
    }
  }
  std::vector<Quad> sum(n, 0);  // Horner's scheme on polynomials in x
  for (std::size_t k = n; k-- > 0;) {
    for (std::size_t c = n; c-- > 0;) sum[c] = (6 * sum[c] + (c ? sum[c - 1] : Quad(0))) / 3;
    sum[0] += a[k][n] / a[k][k];
  }
  std::vector<double> b;
  for (const Quad& c : sum) b.push_back(static_cast<double>(c));
  return b;
}

TEST(Regression, PolynomialsOfHighDegreeKeepTheirDigitsAtAnySize) {
  std::mt19937 random(10);
  std::uniform_real_distribution<double> place(-9, -3), noise(-0.01, 0.01);
  std::vector<double> x, y;
  for (int i = 0; i < 82; ++i) {
    x.push_back(place(random));
    y.push_back(0.8 + 0.1 * std::sin(x.back()) + noise(random));
  }
  const std::vector<double> expected = quadPolynomial(x, y, 10);
  constexpr int kX = 100, kY = 60;  // the tenth power of the large x is no number
  std::vector<double> largeX = x, largeY = y;
  for (double& v : largeX) v = std::ldexp(v, kX);
  for (double& v : largeY) v = std::ldexp(v, kY);
  for (const RegressionMethod m : kMethods) {
    const RegressionResult r = regression(polynomialProblem(x, y, 10), m);
    const RegressionResult s = regression(polynomialProblem(largeX, largeY, 10), m);
    for (std::size_t k = 0; k < expected.size(); ++k) {
      EXPECT_NEAR(r.estimates[k] / expected[k], 1, 1e-15) << nameOf(m) << k;
      EXPECT_EQ(std::ldexp(s.estimates[k], kX * static_cast<int>(k) - kY), r.estimates[k]);
    }
  }
}

}  // namespace
}  // namespace knotfit::test
