// SPDX-License-Identifier: MIT
// A Householder reflection and its application to columns, in index order.
#pragma once

#include <cmath>
#include <cstddef>

namespace knotwork::detail {

// The places of a reflection's entries, for a column that starts at x: either listed one by one, or
// all places but the gap between two runs.
struct ListedPlaces {
  const int* places;
  std::ptrdiff_t count;

  template <class Visit>
  void each(Visit visit) const {
    for (std::ptrdiff_t t = 0; t < count; ++t) visit(t, static_cast<std::ptrdiff_t>(places[t]));
  }
};

struct RunsOfPlaces {
  std::ptrdiff_t head, gap, count;

  template <class Visit>
  void each(Visit visit) const {
    for (std::ptrdiff_t t = 0; t < head; ++t) visit(t, t);
    for (std::ptrdiff_t t = head; t < count; ++t) visit(t, t + gap);
  }
};

// What the entries v[0 .. count) of a row or column make of its pivot.
struct Pivot {
  double sigma = 0, beta = 0;
  bool isApplied = false;
};

// The largest magnitude of v[0 .. count); -1 where every entry is a NaN, or there is none.
double largestMagnitude(const double* v, std::ptrdiff_t count);

// Turns the entry v[pivot] into that of the reflection I + beta v v', which sends the entries to
// sigma in the pivot's place. Entries of at most `skip` are left as they are.
Pivot formReflection(double* v, std::ptrdiff_t count, std::ptrdiff_t pivot, double skip);

// sums[w] = x_w' v for Width columns x_0, x_1, ..., `distance` apart
template <int Width, class Places>
void multiplyColumns(const Places& at, const double* v, const double* x, std::ptrdiff_t distance,
                     double* sums) {
  double total[Width] = {};
  at.each([&](std::ptrdiff_t t, std::ptrdiff_t i) {
    for (int w = 0; w < Width; ++w) total[w] += x[w * distance + i] * v[t];
  });
  for (int w = 0; w < Width; ++w) sums[w] = total[w];
}

// x += factor v
template <class Places>
void addMultiple(const Places& at, const double* v, double factor, double* x) {
  at.each([&](std::ptrdiff_t t, std::ptrdiff_t i) { x[i] += factor * v[t]; });
}

// Reflects columns x, x + distance, ..., `columns` of them, one block after the other, so that a
// block is still in the cache when its sums are known. Columns with a sum of at most `skip` stay.
template <class Places>
void reflectColumns(const Places& at, const double* v, const Pivot& pivot, double skip, double* x,
                    std::ptrdiff_t distance, int columns) {
  constexpr int kBlock = 4;
  double sums[kBlock];
  const auto applyTo = [&](double* block, int width) {
    for (int w = 0; w < width; ++w) {
      if (std::abs(sums[w]) > skip) addMultiple(at, v, sums[w] * pivot.beta, block + w * distance);
    }
  };
  int done = 0;
  for (; done + kBlock <= columns; done += kBlock, x += kBlock * distance) {
    multiplyColumns<kBlock>(at, v, x, distance, sums);
    applyTo(x, kBlock);
  }
  for (; done < columns; ++done, x += distance) {
    multiplyColumns<1>(at, v, x, distance, sums);
    applyTo(x, 1);
  }
}

}  // namespace knotwork::detail
