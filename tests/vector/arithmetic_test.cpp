// SPDX-License-Identifier: MIT
// Reductions, searches, functions and conversions of the three vectors; element-wise arithmetic is
// in view_model_test.cpp.
#include <climits>
#include <limits>

#include "support/recorded_errors.h"
#include "vector/vector_oracle.h"

namespace {

template <class Vec>
class VectorArithmetic : public testing::Test {};
TYPED_TEST_SUITE(VectorArithmetic, AllVectors);

TYPED_TEST(VectorArithmetic, ReductionsAndSearchesAgreeWithPlainLoops) {
  using T = typename TypeParam::value_type;
  using Rules = Oracle<T>;
  Random random(5);
  for (int n = 0; n < 40; ++n) {
    std::vector<T> x, sums, steps;
    for (int i = 0; i < n; ++i) x.push_back(static_cast<T>(numberIn(random, -9, 9)));
    if constexpr (std::is_integral_v<T>) {  // that wrap, their product without a zero
      for (T& xi : x) {
        if (random() % 2 == 0) xi = randomElement<T>(random);
        if (n % 3 == 0) xi = static_cast<T>(xi | 1);
      }
    }
    T total{}, product{1}, inner{}, before{};
    std::vector<int> twos, others, less;
    for (const T xi : x) {
      sums.push_back(total = Rules::add(total, xi));
      steps.push_back(Rules::subtract(xi, before));
      before = xi;
      product = Rules::multiply(product, xi);
      inner = Rules::add(inner, Rules::multiply(xi, xi));
      const int i = static_cast<int>(sums.size()) - 1;
      (xi == 2 ? twos : others).push_back(i);
      if (xi < 2) less.push_back(i);
    }
    const TypeParam block = vectorOf<TypeParam>({x.rbegin(), x.rend()}), v = reverse(block);
    EXPECT_EQ(sum(v), total);
    EXPECT_EQ(prod(v), product);
    EXPECT_EQ(dot(v, v), inner);
    EXPECT_TRUE(holds(cumsum(v), sums));
    EXPECT_TRUE(holds(delta(v), steps));
    if (n > 0) {
      const auto most = std::max_element(x.begin(), x.end());
      const auto least = std::min_element(x.begin(), x.end());
      EXPECT_EQ(maxIndex(v), most - x.begin());
      EXPECT_EQ(minIndex(v), least - x.begin());
      EXPECT_EQ(maxValue(v), *most);
      EXPECT_EQ(minValue(v), *least);
    }
    EXPECT_TRUE(holds(v.lessIndex(2), less));
    const auto searchTwos = [&](auto... tolerance) {
      EXPECT_TRUE(holds(v.valueIndex(2, tolerance...), twos));
      EXPECT_TRUE(holds(v.nonValueIndex(2, tolerance...), others));
      EXPECT_EQ(v.countValue(2, tolerance...), static_cast<int>(twos.size()));
      EXPECT_EQ(v.isEqual(2, tolerance...), others.empty());
    };
    if constexpr (std::is_same_v<TypeParam, DoubleVec>) {
      searchTwos(0.5);
    } else {
      searchTwos();
    }
    TypeParam other = v.copy();
    EXPECT_TRUE(v == other && !(v != other));
    if (n > 0) other(n - 1) = Rules::add(v(n - 1), 1);
    EXPECT_EQ(v != other, n > 0);
    EXPECT_NE(v, TypeParam(static_cast<unsigned>(n) + 1, 0));
  }
}

TYPED_TEST(VectorArithmetic, EmptyAndMismatchedOperandsReportAndGoOn) {
  const TypeParam empty, two(2, 5), three(3, 2);
  RecordedErrors errors;
  EXPECT_EQ(maxIndex(empty), -1);
  EXPECT_EQ(minIndex(empty), -1);
  EXPECT_EQ(maxValue(empty), 0);
  EXPECT_EQ(minValue(empty), 0);
  EXPECT_EQ(dot(three, two), 20);
  EXPECT_NE(two, three);
  const std::string most = "maxIndex: vector is empty", least = "minIndex: vector is empty";
  EXPECT_EQ(errors.takeTexts(), messages(TypeParam::className, {{"ZEROVEC", most},
                                                                {"ZEROVEC", least},
                                                                {"ZEROVEC", most},
                                                                {"ZEROVEC", least},
                                                                {"VNMATCH", lengthsDiffer(3, 2)}}));
}

TEST(IntegerVectors, ConvertExactlyOrByCuttingOff) {
  EXPECT_TRUE(holds(DoubleVec(IntVec(3, 1, 2)), {1.0, 3.0, 5.0}));
  EXPECT_TRUE(holds(IntVec(SCharVec(4, -128, 127)), {-128, -1, 126, -3}));
  const double x[] = {1.9, -1.9, -2147483648.9, 2147483647.9, 2147483648.0, std::nan("")};
  EXPECT_TRUE(holds(IntVec(DoubleVec(x, 6)), {1, -1, INT_MIN, INT_MAX, INT_MIN, INT_MIN}));
  EXPECT_TRUE(holds(SCharVec(IntVec(4, 127, 86)), {127, -43, 43, -127}));
}

TEST(DoubleVectors, SearchesKnowNaNAndTolerance) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const double elements[] = {1e-9, kNan, -1e-9, 2e-9, -0.0, 5.0};
  DoubleVec v(elements, 6);
  EXPECT_TRUE(holds(v.zeroIndex(1e-9), {0, 2, 4}));
  EXPECT_TRUE(holds(v.nonZeroIndex(1e-9), {3, 5}));
  EXPECT_EQ(v.countZero(1e-9), 3);
  EXPECT_EQ(v.isZero(10.0), 0);
  EXPECT_EQ(v.slice(2, 4, 1).isZero(5.0), 1);
  EXPECT_EQ(v.zeroIndex(1e-9).slice(0, 6, 1).stride(), 1);  // its block is as long as v
  EXPECT_NE(v, v);
  EXPECT_EQ(maxIndex(v), 5);
  EXPECT_EQ(maxIndex(v.slice(1, 5, 1)), 0);  // a NaN in front stays
  EXPECT_EQ(minIndex(v.slice(1, 5, 1)), 0);
  v.clampZero(1e-9);
  EXPECT_TRUE(holds(v, {0.0, kNan, 0.0, 2e-9, 0.0, 5.0}));
}

