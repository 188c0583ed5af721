// SPDX-License-Identifier: MIT
// The loops of the reflection kernels.
#pragma once

#include "kernels/generic/column_loops.h"
#include "kernels/generic/lanes.h"
#include "kernels/reflection_kernels.h"
#include "kernels/square_root.h"

namespace {

using knotwork::detail::ListedPlaces;
using knotwork::detail::ReflectedColumns;
using knotwork::detail::ReflectedRows;
using knotwork::detail::ReflectionKernels;
using knotwork::detail::Reflector;
using knotwork::detail::RunsOfPlaces;
using knotwork::detail::squareRoot;

struct ReflectionLoops {
  // A maximum is the same in any order; comparisons with a NaN are false and pass it over.
  static double largestMagnitude(const double* v, std::ptrdiff_t count) {
    constexpr auto kCount = static_cast<std::ptrdiff_t>(kLanes<double>);
    double largest = -1;
    std::ptrdiff_t t = 0;
    if (count >= kCount) {
      Lanes<double> lanes = broadcast(largest);
      for (; t + kCount <= count; t += kCount) {
        const Lanes<double> magnitudes = magnitude(load(v + t));
        lanes = magnitudes > lanes ? magnitudes : lanes;
      }
      for (std::ptrdiff_t l = 0; l < kCount; ++l) {
        if (lanes[l] > largest) largest = lanes[l];
      }
    }
    for (; t < count; ++t) {
      const double size = magnitude(v[t]);
      if (size > largest) largest = size;
    }
    return largest;
  }

  static double scaledLength(const double* v, std::ptrdiff_t count, double largest) {
    const double scale = 1 / largest;
    double sum = 0;
    for (std::ptrdiff_t t = 0; t < count; ++t) {
      const double scaled = v[t] * scale;
      sum += scaled * scaled;
    }
    return squareRoot(sum) * largest;
  }

  // sums[w] = x_w'v for `width` columns x_0, x_1, ..., `step` apart
  template <int width>
  static void multiplyColumns(const ListedPlaces& at, const double* v, const double* x,
                              std::ptrdiff_t step, double* sums) {
    double total[width] = {};
    for (std::ptrdiff_t t = 0; t < at.count; ++t) {
      const double* const entry = x + at.places[t];
      for (int w = 0; w < width; ++w) total[w] += entry[w * step] * v[t];
    }
    for (int w = 0; w < width; ++w) sums[w] = total[w];
  }
  template <int width>
  static void multiplyColumns(const RunsOfPlaces& at, const double* v, const double* x,
                              std::ptrdiff_t step, double* sums) {
    std::fill_n(sums, width, 0.0);
    const auto head = static_cast<std::size_t>(at.head);
    const auto rest = static_cast<std::size_t>(at.count - at.head);
    ColumnLoops<double>::addColumnDots(head, width, v, x, step, sums);
    ColumnLoops<double>::addColumnDots(rest, width, v + at.head, x + at.head + at.gap, step, sums);
  }

  // x += factor v
  static void addMultiple(const ListedPlaces& at, const double* v, double factor, double* x) {
    for (std::ptrdiff_t t = 0; t < at.count; ++t) x[at.places[t]] += factor * v[t];
  }
  static void addMultiple(const RunsOfPlaces& at, const double* v, double factor, double* x) {
    const auto head = static_cast<std::size_t>(at.head);
    const auto rest = static_cast<std::size_t>(at.count - at.head);
    ColumnLoops<double>::addColumns(head, 1, v, 0, &factor, x);
    ColumnLoops<double>::addColumns(rest, 1, v + at.head, 0, &factor, x + at.head + at.gap);
  }

  template <int width, class Places>
  static void reflectBlock(const Places& at, const Reflector& h, double* x, std::ptrdiff_t step) {
    double sums[width];
    multiplyColumns<width>(at, h.v, x, step, sums);
    for (int w = 0; w < width; ++w) {
      if (magnitude(sums[w]) > h.skip) addMultiple(at, h.v, sums[w] * h.beta, x + w * step);
    }
  }

  // One block of columns after the other, so that a block is still in the cache when its sums are
  // known.
  template <class Places>
  static void reflect(const Places& at, const Reflector& h, const ReflectedColumns& columns) {
    double* x = columns.x;
    int left = columns.count;
    const auto reflectAll = [&]<int width>() {
      for (; left >= width; left -= width, x += width * columns.step) {
        reflectBlock<width>(at, h, x, columns.step);
      }
    };
    reflectAll.template operator()<8>();
    reflectAll.template operator()<4>();
    reflectAll.template operator()<1>();
  }

  // All rows at once, column by column, as they lie in memory.
  static void reflectRows(const ListedPlaces& at, const Reflector& h, const ReflectedRows& rows,
                          double* products, int* moved) {
    const auto count = static_cast<std::size_t>(rows.count);
    std::fill_n(products, count, 0.0);
    at.each([&](std::ptrdiff_t t, std::ptrdiff_t j) {
      ColumnLoops<double>::addColumns(count, 1, rows.x + j * rows.step, 0, &h.v[t], products);
    });
    int movedCount = 0;
    for (int i = 0; i < rows.count; ++i) {
      if (!(magnitude(products[i]) > h.skip)) continue;
      products[movedCount] = products[i] * h.beta;
      moved[movedCount++] = i;
    }
    if (movedCount == rows.count) {
      at.each([&](std::ptrdiff_t t, std::ptrdiff_t j) {
        ColumnLoops<double>::addColumns(count, 1, products, 0, &h.v[t], rows.x + j * rows.step);
      });
      return;
    }
    at.each([&](std::ptrdiff_t t, std::ptrdiff_t j) {
      double* const x = rows.x + j * rows.step;
      for (int k = 0; k < movedCount; ++k) x[moved[k]] += products[k] * h.v[t];
    });
  }

  static void addSquares(const double* x, std::ptrdiff_t count, double* sums) {
    constexpr auto kCount = static_cast<std::ptrdiff_t>(kLanes<double>);
    std::ptrdiff_t i = 0;
    for (; i + kCount <= count; i += kCount) {
      const Lanes<double> lanes = load(x + i);
      store(sums + i, load(sums + i) + lanes * lanes);
    }
    for (; i < count; ++i) sums[i] += x[i] * x[i];
  }

  static constexpr ReflectionKernels kTable = {largestMagnitude,      scaledLength,
                                               reflect<ListedPlaces>, reflect<RunsOfPlaces>,
                                               reflectRows,           addSquares};
};

}  // namespace
