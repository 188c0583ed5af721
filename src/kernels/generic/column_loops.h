// SPDX-License-Identifier: MIT
// The loops of the column kernels.
#pragma once

#include <algorithm>

#include "kernels/column_kernels.h"
#include "kernels/element_rules.h"
#include "kernels/generic/lanes.h"

namespace {

using knotwork::detail::ColumnKernels;
using knotwork::detail::ElementRules;

template <class T>
struct ColumnLoops {
  using Register = Lanes<T>;
  static constexpr std::size_t kCount = kLanes<T>;

  static T addProduct(T sum, T x, T y) {
    return ElementRules<T>::add(sum, ElementRules<T>::multiply(x, y));
  }

  static std::ptrdiff_t at(std::size_t i, std::size_t j, std::ptrdiff_t step) {
    return static_cast<std::ptrdiff_t>(i) + static_cast<std::ptrdiff_t>(j) * step;
  }

  // y[i] += sum over j < together of columns[i + j * step] x[j] from row i on, while there are
  // `lanes` rows at a time, then half as many: an element of y is loaded and stored but once.
  template <std::size_t together, std::size_t lanes>
  [[gnu::always_inline]] static void addRows(std::size_t i, std::size_t rows, const T* columns,
                                             std::ptrdiff_t step, const T* x, T* y) {
    if constexpr (lanes == 1) {
      T sum = y[i];
      for (std::size_t j = 0; j < together; ++j)
        sum = addProduct(sum, columns[at(i, j, step)], x[j]);
      y[i] = sum;
    } else {
      Lanes<T, lanes> factors[together];
      for (std::size_t j = 0; j < together; ++j) factors[j] = broadcastSome<lanes>(x[j]);
      const auto add = [&] {
        Lanes<T, lanes> sum = loadSome<lanes>(y + i);
        for (std::size_t j = 0; j < together; ++j) {
          sum += loadSome<lanes>(columns + at(i, j, step)) * factors[j];
        }
        store(y + i, sum);
      };
      if constexpr (lanes == kCount) {
        for (; i + lanes <= rows; i += lanes) add();
      } else if (i + lanes <= rows) {
        add();
        i += lanes;
      }
      if (i < rows) addRows<together, lanes / 2>(i, rows, columns, step, x, y);
    }
  }

  // A function of its own, or the compiler prepares all tails before the loop over groups; and one
  // for all widths: a jump from the widest to a narrower one would leave the upper halves of the
  // registers in use, which makes the SSE instructions of the callers many times slower.
  template <std::size_t together>
  [[gnu::noinline]] static void addSomeColumns(std::size_t rows, const T* columns,
                                               std::ptrdiff_t step, const T* x, T* y) {
    addRows<together, kCount>(0, rows, columns, step, x, y);
  }

  template <std::size_t together = 8>
  static void addColumns(std::size_t rows, std::size_t count, const T* columns, std::ptrdiff_t step,
                         const T* x, T* y) {
    if (count == 1) return addSomeColumns<1>(rows, columns, step, x, y);  // as reflections come
    for (; count >= together; count -= together) {
      addSomeColumns<together>(rows, columns, step, x, y);
      columns += at(0, together, step);
      x += together;
    }
    if constexpr (together > 1) {
      if (count > 0) addColumns<together / 2>(rows, count, columns, step, x, y);
    }
  }

  // y[j] += sum over i < depth of x[i] columns[i + j * step] for j < together: the sums side by
  // side, to hide the time an addition takes.
  template <std::size_t together>
  static void addDots(std::size_t depth, const T* x, const T* columns, std::ptrdiff_t step, T* y) {
    T sums[together];
    std::copy_n(y, together, sums);
    for (std::size_t i = 0; i < depth; ++i) {
      for (std::size_t j = 0; j < together; ++j) {
        sums[j] = addProduct(sums[j], columns[at(i, j, step)], x[i]);
      }
    }
    std::copy_n(sums, together, y);
  }

