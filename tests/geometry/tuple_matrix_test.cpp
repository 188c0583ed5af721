// SPDX-License-Identifier: MIT
// Point grids against the formula of their layout.
#include "knotwork/geometry/tuple_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "geometry/transforms.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

// Component c of point (i, j) is 100 i + 10 j + c.
TtupleMatrix numbered(int dim, int rows, int cols) {
  TtupleMatrix tm(dim, rows, cols, 0.0);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) {
      tm(i, j) = DoubleVec(static_cast<unsigned>(dim), 100.0 * i + 10 * j, 1.0);
    }
  }
  return tm;
}

std::vector<int> shape(const TtupleMatrix& tm) {
  return {tm.size(), tm.rows(), tm.cols(), static_cast<int>(tm.length())};
}

std::vector<int> shape(const DoubleGenMat& m) {
  return {static_cast<int>(m.rows()), static_cast<int>(m.cols())};
}

using Shape = std::vector<int>;

}  // namespace

TEST(TupleMatrix, ShapesFollowTheSignsOfTheCounts) {
  EXPECT_EQ(shape(TtupleMatrix()), (Shape{1, 0, 0, 0}));
  EXPECT_EQ(shape(TtupleMatrix(3, 2, 4, 0.0)), (Shape{3, 2, 4, 24}));
  EXPECT_EQ(shape(TtupleMatrix(0, 2, 3, 1.0)), (Shape{1, 2, 3, 0}));
  EXPECT_EQ(shape(TtupleMatrix(-3, 2, -2, 1.0)), (Shape{1, 2, 2, 12}));
  EXPECT_EQ(shape(TtupleMatrix(3, 0, 5, 1.0)), (Shape{3, 0, 5, 0}));
  DoubleVec seven(7, 0.0);
  TtupleMatrix adopted(3, 2, -2, seven);
  EXPECT_EQ(shape(adopted), (Shape{1, 2, 2, 7}));
  adopted(1, 1) = 5.0;
  EXPECT_EQ(seven(3), 5.0);
  RecordedErrors errors;
  EXPECT_EQ(shape(TtupleMatrix(1 << 20, 1 << 20, 1 << 20, 0.0)), (Shape{1 << 20, 0, 0, 0}));
  EXPECT_EQ(errors.take().at(0).code, 0x3008u);
}

TEST(TupleMatrix, EveryViewFollowsTheLayout) {
  for (const int dim : {1, 2, 3, 5}) {
    TtupleMatrix tm = numbered(dim, 4, 3);
    const TtupleMatrix& constant = tm;
    const auto n = static_cast<unsigned>(dim);
    for (int k = 0; k < 12; ++k) {
      const int i = k % 4, j = k / 4;
      const Values point = valuesOf(DoubleVec(n, 100.0 * i + 10 * j, 1.0));
      ASSERT_EQ(valuesOf(tm.point(i, j)), point);
      EXPECT_EQ(valuesOf(constant(i, j)), point);
      EXPECT_EQ(valuesOf(tm.data().slice(k * dim, n, 1)), point);
      EXPECT_EQ(valuesOf(constant.row(i).slice(j * dim, n, 1)), point);
      EXPECT_EQ(valuesOf(tm.rowVector(i)(j)), point);
      EXPECT_EQ(valuesOf(tm.columnVector(j)(i)), point);
      EXPECT_EQ(valuesOf(constant.columnVector(j).point(i)), point);
      EXPECT_EQ(valuesOf(tm.cols(indices({2, j}))(i, 1)), point);
      EXPECT_EQ(tm.vecLen()(i, j), tm(i, j).vecLen());
      for (int c = 0; c < dim; ++c) EXPECT_EQ(tm.component(c)(i, j), tm(i, j)(c));
    }
  }
}

