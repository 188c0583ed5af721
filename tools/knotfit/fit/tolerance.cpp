// SPDX-License-Identifier: MIT
// Curves within a tolerance, with few control points.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "base/fault.h"
#include "fit/curve_fit.h"
#include "fit/nearest.h"

namespace knotfit {
namespace {

// Floating-point operations that the removal of knots may take: seconds, on any data.
constexpr double kRemovalWork = 2e10;

class ToleranceSearch {
 public:
  ToleranceSearch(const PointSet& points, const FitOptions& options,
                  const std::vector<double>& parameters)
      : points_(points), options_(options), u_(parameters) {}

  CurveFit run() {
    std::optional<CurveFit> fit;
    if (!options_.knotsAsked) {
      fit = grown();
      if (fit) shrink(*fit);
    }
    scan(fit);
    if (fit) return std::move(*fit);
    if (!best_) throw *lastFault_;
    best_->reached = false;
    return std::move(*best_);
  }

 private:
  std::size_t degree() const { return static_cast<std::size_t>(options_.degree[0]); }
  std::size_t leastControls() const {
    return degree() + 1 + (options_.closed ? degree() : 0) + degree() * options_.corners.size();
  }

  // Distance of every point; the global search runs only for points that seem too far away.
  std::vector<double> distances(const CurveFit& fit) const {
    std::vector<double> out = distancesAt(fit.spline, points_, fit.parameters);
    const CurveProjector projector(fit.spline);
    for (std::size_t i = 0; i < out.size(); ++i) {
      if (out[i] > options_.tolerance) {
        out[i] = projector.nearest(points_[i], fit.parameters[i]).distance;
      }
    }
    return out;
  }

  // Fits; keeps the best of all attempts for the case that none will do.
  std::optional<CurveFit> attempt(const std::vector<double>& knots, std::vector<double>& far) {
    try {
      CurveFit fit = fitWithKnots(points_, options_, u_, knots);
      far = distances(fit);
      const double most = *std::max_element(far.begin(), far.end());
      if (most < bestDistance_) {
        bestDistance_ = most;
        best_ = fit;
      }
      return fit;
    } catch (const Fault& fault) {
      if (fault.code() != kNoSolution) throw;
      lastFault_ = fault;
      return std::nullopt;
    }
  }

  bool within(const std::vector<double>& far) const {
    return *std::max_element(far.begin(), far.end()) <= options_.tolerance;
  }

  // A knot between the middle data of the span from..to, where the data leave room for one.
  std::optional<double> splitOf(double from, double to) const {
    const auto first = std::lower_bound(u_.begin(), u_.end(), from);
    const auto last = std::upper_bound(first, u_.end(), to);
    const auto n = last - first;
    if (n < 2) return std::nullopt;
    const double knot = (*(first + n / 2 - 1) + *(first + n / 2)) / 2;
    if (!(knot > from && knot < to)) return std::nullopt;
    return knot;
  }

  // Halves the spans of points that are too far away, worst first. @return whether any was.
  bool halveSpans(std::vector<double>& knots, const std::vector<double>& far) const {
    std::vector<std::pair<double, double>> wanted;  // distance, knot
    const std::vector<double> old = knots;
    for (std::size_t k = degree(); k + degree() + 1 < old.size(); ++k) {
      double most = 0;
      for (std::size_t i = 0; i < u_.size(); ++i) {
        if (u_[i] >= old[k] && u_[i] <= old[k + 1]) most = std::max(most, far[i]);
      }
      if (most <= options_.tolerance || !(old[k] < old[k + 1])) continue;
      if (const auto knot = splitOf(old[k], old[k + 1])) wanted.emplace_back(most, *knot);
    }
    std::sort(wanted.rbegin(), wanted.rend());
    bool any = false;
    for (const auto& [most, knot] : wanted) {
      std::vector<double> trial = knots;
      trial.insert(std::upper_bound(trial.begin(), trial.end(), knot), knot);
      if (!isDetermined(trial, options_.degree[0], u_)) continue;
      knots = std::move(trial);
      any = true;
    }
    return any;
  }