TEST(DoubleVectors, MeanAndVarianceOfTooFewPoints) {
  EXPECT_TRUE(std::isnan(mean(DoubleVec())));
  RecordedErrors errors;
  EXPECT_EQ(variance(DoubleVec(1, 3.0)), 0.0);
  EXPECT_EQ(errors.all().at(0).origin, 0xF000u);
  EXPECT_EQ(errors.takeText(), "3009 [NPOINTS: DoubleVec]: Vector (1) Variance needs minimum of 2");
}

TEST(DoubleVectors, FunctionsAreTheCLibrarys) {
  using OfVector = DoubleVec (*)(const DoubleVec&);
  constexpr OfVector ofVector[] = {abs, acos,  asin, atan, ceil, cos, cosh, exp,
                                   log, log10, sin,  sinh, sqrt, tan, tanh, floorinline};
  using OfElement = double (*)(double);
  constexpr OfElement ofElement[] = {
      std::fabs, std::acos,  std::asin, std::atan, std::ceil, std::cos, std::cosh, std::exp,
      std::log,  std::log10, std::sin,  std::sinh, std::sqrt, std::tan, std::tanh, std::floor};
  const double raw[] = {-1.5, -0.75, -0.0, 0.3, 1.0, 2.5, 700.0, 1e300};
  const DoubleVec v = reverse(DoubleVec(raw, 8)), y(8, 2.0, -0.5);
  const DoubleVec angles = atan2(y, v), powers = pow(v, y);
  for (int i = 0; i < 8; ++i) {
    for (int f = 0; f < 16; ++f) EXPECT_TRUE(sameBits(ofVector[f](v)(i), ofElement[f](v(i)))) << f;
    EXPECT_TRUE(sameBits(angles(i), std::atan2(y(i), v(i))));
    EXPECT_TRUE(sameBits(powers(i), std::pow(v(i), y(i))));
  }
  // Just below the middle of two doubles: rounding to a longer format first would go up.
  const double eps = std::numeric_limits<double>::epsilon();
  EXPECT_TRUE(holds(sqrt(DoubleVec(2, 1 + 3 * eps, 4 * eps)), {1 + eps, 1 + 3 * eps}));
  RecordedErrors errors;
  EXPECT_TRUE(holds(pow(DoubleVec(1, 2.0), DoubleVec(2, 3.0)), {8.0, 0.0}));
  EXPECT_EQ(errors.takeTexts(), messages("DoubleVec", {{"VNMATCH", lengthsDiffer(1, 2)}}));
}

}  // namespace
