// SPDX-License-Identifier: MIT
// Points and knots when memory runs out: reported, and nothing outside the storage is touched,
// which the address sanitizer watches.
#include <gtest/gtest.h>

#include <utility>

#include "geometry/transforms.h"
#include "knotwork/geometry/bspline_basis.h"
#include "knotwork/geometry/number_sequence.h"
#include "knotwork/geometry/tuple_matrix.h"
#include "support/failing_new.h"

namespace {

void useEverything() {
  const IntVec which(2, 1, -1);
  TtupleVector tv(3, 4, 1.0);
  const TtupleVector components = tv.components(which), points = tv.rPoints(which);
  tv.setPoints(which, points);
  tv.setPoints(0, 4, tv.copy());
  const DoubleVec lengths = tv.vecLen();
  tv.resize(6);
  tv.applyTransformation(ShearAndShift());
  TtupleMatrix tm(2, 3, 2, 1.0);
  tm.setComponent(0, tm.copy().component(1));
  const TtupleMatrix cols = tm.cols(which), rows = tm.rows(which);
  const DoubleGenMat tmLengths = tm.vecLen();
  tm.rowVector(2)(0) = std::as_const(tm).columnVector(1)(0);
  TnumberSequence seq(0.0, 1.0, 4), merged(seq);
  merged.add(seq);
  seq.add(1.5, 3);
  seq.remove(0);
  const DoubleVec breakpoints = seq.breakpoints();
  const IntVec multiplicities = seq.multiplicities();
  const DoubleVec extra = TnumberSequence::extra(seq, merged, 0.5);
  const DoubleVec u(6, 0.0, 1.0);
  const knotwork::BsplineBasis basis(2, knotwork::averagedKnots(u, 2, 5));
  const DoubleGenMat collocation = basis.collocation(u);
  const DoubleVec greville = basis.greville(), knots = basis.knots();
}

}  // namespace

TEST(Containers, EveryFailingAllocationIsReportedAndHarmless) {
  if (!knotwork::test::canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  knotwork::test::expectEveryFailureReported(useEverything);
}
