// SPDX-License-Identifier: MIT
// The bits of whole factorisations, at sizes on both sides of every group and panel and with
// numbers that only the order of operations decides: signed zeros, ties, overflow on the way, what
// is not finite. The digests were taken when all elements were equal to those of a row by row and
// step by step definition.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "knotwork/decomp/double_ch_decomp.h"
#include "knotwork/decomp/double_gen_fact.h"
#include "knotwork/decomp/double_qr_decomp.h"
#include "knotwork/decomp/double_sv_decomp.h"
#include "support/matrices.h"
#include "support/recorded_errors.h"

namespace {

using namespace knotwork::test;

/// FNV-1a over the bits of all elements; every NaN counts as the same.
class Digest {
 public:
  void add(const DoubleGenMat& m) {
    for (const double x : valuesOf(m.dataVec())) {
      const auto bits = std::isnan(x) ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(x);
      for (int byte = 0; byte < 64; byte += 8) value_ = (value_ ^ (bits >> byte & 255)) * kPrime;
    }
  }
  void add(const DoubleVec& v) { add(DoubleGenMat(v, v.length(), 1)); }
  void add(const IntVec& v) { add(DoubleVec(v)); }
  std::uint64_t value() const { return value_; }

 private:
  static constexpr std::uint64_t kPrime = 0x100000001b3;
  std::uint64_t value_ = 0xcbf29ce484222325;
};

/// Calls f with matrices of every kind; `diagonal` is added to their diagonals.
template <class F>
void forEachMatrix(unsigned cols, unsigned more, double diagonal, F f) {
  const unsigned rows = cols + more;
  const DoubleGenMat dense = Random(cols).matrix(rows, cols);
  DoubleGenMat sparse = dense.copy(), ties = dense.copy(), overflowing = 1e300 * dense,
               infinite = dense.copy(), late = dense.copy();
  for (int j = 0; j < static_cast<int>(cols); ++j)
    for (int i = 0; i < static_cast<int>(rows); ++i) {
      if ((7 * i + 3 * j) % 5 < 2) sparse(i, j) = (i + j) % 2 == 0 ? 0.0 : -0.0;
      ties(i, j) = std::round(2.0 * ties(i, j));
      if ((i + 2 * j) % 3 == 0) overflowing(i, j) = 1e8;
    }
  const int last = static_cast<int>(cols) - 1;
  infinite(last / 2, last / 3) = -HUGE_VAL;
  late(last, last) = std::nan("");
  for (DoubleGenMat& a : std::vector{dense, sparse, ties, overflowing, infinite, late}) {
    for (int i = 0; i <= last; ++i) a(i, i) += diagonal;
    f(a);
  }
}

constexpr unsigned kSizes[] = {1, 2, 7, 8, 9, 17, 31, 33, 40, 65, 100};
constexpr unsigned kSizesAndLarge[] = {1, 2, 7, 8, 9, 17, 31, 33, 40, 65, 100, 260};

TEST(Bits, OfLuAreThoseOfOneStepAfterTheOther) {
  Digest digest;
  for (const unsigned n : kSizesAndLarge)
    forEachMatrix(n, 0, 0.0, [&](const DoubleGenMat& a) {
      const DoubleGenFact lu(a, 0);
      digest.add(lu.factors());
      digest.add(lu.pivots());
    });
  EXPECT_EQ(digest.value(), 4376996030881134267u);
}

TEST(Bits, OfCholeskyAreThoseOfOneRowAfterTheOther) {
  for (const auto& [pivoting, want] :
       {std::pair{0, 7268466061196757192u}, {1, 6882554230883809102u}}) {
    Digest digest;
    for (const unsigned n : kSizesAndLarge)
      for (const double diagonal : {2.0, double(n)})  // the first gives up on the way
        forEachMatrix(n, 0, diagonal, [&](const DoubleGenMat& a) {
          const auto ch = factored<DoubleChDecomp>(a, pivoting);
          digest.add(ch.factors());
          digest.add(ch.pivots());
        });
    EXPECT_EQ(digest.value(), want) << pivoting;
  }
}

TEST(Bits, OfQrAreThoseOfOneColumnAfterTheOther) {
  for (const auto& [pivoting, want] :
       {std::pair{0, 8590100826581721645u}, {1, 15603127459233852540u}}) {
    Digest digest;
    for (const unsigned n : kSizes)
      for (const unsigned more : {0u, 5u})
        forEachMatrix(n, more, 0.0, [&](const DoubleGenMat& a) {
          for (const DoubleGenMat& m : {a, transpose(a)}) {
            const auto qr = factored<DoubleQRDecomp>(m, pivoting);
            digest.add(qr.factors());
            digest.add(qr.pivots());
            digest.add(qr.computeQy(DoubleVec(m.rows(), 1.0), -1));  // reads the rest
          }
        });
    EXPECT_EQ(digest.value(), want) << pivoting;
  }
}

TEST(Bits, OfSingularValuesAndVectorsStay) {
  Digest digest;
  for (const unsigned n : {1u, 2u, 7u, 9u, 33u, 70u})
    for (const unsigned more : {0u, 5u})
      forEachMatrix(n, more, 0.0, [&](const DoubleGenMat& a) {
        for (const DoubleGenMat& m : {a, transpose(a)}) {
          const DoubleSVDecomp sv(m);
          digest.add(sv.singularValues());
          digest.add(sv.leftVecs());
          digest.add(sv.rightVecs());
        }
      });
  EXPECT_EQ(digest.value(), 314397291465685171u);
}

}  // namespace