  std::optional<CurveFit> grown() {
    if (points_.count() < leastControls()) return std::nullopt;
    std::vector<double> knots = knotsFor(options_, u_, leastControls()), far;
    do {
      auto fit = attempt(knots, far);
      if (!fit) break;
      if (within(far)) return fit;
    } while (halveSpans(knots, far));
    auto fit = attempt(knotsFor(options_, u_, points_.count()), far);
    if (fit && within(far)) return fit;
    return std::nullopt;
  }

  double fitWork(std::size_t n) const {
    return 2.0 * static_cast<double>(points_.count()) * static_cast<double>(n * n);
  }

  bool isCorner(double knot) const {
    return std::any_of(options_.corners.begin(), options_.corners.end(),
                       [&](std::size_t i) { return u_[i] == knot; });
  }

  // Inner knots, those first whose removal changes the curve least: by the jump of the highest
  // derivative there times the length over which it would be spread, to the power of the degree.
  std::vector<double> removable(const Spline& s) const {
    const CurveShape shape(s);
    const std::vector<double>& t = s.knots[0];
    std::vector<std::pair<double, double>> order;
    std::vector<double> out(3 * (degree() + 1));
    const auto highest = [&](double u) {
      shape.eval(u, options_.degree[0], out.data());
      return std::array<double, 3>{out[3 * degree()], out[3 * degree() + 1], out[3 * degree() + 2]};
    };
    for (std::size_t k = degree() + 1; k < s.size[0]; ++k) {
      if (isCorner(t[k])) continue;
      const auto before = highest((t[k - 1] + t[k]) / 2), after = highest((t[k] + t[k + 1]) / 2);
      double jump = 0;
      for (std::size_t c = 0; c < 3; ++c) jump += std::pow(before[c] - after[c], 2);
      const double reach = (t[k + 1] - t[k - 1]) / 2;
      order.emplace_back(std::sqrt(jump) * std::pow(reach, options_.degree[0]), t[k]);
    }
    std::sort(order.begin(), order.end());
    std::vector<double> knots;
    for (const auto& [weight, knot] : order) knots.push_back(knot);
    return knots;
  }

  void shrink(CurveFit& fit) {
    fit.adapted = true;
    double work = 0;
    for (bool again = true; again;) {
      again = false;
      for (const double knot : removable(fit.spline)) {
        if (fit.spline.size[0] <= leastControls()) return;
        if ((work += fitWork(fit.spline.size[0])) > kRemovalWork) return;
        std::vector<double> fewer = fit.spline.knots[0], far;
        fewer.erase(std::lower_bound(fewer.begin(), fewer.end(), knot));
        auto next = attempt(fewer, far);
        if (!next || !within(far)) continue;
        fit = std::move(*next);
        fit.adapted = true;
        again = true;
      }
    }
  }

  // Tries 4, 5, 6 ... control points, in growing steps where the data are many.
  void scan(std::optional<CurveFit>& fit) {
    const std::size_t most = fit ? fit->spline.size[0] - 1 : points_.count();
    double work = 0;
    std::size_t failed = 0;
    for (std::size_t n = std::max<std::size_t>(leastControls(), options_.controls[0]); n <= most;) {
      if (fit && (work += fitWork(n)) > kRemovalWork) return;
      std::vector<double> far;
      auto next = attempt(knotsFor(options_, u_, n), far);
      if (next && within(far)) {
        fit = std::move(next);
        return fitBetween(failed + 1, n, *fit);
      }
      failed = n;
      n = n < 400 ? n + 1 : std::min(most, n + n / 8);
      if (failed == most) return;
    }
  }

  // Halves the range of control points between one that failed and one that did.
  void fitBetween(std::size_t low, std::size_t high, CurveFit& fit) {
    while (low < high) {
      const std::size_t middle = low + (high - low) / 2;
      std::vector<double> far;
      auto next = attempt(knotsFor(options_, u_, middle), far);
      if (next && within(far)) {
        fit = std::move(*next);
        high = middle;
      } else {
        low = middle + 1;
      }
    }
  }

  const PointSet& points_;
  const FitOptions& options_;
  const std::vector<double>& u_;
  std::optional<CurveFit> best_;
  std::optional<Fault> lastFault_;
  double bestDistance_ = std::numeric_limits<double>::infinity();
};

}  // namespace

CurveFit fitWithin(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters) {
  controlCount(0, options.degree[0], points.count(), options.smooth > 0, "file");
  return ToleranceSearch(points, options, parameters).run();
}

}  // namespace knotfit
