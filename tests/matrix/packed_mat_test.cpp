// SPDX-License-Identifier: MIT
// Triangular and symmetric matrices, held against the general matrices that they stand for.
#include "matrix/matrix_oracle.h"

namespace {

template <class Mat>
class PackedMat : public testing::Test {};
using AllPacked = testing::Types<DoubleLowerTriMat, DoubleUpperTriMat, DoubleSymMat>;
TYPED_TEST_SUITE(PackedMat, AllPacked);

template <class Mat>
Mat random(unsigned n, unsigned seed) {
  return Mat(roughVector(n * (n + 1) / 2, seed), n, n);
}

TYPED_TEST(PackedMat, ProductsAreThoseOfTheFullMatrixToTheBit) {
  for (const unsigned n : {0u, 1u, 2u, 7u, 33u}) {
    const TypeParam m = random<TypeParam>(n, 11);
    const DoubleVec v = roughVector(2 * n, 12).slice(0, n, 2);
    const DoubleVec wide = roughVector(n * (n + 1), 13);
    for (const TypeParam& each : {m, TypeParam(wide.slice(0, wide.length() / 2, 2), n, n)}) {
      EXPECT_TRUE(product(each, v) == product(DoubleGenMat(each), v));
      EXPECT_TRUE(product(v, each) == product(v, DoubleGenMat(each)));
    }
  }
}

TYPED_TEST(PackedMat, ConversionsTakeTheStoredTriangle) {
  const TypeParam m = random<TypeParam>(6, 3);
  EXPECT_TRUE(TypeParam(DoubleGenMat(m)) == m);
  DoubleGenMat full(m);
  EXPECT_TRUE(DoubleGenMat(transpose(m)) == transpose(full));
  EXPECT_EQ(transpose(m).data(), m.data());
  // What lies on the other side is ignored.
  const bool upper = std::is_same_v<TypeParam, DoubleUpperTriMat>;
  upper ? full(4, 1) = 99.0 : full(1, 4) = 99.0;
  EXPECT_TRUE(TypeParam(full) == m);
  std::istringstream in(text(full));
  TypeParam scanned(2, 2);
  in >> scanned;
  EXPECT_EQ(text(scanned), text(m));
}

TYPED_TEST(PackedMat, LeadingBlocksAreViewsAndResizeKeepsThem) {
  TypeParam m = random<TypeParam>(5, 4);
  const DoubleGenMat full(m);
  TypeParam leading = m.leadingSubmatrix(3);
  leading.set(2, 2, 50.0);
  EXPECT_EQ(m.val(2, 2), 50.0);
  EXPECT_EQ(leading.val(1, 0), full(1, 0));
  m.resize(7, 7);
  EXPECT_EQ(m.val(4, 3), full(4, 3));
  EXPECT_EQ(m.val(3, 4), full(3, 4));
  EXPECT_EQ(m.val(6, 6), 0.0);
  RecordedErrors errors;
  EXPECT_EQ(m.leadingSubmatrix(7).rows() + m.leadingSubmatrix(0).rows(), 7u);
  EXPECT_EQ(m.leadingSubmatrix(8).rows(), 7u);
  EXPECT_EQ(m.leadingSubmatrix(-1).rows(), 0u);
  EXPECT_EQ(errors.takeText(),
            "4018 cant build order 8 leading submatrix of order 7 matrix\n"
            "4018 cant build order 4294967295 leading submatrix of order 7 matrix");
}

TYPED_TEST(PackedMat, ArithmeticActsOnThePackedElements) {
  const TypeParam a = random<TypeParam>(4, 5);
  const TypeParam b = random<TypeParam>(4, 6);
  EXPECT_TRUE(DoubleGenMat(a + b) == DoubleGenMat(a) + DoubleGenMat(b));
  EXPECT_TRUE(DoubleGenMat(a - b) == DoubleGenMat(a) - DoubleGenMat(b));
  EXPECT_TRUE(DoubleGenMat(a * b) == DoubleGenMat(a) * DoubleGenMat(b));
  EXPECT_TRUE((a / b).dataVec() == a.dataVec() / b.dataVec());
  EXPECT_TRUE(DoubleGenMat(abs(-a)) == abs(DoubleGenMat(a)));
  EXPECT_TRUE((2.0 * a / 3.0).dataVec() == a.dataVec() * 2.0 / 3.0);
  TypeParam c = a.copy();
  ((c += b) -= a) *= b;
  (c *= 4.0) /= 3.0;
  EXPECT_TRUE(c.dataVec() == ((a + b) - a).dataVec() * b.dataVec() * 4.0 * (1.0 / 3.0));
  EXPECT_TRUE(c != a);
  EXPECT_TRUE((c = a) == a);
}

TYPED_TEST(PackedMat, ChecksReportAndGoOn) {
  RecordedErrors errors;
  const std::string name = TypeParam::className;
  TypeParam m(2, 3);
  EXPECT_EQ(m.rows(), 3u);
  EXPECT_EQ(errors.takeText(), "400d 2x3 matrix not square");
  const TypeParam brief(DoubleVec(5, 1.0), 4, 3);
  EXPECT_EQ(errors.takeText(),
            "400d 4x3 matrix not square\n400a Wrong number of points (5) for 3x3 " + name);
  EXPECT_EQ(DoubleGenMat(brief)(2, 2), 0.0);
  EXPECT_EQ(product(brief, DoubleVec(3, 1.0)).length(), 3u);
  m.zero();
  m += random<TypeParam>(2, 1);
  EXPECT_EQ(errors.takeText(),
            "4004 Matrix sizes don't match (2x2) vs (3x3)\n"
            "300f [VNMATCH: DoubleVec]: Vector lengths do not match (6 vs 3)");
  EXPECT_EQ((m - random<TypeParam>(2, 1)).rows(), 3u);
  EXPECT_EQ(errors.take().at(0).text, "Matrix sizes don't match (3x3) vs (2x2)");
  TypeParam larger = random<TypeParam>(4, 5);  // the access is made all the same
  larger.leadingSubmatrix(3).bcval(3, 0);
  EXPECT_EQ(errors.takeText(), "4005 Element (3x0) not in matrix of size (3x3)");
  EXPECT_EQ(product(m, DoubleVec(4, 1.0)).length() + product(DoubleVec(2, 1.0), m).length(), 6u);
  EXPECT_EQ(errors.takeText(),
            "4014 inner product not possible between " + name +
                " (3x3) and vector (4)\n4015 inner product not possible vector(2) and " + name +
                " (3x3)");
  EXPECT_EQ(TypeParam(DoubleGenMat(4, 2, 7.0)).val(1, 1), 0.0);
  m = random<TypeParam>(3, 2);
  errors.take();
  std::istringstream("2x3 [ 1 2 ]") >> m;
  std::istringstream("2x2 [ 1 2 3 ]") >> m;
  std::istringstream("2x2 [ 1 2 3 4") >> m;
  EXPECT_EQ(errors.takeText(),
            "400d 2x3 matrix not square\n4017 wrong number of elements (3) for " + name + " (2x2)");
  EXPECT_TRUE(m == random<TypeParam>(3, 2));
}

TEST(TriMat, PacksOneTriangleAndPrintsAll) {
  DoubleLowerTriMat lower(DoubleVec(6, 1.0, 1.0), 3, 3);
  EXPECT_EQ(text(lower), "DoubleLowerTriMat, 3x3 [\n1 0 0 \n2 3 0 \n4 5 6 \n]");
  DoubleUpperTriMat upper = transpose(lower);
  EXPECT_EQ(text(upper), "DoubleUpperTriMat, 3x3 [\n1 2 4 \n0 3 5 \n0 0 6 \n]");
  upper.set(2, 0, -3.0);  // the packing index of another element
  EXPECT_EQ(lower.val(1, 1), -3.0);
  std::ostringstream wide;
  wide.width(3);
  wide << DoubleSymMat(2, 2, 1.5);
  EXPECT_EQ(wide.str(), "DoubleSymMat, 2x2 [\n1.5 1.5 \n1.5 1.5 \n]");
}

TEST(TriMat, ElementsOutsideTheTriangleAreReadOnly) {
  RecordedErrors errors;
  DoubleLowerTriMat m(DoubleVec(6, 1.0, 1.0), 3, 3);
  (((m(2, 1) += 10.0) -= 3.0) *= 6.0) /= 4.0;
  m(2, 0) = m(2, 1);
  m(0, 2) = 0.0;
  m(0, 2) *= -5.0;
  EXPECT_EQ(errors.takeText(), "");
  EXPECT_EQ(m.val(2, 0), 18.0);
  m(0, 2) = 2.5;
  m.ref(0, 1) = m.ref(0, 0);
  m(1, 2) -= std::nan("");
  EXPECT_EQ(errors.takeText(),
            "4002 Constant reference was changed from 0 to 2.5\n"
            "4002 Constant reference was changed from 0 to 1\n"
            "4002 Constant reference was changed from 0 to nan");
  EXPECT_EQ(m.bcref(0, 2), 0.0);
  m.bcset(0, 2, 5.0);
  m.ref(0, 3);
  EXPECT_EQ(errors.takeText(),
            "4009 Can't change element (0,2) of DoubleLowerTriMat\n"
            "4005 Element (0x3) not in matrix of size (3x3)");
  EXPECT_EQ(m.val(1, 1), 5.0);
}

TEST(SymMat, BothOrdersNameOneElement) {
  DoubleSymMat m(3, 3, 0.0);
  m(2, 0) = 4.0;
  EXPECT_EQ(&m.ref(0, 2), &m.bcref(2, 0));
  EXPECT_EQ(m.val(0, 2), 4.0);
  m -= 1.0;
  EXPECT_EQ(text(1.0 - (++m + 2.0) / 2.0), "DoubleSymMat, 3x3 [\n0 0 -2 \n0 0 0 \n-2 0 0 \n]");
  m = 2.0;
  EXPECT_TRUE((8.0 / m - 1.0).apply(std::sqrt) == DoubleSymMat(3, 3, std::sqrt(3.0)));
  EXPECT_EQ(atan2(m, --m.copy())(1, 2), std::atan2(2.0, 1.0));
}

}  // namespace
