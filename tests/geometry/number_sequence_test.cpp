// SPDX-License-Identifier: MIT
// Knot vectors against a golden case and plain std::vector models.
#include "knotwork/geometry/number_sequence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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
  const auto find = [&](bool left) {
    return [&seq, left](double x) { return seq.findInterval(x, left); };
  };
  const auto number = [&](double i) { return seq.whichBreakpoint(static_cast<int>(i)); };
  const std::string& op = step.operation;
  if (op == "findInterval") return {{"right", each(find(false))}, {"left", each(find(true))}};
  if (op == "whichBreakpoint") return {{"number", each(number)}};
  if (op == "breakpoints") {
    return {{op, valuesOf(seq.breakpoints())}, {"multiplicities", valuesOf(seq.multiplicities())}};
  }
  if (op == "extra") {
    return {{op, valuesOf(TnumberSequence::extra(vectorOf(all("a")), vectorOf(all("b")),
                                                 all("tolerance")[0]))}};
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
  const auto golden =
      knotwork::test::readGolden(KNOTWORK_TEST_DATA "/golden/solvers/ns01_sequence.txt");
  ASSERT_EQ(golden.steps.size(), 17u);
  for (const auto& step : golden.steps) {
    Results expected;
    for (const auto& item : step.items) {
      if (item.isResult) expected[item.name] = item.values;
    }
    EXPECT_EQ(perform(step, objects[step.object]), expected) << step.operation;
  }
}

TEST(NumberSequence, FollowsTheModelThroughRandomEdits) {
  std::mt19937 random(20240611);
  const auto upTo = [&](int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n + 1));
  };
  TnumberSequence seq;
  Values model;
  for (int step = 0; step < 2000; ++step) {
    const TnumberSequence before(seq);
    const Values old = model;
    const double x = upTo(12) / 4.0;
    const auto above = std::ranges::upper_bound(model, x);
    const int r = static_cast<int>(above - model.begin()) - 1;
    EXPECT_EQ(seq.findInterval(x, false), r);
    // From the left: the end of the run before that of value r.
    const auto run =
        r < 1 ? model.begin() : std::ranges::lower_bound(model, model[static_cast<unsigned>(r)]);
    EXPECT_EQ(seq.findInterval(x, true),
              r < 1 ? r : std::max(static_cast<int>(run - model.begin()) - 1, 0));
    if (const int edit = upTo(3); edit == 0) {
      const int times = upTo(4) - 1;
      model.insert(above, static_cast<unsigned>(std::max(times, 0)), x);
      seq.add(x, times);
    } else if (edit == 1) {
      const Values more{x, x + upTo(4), x + 5};
      model.insert(model.end(), more.begin(), more.end());
      std::ranges::sort(model);
      seq.add(vectorOf(more));
    } else {
      const int place = upTo(30) - 1;
      const bool exists = place >= 0 && place < static_cast<int>(model.size());
      if (exists) model.erase(model.begin() + place);
      EXPECT_EQ(seq.remove(place), exists);
    }
    ASSERT_EQ(valuesOf(seq), model) << step;
    ASSERT_EQ(valuesOf(before), old) << "a copy changed with its source";
    Values distinct = model, runs;
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    for (const double value : distinct)
      runs.push_back(static_cast<double>(std::ranges::count(model, value)));
    ASSERT_EQ(valuesOf(seq.breakpoints()), distinct);
    ASSERT_EQ(valuesOf(seq.multiplicities()), runs);
  }
}

TEST(NumberSequence, SortsStably) {
  std::mt19937 random(7);
  Values values;  // +0 and -0 are equal, yet differ
  for (int i = 0; i < 60; ++i)
    values.push_back((i % 2 ? 1.0 : -1.0) * static_cast<int>(random() % 3));
  DoubleVec sorted = vectorOf(values);
  IntVec ints(sorted);
  TnumberSequence::sortDoubleVecInPlace(sorted);
  TnumberSequence::sortIntVecInPlace(ints);
  std::stable_sort(values.begin(), values.end());
  EXPECT_EQ(valuesOf(ints), values);
  for (int i = 0; i < 60; ++i) {
    EXPECT_EQ(1.0 / sorted(i), 1.0 / values[static_cast<unsigned>(i)]);
  }
}

TEST(NumberSequence, SharesOnlyOnRequest) {
  const DoubleVec source = vectorOf({3.0, 1.0});
  TnumberSequence seq(source), view;
  EXPECT_EQ(valuesOf(source), (Values{3.0, 1.0}));
  view.reference(seq);
  seq.data()(0) = 0.5;
  EXPECT_EQ(valuesOf(view), (Values{0.5, 3.0}));
  seq.add(seq.data());
  EXPECT_EQ(valuesOf(seq), (Values{0.5, 0.5, 3.0, 3.0}));
  EXPECT_EQ(valuesOf(view), (Values{0.5, 3.0}));
}

TEST(NumberSequence, ReportsWhatDoesNotFit) {
  RecordedErrors errors;
  TnumberSequence seq(0.0, 1.0, 3);
  seq = TnumberSequence(5.0, 1.0, 2);
  EXPECT_EQ(errors.takeTexts(), "[VNMATCH: DoubleVec]: Vector lengths do not match (3 vs 2)\n");
  EXPECT_EQ(valuesOf(seq), (Values{5.0, 6.0, 2.0}));
  EXPECT_EQ(TnumberSequence(0.0, 1.0, -1).length(), 0);
  EXPECT_EQ(errors.all().at(0).code, 0x3008u);
}
