// SPDX-License-Identifier: MIT
// Evaluation of curves against the long-double model, exact ends, and rational curves.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "kernel/reference.h"
#include "support/failing_new.h"

using namespace knotwork::test;

TEST(SplineEval, DerivativesStayWithin64UlpOfTheLargestTerm) {
  Maker make(1);
  for (int n = 0; n < 400; ++n) {
    const AP_SPLINE s = make.curve(1 + make.upTo(5), make.upTo(7), 1 + make.upTo(9), 0);
    const int nderiv = make.upTo(s.Degree() + 2);
    std::vector<double> out(at(s.WorkspaceSize(nderiv)));
    const double t = make.parameter(s.Knots());
    s.eval(out.data(), t, nderiv);
    for (int q = 0; q <= nderiv; ++q) {
      for (int c = 0; c < s.Dim(); ++c) {
        const double value = out[at(q * s.Coords() + c)];
        const Sum model = derivative(s, t, q, c);
        ASSERT_LT(ulps(value, model.value, model.largest), 64) << n << " order " << q << " t " << t;
        if (q > s.Degree()) {
          ASSERT_EQ(value, 0.0);
        }
      }
    }
  }
}

// Power series of A / w, order by order: S_q / q! = (A_q / q! - sum w_i / i! S_(q-i) / (q-i)!) / w.
TEST(SplineEval, RationalDerivativesFollowTheQuotientRule) {
  Maker make(2);
  for (int n = 0; n < 200; ++n) {
    const AP_SPLINE s = make.curve(1 + make.upTo(3), 1 + make.upTo(4), 1 + make.upTo(5), -1);
    const int nderiv = make.upTo(6);
    std::vector<double> out(at(s.WorkspaceSize(nderiv)));
    const double t = make.parameter(s.Knots());
    s.eval(out.data(), t, nderiv);
    for (int c = 0; c < s.Dim(); ++c) {
      Reals series, scale;
      Real factorial = 1;
      for (int q = 0; q <= nderiv; factorial *= ++q) {
        Real sum = derivative(s, t, q, c).value / factorial,
             terms = derivative(s, t, q, c).largest / factorial;
        Real below = 1;
        for (int i = 1; i <= q; ++i) {
          const Sum w = derivative(s, t, i, s.Dim());
          below *= i;
          sum -= w.value / below * series[at(q - i)];
          terms += w.largest / below * (scale[at(q - i)] + std::fabs(series[at(q - i)]));
        }
        const Sum w = derivative(s, t, 0, s.Dim());
        series.push_back(sum / w.value);
        scale.push_back(terms / w.value + w.largest / w.value * std::fabs(series.back()));
        ASSERT_LT(
            ulps(out[at(q * s.Coords() + c)], series.back() * factorial, scale.back() * factorial),
            64);
      }
    }
  }
}

TEST(SplineEval, ClampedEndsAreTheControlPointsToTheBit) {
  Maker make(3);
  for (int n = 0; n < 100; ++n) {
    AP_SPLINE s(3, 1 + make.upTo(5), 1 + make.upTo(6), 0);
    make.fill(s.CV(), s.Count(), 3, false);
    s[0][0] = -0.0;
    s[0][1] = 1e308;
    s[1][1] = -1e308;
    s[s.Count() - 1][2] = -0.0;
    std::vector<double> out(at(s.WorkspaceSize(0)));
    for (const int end : {0, s.Spans()}) {
      s.eval(out.data(), end, 0);
      const double* const p = s[end ? s.Count() - 1 : 0];
      for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(out[at(c)], p[c]);
        EXPECT_EQ(std::signbit(out[at(c)]), std::signbit(p[c]));
      }
    }
  }
}

TEST(SplineEval, QuarterCircleIsRoundAndItsTangentsPerpendicular) {
  AP_SPLINE arc(2, 2, 1, 1);
  const double w = std::sqrt(0.5);
  const double points[] = {1, 0, 1, w, w, w, 0, 1, 1};
  arc.set(points, 9);
  constexpr double kEps = std::numeric_limits<double>::epsilon();
  double d[9];
  for (int i = 0; i <= 1000; ++i) {
    arc.eval(d, i / 1000.0, 2);
    EXPECT_NEAR(d[0] * d[0] + d[1] * d[1], 1, 6 * kEps);
    EXPECT_NEAR(d[0] * d[3] + d[1] * d[4], 0, 16 * kEps);  // x . x' = 0, and so x . x'' = -x' . x'
    EXPECT_NEAR(d[0] * d[6] + d[1] * d[7], -d[3] * d[3] - d[4] * d[4], 100 * kEps);
  }
}

TEST(SplineEval, MemberAndNormalEvaluationAllocateNothing) {
  Maker make(4);
  const AP_SPLINE s = make.curve(3, 3, 8, 1);
  const AP_SURFACE f = make.surface(3, 3, 2, 4, 5, 1);
  std::vector<double> out(at(std::max(s.WorkspaceSize(4), f.WorkspaceSize(4))));
  double point[3], normal[3];
  const long before = newCalls();
  s.eval(out.data(), 0.3, 4);
  f.eval(out.data(), 0.3, 0.4, 4);
  f.normal(0.3, 0.4, point, normal);
  EXPECT_EQ(newCalls(), before);
}

TEST(SplineEval, ParametersAndKnotsThatAreNoNumbersStayInBounds) {
  const double bad[] = {NAN, INFINITY, -INFINITY, 3, 1, 2, 2, -1e308, 1e308, NAN, 0};
  for (int degree = 0; degree <= 4; ++degree) {
    AP_SPLINE s(1, degree, 4, 0);
    std::fill_n(s.CV(), s.Count(), 1.0);
    for (int from = 0; from < 3; ++from) {
      for (const double t :
           {0.5, static_cast<double>(NAN), static_cast<double>(INFINITY), -1e300}) {
        double out[8];
        s.eval(out, t, 3);  // the sanitizers judge
        s.insert(t, 2);
      }
      s.Knots().assign(bad + from, 11 - from);
    }
  }
}

TEST(SplineEval, StaticEvaluationFollowsTheCurveEvaluatedLast) {
  Maker make(5);
  const AP_SPLINE first = make.curve(2, 3, 3, 0);
  double out[40], other[40];
  {
    const AP_SPLINE second = make.curve(3, 5, 2, 1);
    first.eval(out, 0.7, 1);
    second.eval(out, 0.25, 3);
    const double* const area = AP_SPLINE::eval(0.25, 3);
    for (int q = 0; q <= 3; ++q)
      EXPECT_TRUE(std::equal(out + 4 * q, out + 4 * q + 3, area + 4 * q));
    EXPECT_EQ(AP_SPLINE::eval(0.25, -1), nullptr);
  }
  EXPECT_EQ(AP_SPLINE::eval(0.25, 0), nullptr);
  first.eval(other, 0.7, 1);
  EXPECT_EQ(AP_SPLINE::eval(0.7, 1)[3], other[3]);
}
