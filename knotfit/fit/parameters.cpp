// SPDX-License-Identifier: MIT
// Parameters and knots.
//
// A parameter is the share of the way along the points: u(i) = (s(1) + ... + s(i)) / total, where a
// step s is the distance of neighbours (chord length), its square root (centripetal, which turns
// less wildly where distances vary), or 1. Both run from 0 to 1 exactly: the last parameter is set,
// not summed, since constraints at clamped ends are met to the bit only there.
#include "fit/parameters.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "base/fault.h"
#include "base/text.h"
#include "model/convert.h"
#include "model/spline.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

double stepLength(const double* a, const double* b, int dim, Spacing spacing) {
  if (spacing == Spacing::kUniform) return 1.0;
  const double length = distance(a, b, dim);
  return spacing == Spacing::kCentripetal ? std::sqrt(length) : length;
}

const char* nameOf(Spacing spacing) {
  return spacing == Spacing::kCentripetal ? "centripetal" : "chord-length";
}

[[noreturn]] void coinciding(std::size_t a, std::size_t b, Spacing spacing) {
  throw Fault(kNoSolution,
              cat("points ", a, " and ", b, " coincide: ", nameOf(spacing),
                  " parameters would repeat; add --merge 1e-9 or use --param uniform"));
}

// Sums the steps and scales them to [0, 1]; nothing when the whole has no length.
std::optional<std::vector<double>> scaledSums(const std::vector<double>& steps) {
  std::vector<double> u(steps.size() + 1, 0.0);
  std::partial_sum(steps.begin(), steps.end(), u.begin() + 1);
  const double total = u.back();
  if (!(total > 0) || !std::isfinite(total)) return std::nullopt;
  for (double& x : u) x /= total;
  u.back() = 1.0;
  return u;
}

}  // namespace

std::vector<double> parametersOf(const PointSet& points, Spacing spacing, bool closed) {
  const std::size_t n = points.count();
  std::vector<double> steps;
  for (std::size_t i = 1; i < n; ++i) {
    steps.push_back(stepLength(points[i - 1], points[i], points.dim, spacing));
    if (steps.back() == 0) coinciding(i, i + 1, spacing);
  }
  const bool repeats = std::equal(points[0], points[0] + points.dim, points[n - 1]);
  const bool wayBack = closed && !repeats;
  if (wayBack) steps.push_back(stepLength(points[n - 1], points[0], points.dim, spacing));
  auto u = scaledSums(steps);
  if (!u) {
    throw Fault(kNoSolution, "the points span no finite length; check the columns and units");
  }
  for (std::size_t i = 1; i < n; ++i) {  // a step may vanish beside the length of the whole
    if ((*u)[i] == (*u)[i - 1]) coinciding(i, i + 1, spacing);
  }
  u->resize(n);
  return *u;
}

// A grid has one parameter for each of its lines: the mean over the lines across. Lines of no
// length, as at a pole, tell nothing and do not count.
std::vector<double> gridParameters(const PointGrid& grid, bool alongU, Spacing spacing) {
  const std::size_t n = alongU ? grid.rows : grid.columns;
  const std::size_t lines = alongU ? grid.columns : grid.rows;
  std::vector<double> mean(n, 0.0);
  std::size_t counted = 0;
  for (std::size_t k = 0; k < lines; ++k) {
    std::vector<double> steps;
    for (std::size_t i = 1; i < n; ++i) {
      steps.push_back(alongU ? stepLength(grid.at(i - 1, k), grid.at(i, k), 3, spacing)
                             : stepLength(grid.at(k, i - 1), grid.at(k, i), 3, spacing));
    }
    if (const auto u = scaledSums(steps)) {
      ++counted;
      for (std::size_t i = 0; i < n; ++i) mean[i] += (*u)[i];
    }
  }
  if (counted == 0) throw Fault(kNoSolution, "the grid spans no length; use --param uniform");
  for (double& x : mean) x /= static_cast<double>(counted);
  mean.back() = 1.0;
  for (std::size_t i = 1; i < n; ++i) {
    if (!(mean[i] > mean[i - 1])) {
      throw Fault(kNoSolution, cat("grid ", alongU ? "rows " : "columns ", i, " and ", i + 1,
                                   " coincide: ", nameOf(spacing),
                                   " parameters would repeat; use --param uniform"));
    }
  }
  return mean;
}

std::vector<double> scaledParameters(std::vector<double> given, std::size_t points,
                                     const std::string& file) {
  if (given.size() != points) {
    throw Fault(kInput, cat(file, ": ", given.size(), " parameters for ", points,
                            " points (give one a line for each point)"));
  }
  for (std::size_t i = 1; i < given.size(); ++i) {
    if (!(given[i - 1] < given[i])) {
      throw Fault(kInput, cat(file, ": parameters ", i, " and ", i + 1,
                              " do not ascend (sort the points by parameter)"));
    }
  }
  const double from = given.front(), range = given.back() - from;
  for (double& u : given) u = (u - from) / range;
  return given;
}

// The library answers with no knots where there are too few; here the number that is needed is
// told.
std::vector<double> averagedKnots(const std::vector<double>& u, int degree, std::size_t n,
                                  const std::vector<std::size_t>& corners) {
  const std::size_t least = static_cast<std::size_t>(degree) * (corners.size() + 1) + 1;
  if (n < least) {
    throw Fault(kUsage, cat(corners.size(), corners.size() == 1 ? " corner" : " corners",
                            " of degree ", degree, " take at least ", least,
                            " control points; use --controls ", least, " or more"));
  }
  IntVec places(static_cast<unsigned>(corners.size()), 0);
  for (std::size_t i = 0; i < corners.size(); ++i) {
    places(static_cast<int>(i)) = static_cast<int>(corners[i]);
  }
  return stdOf(knotwork::averagedKnots(vecOf(u), degree, static_cast<int>(n), places));
}

std::vector<double> uniformKnots(int degree, std::size_t n) {
  return stdOf(knotwork::uniformKnots(degree, static_cast<int>(n)));
}

std::vector<double> completedKnots(std::vector<double> given, int degree, const std::string& file) {
  const auto ends = static_cast<std::size_t>(degree) + 1;
  if (!std::is_sorted(given.begin(), given.end())) {
    throw Fault(kInput, cat(file, ": knots do not ascend (sort them)"));
  }
  const bool longForm = given.size() >= 2 * ends && given.front() == given[ends - 1] &&
                        given[given.size() - ends] == given.back() && given.front() < given.back();
  if (longForm) {
    const double from = given.front(), range = given.back() - from;
    for (double& t : given) t = (t - from) / range;
  } else {
    for (const double t : given) {
      if (t > 0 && t < 1) continue;
      throw Fault(kInput,
                  cat(file, ": knot ", t, " is not within 0 and 1 (give the inner knots, or ",
                      "all of them with ", ends, " equal ones at each end)"));
    }
    given = stdOf(knotwork::clampedKnots(degree, vecOf(given)));
  }
  const std::string fault = knotFault(given, degree, given.size() - ends);
  if (!fault.empty()) throw Fault(kInput, cat(file, ": ", fault, " (give fewer of them)"));
  return given;
}

}  // namespace knotfit
