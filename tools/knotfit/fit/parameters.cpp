// SPDX-License-Identifier: MIT
// Parameters and knots.
#include "fit/parameters.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

double stepLength(const double* a, const double* b, int dim, Spacing spacing) {
  if (spacing == Spacing::kUniform) return 1.0;
  double scale = 0;
  for (int c = 0; c < dim; ++c) scale = std::max(scale, std::abs(a[c] - b[c]));
  if (scale == 0) return 0;
  double sum = 0;
  for (int c = 0; c < dim; ++c) sum += ((a[c] - b[c]) / scale) * ((a[c] - b[c]) / scale);
  const double length = scale * std::sqrt(sum);
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

std::vector<double> clamped(int degree, const std::vector<double>& inner) {
  const auto ends = static_cast<std::size_t>(degree) + 1;
  std::vector<double> knots(ends, 0.0);
  knots.insert(knots.end(), inner.begin(), inner.end());
  knots.insert(knots.end(), ends, 1.0);
  return knots;
}

// `count` averaged knots strictly within the parameters first .. last.
void appendAveraged(const std::vector<double>& u, std::size_t first, std::size_t last,
                    std::size_t count, std::vector<double>& knots) {
  const double d = static_cast<double>(last - first + 1) / static_cast<double>(count + 1);
  for (std::size_t j = 1; j <= count; ++j) {
    const double at = static_cast<double>(j) * d;
    const auto i = std::max<std::size_t>(1, static_cast<std::size_t>(at));
    const double alpha = at - static_cast<double>(i);
    knots.push_back((1 - alpha) * u[first + i - 1] + alpha * u[first + i]);
  }
}

std::vector<double> interpolationKnots(const std::vector<double>& u, int degree) {
  std::vector<double> inner;
  for (std::size_t j = 1; j + static_cast<std::size_t>(degree) < u.size(); ++j) {
    double sum = 0;
    for (std::size_t k = j; k < j + static_cast<std::size_t>(degree); ++k) sum += u[k];
    inner.push_back(sum / degree);
  }
  return clamped(degree, inner);
}

// Shares `total` knots out between the segments in proportion to their points, first come first.
std::vector<std::size_t> shares(const std::vector<std::size_t>& ends, std::size_t total) {
  std::vector<std::size_t> out;
  const std::size_t all = ends.back() - ends.front();
  std::size_t given = 0;
  for (std::size_t s = 1; s < ends.size(); ++s) {
    const std::size_t upTo = total * (ends[s] - ends.front()) / all;
    out.push_back(upTo - given);
    given = upTo;
  }
  return out;
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

std::vector<double> averagedKnots(const std::vector<double>& u, int degree, std::size_t n,
                                  const std::vector<std::size_t>& corners) {
  const auto p = static_cast<std::size_t>(degree);
  if (corners.empty() && n == u.size()) return interpolationKnots(u, degree);
  const std::size_t forCorners = p * corners.size();
  if (n < p + 1 + forCorners) {
    throw Fault(kUsage, cat(corners.size(), " corners of degree ", degree, " take at least ",
                            p + 1 + forCorners, " control points; use --controls ",
                            p + 1 + forCorners, " or more"));
  }
  std::vector<std::size_t> ends = corners;
  ends.insert(ends.begin(), 0);
  ends.push_back(u.size() - 1);
  const std::vector<std::size_t> counts = shares(ends, n - p - 1 - forCorners);
  std::vector<double> inner;
  for (std::size_t s = 0; s < counts.size(); ++s) {
    if (s > 0) inner.insert(inner.end(), p, u[ends[s]]);
    appendAveraged(u, ends[s], ends[s + 1], counts[s], inner);
  }
  return clamped(degree, inner);
}

std::vector<double> uniformKnots(int degree, std::size_t n) {
  const std::size_t spans = n - static_cast<std::size_t>(degree);
  std::vector<double> inner;
  for (std::size_t j = 1; j < spans; ++j) {
    inner.push_back(static_cast<double>(j) / static_cast<double>(spans));
  }
  return clamped(degree, inner);
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
    return given;
  }
  for (const double t : given) {
    if (!(t > 0 && t < 1)) {
      throw Fault(kInput,
                  cat(file, ": knot ", t, " is not within 0 and 1 (give the inner knots, or ",
                      "all of them with ", ends, " equal ones at each end)"));
    }
  }
  return clamped(degree, given);
}

}  // namespace knotfit