  // The same with a column in each lane of `registers` registers: squares of products are formed
  // down the columns, turned, and added row by row. The last square overlaps the one before it, and
  // only its last rows are added.
  template <std::size_t registers>
  static void addLaneDots(std::size_t depth, const T* x, const T* columns, std::ptrdiff_t step,
                          T* y) {
    if (depth < kCount) return addDots<registers * kCount>(depth, x, columns, step, y);
    Register sums[registers];
    for (std::size_t r = 0; r < registers; ++r) sums[r] = load(y + r * kCount);
    const auto add = [&](std::size_t i, std::size_t firstRow) {
      const Register factors = load(x + i);
      for (std::size_t r = 0; r < registers; ++r) {
        Register products[kCount];
        for (std::size_t l = 0; l < kCount; ++l) {
          products[l] = factors * load(columns + at(i, r * kCount + l, step));
        }
        transpose(products);
        for (std::size_t l = 0; l < kCount; ++l) {
          if (l >= firstRow) sums[r] += products[l];
        }
      }
    };
    std::size_t i = 0;
    for (; i + kCount <= depth; i += kCount) add(i, 0);
    if (i < depth) add(depth - kCount, kCount - (depth - i));
    for (std::size_t r = 0; r < registers; ++r) store(y + r * kCount, sums[r]);
  }

  static void addColumnDots(std::size_t depth, std::size_t count, const T* x, const T* columns,
                            std::ptrdiff_t step, T* y) {
    const auto addAll = [&](std::size_t together, auto add) {
      for (; count >= together; count -= together) {
        add();
        columns += static_cast<std::ptrdiff_t>(together) * step;
        y += together;
      }
    };
    if constexpr (std::is_same_v<T, double>) {
      // Two sums at least hide each other's additions; eight columns are a group of the
      // decompositions.
      constexpr std::size_t kRegisters = std::max<std::size_t>(2, 8 / kCount);
      addAll(kRegisters * kCount, [&] { addLaneDots<kRegisters>(depth, x, columns, step, y); });
    }
    addAll(4, [&] { addDots<4>(depth, x, columns, step, y); });
    addAll(1, [&] { addDots<1>(depth, x, columns, step, y); });
  }

  static constexpr ColumnKernels<T> kTable = {addColumns<>, addColumnDots};
};

struct RotationLoops {
  static constexpr int kCount = static_cast<int>(kLanes<double>);

  // All rotations on registers * kCount rows: the column that two of them share is kept from one to
  // the next.
  template <int registers>
  static void rotateRows(int count, const double* c, const double* s, double* x,
                         std::ptrdiff_t step) {
    Lanes<double> shared[registers];
    for (std::ptrdiff_t r = 0; r < registers; ++r) shared[r] = load(x + r * kCount);
    for (int k = 0; k < count; ++k, x += step) {
      for (std::ptrdiff_t r = 0; r < registers; ++r) {
        const Lanes<double> right = load(x + step + r * kCount);
        store(x + r * kCount, c[k] * shared[r] + s[k] * right);
        shared[r] = c[k] * right - s[k] * shared[r];
      }
    }
    for (std::ptrdiff_t r = 0; r < registers; ++r) store(x + r * kCount, shared[r]);
  }

  static void rotateSweep(int q, int count, const double* c, const double* s, double* columns,
                          std::ptrdiff_t step) {
    constexpr int kRegisters = 4;
    int i = 0;
    for (; i + kRegisters * kCount <= q; i += kRegisters * kCount)
      rotateRows<kRegisters>(count, c, s, columns + i, step);
    for (; i + kCount <= q; i += kCount) rotateRows<1>(count, c, s, columns + i, step);
    for (; i < q; ++i) {
      double* row = columns + i;
      for (int k = 0; k < count; ++k, row += step) {
        const double turned = c[k] * row[0] + s[k] * row[step];
        row[step] = c[k] * row[step] - s[k] * row[0];
        row[0] = turned;
      }
    }
  }
};

}  // namespace
