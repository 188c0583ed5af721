// SPDX-License-Identifier: MIT
// The loops of right-hand sides that stand next to each other: the lanes of a register are sides,
// and every sum runs along one side.
#pragma once

#include "kernels/generic/lanes.h"
#include "kernels/side_kernels.h"

namespace {

using knotwork::detail::PlacedReflector;
using knotwork::detail::SideKernels;
using knotwork::detail::Sides;

template <int width>
struct SideLoops {
  // The numbers of one place: in registers where they fill them, else one by one.
  static constexpr std::ptrdiff_t kStep = width % kLanes<double> == 0 ? kLanes<double> : 1;
  using Part = std::conditional_t<kStep == 1, double, Lanes<double>>;
  static constexpr std::ptrdiff_t kParts = width / kStep;

  static Part partOf(const double* x, std::ptrdiff_t k) {
    if constexpr (kStep == 1) {
      return x[k];
    } else {
      return load(x + k * kStep);
    }
  }
  static Part spread(double x) {
    if constexpr (kStep == 1) {
      return x;
    } else {
      return broadcast(x);
    }
  }

  // Calls visit(i, v_i) for the places that the reflection acts on.
  template <class Visit>
  static void eachPlace(const PlacedReflector& h, Visit visit) {
    const double* const v = h.v;
    const std::ptrdiff_t step = h.step, head = h.head, end = h.end;
    for (std::ptrdiff_t i = 0; i < head; ++i) visit(i, v[i * step]);
    for (std::ptrdiff_t i = h.first; i < end; ++i) visit(i, v[i * step]);
  }

  // Sides move as one where they all do; a sum of at most the threshold leaves its side alone.
  static void reflect(const PlacedReflector& h, double* x) {
    Part sums[kParts] = {};
    eachPlace(h, [&](std::ptrdiff_t i, double v) {
      for (std::ptrdiff_t k = 0; k < kParts; ++k) sums[k] += partOf(x + i * width, k) * spread(v);
    });
    double products[width];
    int moving = 0;
    for (std::ptrdiff_t k = 0; k < kParts; ++k) store(products + k * kStep, sums[k]);
    for (int w = 0; w < width; ++w) moving += magnitude(products[w]) > h.skip;
    if (moving == width) {
      for (Part& factor : sums) factor *= spread(h.beta);
      eachPlace(h, [&](std::ptrdiff_t i, double v) {
        double* const place = x + i * width;
        for (std::ptrdiff_t k = 0; k < kParts; ++k)
          store(place + k * kStep, partOf(place, k) + sums[k] * spread(v));
      });
      return;
    }
    for (int w = 0; w < width; ++w) {
      if (!(magnitude(products[w]) > h.skip)) continue;
      const double factor = products[w] * h.beta;
      eachPlace(h, [&](std::ptrdiff_t i, double v) { x[i * width + w] += factor * v; });
    }
  }

  static void sumProducts(const int* places, std::ptrdiff_t count, const double* v,
                          std::ptrdiff_t step, const double* x, double* sums) {
    Part total[kParts] = {};
    for (std::ptrdiff_t n = 0; n < count; ++n) {
      const double* const place = x + static_cast<std::ptrdiff_t>(places[n]) * width;
      for (std::ptrdiff_t k = 0; k < kParts; ++k)
        total[k] += partOf(place, k) * spread(v[n * step]);
    }
    for (std::ptrdiff_t k = 0; k < kParts; ++k) store(sums + k * kStep, total[k]);
  }
};

// Calls f with the loops of that width.
template <class Function>
void withWidth(int width, Function f) {
  switch (width) {
    case 1:
      return f(SideLoops<1>{});
    case 2:
      return f(SideLoops<2>{});
    case 4:
      return f(SideLoops<4>{});
    case 8:
      return f(SideLoops<8>{});
    default:
      return;
  }
}

constexpr SideKernels kSideTable = {
    [](const PlacedReflector& h, const Sides& sides) {
      withWidth(sides.width, [&](auto loops) { loops.reflect(h, sides.x); });
    },
    [](const int* places, std::ptrdiff_t count, const double* v, std::ptrdiff_t step,
       const Sides& sides, double* sums) {
      withWidth(sides.width,
                [&](auto loops) { loops.sumProducts(places, count, v, step, sides.x, sums); });
    }};

}  // namespace