TEST(TupleMatrix, OnlyNonConstantViewsWriteThrough) {
  TtupleMatrix tm(2, 2, 2, 0.0), view;
  const TtupleMatrix& constant = tm;
  view.reference(tm);
  for (DoubleVec copied : {constant.column(1), tm.row(1), constant.point(0, 0), constant.data(),
                           tm.rowVector(1).data(), constant.columnVector(0).data()}) {
    copied = 9.0;
  }
  constant.component(0) = 9.0;
  EXPECT_EQ(valuesOf(view), Values(8, 0.0));
  tm.column(1) = 1.0;
  tm.columnVector(0)(1) = 2.0;
  tm.component(0).row(0) = 3.0;
  const TtupleMatrix kept = tm.copy();
  EXPECT_EQ(valuesOf(view), (Values{3, 0, 2, 2, 3, 1, 1, 1}));
  tm = TtupleMatrix(2, 4, 1, 7.0);
  tm = TtupleMatrix(1, 4, 2, 7.0);
  EXPECT_EQ(valuesOf(tm), valuesOf(kept));
  tm = numbered(2, 2, 2);
  EXPECT_EQ(valuesOf(view), (Values{0, 1, 100, 101, 10, 11, 110, 111}));
  EXPECT_EQ(valuesOf(kept), (Values{3, 0, 2, 2, 3, 1, 1, 1}));
}

TEST(TupleMatrix, RequestsThatCannotBeMetAreEmpty) {
  TtupleMatrix tm = numbered(3, 2, 4);
  EXPECT_EQ(tm.row(2).length() + tm.row(-1).length() + tm.column(4).length(), 0u);
  EXPECT_EQ(tm.columnVector(-1).points() + tm.rowVector(2).points(), 0);
  EXPECT_EQ(shape(tm.component(3)), (Shape{0, 0}));
  EXPECT_EQ(shape(tm.component(2)), (Shape{2, 4}));
  EXPECT_EQ(shape(tm.cols(indices({0, 4}))), (Shape{1, 0, 0, 0}));
  EXPECT_EQ(shape(tm.cols(IntVec())), (Shape{3, 2, 0, 0}));
  EXPECT_EQ(shape(numbered(1, 2, 2).rows(indices({2}))), (Shape{1, 0, 0, 0}));
  std::stringstream stream("1");
  EXPECT_FALSE(tm.readRaw(stream));
  tm.printOn(stream);
  tm.printRaw(stream);
  EXPECT_EQ(stream.str(), "1");
}

TEST(TupleMatrix, SelectsRowsByFlatElement) {
  EXPECT_EQ(valuesOf(numbered(1, 3, 2).rows(indices({2, 0}))), (Values{200, 0, 210, 10}));
  RecordedErrors errors;
  const TtupleMatrix picked = numbered(2, 2, 1).rows(indices({3, 0}));
  EXPECT_EQ(shape(picked), (Shape{2, 2, 1, 4}));
  EXPECT_EQ(valuesOf(picked), (Values{101, 0, 0, 0}));
  EXPECT_EQ(errors.all().at(0).origin, 0x900Du);
  EXPECT_EQ(errors.takeText(),
            "300f [VNMATCH: DoubleVecPick]: Vector lengths do not match (2 vs 4)");
}

TEST(TupleMatrix, SetsAComponentColumnByColumn) {
  TtupleMatrix tm = numbered(2, 2, 2);
  tm.setComponent(1, tm.component(0));
  EXPECT_EQ(valuesOf(tm), (Values{0, 0, 100, 100, 10, 10, 110, 110}));
  RecordedErrors errors;
  tm.setComponent(0, DoubleGenMat(1, 1, -1.0));
  EXPECT_EQ(valuesOf(tm), (Values{-1, 0, 100, 100, 10, 10, 110, 110}));
  EXPECT_EQ(errors.takeTexts(),
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
  const auto known = [](const RecordedError& e) { return e.code == 0x300Cu || e.code == 0x300Fu; };
  EXPECT_TRUE(std::ranges::all_of(errors.all(), known));
  EXPECT_EQ(errors.all().at(0).code, 0x300Cu);
}

TEST(TupleMatrix, TransformsAsAListDoes) {
  for (const int dim : {3, 4, 6}) {
    TtupleMatrix tm = numbered(dim, 3, 2);
    DoubleVec flat = tm.data().copy();
    TtupleVector tv(dim, flat);
    tm.applyTransformation(ShearAndShift());
    tv.applyTransformation(ShearAndShift());
    EXPECT_EQ(valuesOf(tm), valuesOf(tv));
  }
}
