// SPDX-License-Identifier: MIT
// Every kernel with a sum of every set that this processor runs, against its definition: all bits,
// on lengths around the registers' and on data with -0, infinities, NaNs, denormals and products
// that overflow. The element kernels are held by the model of the vectors, which runs with the
// fastest set and with `baseline`.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "kernels/blas1.h"
#include "kernels/dispatch.h"
#include "kernels/kernels.h"

namespace knotwork::detail {
namespace {

using Numbers = std::vector<double>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kHostile[] = {0.0,        -0.0,   kInfinity, -kInfinity, kNaN,
                               -0x1p-1074, 1e-308, 1e300,     -1e300,     1.0};

class Random {
 public:
  explicit Random(unsigned seed) : bits_(seed) {}
  int below(int bound) { return static_cast<int>(bits_() % static_cast<unsigned>(bound)); }

  /// Numbers of magnitude 2^-8 to 2^8; one in `tame` is hostile, none for 0.
  template <class T = double>
  std::vector<T> numbers(std::size_t n, int tame) {
    std::vector<T> v(n);
    for (T& x : v) {
      if constexpr (std::is_same_v<T, double>) {
        x = std::ldexp(static_cast<double>(bits_() >> 11) - 0x1p52, below(16) - 60);
        if (tame != 0 && below(tame) == 0) x = kHostile[below(std::size(kHostile))];
      } else {
        x = static_cast<T>(bits_());
      }
    }
    return v;
  }

