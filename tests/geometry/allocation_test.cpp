// SPDX-License-Identifier: MIT
// Points and knots when memory runs out: reported, and nothing outside the storage is touched,
// which the address sanitizer watches.
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "geometry/transforms.h"
#include "knotwork/geometry/number_sequence.h"
#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/vector/math_codes.h"
#include "knotwork/vector/math_error.h"
#include "support/failing_new.h"
#include "support/values.h"

namespace {

int outOfMemory = 0;
bool once = false;
std::optional<knotwork::test::FailingNew> limit;

void countReport(MathErrorRecord record, va_list) {
  if (record.code != knotwork::kOutOfMemory) return;
  ++outOfMemory;
  if (once) limit.reset();
}

void useEverything() {
  const IntVec which(2, 1, -1);
  TtupleVector tv(3, 4, 1.0);
  const TtupleVector components = tv.components(which), points = tv.rPoints(which);
  tv.setPoints(which, points);
  tv.setPoints(0, 4, tv.copy());
  tv.vecLen();
  tv.resize(6);
  tv.applyTransformation(ShearAndShift());
  TtupleMatrix tm(2, 3, 2, 1.0);
  tm.setComponent(0, tm.copy().component(1));
  const TtupleMatrix cols = tm.cols(which), rows = tm.rows(which);
  tm.vecLen();
  tm.rowVector(2)(0) = std::as_const(tm).columnVector(1)(0);
  TnumberSequence seq(0.0, 1.0, 4), merged(seq);
  merged.add(seq);
  seq.add(1.5, 3);
  seq.remove(0);
  seq.breakpoints();
  seq.multiplicities();
  TnumberSequence::extra(seq, merged, 0.5);
}

}  // namespace

TEST(Containers, EveryFailingAllocationIsReportedAndHarmless) {
  if (!knotwork::test::canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  const MathErrorHandler before = setMathErrorHandler(countReport);
  useEverything();  // fills the cache of blocks
  const long start = knotwork::test::newCalls();
  useEverything();
  const long calls = knotwork::test::newCalls() - start;
  EXPECT_GT(calls, 20);
  for (const bool single : {false, true}) {
    for (long allowed = 0; allowed < calls; ++allowed) {
      once = single;
      outOfMemory = 0;
      limit.emplace(allowed);
      useEverything();
      limit.reset();
      EXPECT_GT(outOfMemory, 0) << allowed;
    }
  }
  setMathErrorHandler(before);
}
