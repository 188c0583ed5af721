// SPDX-License-Identifier: MIT
// Parameters and knots.
#include "fit/parameters.h"

#include <gtest/gtest.h>

#include "fit/system.h"
#include "points.h"

namespace knotfit::test {
namespace {

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

}  // namespace
}  // namespace knotfit::test
