// SPDX-License-Identifier: MIT
// Products against the plain triple loop, to the bit.
#include <limits>

#include "matrix/matrix_oracle.h"
#include "vector/vector_oracle.h"

namespace {

bool sameBits(const DoubleVec& a, const DoubleVec& b) {
  const DoubleVec wanted = b.copy();
  return holds(a, {wanted.data(), wanted.data() + wanted.length()});
}

DoubleGenMat roughMatrix(unsigned rows, unsigned cols, unsigned seed) {
  return DoubleGenMat(roughVector(rows * cols, seed), rows, cols);
}

template <class Mat>
Mat slowProduct(const Mat& a, const Mat& b) {
  Mat c(a.rows(), b.cols(), 0);
  for (int i = 0; i < static_cast<int>(a.rows()); ++i)
    for (int j = 0; j < static_cast<int>(b.cols()); ++j)
      for (int p = 0; p < static_cast<int>(a.cols()); ++p) c(i, j) = c(i, j) + a(i, p) * b(p, j);
  return c;
}

void expectAllProducts(const DoubleGenMat& a, const DoubleGenMat& b) {
  const DoubleGenMat slow = slowProduct(a, b);
  EXPECT_TRUE(sameBits(product(a, b).dataVec(), slow.dataVec()));
  EXPECT_TRUE(sameBits(transposeProduct(transpose(a), b).dataVec(), slow.dataVec()));
  EXPECT_TRUE(sameBits(transProduct(a, transpose(b)).dataVec(), slow.dataVec()));
  if (slow.dataVec().length() == 0) return;
  EXPECT_TRUE(sameBits(product(a, b.col(0)), slow.col(0)));
  EXPECT_TRUE(sameBits(product(a.row(0), b), slow.row(0)));
  EXPECT_TRUE(sameBits(product(a.row(0).copy(), b), slow.row(0)));
}

TEST(MatrixProduct, SumsRunInIndexOrderInEveryShape) {
  const unsigned shapes[][3] = {
      {1, 1, 1}, {3, 5, 2}, {8, 4, 16}, {9, 130, 5}, {70, 257, 13}, {65, 128, 4}, {17, 300, 31},
      {0, 3, 2}, {2, 0, 3}, {2, 3, 0},  {1, 200, 1}, {129, 1, 9},   {64, 129, 8}};
  for (const auto& [rows, depth, cols] : shapes) {
    SCOPED_TRACE(testing::Message() << rows << " x " << depth << " x " << cols);
    expectAllProducts(roughMatrix(rows, depth, rows), roughMatrix(depth, cols, cols + 1000));
  }
}

// Forwards 0, backwards 1; with a product that is not rounded 2^-60 instead of 0.
TEST(MatrixProduct, DataTellsTheOrderOfTheSum) {
  const double terms[] = {1.0, 1e17, -1e17, 0.0};
  const DoubleGenMat a(terms, 1, 4);
  const DoubleGenMat ones(4, 9, 1.0);
  EXPECT_EQ(product(a, ones)(0, 8), 0.0);
  EXPECT_EQ(product(ones.col(0).slice(3, 4, -1), DoubleGenMat(a.dataVec(), 4, 1))(0), 0.0);
  DoubleVec backwards = a.dataVec().slice(3, 4, -1);
  EXPECT_EQ(product(DoubleGenMat(backwards, 1, 4), ones)(0, 8), 1.0);
  const double e = std::ldexp(1.0, -30);
  const double fused[] = {-(1.0 + 2 * e), 1.0 + e};
  const double by[] = {1.0, 1.0 + e};
  EXPECT_EQ(product(DoubleGenMat(fused, 1, 2), DoubleGenMat(by, 2, 1))(0, 0), 0.0);
}

TEST(MatrixProduct, KeepsNanInfinityAndSignedZeros) {
  std::mt19937 random(7);
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const double odd[] = {0.0, -0.0, kInf, -kInf, std::nan(""), 5e-324, 1e308};
  DoubleGenMat a = roughMatrix(21, 140, 8), b = roughMatrix(140, 11, 9);
  for (int k = 0; k < 30; ++k) {
    a.dataVec()(static_cast<int>(random() % (21 * 140))) = odd[random() % 7];
    b.dataVec()(static_cast<int>(random() % (140 * 11))) = odd[random() % 7];
  }
  expectAllProducts(a, b);
  // From +0 on, a sum of negative zeros is +0.
  EXPECT_FALSE(std::signbit(product(DoubleGenMat(9, 2, -0.0), DoubleGenMat(2, 5, 1.0))(0, 0)));
}

TEST(MatrixProduct, TakesStridedViews) {
  const DoubleVec storage = roughVector(2000, 99);
  const DoubleGenMat a(storage.slice(1999, 600, -3), 20, 30);
  expectAllProducts(a, DoubleGenMat(storage.slice(4, 210, 2), 30, 7));
  EXPECT_TRUE(
      sameBits(product(a, storage.slice(9, 30, 0)), product(a.copy(), DoubleVec(30, storage(9)))));
}

TEST(MatrixProduct, IntegersWrap) {
  const IntVec values(roughVector(3750, 5) * 0x1p-10);
  const IntGenMat a(values.slice(0, 2850, 1), 19, 150), b(values.slice(2850, 900, 1), 150, 6);
  EXPECT_TRUE(product(a, b) == slowProduct(a, b));
  EXPECT_TRUE(transposeProduct(transpose(a), b) == slowProduct(a, b));
  EXPECT_TRUE(product(b.col(3), transpose(a)) == slowProduct(a, b).col(3));
  EXPECT_EQ(product(IntGenMat(1, 1, 1 << 20), IntVec(1, 1 << 13))(0), 0);
}

TEST(MatrixProduct, MismatchIsReportedForTheMatricesAndForEveryDotProduct) {
  RecordedErrors errors;
  const DoubleGenMat a(2, 3, 1.0), b(2, 4, 1.0);
  const auto expect = [&](const std::string& ofMatrices, int dots, const std::string& lengths) {
    std::string all = ofMatrices;
    for (; dots > 0; --dots) {
      all += "\n300f [VNMATCH: DoubleVec]: Vector lengths do not match (" + lengths + ")";
    }
    EXPECT_EQ(errors.takeText(), all);
  };
  const std::string start = "inner product not possible ", two = "DoubleGenMat matrices ";
  EXPECT_EQ(product(a, b)(1, 3), 2.0);  // as far as the shorter dimension goes
  expect("4016 " + start + two + "(2,3) and (2x4)", 8, "3 vs 2");
  EXPECT_EQ(transposeProduct(a, transpose(b)).rows(), 3u);
  expect("4016 " + start + two + "(3,2) and (4x2)", 6, "4 vs 2");
  EXPECT_EQ(transProduct(a, b)(0, 1), 3.0);
  expect("4016 " + start + two + "(2,3) and (4x2)", 4, "4 vs 3");
  EXPECT_EQ(product(a, DoubleVec(4, 1.0))(1), 3.0);
  expect("4014 " + start + "between DoubleGenMat (2x3) and vector (4)", 2, "3 vs 4");
  EXPECT_EQ(product(DoubleVec(1, 1.0), a)(2), 1.0);
  expect("4015 " + start + "vector(1) and DoubleGenMat (2x3)", 3, "1 vs 2");
}

TEST(MatrixProduct, KroneckerBlocksAreScaledCopies) {
  const DoubleGenMat a = roughMatrix(2, 3, 1), b = roughMatrix(4, 2, 2), k = kronecker(a, b);
  ASSERT_TRUE(k.rows() == 8 && k.cols() == 6);
  for (int i = 0; i < 8; ++i) {
    for (int j = 0; j < 6; ++j) EXPECT_EQ(k(i, j), b(i % 4, j % 2) * a(i / 4, j / 2));
  }
  EXPECT_EQ(kronecker(a, DoubleGenMat(4, 0)).rows(), 8u);
}

}  // namespace
