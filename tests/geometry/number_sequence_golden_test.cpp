// SPDX-License-Identifier: MIT
// Knot vectors against a golden case.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "knotwork/geometry/number_sequence.h"
#include "support/golden.h"
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
