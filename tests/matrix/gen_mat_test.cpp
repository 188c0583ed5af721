// SPDX-License-Identifier: MIT
// General matrices: storage, views, arithmetic, reports and text.
#include "matrix/matrix_oracle.h"

namespace {

// 1 3 5
// 2 4 6
DoubleGenMat twoByThree() { return DoubleGenMat(DoubleVec(6, 1.0, 1.0), 2, 3); }

TEST(GenMat, ViewsShareTheColumnMajorVector) {
  DoubleVec v(6, 1.0, 1.0);
  DoubleGenMat m(v, 2, 3);
  m.row(1) = 0.0;
  m.diagonal(1) = 7.0;
  DoubleGenMat other;
  other.reference(m);
  other.col(0)(0) = -1.0;
  EXPECT_EQ(text(m), "2x3 [\n-1 7 5 \n0 0 7 \n]");
  EXPECT_EQ(v(5), 7.0);
  other.deepenShallowCopy();
  other = 9.0;
  EXPECT_EQ(m.val(0, 0), -1.0);
}

TEST(GenMat, StridedStorageIsReachedByEveryAccessButSub) {
  DoubleVec v(12, 0.0, 1.0);
  DoubleGenMat m(v.slice(11, 6, -2), 2, 3);
  EXPECT_EQ(text(m), "2x3 [\n11 7 3 \n9 5 1 \n]");
  EXPECT_EQ(m(1, 2), 1.0);
  EXPECT_EQ(m.row(1)(2), 1.0);
  EXPECT_EQ(m.diagonal(-1)(0), 9.0);
  m.set(0, 1, 70.0);
  EXPECT_EQ(v(7), 70.0);
  DoubleGenMat forward(v.slice(0, 6, 2), 2, 3);
  EXPECT_EQ(forward.sub(0, 1), 2.0);
  EXPECT_EQ(forward.val(0, 1), 4.0);
}

TEST(GenMat, DiagonalsRunFromTheirBorder) {
  const DoubleGenMat m = twoByThree();
  EXPECT_EQ(m.diagonal(1), DoubleVec(2, 3.0, 3.0));
  EXPECT_EQ(m.diagonal(-1), DoubleVec(1, 2.0));
  EXPECT_EQ(m.diagonal(), DoubleVec(2, 1.0, 3.0));
  EXPECT_EQ(m.diagonal(5).length() + m.diagonal(-9).length(), 0u);
}

TEST(GenMat, ResizeKeepsElementsInTheirPlaces) {
  DoubleGenMat m(DoubleVec(4, 1.0, 1.0), 2, 2);
  const DoubleGenMat before = m;
  m.resize(3, 2);
  EXPECT_EQ(text(m), "3x2 [\n1 3 \n2 4 \n0 0 \n]");
  m.resize(2, 3);
  EXPECT_EQ(text(m), "2x3 [\n1 3 0 \n2 4 0 \n]");
  m.resize(2, 1);
  EXPECT_EQ(text(m), "2x1 [\n1 \n2 \n]");
  EXPECT_EQ(text(before), "2x2 [\n1 3 \n2 4 \n]");
  m.resize(0, 4);
  EXPECT_EQ(text(m), "0x4 [\n]");
}

TEST(GenMat, ArithmeticIsElementByElement) {
  const DoubleGenMat m = twoByThree();
  EXPECT_EQ(text(m * m - 2.0 * m + 1.0), "2x3 [\n0 4 16 \n1 9 25 \n]");
  EXPECT_EQ(text(60.0 / m - m / m), "2x3 [\n59 19 11 \n29 14 9 \n]");
  EXPECT_EQ(text(abs(-m) - (1.0 - m) + 3.0), "2x3 [\n4 8 12 \n6 10 14 \n]");
  EXPECT_EQ((m / 3.0)(0, 2), 5.0 / 3.0);
  DoubleGenMat byReciprocal = m.copy();
  byReciprocal /= 3.0;
  EXPECT_EQ(byReciprocal(0, 2), 5.0 * (1.0 / 3.0));
  EXPECT_EQ(atan2(m, 3.0 * m)(1, 1), std::atan2(4.0, 12.0));
  EXPECT_TRUE(m == m.copy());
  EXPECT_TRUE(m != DoubleGenMat(m.dataVec(), 3, 2));
}

TEST(GenMat, IntegersWrapAndTruncate) {
  IntGenMat m(2, 1, 7);
  m(1, 0) = -7;
  EXPECT_EQ(text(m / 2), "2x1 [\n3 \n-3 \n]");
  EXPECT_EQ(text(100 / m), "2x1 [\n14 \n-14 \n]");
  EXPECT_EQ((m + 0x7FFFFFFF)(0, 0), -0x7FFFFFFF - 1 + 6);
  EXPECT_EQ((m - (-0x7FFFFFFF - 1))(1, 0), 0x7FFFFFF9);
  EXPECT_EQ(text(++m), "2x1 [\n8 \n-6 \n]");
  EXPECT_EQ(text(--(--m)), "2x1 [\n6 \n-8 \n]");
  EXPECT_EQ(DoubleGenMat(m)(1, 0), -8.0);
}

TEST(GenMat, ChecksReportAndGoOn) {
  RecordedErrors errors;
  DoubleGenMat m(3, 3, 0.0);
  EXPECT_EQ(m.bcset(1, 2, 4.0), 4.0);
  EXPECT_EQ(m.bcrow(1)(2), 4.0);
  EXPECT_EQ(errors.takeText(), "");
  m.bccol(3);
  m.bcrow(-1);
  m.boundsCheck(-1, 0);
  m.boundsCheck(0, 3);
  EXPECT_EQ(m.bcdiagonal(2).length() + m.bcdiagonal(-2).length(), 2u);
  EXPECT_EQ(m.bcdiagonal(3).length() + m.bcdiagonal(-3).length(), 0u);
  EXPECT_EQ(errors.takeText(),
            "4007 Column (3) not in matrix with 3 columns\n"
            "4006 Row (-1) not in matrix with 3 rows\n"
            "4005 Element (-1x0) not in matrix of size (3x3)\n"
            "4005 Element (0x3) not in matrix of size (3x3)\n"
            "4008 Diagonal -3 not in DoubleGenMat matrix of size (3x3)\n"
            "4008 Diagonal 3 not in DoubleGenMat matrix of size (3x3)");
  m.bccol(7);
  const RecordedError error = errors.take().at(0);
  EXPECT_EQ(error.severity, 1u);
  EXPECT_EQ(error.origin, 0xF000);
}

TEST(GenMat, ShapeMismatchReportsForTheMatrixAndThenForTheVector) {
  RecordedErrors errors;
  DoubleGenMat m = twoByThree();
  const DoubleGenMat turned(3, 2, 1.0);
  const DoubleGenMat small(2, 2, 1.0);
  m += turned;
  EXPECT_EQ(errors.takeText(), "4004 Matrix sizes don't match (2x3) vs (3x2)");
  m = small;
  EXPECT_EQ(errors.takeText(),
            "4004 Matrix sizes don't match (2x2) vs (2x3)\n"
            "300f [VNMATCH: DoubleVec]: Vector lengths do not match (6 vs 4)");
  EXPECT_EQ(text(m), "2x3 [\n1 1 6 \n1 1 7 \n]");
  const DoubleGenMat sum = m + small;
  EXPECT_EQ(errors.takeText(),
            "4004 Matrix sizes don't match (2x3) vs (2x2)\n"
            "300f [VNMATCH: DoubleVec]: Vector lengths do not match (6 vs 4)");
  EXPECT_EQ(text(sum), "2x3 [\n2 2 0 \n2 2 0 \n]");
  EXPECT_EQ(text(small + m), "2x2 [\n2 2 \n2 2 \n]");
}

TEST(GenMat, MatrixOnTooShortAVectorIsReadAsIfFilledUp) {
  RecordedErrors errors;
  const DoubleGenMat m(DoubleVec(3, 1.0, 1.0), 2, 2);
  EXPECT_EQ(errors.takeText(), "400a Wrong number of points (3) for 2x2 DoubleGenMat");
  EXPECT_EQ(text(m), "2x2 [\n1 3 \n2 0 \n]");
  EXPECT_EQ(text(transpose(m)), "2x2 [\n1 2 \n3 0 \n]");
  EXPECT_EQ(text(product(m, m)), "2x2 [\n7 3 \n2 6 \n]");
  EXPECT_EQ(text(kronecker(m, m)).substr(0, 14), "4x4 [\n1 3 3 9 ");
  DoubleGenMat resized = m;
  resized.resize(3, 2);
  EXPECT_EQ(text(resized), "3x2 [\n1 3 \n2 0 \n0 0 \n]");
  EXPECT_EQ(m.dataVec().length(), 3u);
  EXPECT_EQ(errors.takeText(), "");
}

TEST(GenMat, MoreElementsThanCountsHoldAreOutOfMemory) {
  RecordedErrors errors;
  DoubleGenMat m(1u << 16, 1u << 16);
  EXPECT_EQ(errors.takeText(), "3008 [NOMEM: RWBlock]: Out of memory");
  EXPECT_EQ(m.rows() + m.cols(), 0u);
  m.resize(2, 2);
  m.resize(2, 1u << 31);
  m.resize(1u << 31, 2);
  EXPECT_EQ(text(m), "2x2 [\n0 0 \n0 0 \n]");
  EXPECT_EQ(kronecker(DoubleGenMat(1u << 17, 1, 0.0), DoubleGenMat(1u << 17, 1, 0.0)).rows(), 0u);
  EXPECT_EQ(errors.take().size(), 3u);
}

TEST(GenMat, PrintsEveryValueInTheWidthOnEntry) {
  std::ostringstream out;
  out.width(4);
  out << twoByThree() << 8;
  EXPECT_EQ(out.str(), "2x3 [\n   1    3    5 \n   2    4    6 \n]8");
}

TEST(GenMat, ScansRowsFromTheFirstDigitOn) {
  DoubleGenMat m;
  for (const char* source :
       {"2x3 [ 1 2 3 4 5 6 ]", "size 2 x 3\n[1 2 3\n4 5 6]x", "2 3[1 2 3 4 5 6]"}) {
    m.resize(0, 0);
    std::istringstream in(source);
    in >> m;
    EXPECT_TRUE(in.good()) << source;
    EXPECT_EQ(text(m), "2x3 [\n1 2 3 \n4 5 6 \n]") << source;
  }
  std::istringstream printed(text(twoByThree()));
  printed >> m;
  EXPECT_TRUE(m == twoByThree());
}

TEST(GenMat, FailedScansChangeNothing) {
  RecordedErrors errors;
  DoubleGenMat m = twoByThree();
  std::istringstream("2x2 [1 2 3]") >> m;
  EXPECT_EQ(errors.takeText(), "4017 wrong number of elements (3) for DoubleGenMat (2x2)");
  for (const char* source : {"", "x", "2", "2x", "2x2", "2x2 [1 2 3 4", "2x2 [1 2 oops 4]",
                             "1x2 3 4", "99999999999x1 [1]", "-"}) {
    std::istringstream(source) >> m;
    EXPECT_EQ(errors.takeText(), "") << source;
  }
  EXPECT_TRUE(m == twoByThree());
}

// A few characters must not ask for a text of a gigabyte.
TEST(GenMat, ScansRowsWithoutColumnsUpToAMillion) {
  DoubleGenMat m = twoByThree();
  std::istringstream tooMany("964967295x0 []"), printed(text(DoubleGenMat(3, 0)));
  EXPECT_TRUE((tooMany >> m).fail() && m == twoByThree());
  EXPECT_TRUE((printed >> m).good() && m.rows() == 3 && m.cols() == 0);
  std::istringstream("0x4294967295 []") >> m;
  EXPECT_EQ(text(m), "0x4294967295 [\n]");
}

}  // namespace
