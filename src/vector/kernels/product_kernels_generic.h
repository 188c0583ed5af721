// SPDX-License-Identifier: MIT
// The loops behind every set's product kernels; included by kernels_generic.h alone, so that each
// set compiles them for its own instruction set in an unnamed namespace.

#include <cstring>

#include "vector/element_rules.h"
#include "vector/kernels/kernels.h"

namespace {

using knotwork::detail::ElementRules;
using knotwork::detail::ProductKernels;

// As many elements as one register of the instruction set holds. Integers wrap, so their lanes are
// unsigned.
template <class T>
struct LanesOf {
#if defined(__AVX2__)
  static constexpr std::size_t kBytes = 32;
#else
  static constexpr std::size_t kBytes = 16;
#endif
  using Element = std::conditional_t<std::is_integral_v<T>, unsigned, T>;
  typedef Element Type __attribute__((vector_size(kBytes)));
  static constexpr std::size_t kCount = kBytes / sizeof(T);
};

template <class T>
struct ProductLoops {
  using Lanes = typename LanesOf<T>::Type;
  using Element = typename LanesOf<T>::Element;
  static constexpr std::size_t kLanes = LanesOf<T>::kCount;

  // Two registers of rows and four columns keep sixteen registers busy; half the columns fit where
  // there are but eight.
  static constexpr std::size_t kTileRows = 2 * kLanes;
  static constexpr std::size_t kTileCols = sizeof(void*) == 8 ? 4 : 2;

  // AVX2 broadcasts as fast as it loads; before it, elements are best broadcast in memory.
  static constexpr std::size_t kCopies = kLanes * sizeof(T) == 32 ? 1 : kLanes;

  static Lanes load(const T* p) {
    Lanes lanes;
    std::memcpy(&lanes, p, sizeof lanes);
    return lanes;
  }
  static void store(T* p, Lanes lanes) { std::memcpy(p, &lanes, sizeof lanes); }
  static Lanes broadcast(T x) { return static_cast<Element>(x) - Lanes{}; }
  static T addProduct(T sum, T x, T y) {
    return ElementRules<T>::add(sum, ElementRules<T>::multiply(x, y));
  }

  static void addTile(std::size_t depth, const T* a, const T* b, T* c, std::ptrdiff_t step) {
    Lanes upper[kTileCols];
    Lanes lower[kTileCols];
    for (std::size_t j = 0; j < kTileCols; ++j) {
      const T* column = c + static_cast<std::ptrdiff_t>(j) * step;
      upper[j] = load(column);
      lower[j] = load(column + kLanes);
    }
    for (std::size_t p = 0; p < depth; ++p) {
      const Lanes aUpper = load(a);
      const Lanes aLower = load(a + kLanes);
      for (std::size_t j = 0; j < kTileCols; ++j) {
        const Lanes factor = kCopies == 1 ? broadcast(b[j]) : load(b + j * kCopies);
        upper[j] += aUpper * factor;
        lower[j] += aLower * factor;
      }
      a += kTileRows;
      b += kTileCols * kCopies;
    }
    for (std::size_t j = 0; j < kTileCols; ++j) {
      T* column = c + static_cast<std::ptrdiff_t>(j) * step;
      store(column, upper[j]);
      store(column + kLanes, lower[j]);
    }
  }

  // y[i] += sum over j < kColumns of columns[i + j * step] x[j]
  template <std::size_t kColumns>
  static void addSomeColumns(std::size_t rows, const T* columns, std::ptrdiff_t step, const T* x,
                             T* y) {
    std::size_t i = 0;
    for (; i + kLanes <= rows; i += kLanes) {
      Lanes sum = load(y + i);
      for (std::size_t j = 0; j < kColumns; ++j) {
        sum += load(columns + i + static_cast<std::ptrdiff_t>(j) * step) * broadcast(x[j]);
      }
      store(y + i, sum);
    }
    for (; i < rows; ++i) {
      for (std::size_t j = 0; j < kColumns; ++j) {
        y[i] = addProduct(
            y[i], columns[static_cast<std::ptrdiff_t>(i) + static_cast<std::ptrdiff_t>(j) * step],
            x[j]);
      }
    }
  }

