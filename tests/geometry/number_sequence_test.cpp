// SPDX-License-Identifier: MIT
// Knot vectors against a golden case and a plain std::vector.
#include "knotwork/geometry/number_sequence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "support/golden.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

using Results = std::map<std::string, Values>;

// Does what a golden operation says to `seq`, and returns its results by their names.
Results perform(const knotwork::test::GoldenStep& step, TnumberSequence& seq) {
  const auto all = [&](const char* name) { return step.in(name).values; };
  const auto each = [&](auto f) {
    Values results;
    for (const double at : all("at")) results.push_back(f(at));
    return results;
  };
  const std::string& op = step.operation;
  if (op == "findInterval") {
    return {{"right", each([&](double x) { return seq.findInterval(x, false); })},
            {"left", each([&](double x) { return seq.findInterval(x, true); })}};
  }
  if (op == "whichBreakpoint") {
    return {{"number", each([&](double i) { return seq.whichBreakpoint(static_cast<int>(i)); })}};
  }
  if (op == "breakpoints") {
    return {{op, valuesOf(seq.breakpoints())}, {"multiplicities", valuesOf(seq.multiplicities())}};
  }
  if (op == "extra") {
    const TnumberSequence a(vectorOf(all("a"))), b(vectorOf(all("b")));
    return {{op, valuesOf(TnumberSequence::extra(a, b, all("tolerance")[0]))}};
  }
  Results out;
  if (op == "add") seq.add(all("x")[0], step.in("multiplicity").toInt());
  if (op == "addVector") seq.add(vectorOf(all("values")));
  if (op == "remove") out["done"] = {seq.remove(step.in("index").toInt()) ? 1.0 : 0.0};
  if (op == "sequence" && step.hasIn("values")) seq.add(TnumberSequence(vectorOf(all("values"))));
  if (op == "sequence" && step.hasIn("start")) {
    seq.add(TnumberSequence(all("start")[0], all("increment")[0], step.in("count").toInt()));
  }
  out["values"] = valuesOf(seq);
  return out;
}

}  // namespace

TEST(NumberSequence, FollowsTheGoldenCaseExactly) {
  std::map<int, TnumberSequence> objects;
  const std::string path = KNOTWORK_TEST_DATA "/golden/solvers/ns01_sequence.txt";
  for (const auto& step : knotwork::test::readGolden(path).steps) {
    Results expected;
    for (const auto& item : step.items) {
      if (item.isResult) expected[item.name] = item.values;
    }
    EXPECT_EQ(perform(step, objects[step.object]), expected) << step.operation;
  }
  EXPECT_EQ(objects.size(), 3u);
}

TEST(NumberSequence, FollowsTheModelThroughRandomEdits) {
  std::mt19937 random(20240611);
  TnumberSequence seq;
  Values model;
  for (int step = 0; step < 2000; ++step) {
    const TnumberSequence before(seq);
    const Values old = model;
    const double x = static_cast<double>(random() % 13) / 4.0;
    const int number = static_cast<int>(random() % 31) - 1;
    const auto above = std::ranges::upper_bound(model, x);
    EXPECT_EQ(seq.findInterval(x, false), above - model.begin() - 1);
    if (step % 4 == 0) {
      model.insert(above, static_cast<unsigned>(std::max(number % 4, 0)), x);
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

TEST(NumberSequence, SortsStably) {
  Values values{0.0, 2.0, -0.0, 1.0, 0.0, -0.0, -3.0};  // +0 and -0 are equal, yet differ
  DoubleVec sorted = vectorOf(values);
  IntVec ints(sorted);
  TnumberSequence::sortDoubleVecInPlace(sorted);
  TnumberSequence::sortIntVecInPlace(ints);
  std::ranges::stable_sort(values);
  EXPECT_EQ(valuesOf(ints), values);
  EXPECT_EQ(valuesOf(1.0 / sorted), valuesOf(1.0 / vectorOf(values)));
}

TEST(NumberSequence, TiesStandBehindAndTheToleranceIsInclusive) {
  TnumberSequence seq(vectorOf({0.0, 1.0}));
  seq.add(vectorOf({-0.0, 1.0}));
  EXPECT_EQ(valuesOf(1.0 / seq), valuesOf(1.0 / vectorOf({0.0, -0.0, 1.0, 1.0})));
  EXPECT_EQ(valuesOf(TnumberSequence::extra(seq, vectorOf({0.5, 2.0}), 0.5)), Values{2.0});
}

TEST(NumberSequence, SharesAndReportsAsItsVectorDoes) {
  const DoubleVec source = vectorOf({3.0, 1.0});
  TnumberSequence seq(source), view;
  EXPECT_EQ(source(0), 3.0);
  view.reference(seq);
  seq.data()(0) = 0.5;
  seq.add(seq.data());
  EXPECT_EQ(valuesOf(seq), (Values{0.5, 0.5, 3.0, 3.0}));
  EXPECT_EQ(valuesOf(view), (Values{0.5, 3.0}));
  RecordedErrors errors;
  view = TnumberSequence(5.0, 1.0, 1);
  EXPECT_EQ(valuesOf(view), (Values{5.0, 3.0}));
  EXPECT_EQ(errors.takeTexts(), "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 1)\n");
  EXPECT_EQ(TnumberSequence(0.0, 1.0, -1).length(), 0);
  EXPECT_EQ(errors.take().at(0).code, 0x3008u);
}
