// SPDX-License-Identifier: MIT
// Point grids against the formula of their layout.
#include "knotwork/geometry/tuple_matrix.h"

#include <gtest/gtest.h>

#include <sstream>

#include "geometry/transforms.h"
#include "knotwork/geometry/number_sequence.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

// Component c of point (i, j) is 100 i + 10 j + c.
TtupleMatrix numbered(int dim, int rows, int cols) {
  TtupleMatrix tm(dim, rows, cols, 0.0);
  for (int k = 0; k < rows * cols; ++k) {
    tm(k / cols, k % cols) =
        DoubleVec(static_cast<unsigned>(dim), 100.0 * (k / cols) + 10.0 * (k % cols), 1.0);
  }
  return tm;
}

using Shape = std::vector<int>;

Shape shape(const TtupleMatrix& tm) {
  return {tm.size(), tm.rows(), tm.cols(), static_cast<int>(tm.length())};
}

}  // namespace

TEST(TupleMatrix, ShapesFollowTheSignsOfTheCounts) {
  EXPECT_EQ(shape(TtupleMatrix()), (Shape{1, 0, 0, 0}));
  EXPECT_EQ(shape(TtupleMatrix(0, 2, 3, 1.0)), (Shape{1, 2, 3, 0}));
  EXPECT_EQ(shape(TtupleMatrix(-3, 2, -2, 1.0)), (Shape{1, 2, 2, 12}));
  EXPECT_EQ(shape(TtupleMatrix(3, 0, 5, 1.0)), (Shape{3, 0, 5, 0}));
  DoubleVec seven(7, 0.0);
  TtupleMatrix adopted(3, 2, -2, seven);
  adopted(1, 1) = 5.0;
  EXPECT_TRUE(shape(adopted) == (Shape{1, 2, 2, 7}) && seven(3) == 5.0);
  RecordedErrors errors;
  EXPECT_EQ(shape(TtupleMatrix(1 << 20, 1 << 20, 1 << 20, 0.0)), (Shape{1 << 20, 0, 0, 0}));
  EXPECT_EQ(errors.takeText(), "3008 [NOMEM: RWBlock]: Out of memory");
}

TEST(TupleMatrix, EveryViewFollowsTheLayout) {
  for (const int dim : {1, 2, 3, 4, 5}) {
    TtupleMatrix tm = numbered(dim, 4, 3);
    const TtupleMatrix& constant = tm;
    const auto n = static_cast<unsigned>(dim);
    for (int k = 0; k < 12; ++k) {
      const int i = k % 4, j = k / 4;
      const Values point = valuesOf(DoubleVec(n, 100.0 * i + 10 * j, 1.0));
      for (const DoubleVec& same :
           {tm.point(i, j), constant(i, j), tm.data().slice(k * dim, n, 1),
            constant.row(i).slice(j * dim, n, 1), tm.rowVector(i)(j), tm.columnVector(j)(i),
            constant.columnVector(j).point(i), tm.cols(indices({2, j}))(i, 1)}) {
        EXPECT_EQ(valuesOf(same), point);
      }
      EXPECT_EQ(tm.vecLen()(i, j), tm(i, j).vecLen());
      for (int c = 0; c < dim; ++c) EXPECT_EQ(tm.component(c)(i, j), point[unsigned(c)]);
    }
    DoubleVec flat = tm.data().copy();
    TtupleVector list(dim, flat);
    tm.applyTransformation(ShearAndShift());
    list.applyTransformation(ShearAndShift());
    EXPECT_TRUE(dim < 3 || valuesOf(tm) == valuesOf(list));  // below, the order of points matters
  }
}

TEST(TupleMatrix, OnlyNonConstantViewsWriteThrough) {
  TtupleMatrix tm(2, 2, 2, 0.0), view;
  const TtupleMatrix& constant = tm;
  view.reference(tm);
  for (DoubleVec copied :
       {constant.column(1), tm.row(1), constant.point(0, 0), constant.data(),
        tm.rowVector(1).data(), constant.columnVector(0).data(), constant.component(0).dataVec()}) {
    copied = 9.0;
  }
  EXPECT_EQ(valuesOf(view), Values(8, 0.0));
  tm.column(1) = 1.0;
  tm.columnVector(0)(1) = 2.0;
  tm.component(0).row(0) = 3.0;
  const TtupleMatrix kept = tm.copy();
  DoubleVec eight(8, 7.0);
  tm = TtupleMatrix(2, 4, 1, 7.0);
  tm = TtupleMatrix(1, 2, 2, eight);
  EXPECT_EQ(valuesOf(view), (Values{3, 0, 2, 2, 3, 1, 1, 1}));
  tm = numbered(2, 2, 2);
  EXPECT_EQ(valuesOf(view), (Values{0, 1, 100, 101, 10, 11, 110, 111}));
  EXPECT_EQ(valuesOf(kept), (Values{3, 0, 2, 2, 3, 1, 1, 1}));
}

