// SPDX-License-Identifier: MIT
// What matrices do when the n-th allocation fails, for every n.
#include <gtest/gtest.h>

#include "knotwork/knotwork.h"
#include "support/failing_new.h"

namespace {

// Every element that the matrix claims to have can be read.
template <class Mat>
double sumOf(const Mat& m) {
  double total = 0.0;
  for (int i = 0; i < static_cast<int>(m.rows()); ++i) {
    for (int j = 0; j < static_cast<int>(m.cols()); ++j) total += m.val(i, j);
  }
  return total;
}

double useEverything(const DoubleVec& v, const IntVec& list) {
  DoubleGenMat a(3, 4, 1.0);
  DoubleGenMat b(v, 5, 4);  // too few elements
  DoubleGenMat c = a + b;
  a.resize(5, 4);
  b.resize(5, 6);
  c = a(list, list);
  const DoubleGenMat picked(a(list, list));
  DoubleLowerTriMat lower(a);
  const DoubleSymMat symmetric(v, 4, 4);
  lower.resize(6, 6);
  DoubleVec sums = product(a, v);
  sums = product(v, symmetric) + product(lower, sums);
  return sumOf(product(a, b)) + sumOf(transposeProduct(a, c)) + sumOf(kronecker(b, c)) +
         sumOf(transpose(b)) + sumOf(picked) + sumOf(DoubleGenMat(symmetric)) + sumOf(lower) +
         sumOf(-symmetric / 2.0) + sumOf(IntGenMat(2, 2, 1) + 1) + sumOf(a.copy()) + sum(sums);
}

TEST(MatrixStorage, FailureOfAnyAllocationIsReportedAndHarmsNothing) {
  if (!knotwork::test::canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  const DoubleVec v(9, 1.0);
  const IntVec list(2, 0, 1);
  knotwork::test::expectEveryFailureReported([&] { useEverything(v, list); });
}

// A matrix that there was no memory for is none, and never one of zeros that passes for the result.
template <class Mat>
void expectRightOrNone(const Mat& m) {
  Mat (*const operations[])(const Mat&) = {
      [](const Mat& a) { return a.copy(); }, [](const Mat& a) { return Mat(-a); },
      [](const Mat& a) { return Mat(a * 2); }, [](const Mat& a) { return Mat(a + a); },
      [](const Mat& a) { return Mat(abs(a)); }};
  for (const auto operation : operations) {
    const Mat right = operation(m);
    Mat made;
    const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
    knotwork::test::failEveryAllocation([&] { made.reference(operation(m)); },
                                        [&] { EXPECT_TRUE(made.rows() == 0 || made == right); });
    setMathErrorHandler(before);
  }
}

TEST(MatrixStorage, WhatThereWasNoMemoryForIsEmpty) {
  if (!knotwork::test::canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  const DoubleVec v(16, 1.0);
  expectRightOrNone(DoubleGenMat(v, 4, 4));
  expectRightOrNone(IntGenMat(4, 4, 1));
  expectRightOrNone(DoubleSymMat(v.slice(0, 10, 1), 4, 4));
  expectRightOrNone(DoubleLowerTriMat(v.slice(0, 10, 1), 4, 4));
}

}  // namespace
