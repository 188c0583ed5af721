// SPDX-License-Identifier: MIT
// The teapot's 32 bicubic patches, which fit together.
#include <gtest/gtest.h>

#include <algorithm>
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

struct Sample {
  double p[3], n[3];
};

double distance(const double* a, const double* b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

// Border 0 to 3 of a patch, v = 0, u = 1, v = 1, u = 0, or the curve that lies `inside` of it.
std::vector<Sample> border(const AP_SURFACE& patch, int number, double inside) {
  std::vector<Sample> samples(51);
  const double across = number == 1 || number == 2 ? 1 - inside : inside;
  double along = 0;
  for (Sample& s : samples) {
    patch.normal(number % 2 ? across : along, number % 2 ? along : across, s.p, s.n);
    along = std::min(along + 0.02, 1.0);
  }
  return samples;
}

// The largest distance of two borders that run together.
double gap(const std::vector<Sample>& a, const std::vector<Sample>& b) {
  double largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) largest = std::max(largest, distance(a[i].p, b[i].p));
  return largest;
}

}  // namespace

TEST(Teapot, NeighboursMeetSmoothlyAndPolesHaveTheLimitOfTheirNormals) {
  const std::vector<AP_SURFACE> patches = teapot();
  ASSERT_EQ(patches.size(), 32U);
  int seams = 0, poles = 0;
  std::vector<std::vector<Sample>> borders;
  for (std::size_t i = 0; i < 128; ++i) {
    const AP_SURFACE& patch = patches[i / 4];
    std::vector<Sample> here = border(patch, static_cast<int>(i % 4), 0);
    if (gap(here, std::vector<Sample>(51, here[0])) == 0) {
      ++poles;
      const std::vector<Sample> near = border(patch, static_cast<int>(i % 4), 1e-6);
      for (std::size_t k = 0; k < 51; ++k) EXPECT_LT(distance(here[k].n, near[k].n), 1e-5);
      continue;
    }
    for (const std::vector<Sample>& other : borders) {
      if (gap(here, other) > 1e-9) std::reverse(here.begin(), here.end());
      if (gap(here, other) > 1e-9) continue;
      ++seams;
      EXPECT_LT(gap(here, other), 4e-15);
      for (std::size_t k = 0; k < 51; ++k) {
        const double *const a = here[k].n, *const b = other[k].n;
        EXPECT_NEAR(std::abs(a[0] * b[0] + a[1] * b[1] + a[2] * b[2]), 1, 1e-12);
      }
    }
    borders.push_back(here);
  }
  EXPECT_EQ(seams, 52);
  EXPECT_EQ(poles, 8);
}
