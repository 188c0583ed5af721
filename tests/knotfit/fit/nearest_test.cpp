// SPDX-License-Identifier: MIT
// Nearest points against an exhaustive search, on random shapes: folded, with corners and cusps,
// closed, of every small degree.
#include "fit/nearest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "model/bezier.h"
#include "model/shape.h"
#include "points.h"

namespace knotfit::test {
namespace {

class Shapes {
 public:
  explicit Shapes(unsigned seed) : random_(seed) {}

  int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }
  double real(double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random_);
  }

  Spline curve() {
    Spline s = blank(1, whole(2, 3));
    for (std::size_t i = 0; i < s.size[0]; ++i) add(s, real(-1, 1), real(-1, 1), real(-1, 1));
    bend(s, static_cast<std::size_t>(s.dim));
    return s;
  }

  // Over the square, more or less folded.
  Spline surface() {
    Spline s = blank(2, 3);
    const double fold = real(0, 1);
    for (std::size_t i = 0; i < s.size[0]; ++i) {
      for (std::size_t j = 0; j < s.size[1]; ++j) {
        const double x = 2.0 * static_cast<double>(i) / static_cast<double>(s.size[0] - 1) - 1;
        const double y = 2.0 * static_cast<double>(j) / static_cast<double>(s.size[1] - 1) - 1;
        add(s, x + fold * real(-1, 1), y + fold * real(-1, 1), real(-1, 1));
      }
    }
    bend(s, 3);
    return s;
  }

 private:
  Spline blank(int directions, int dim) {
    Spline s;
    s.directions = directions;
    s.dim = dim;
    for (std::size_t d = 0; d < static_cast<std::size_t>(directions); ++d) {
      s.degree[d] = whole(1, 5);
      const auto p = static_cast<std::size_t>(s.degree[d]);
      const int spans = whole(1, directions == 1 ? 12 : 4);
      std::vector<double>& t = s.knots[d];
      t.assign(p + 1, 0.0);
      for (int k = 1; k < spans; ++k) {
        t.insert(t.end(), whole(0, 3) ? 1 : p, (k + real(-0.4, 0.4)) / spans);  // p: a corner
      }
      t.insert(t.end(), p + 1, 1.0);
      s.size[d] = t.size() - p - 1;
    }
    return s;
  }

  void add(Spline& s, double x, double y, double z) {
    const double all[] = {x, y, z};
    s.controls.insert(s.controls.end(), all, all + s.dim);
  }

  // Coinciding control points make cusps, an equal end closes the shape.
  void bend(Spline& s, std::size_t dim) {
    const auto copy = [&](std::size_t from, std::size_t to) {
      std::copy_n(s.controls.begin() + static_cast<std::ptrdiff_t>(from * dim), dim,
                  s.controls.begin() + static_cast<std::ptrdiff_t>(to * dim));
    };
    const std::size_t n = s.count();
    if (whole(0, 3) == 0) copy(n / 2 - 1, n / 2);
    if (whole(0, 3) == 0) copy(0, n - 1);
  }

  std::mt19937 random_;
};

// The least distance of the samples, and what lies between them at most.
struct Sampled {
  double least = 1e300, gap = 0;
};

TEST(Nearest, CurvesAgreeWithAnExhaustiveSearch) {
  Shapes shapes(20261122);
  for (int trial = 0; trial < 400; ++trial) {
    const Spline s = shapes.curve();
    const CurveProjector projector(s);
    const CurveShape shape(s);
    std::vector<Vec3> samples;
    constexpr int kSamples = 2000;
    for (int i = 0; i <= kSamples; ++i) samples.push_back(shape.point(i / double{kSamples}));
    std::vector<double> coords, guesses, alone, together;
    for (int k = 0; k < 25; ++k) {
      // Points anywhere, on the curve, and where a chord's middle may see two sides alike.
      Vec3 p = {shapes.real(-1.2, 1.2), shapes.real(-1.2, 1.2), 0};
      if (s.dim == 3) p[2] = shapes.real(-1.2, 1.2);
      const auto any = [&] { return samples[static_cast<std::size_t>(shapes.whole(0, kSamples))]; };
      if (k % 5 == 3) p = any();
      if (k % 5 == 4) p = between(any(), any(), 0.5);
      Sampled sampled;
      for (std::size_t i = 0; i < samples.size(); ++i) {
        sampled.least = std::min(sampled.least, norm(minus(samples[i], p)));
        if (i) sampled.gap = std::max(sampled.gap, norm(minus(samples[i], samples[i - 1])));
      }
      const Foot cold = projector.nearest(p.data()),
                 warm = projector.nearest(p.data(), shapes.real(0, 1));
      ASSERT_LE(cold.distance, sampled.least + 1e-12) << trial << ' ' << k;
      ASSERT_GE(cold.distance, sampled.least - sampled.gap);
      ASSERT_NEAR(warm.distance, cold.distance, 1e-9) << trial << ' ' << k;
      ASSERT_NEAR(apart(shape.point(cold.u), p.data(), 3), cold.distance, 1e-13);
      coords.insert(coords.end(), p.begin(), p.begin() + s.dim);
      guesses.push_back(shapes.real(0, 1));
      alone.push_back(cold.distance);
    }
    projector.appendNearest(coords.data(), alone.size(), guesses.data(), together);
    for (std::size_t k = 0; k < alone.size(); ++k) ASSERT_NEAR(together[k], alone[k], 1e-9);
  }
}