TEST(TupleMatrix, RequestsThatCannotBeMetAreEmpty) {
  TtupleMatrix tm = numbered(3, 2, 4);
  EXPECT_EQ(tm.row(2).length() + tm.row(-1).length() + tm.column(4).length(), 0u);
  EXPECT_EQ(tm.columnVector(-1).points() + tm.rowVector(2).points(), 0);
  EXPECT_EQ(tm.component(3).rows() + tm.component(3).cols(), 0u);
  EXPECT_EQ(shape(tm.cols(indices({0, 4}))), (Shape{1, 0, 0, 0}));
  EXPECT_EQ(shape(tm.cols(IntVec())), (Shape{3, 2, 0, 0}));
  EXPECT_EQ(shape(numbered(1, 2, 2).rows(indices({2}))), (Shape{1, 0, 0, 0}));
  EXPECT_EQ(shape(numbered(1, 2, 0).rows(indices({9}))), (Shape{1, 1, 0, 0}));
}

TEST(TupleMatrix, SelectsRowsByFlatElementAndSetsComponentsColumnByColumn) {
  EXPECT_EQ(valuesOf(numbered(1, 3, 2).rows(indices({2, 0}))), (Values{200, 0, 210, 10}));
  RecordedErrors errors;
  EXPECT_EQ(valuesOf(numbered(2, 2, 1).rows(indices({3, 0}))), (Values{101, 0, 0, 0}));
  TtupleMatrix tm = numbered(2, 2, 2);
  tm.setComponent(1, tm.component(0));
  tm.setComponent(0, DoubleGenMat(1, 1, -1.0));
  EXPECT_EQ(valuesOf(tm), (Values{-1, 0, 100, 100, 10, 10, 110, 110}));
  EXPECT_EQ(errors.takeTexts(),
            "[VNMATCH: DoubleVecPick]: Vector lengths do not match (2 vs 4)\n"
            "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 1)\n"
            "[VNMATCH: DoubleVec]: Vector lengths do not match (2 vs 0)\n");
}

TEST(TupleMatrix, StaysInsideAVectorThatIsTooShort) {
  RecordedErrors errors;
  DoubleVec five(5, 1.0);
  TtupleMatrix tm(2, 2, 2, five);
  tm(1, 1) = 2.0;
  EXPECT_EQ(tm.column(1).length() + tm.component(0).rows(), 0u);
  tm.setComponent(1, DoubleGenMat(2, 2, 3.0));
  tm.applyTransformation(ShearAndShift());
  EXPECT_EQ(tm.vecLen()(1, 1), 0.0);
  EXPECT_EQ(tm.row(1).length(), 4u);
  EXPECT_EQ(shape(tm.rows(indices({0, 1}))), (Shape{2, 2, 2, 8}));
  for (const RecordedError& e : errors.all()) EXPECT_TRUE(e.code == 0x300C || e.code == 0x300F);
  EXPECT_EQ(errors.all().at(0).code, 0x300Cu);
  DoubleVec every = DoubleVec(9, 1.0).slice(0, 5, 2);
  EXPECT_EQ(valuesOf(TtupleMatrix(1, 1 << 30, 1, every).row(0)), Values{1.0});
}

TEST(Containers, HaveNoText) {
  const auto check = [](auto container) {
    std::stringstream stream("[ 1 2 ]");
    EXPECT_FALSE(container.readRaw(stream));
    container.printOn(stream);
    container.printRaw(stream);
    EXPECT_EQ(stream.str() + std::to_string(stream.tellg()), "[ 1 2 ]0");
  };
  check(TtupleVector(2, 1, 3.0));
  check(TtupleMatrix(2, 1, 1, 3.0));
  check(TnumberSequence(1.0, 1.0, 2));
}