  // Four columns at a time, so that y is loaded and stored but once for them.
  static void addColumns(std::size_t rows, std::size_t count, const T* columns, std::ptrdiff_t step,
                         const T* x, T* y) {
    constexpr std::size_t kTogether = 4;
    for (; count >= kTogether; count -= kTogether) {
      addSomeColumns<kTogether>(rows, columns, step, x, y);
      columns += static_cast<std::ptrdiff_t>(kTogether) * step;
      x += kTogether;
    }
    for (; count > 0; --count) {
      addSomeColumns<1>(rows, columns, step, x, y);
      columns += step;
      ++x;
    }
  }

  // y[j] += sum over first <= i < depth of x[i] columns[i + j * step] for j < count.
  static void addDots(std::size_t first, std::size_t depth, std::size_t count, const T* x,
                      const T* columns, std::ptrdiff_t step, T* y) {
    for (std::size_t j = 0; j < count; ++j) {
      T sum = y[j];
      for (std::size_t i = first; i < depth; ++i) sum = addProduct(sum, x[i], columns[i]);
      y[j] = sum;
      columns += step;
    }
  }

  // Row l of the block becomes its column l, for a block of as many rows as lanes.
  static void transpose(Lanes* rows) {
    if constexpr (kLanes == 2) {
      const Lanes first = __builtin_shufflevector(rows[0], rows[1], 0, 2);
      rows[1] = __builtin_shufflevector(rows[0], rows[1], 1, 3);
      rows[0] = first;
    } else {
      const Lanes even01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 2, 6);
      const Lanes odd01 = __builtin_shufflevector(rows[0], rows[1], 1, 5, 3, 7);
      const Lanes even23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 2, 6);
      const Lanes odd23 = __builtin_shufflevector(rows[2], rows[3], 1, 5, 3, 7);
      rows[0] = __builtin_shufflevector(even01, even23, 0, 1, 4, 5);
      rows[1] = __builtin_shufflevector(odd01, odd23, 0, 1, 4, 5);
      rows[2] = __builtin_shufflevector(even01, even23, 2, 3, 6, 7);
      rows[3] = __builtin_shufflevector(odd01, odd23, 2, 3, 6, 7);
    }
  }

  static constexpr std::size_t kDotGroups = 2;
  static constexpr std::size_t kDotColumns = kDotGroups * kLanes;

  // Dot products with kDotColumns columns, one in each lane; blocks of the columns are turned so
  // that a register holds one row of them.
  static void addLaneDots(std::size_t depth, const T* x, const T* columns, std::ptrdiff_t step,
                          T* y) {
    Lanes sums[kDotGroups];
    for (std::size_t g = 0; g < kDotGroups; ++g) sums[g] = load(y + g * kLanes);
    std::size_t i = 0;
    for (; i + kLanes <= depth; i += kLanes) {
      for (std::size_t g = 0; g < kDotGroups; ++g) {
        Lanes block[kLanes];
        for (std::size_t l = 0; l < kLanes; ++l) {
          block[l] = load(columns + i + static_cast<std::ptrdiff_t>(g * kLanes + l) * step);
        }
        transpose(block);
        for (std::size_t l = 0; l < kLanes; ++l) sums[g] += block[l] * broadcast(x[i + l]);
      }
    }
    for (std::size_t g = 0; g < kDotGroups; ++g) store(y + g * kLanes, sums[g]);
    addDots(i, depth, kDotColumns, x, columns, step, y);
  }

  static void addColumnDots(std::size_t depth, std::size_t count, const T* x, const T* columns,
                            std::ptrdiff_t step, T* y) {
    if constexpr (std::is_same_v<T, double>) {
      for (; count >= kDotColumns; count -= kDotColumns) {
        addLaneDots(depth, x, columns, step, y);
        columns += static_cast<std::ptrdiff_t>(kDotColumns) * step;
        y += kDotColumns;
      }
    }
    addDots(0, depth, count, x, columns, step, y);
  }

  static constexpr ProductKernels<T> kTable = {kTileRows, kTileCols,  kCopies,
                                               addTile,   addColumns, addColumnDots};
};

}  // namespace
