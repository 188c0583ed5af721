// SPDX-License-Identifier: MIT
// Numbers to text and back.
#include "base/text.h"

#include <cmath>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

namespace knotfit::test {
namespace {

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

}  // namespace
}  // namespace knotfit::test