 private:
  std::mt19937_64 bits_;
};

bool sameBits(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) ||
         std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// A result with its surroundings, which must not change either.
template <class T>
void expectSame(const std::vector<T>& expected, const std::vector<T>& got, const char* what) {
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_TRUE(sameBits(expected[i], got[i]))
        << what << " in place " << i << ": " << expected[i] << ", not " << got[i];
  }
}

/// Calls check(set, tame) for every set, with ordinary and with hostile data.
template <class Check>
void forEverySet(Check check) {
  for (const KernelSet* set : kernelSetsHere()) {
    SCOPED_TRACE(set->name);
    for (const int tame : {0, 30, 4}) check(*set, tame);
  }
}

constexpr std::size_t kLengths[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 70};

std::ptrdiff_t at(std::size_t i, std::size_t j, std::ptrdiff_t step) {
  return static_cast<std::ptrdiff_t>(i) + static_cast<std::ptrdiff_t>(j) * step;
}

template <class T>
T plusProduct(T sum, T x, T y) {
  if constexpr (std::is_same_v<T, double>)
    return sum + x * y;
  else
    return static_cast<T>(static_cast<unsigned>(sum) +
                          static_cast<unsigned>(x) * static_cast<unsigned>(y));
}

template <class T>
void checkColumns(const ColumnKernels<T>& kernels, int tame) {
  Random random(2);
  for (const std::size_t rows : kLengths) {
    for (std::size_t count = 0; count <= 19; ++count) {
      const std::ptrdiff_t step = static_cast<std::ptrdiff_t>(rows) + 3;
      const auto columns = random.numbers<T>(20 * (rows + 3), tame);
      const auto x = random.numbers<T>(std::max(rows, count), tame);
      const auto y = random.numbers<T>(std::max(rows, count) + 2, tame);
      auto expected = y, got = y;
      for (std::size_t i = 0; i < rows; ++i)
        for (std::size_t j = 0; j < count; ++j)
          expected[i] =
              plusProduct(expected[i], columns[static_cast<std::size_t>(at(i, j, step))], x[j]);
      kernels.addColumns(rows, count, columns.data(), step, x.data(), got.data());
      expectSame(expected, got, "addColumns");
      expected = got = y;
      for (std::size_t j = 0; j < count; ++j)
        for (std::size_t i = 0; i < rows; ++i)
          expected[j] =
              plusProduct(expected[j], columns[static_cast<std::size_t>(at(i, j, step))], x[i]);
      kernels.addColumnDots(rows, count, x.data(), columns.data(), step, got.data());
      expectSame(expected, got, "addColumnDots");
    }
  }
}

template <class T>
void checkTile(const ProductKernels<T>& kernels, int tame) {
  Random random(3);
  for (const std::size_t depth : {0, 1, 2, 7, 20}) {
    const std::size_t rows = kernels.tileRows, cols = kernels.tileCols, step = rows + 1;
    const auto a = random.numbers<T>(depth * rows, tame), b = random.numbers<T>(depth * cols, tame);
    std::vector<T> packed;
    for (const T& x : b) packed.insert(packed.end(), kernels.copies, x);
    auto expected = random.numbers<T>(cols * step, tame), got = expected;
    for (std::size_t p = 0; p < depth; ++p)
      for (std::size_t j = 0; j < cols; ++j)
        for (std::size_t i = 0; i < rows; ++i)
          expected[i + j * step] =
              plusProduct(expected[i + j * step], a[p * rows + i], b[p * cols + j]);
    kernels.addTile(depth, a.data(), packed.data(), got.data(), static_cast<std::ptrdiff_t>(step));
    expectSame(expected, got, "addTile");
  }
}

TEST(KernelSets, ColumnsAndTilesAgreeWithTheirDefinition) {
  forEverySet([](const KernelSet& set, int tame) {
    checkColumns(set.columnsOfDouble, tame);
    checkColumns(set.columnsOfInt, 0);
    checkTile(set.productsOfDouble, tame);
    checkTile(set.productsOfInt, 0);
  });
}

TEST(KernelSets, RotationsAgreeWithTheirDefinition) {
  forEverySet([](const KernelSet& set, int tame) {
    Random random(4);
    for (const std::size_t rows : kLengths) {
      for (const std::size_t count : {0, 1, 2, 5}) {
        const std::size_t step = rows + 2;
        const Numbers c = random.numbers(count, tame), s = random.numbers(count, tame);
        Numbers expected = random.numbers((count + 1) * step, tame), got = expected;
        for (std::size_t k = 0; k < count; ++k) {
          for (std::size_t i = 0; i < rows; ++i) {
            double &x = expected[i + k * step], &y = expected[i + (k + 1) * step];
            const double turned = c[k] * x + s[k] * y;
            y = c[k] * y - s[k] * x;
            x = turned;
          }
        }
        set.rotateSweep(static_cast<int>(rows), static_cast<int>(count), c.data(), s.data(),
                        got.data(), static_cast<std::ptrdiff_t>(step));
        expectSame(expected, got, "rotateSweep");
      }
    }
  });
}

// x_j += (beta x_j'v) v over the given places, where the sum exceeds the threshold.
Numbers reflected(Numbers x, const std::vector<int>& places, const Reflector& h, std::size_t step,
                  std::size_t columns) {
  for (std::size_t j = 0; j < columns; ++j) {
    double* const column = x.data() + j * step;
    double sum = 0;
    for (std::size_t t = 0; t < places.size(); ++t) sum += column[places[t]] * h.v[t];
    if (!(std::abs(sum) > h.skip)) continue;
    for (std::size_t t = 0; t < places.size(); ++t) column[places[t]] += sum * h.beta * h.v[t];
  }
  return x;
}

TEST(KernelSets, ReflectionsAgreeWithTheirDefinition) {
  forEverySet([](const KernelSet& set, int tame) {
    Random random(5);
    for (const std::size_t rows : kLengths) {
      for (int columns = 0; columns <= 13; ++columns) {
        const std::size_t step = rows + 1;
        const int head = random.below(static_cast<int>(rows) + 1);
        const int gap = random.below(static_cast<int>(rows) - head + 1);
        std::vector<int> places;
        for (int i = 0; i < static_cast<int>(rows); ++i)
          if (i < head || i >= head + gap) places.push_back(i);
        const auto count = static_cast<std::ptrdiff_t>(places.size());
        const Numbers v = random.numbers(places.size(), tame);
        const Numbers x = random.numbers(14 * step, tame);
        const Reflector h{v.data(), -0.03125, random.below(2) * 20.0};
        const Numbers expected = reflected(x, places, h, step, static_cast<std::size_t>(columns));
        Numbers got = x;
        const ReflectedColumns all{got.data(), static_cast<std::ptrdiff_t>(step), columns};
        set.reflections.reflectListed({places.data(), count}, h, all);
        expectSame(expected, got, "reflectListed");
        std::copy(x.begin(), x.end(), got.begin());
        set.reflections.reflectRuns({head, gap, count}, h, all);
        expectSame(expected, got, "reflectRuns");
      }
    }
  });
}

Numbers turned(const Numbers& from, std::size_t height, std::size_t width) {
  Numbers to(from.size());
  for (std::size_t i = 0; i < height; ++i)
    for (std::size_t j = 0; j < width; ++j) to[i * width + j] = from[j * height + i];
  return to;
}

TEST(KernelSets, SidesAgreeWithTheirDefinition) {
  forEverySet([](const KernelSet& set, int tame) {
    Random random(8);
    for (const int rows : {0, 1, 3, 8, 31}) {
      for (const int width : {1, 2, 4, SideKernels::kMost}) {
        const int head = random.below(rows + 1), first = head + random.below(rows - head + 1);
        const auto height = static_cast<std::size_t>(rows), sides = static_cast<std::size_t>(width);
        const Numbers strided = random.numbers(3 * height, tame);
        const Numbers x = random.numbers(height * sides, tame);
        Numbers original = x;
        std::vector<int> places;
        Numbers v;
        for (int i = 0; i < rows; ++i) {
          if (i >= head && i < first) continue;
          places.push_back(i);
          v.push_back(strided[static_cast<std::size_t>(3 * i)]);
        }
        const Reflector h{v.data(), -0.03125, random.below(3) * 10.0};
        Numbers got = x;
        set.sides.reflect({strided.data(), 3, head, first, rows, h.beta, h.skip},
                          {got.data(), width});
        expectSame(
            turned(reflected(turned(x, sides, height), places, h, height, sides), height, sides),
            got, "sides.reflect");
        Numbers expected(sides + 1, -7.0), sums = expected;
        std::fill_n(expected.begin(), width, 0.0);
        for (std::size_t t = 0; t < places.size(); ++t)
          for (std::size_t w = 0; w < sides; ++w)
            expected[w] += x[static_cast<std::size_t>(places[t]) * sides + w] * strided[3 * t];
        set.sides.sumProducts(places.data(), static_cast<std::ptrdiff_t>(places.size()),
                              strided.data(), 3, {original.data(), width}, sums.data());
        expectSame(expected, sums, "sides.sumProducts");
      }
    }
  });
}

TEST(KernelSets, RowsAreReflectedAsColumnsOfTheTranspose) {
  forEverySet([](const KernelSet& set, int tame) {
    Random random(7);
    for (const std::size_t rows : kLengths) {
      for (const double skip : {0.0, 20.0, kInfinity}) {
        constexpr std::size_t kColumns = 9;
        const std::size_t step = rows + 1;
        const std::vector<int> places = {0, 1, 4, 5, 8};
        const Numbers v = random.numbers(places.size(), tame);
        const Numbers x = random.numbers(kColumns * step, tame);
        const Reflector h{v.data(), -0.03125, skip};
        const Numbers expected =
            turned(reflected(turned(x, step, kColumns), places, h, kColumns, rows), kColumns, step);
        Numbers got = x, products(rows + 1, -7.0);
        std::vector<int> moved(rows + 1, -7);
        set.reflections.reflectRows(
            {places.data(), static_cast<std::ptrdiff_t>(places.size())}, h,
            {got.data(), static_cast<std::ptrdiff_t>(step), static_cast<int>(rows)},
            products.data(), moved.data());
        expectSame(expected, got, "reflectRows");
        EXPECT_EQ(products.back(), -7.0);
        EXPECT_EQ(moved.back(), -7);

        Numbers sums = x;
        for (std::size_t i = 0; i < rows; ++i) sums[i] += x[step + i] * x[step + i];
        got = x;
        set.reflections.addSquares(&x[step], static_cast<std::ptrdiff_t>(rows), got.data());
        expectSame(sums, got, "addSquares");
      }
    }
  });
}

TEST(KernelSets, MagnitudesAndLengthsAgreeWithTheirDefinition) {
  forEverySet([](const KernelSet& set, int tame) {
    Random random(6);
    for (const std::size_t n : kLengths) {
      for (int repeat = 0; repeat < 20; ++repeat) {
        const Numbers v = random.numbers(n, tame);
        const auto count = static_cast<std::ptrdiff_t>(n);
        double largest = -1, sum = 0;
        for (const double x : v)
          if (std::abs(x) > largest) largest = std::abs(x);
        EXPECT_TRUE(sameBits(set.reflections.largestMagnitude(v.data(), count), largest));
        const double scale = 1 / largest;
        for (const double x : v) sum += (x * scale) * (x * scale);
        EXPECT_TRUE(sameBits(set.reflections.scaledLength(v.data(), count, largest),
                             std::sqrt(sum) * largest));
      }
    }
    const Numbers nans(9, kNaN);
    EXPECT_EQ(set.reflections.largestMagnitude(nans.data(), 9), -1);
  });
}

// The digests of the reference BLAS cover the level-1 routines.
TEST(KernelSets, LevelOneRoutinesHaveTheReferenceBits) {
  forEverySet([](const KernelSet& set, int) {
    const blas1::Table nothing{};
    const blas1::Table taken = blas1::withReferenceBits(set.level1, nothing);
    EXPECT_TRUE(taken.ddot && taken.daxpy && taken.dscal && taken.dcopy && taken.dswap &&
                taken.dasum && taken.dnrm2 && taken.drot && taken.drotg && taken.idamax);
  });
}

}  // namespace
}  // namespace knotwork::detail
