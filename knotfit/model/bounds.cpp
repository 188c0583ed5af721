// SPDX-License-Identifier: MIT
// The box of a shape, by branch and bound.
//
// A shape is cut into Bezier patches, whose coefficients bound them from below and hold their
// corners. A patch that no coefficient takes below the lowest corner found so far is dropped, the
// others are halved (de Casteljau); coefficients close in on the patch with the square of its size.
#include "model/bounds.h"

#include <algorithm>
#include <utility>

#include "model/shape.h"

namespace knotfit {
namespace {

constexpr double kExactness = 1e-9;  // of the size of the control points' box
constexpr int kDeepest = 50;         // halvings: below that the patches are rounding

// One coordinate of a patch: (p + 1) x (q + 1) Bezier coefficients, v fastest; q is 0 for curves.
struct Patch {
  std::size_t p, q;
  int depth;
  std::vector<double> c;

  double& at(std::size_t i, std::size_t j) { return c[i * (q + 1) + j]; }
  double lowest() const { return *std::min_element(c.begin(), c.end()); }
  double lowestCorner() const { return std::min({c.front(), c[q], c[p * (q + 1)], c.back()}); }
};

// Halves a row of n + 1 coefficients, `stride` apart: the left half to `left`, the right stays.
void halve(double* row, double* left, std::size_t n, std::size_t stride) {
  for (std::size_t level = 0; level <= n; ++level) {
    left[level * stride] = row[0];
    for (std::size_t i = 0; i + level < n; ++i) {
      row[i * stride] = (row[i * stride] + row[(i + 1) * stride]) / 2;
    }
  }
}

std::pair<Patch, Patch> halved(Patch patch) {
  ++patch.depth;
  Patch left = patch;
  if (patch.q > 0 && patch.depth % 2 == 0) {
    for (std::size_t i = 0; i <= patch.p; ++i) {
      halve(&patch.at(i, 0), &left.at(i, 0), patch.q, 1);
    }
  } else {
    for (std::size_t j = 0; j <= patch.q; ++j) {
      halve(&patch.at(0, j), &left.at(0, j), patch.p, patch.q + 1);
    }
  }
  return {std::move(left), std::move(patch)};
}

double minimum(std::vector<Patch> open, double exactness) {
  double best = open.front().lowestCorner();
  for (const Patch& patch : open) best = std::min(best, patch.lowestCorner());
  while (!open.empty()) {
    const Patch patch = std::move(open.back());
    open.pop_back();
    if (patch.lowest() >= best - exactness || patch.depth >= kDeepest) continue;
    auto [left, right] = halved(patch);
    best = std::min({best, left.lowestCorner(), right.lowestCorner()});
    open.push_back(std::move(left));
    open.push_back(std::move(right));
  }
  return best;
}

// The same shape with every inner knot as often as the degree: its control points are those of
// Bezier patches, neighbours sharing their borders.
Spline cutAtKnots(const Spline& s) {
  std::vector<std::array<double, 3>> missing;  // direction, knot, times
  for (int d = 0; d < s.directions; ++d) {
    const std::vector<double>& t = s.knots[static_cast<std::size_t>(d)];
    const int degree = s.degree[static_cast<std::size_t>(d)];
    for (auto k = std::upper_bound(t.begin(), t.end(), t.front()); *k < t.back();) {
      const auto next = std::upper_bound(k, t.end(), *k);
      const int times = degree - static_cast<int>(next - k);
      if (times > 0) missing.push_back({static_cast<double>(d), *k, static_cast<double>(times)});
      k = next;
    }
  }
  if (s.isCurve()) {
    CurveShape shape(s);
    for (const auto& [d, at, times] : missing) shape.insert(at, static_cast<int>(times));
    return shape.spline(s);
  }
  SurfaceShape shape(s);
  for (const auto& [d, at, times] : missing) {
    shape.insert(static_cast<int>(d), at, static_cast<int>(times));
  }
  return shape.spline(s);
}

std::vector<Patch> patchesOf(const Spline& s, std::size_t coordinate, double sign) {
  const auto p = static_cast<std::size_t>(s.degree[0]);
  const auto q = s.isCurve() ? 0 : static_cast<std::size_t>(s.degree[1]);
  std::vector<Patch> out;
  for (std::size_t i = 0; i + p < s.size[0]; i += p) {
    for (std::size_t j = 0; j + q < s.size[1]; j += std::max<std::size_t>(q, 1)) {
      Patch patch{p, q, 0, {}};
      for (std::size_t a = 0; a <= p; ++a) {
        for (std::size_t b = 0; b <= q; ++b) {
          patch.c.push_back(sign * s.control(i + a, j + b)[coordinate]);
        }
      }
      out.push_back(std::move(patch));
    }
  }
  return out;
}

}  // namespace

Bounds boundsOf(const Spline& spline) {
  const Spline s = cutAtKnots(spline);
  Bounds out;
  for (std::size_t c = 0; c < static_cast<std::size_t>(s.dim); ++c) {
    double low = s.controls[c], high = low;
    for (std::size_t i = c; i < s.controls.size(); i += static_cast<std::size_t>(s.dim)) {
      low = std::min(low, s.controls[i]);
      high = std::max(high, s.controls[i]);
    }
    const double exactness = kExactness * (high / 2 - low / 2);
    out.low[c] = minimum(patchesOf(s, c, 1.0), exactness);
    out.high[c] = -minimum(patchesOf(s, c, -1.0), exactness);
  }
  return out;
}

}  // namespace knotfit
