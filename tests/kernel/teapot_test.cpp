// SPDX-License-Identifier: MIT
// The teapot's 32 bicubic patches: neighbours meet without a gap, and their normals agree where
// smooth.
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "kernel/reference.h"

using namespace knotwork::test;

namespace {

std::vector<AP_SURFACE> teapot() {
  std::ifstream file(KNOTWORK_DATA "/teapot_patches.csv");
  std::vector<AP_SURFACE> patches;
  patches.reserve(32);
  std::string line;
  for (std::getline(file, line); std::getline(file, line);) {
    const std::size_t comma = line.find(',', line.find(',') + 1);
    int i = 0, j = 0;
    double p[3];
    EXPECT_EQ(std::sscanf(line.c_str() + comma, ",%d,%d,%lf,%lf,%lf", &i, &j, p, p + 1, p + 2), 5);
    if (i == 0 && j == 0) patches.emplace_back(3, 3, 3, 1, 1, 0, 0);
    patches.back().set(i, j, p, 3);
  }
  return patches;
}

// Border 0 to 3 of a patch: v = 0, u = 1, v = 1, u = 0; s runs along it.
std::array<double, 2> onBorder(int border, double s) {
  if (border % 2) return {border == 1 ? 1.0 : 0.0, s};
  return {s, border == 0 ? 0.0 : 1.0};
}

struct Sample {
  double p[3], n[3];
};

Sample sample(const AP_SURFACE& patch, int border, double s) {
  const auto [u, v] = onBorder(border, s);
  Sample at{};
  patch.normal(u, v, at.p, at.n);
  return at;
}

double distance(const double* a, const double* b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

bool isPole(const AP_SURFACE& patch, int border) {
  return distance(sample(patch, border, 0).p, sample(patch, border, 1).p) == 0 &&
         distance(sample(patch, border, 0).p, sample(patch, border, 0.5).p) == 0;
}

// 1 if two borders run together, -1 if against each other, 0 if they are not the same curve.
int direction(const AP_SURFACE& a, int borderA, const AP_SURFACE& b, int borderB) {
  for (const int way : {1, -1}) {
    bool same = true;
    for (const double s : {0.0, 0.3, 0.5, 1.0}) {
      same = same &&
             distance(sample(a, borderA, s).p, sample(b, borderB, way > 0 ? s : 1 - s).p) < 1e-9;
    }
    if (same) return way;
  }
  return 0;
}

}  // namespace

TEST(Teapot, NeighboursMeetWithoutAGapAndSmoothly) {
  const std::vector<AP_SURFACE> patches = teapot();
  ASSERT_EQ(patches.size(), 32U);
  int seams = 0, smooth = 0;
  double gap = 0;
  for (std::size_t a = 0; a < 32; ++a) {
    for (std::size_t b = a + 1; b < 32; ++b) {
      for (int k = 0; k < 16; ++k) {
        const AP_SURFACE &x = patches[a], &y = patches[b];
        if (isPole(x, k / 4) || isPole(y, k % 4)) continue;
        const int way = direction(x, k / 4, y, k % 4);
        if (!way) continue;
        ++seams;
        double turn = 0;
        for (int i = 0; i <= 50; ++i) {
          const double s = i / 50.0;
          const Sample p = sample(x, k / 4, s), q = sample(y, k % 4, way > 0 ? s : 1 - s);
          gap = std::max(gap, distance(p.p, q.p));
          turn = std::max(turn, 1 - std::abs(p.n[0] * q.n[0] + p.n[1] * q.n[1] + p.n[2] * q.n[2]));
        }
        smooth += turn < 1e-12;
      }
    }
  }
  EXPECT_LT(gap, 4e-15);
  EXPECT_EQ(seams, 52);
  EXPECT_EQ(smooth, 52);
}

TEST(Teapot, NormalsAtPolesAreTheLimitFromInside) {
  int poles = 0;
  for (const AP_SURFACE& patch : teapot()) {
    for (int border = 0; border < 4; ++border) {
      if (!isPole(patch, border)) continue;
      ++poles;
      for (const double s : {0.0, 0.25, 1.0}) {
        const auto [u, v] = onBorder(border, s);
        const Sample pole = sample(patch, border, s);
        double p[3], n[3];
        patch.normal(u + 1e-6 * (0.5 - u) * (border % 2), v + 1e-6 * (0.5 - v) * (1 - border % 2),
                     p, n);
        EXPECT_LT(distance(pole.n, n), 1e-5);
        EXPECT_NEAR(std::abs(pole.n[2]), 1, 1e-12);
      }
    }
  }
  EXPECT_EQ(poles, 8);
}