TEST(Nearest, SurfacesAgreeWithAnExhaustiveSearch) {
  Shapes shapes(7);
  for (int trial = 0; trial < 60; ++trial) {
    const Spline s = shapes.surface();
    const SurfaceProjector projector(s);
    const SurfacePieces pieces(s);
    constexpr int kSide = 120;
    std::vector<Vec3> samples;
    std::array<std::size_t, 2> span{};
    for (int i = 0; i <= kSide; ++i) {
      for (int j = 0; j <= kSide; ++j) {
        samples.push_back(pieces.point(i / double{kSide}, j / double{kSide}, span));
      }
    }
    std::vector<double> coords, alone, together;
    std::vector<SurfaceProjector::Place> guesses;
    for (int k = 0; k < 15; ++k) {
      Vec3 p = {shapes.real(-1.2, 1.2), shapes.real(-1.2, 1.2), shapes.real(-1.2, 1.2)};
      if (k % 3 == 2) {
        p = samples[static_cast<std::size_t>(
            shapes.whole(0, static_cast<int>(samples.size()) - 1))];
      }
      double least = 1e300;
      for (const Vec3& sample : samples) least = std::min(least, norm(minus(sample, p)));
      const Foot cold = projector.nearest(p.data());
      const Foot warm = projector.nearest(p.data(), {{shapes.real(0, 1), shapes.real(0, 1)}});
      ASSERT_LE(cold.distance, least + 1e-9) << trial << ' ' << k;
      ASSERT_GE(cold.distance, least - 0.3);
      ASSERT_NEAR(warm.distance, cold.distance, 1e-8) << trial << ' ' << k;
      coords.insert(coords.end(), p.begin(), p.end());
      guesses.push_back({shapes.real(0, 1), shapes.real(0, 1)});
      alone.push_back(cold.distance);
    }
    projector.appendNearest(coords.data(), alone.size(), guesses.data(), together);
    for (std::size_t k = 0; k < alone.size(); ++k) ASSERT_NEAR(together[k], alone[k], 1e-8);
  }
}

// The pieces are the spline: for every degree, also where knots coincide.
TEST(Bezier, PiecesHaveThePointsAndDerivativesOfTheSpline) {
  Shapes shapes(3);
  for (int trial = 0; trial < 200; ++trial) {
    const Spline s = shapes.curve();
    const CurvePieces pieces(s);
    const CurveShape shape(s);
    for (int k = 0; k < 10; ++k) {
      const double u = shapes.real(0, 1);
      const std::size_t span = pieces.spans().find(u);
      const double from = pieces.spans().from(span), h = pieces.spans().to(span) - from;
      const CurveJet jet = bezierJet(pieces.piece(span), pieces.order(), (u - from) / h);
      double d[9];
      shape.eval(u, 2, d);
      for (std::size_t c = 0; c < 3; ++c) {
        ASSERT_NEAR(jet.at[c], d[c], 1e-14);
        ASSERT_NEAR(jet.first[c], d[3 + c] * h, 1e-12);
        ASSERT_NEAR(jet.second[c], d[6 + c] * h * h, 1e-11);
      }
    }
  }
}

}  // namespace
}  // namespace knotfit::test
