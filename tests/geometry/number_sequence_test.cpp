// SPDX-License-Identifier: MIT
// Knot vectors against a plain std::vector.
#include "knotwork/geometry/number_sequence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

// What a sequence tells of its intervals and breakpoints, against the definitions.
void checkSearches(const TnumberSequence& seq, const Values& model, double x) {
  const auto at = [&](int i) { return model[static_cast<unsigned>(i)]; };
  const auto above = std::ranges::upper_bound(model, x);
  const int right = static_cast<int>(above - model.begin()) - 1;
  int left = right;  // the last value below that one, or the first
  while (left > 0 && at(left) == at(right)) --left;
  EXPECT_EQ(seq.findInterval(x, false), right);
  EXPECT_EQ(seq.findInterval(x, true), left);
  std::map<double, double> runs;
  for (int i = 0; i < seq.length(); ++i) {
    ++runs[at(i)];
    EXPECT_EQ(seq.whichBreakpoint(i), static_cast<int>(runs.size()) - 1);
  }
  EXPECT_EQ(seq.whichBreakpoint(seq.length()), -1);
  Values values, counts;
  for (const auto& [value, count] : runs) values.push_back(value), counts.push_back(count);
  EXPECT_EQ(valuesOf(seq.breakpoints()), values);
  EXPECT_EQ(valuesOf(seq.multiplicities()), counts);
}

}  // namespace

TEST(NumberSequence, FollowsTheModelThroughRandomEdits) {
  std::mt19937 random(20240611);
  TnumberSequence seq;
  Values model;
  for (int step = 0; step < 2000; ++step) {
    const TnumberSequence before(seq);
    const Values old = model;
    const double x = static_cast<double>(random() % 13) / 4.0;
    const int number = static_cast<int>(random() % 31) - 1;
    ASSERT_NO_FATAL_FAILURE(checkSearches(seq, model, x));
    if (step % 4 == 0) {
      model.insert(std::ranges::upper_bound(model, x), unsigned(std::max(number % 4, 0)), x);
      seq.add(x, number % 4);
    } else if (step % 4 == 1) {
      const Values more{x, x + number % 4 + 1, x + 5};
      model.insert(model.end(), more.begin(), more.end());
      std::ranges::sort(model);
      seq.add(vectorOf(more));
    } else {
      const bool exists = number >= 0 && number < static_cast<int>(model.size());
      if (exists) model.erase(model.begin() + number);
      EXPECT_EQ(seq.remove(number), exists);
    }
    ASSERT_EQ(valuesOf(seq), model) << step;
    ASSERT_EQ(valuesOf(before), old) << "a copy changed with its source";
  }
}

TEST(NumberSequence, SortsStablyAndMergesTiesBehind) {
  Values values{0.0, 2.0, -0.0, 1.0, 0.0, -0.0, -3.0};  // +0 and -0 are equal, yet differ
  DoubleVec sorted = vectorOf(values);
  IntVec ints(sorted);
  TnumberSequence::sortDoubleVecInPlace(sorted);
  TnumberSequence::sortIntVecInPlace(ints);
  std::ranges::stable_sort(values);
  EXPECT_EQ(valuesOf(ints), values);
  EXPECT_EQ(valuesOf(1.0 / sorted), valuesOf(1.0 / vectorOf(values)));
  TnumberSequence seq(vectorOf({1.0, 0.0}));
  seq.add(vectorOf({-0.0, 1.0}));
  EXPECT_EQ(valuesOf(1.0 / seq), valuesOf(1.0 / vectorOf({0.0, -0.0, 1.0, 1.0})));
}

TEST(NumberSequence, ExtraPairsEachValueOnceWithinTheTolerance) {
  const auto extra = [](const Values& a, const Values& b, double tolerance) {
    return valuesOf(TnumberSequence::extra(vectorOf(a), vectorOf(b), tolerance));
  };
  EXPECT_EQ(extra({0, 1, 2}, {0, 0.5, 1.0000001, 3}, 1e-6), (Values{0.5, 3}));
  EXPECT_EQ(extra({0, 0, 1}, {0, 0, 0, 1, 1.5}, 0.5), (Values{0, 1.5}));
  EXPECT_EQ(extra({}, {1, 2}, 9), (Values{1, 2}));
}

TEST(NumberSequence, SharesAndReportsAsItsVectorDoes) {
  const DoubleVec source = vectorOf({3.0, 1.0});
  TnumberSequence seq(source), view, unsorted;
  unsorted.add(source);
  EXPECT_EQ(valuesOf(unsorted), valuesOf(source));
  view.reference(seq);
  seq.data()(0) = 0.5;
  seq.add(seq.data());
  EXPECT_EQ(valuesOf(seq), (Values{0.5, 0.5, 3.0, 3.0}));
  EXPECT_EQ(valuesOf(view), (Values{0.5, 3.0}));
  EXPECT_EQ(TnumberSequence(1.0, 0.1, 4)(3), 1.0 + 0.1 + 0.1 + 0.1);
  RecordedErrors errors;
  view = TnumberSequence(5.0, 1.0, 1);
  view.add(9.0, 2147483647);
  EXPECT_EQ(valuesOf(view), (Values{5.0, 3.0}));
  EXPECT_EQ(TnumberSequence(0.0, 1.0, -1).whichBreakpoint(-1), 0);
  EXPECT_EQ(errors.takeTexts(),
            "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 1)\n"
            "[NOMEM: RWBlock]: Out of memory\n[NOMEM: RWBlock]: Out of memory\n");
}
