// SPDX-License-Identifier: MIT
// Curves within a tolerance, with few control points.
//
// Knots grow where the deviation is, until the tolerance holds; then those go that the curve can do
// without, least first; then averaged knots with fewer control points are tried in turn. Fits are
// counted, never timed, so that every machine stops at the same one. The banded solver makes them,
// unless the user asked for another; the solver that suits the result's size has the last word.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "base/fault.h"
#include "base/text.h"
#include "fit/curve_search.h"
#include "fit/nearest.h"
#include "model/shape.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

// Points that the fits of the removal of knots may see, and those of the scan: fractions of a
// second. Few points are many fits, many points at least kLeastFits.
constexpr std::size_t kMostSeen = 600000, kLeastFits = 24;
// From so many points on, knots go in groups and the scan takes larger steps.
constexpr std::size_t kManyPoints = 2000;

// A fit and how far the points are from it.
struct Trial {
  CurveFit fit;
  std::vector<double> far;  // nearest distance where that may exceed the tolerance
  double most = 0;          // largest of them
};

class ToleranceSearch {
 public:
  ToleranceSearch(const PointSet& points, const FitOptions& options,
                  const std::vector<double>& parameters)
      : points_(points), asked_(options), options_(options), u_(parameters) {
    if (options.solver.method == Method::kAuto) options_.solver.method = Method::kBanded;
    options_.watcher = nullptr;  // the search tells of itself
    options_.solver.reporter = nullptr;
  }

  CurveFit run() {
    checkPoints();
    std::optional<CurveFit> fit;
    if (!options_.knotsAsked) {
      fit = grown();
      if (fit) {
        isFound_ = true;
        best_.reset();
        shrink(*fit);
      }
    }
    scan(fit);
    if (fit) return settled(std::move(*fit));
    if (!best_) throw lastFault_;
    best_->reached = false;
    return settled(std::move(*best_));
  }

 private:
  std::size_t degree() const { return static_cast<std::size_t>(options_.degree[0]); }

  // A seam takes as many conditions as the degree, a corner a knot of that multiplicity.
  std::size_t leastControls() const {
    return degree() + 1 + (options_.closed ? degree() : 0) + degree() * options_.corners.size();
  }

  void checkPoints() const {
    if (points_.count() >= leastControls()) return;
    const std::size_t corners = options_.corners.size();
    std::string with = corners ? cat(" with ", corners, corners == 1 ? " corner" : " corners") : "";
    throw Fault(kNoSolution,
                cat(points_.count(), " points are too few: a ", options_.closed ? "closed " : "",
                    "curve of degree ", degree(), with, " takes at least ", leastControls(),
                    " control points; use a lower --degree"));
  }

  // The fit on its knots by the solver that suits its size, if that keeps the tolerance as well.
  CurveFit settled(CurveFit fit) const {
    const Method method = methodFor(asked_.solver.method, points_.count(), fit.spline.size[0]);
    if (method == fit.method) return fit;
    try {
      CurveFit other = fitWithKnots(points_, asked_, u_, fit.spline.knots[0]);
      const std::vector<double> far = distances(other);
      if (fit.reached && *std::max_element(far.begin(), far.end()) > options_.tolerance) return fit;
      other.adapted = fit.adapted;
      other.reached = fit.reached;
      return other;
    } catch (const Fault&) {
      return fit;
    }
  }

  // Distance of every point; the global search runs only for points that seem too far away. Where a
  // fit has been found, the first point that is too far away ends the search.
  std::vector<double> distances(const CurveFit& fit) const {
    std::vector<double> out = fit.distances;
    const CurveProjector projector(fit.spline);
    const auto isFar = [&](std::size_t i) {
      if (out[i] > options_.tolerance) {
        out[i] = projector.nearest(points_[i], fit.parameters[i]).distance;
      }
      return out[i] > options_.tolerance;
    };
    const auto worst = std::max_element(out.begin(), out.end());
    if (isFar(static_cast<std::size_t>(worst - out.begin())) && isFound_) return out;
    for (std::size_t i = 0; i < out.size(); ++i) {
      if (isFar(i) && isFound_) break;
    }
    return out;
  }

  // Fits; keeps the best of all attempts for the case that none will do.
  std::optional<Trial> attempt(const std::vector<double>& knots) {
    if (asked_.watcher) asked_.watcher->tell(cat("searching: ", ++attempts_, " fits"));
    try {
      Trial trial{fitWithKnots(points_, options_, u_, knots), {}, 0};
      trial.far = distances(trial.fit);
      trial.most = *std::max_element(trial.far.begin(), trial.far.end());
      if (!isFound_ && trial.most < bestDistance_) {
        bestDistance_ = trial.most;
        best_ = trial.fit;
      }
      return trial;
    } catch (const Fault& fault) {
      if (fault.code() != kNoSolution) throw;
      lastFault_ = fault;
      return std::nullopt;
    }
  }

  bool isWithin(const Trial& trial) const { return trial.most <= options_.tolerance; }

  // A fit within the tolerance, or nothing.
  std::optional<CurveFit> fitting(const std::vector<double>& knots) {
    auto trial = attempt(knots);
    if (!trial || !isWithin(*trial)) return std::nullopt;
    return std::move(trial->fit);
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

  // The largest distance of the points from..to, ends included.
  double mostWithin(const std::vector<double>& far, double from, double to) const {
    const auto first = std::lower_bound(u_.begin(), u_.end(), from);
    const auto last = std::upper_bound(first, u_.end(), to);
    double most = 0;
    for (auto u = first; u != last; ++u) {
      most = std::max(most, far[static_cast<std::size_t>(u - u_.begin())]);
    }
    return most;
  }

  // Halves the spans of points that are too far away, worst first. @return whether any was.
  bool halveSpans(std::vector<double>& knots, const std::vector<double>& far) const {
    std::vector<std::pair<double, double>> wanted;  // distance, knot
    for (std::size_t k = degree(); k + degree() + 1 < knots.size(); ++k) {
      if (!(knots[k] < knots[k + 1])) continue;
      const double most = mostWithin(far, knots[k], knots[k + 1]);
      if (most <= options_.tolerance) continue;
      if (const auto knot = splitOf(knots[k], knots[k + 1])) wanted.emplace_back(most, *knot);
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
    std::vector<double> knots = knotsFor(options_, u_, leastControls());
    do {
      auto trial = attempt(knots);
      if (!trial) break;
      if (isWithin(*trial)) return std::move(trial->fit);
      if (!halveSpans(knots, trial->far)) break;
    } while (true);
    return fitting(knotsFor(options_, u_, points_.count()));
  }

  std::size_t mostFits() const { return std::max(kLeastFits, kMostSeen / points_.count()); }

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
    std::vector<Vec3> derivatives(degree() + 1);
    const auto highest = [&](double from, double to) {  // constant within a span
      shape.eval((from + to) / 2, options_.degree[0], derivatives[0].data());
      return derivatives.back();
    };
    for (std::size_t k = degree() + 1; k < s.size[0]; ++k) {
      if (isCorner(t[k])) continue;
      const double jump = norm(minus(highest(t[k - 1], t[k]), highest(t[k], t[k + 1])));
      const double reach = (t[k + 1] - t[k - 1]) / 2;
      order.emplace_back(jump * std::pow(reach, options_.degree[0]), t[k]);
    }
    std::sort(order.begin(), order.end());
    std::vector<double> knots;
    knots.reserve(order.size());
    for (const auto& [weight, knot] : order) knots.push_back(knot);
    return knots;
  }

  // Takes the knots out, if the tolerance allows. @return whether it does.
  bool takeOut(CurveFit& fit, const double* first, std::size_t count) {
    std::vector<double> fewer = fit.spline.knots[0];
    for (std::size_t k = 0; k < count; ++k) {
      fewer.erase(std::lower_bound(fewer.begin(), fewer.end(), first[k]));
    }
    auto next = fitting(fewer);
    if (!next) return false;
    fit = std::move(*next);
    fit.adapted = true;
    return true;
  }

  // Takes out the least knots, in groups that get smaller, as long as that goes.
  void shrinkInGroups(CurveFit& fit) {
    for (std::size_t group = fit.spline.size[0] / 4; group > 1;) {
      const std::vector<double> knots = removable(fit.spline);
      group = std::min({group, knots.size(), fit.spline.size[0] - leastControls()});
      if (group > 1 && !takeOut(fit, knots.data(), group)) group /= 2;
    }
  }

  void shrink(CurveFit& fit) {
    fit.adapted = true;
    if (points_.count() >= kManyPoints) shrinkInGroups(fit);
    std::size_t fits = 0;
    for (bool again = true; again;) {
      again = false;
      for (const double knot : removable(fit.spline)) {
        if (fit.spline.size[0] <= leastControls() || ++fits > mostFits()) return;
        if (takeOut(fit, &knot, 1)) again = true;
      }
    }
  }

  // Tries 4, 5, 6 ... control points, in growing steps where the data are many.
  void scan(std::optional<CurveFit>& fit) {
    const std::size_t singleSteps = points_.count() < kManyPoints ? 400 : 8;
    const std::size_t most = fit ? fit->spline.size[0] - 1 : points_.count();
    std::size_t failed = leastControls() - 1, fits = 0;
    for (std::size_t n = leastControls(); n <= most;) {
      if (fit && ++fits > mostFits()) return;
      if (auto next = fitting(knotsFor(options_, u_, n))) {
        fit = std::move(next);
        isFound_ = true;
        return fitBetween(failed + 1, n, *fit);
      }
      if (n == most) return;
      failed = n;
      n = n < singleSteps ? n + 1 : std::min(most, n + n / 8);
    }
  }

  // Halves the range of control points between one that failed and one that did.
  void fitBetween(std::size_t low, std::size_t high, CurveFit& fit) {
    while (low < high) {
      const std::size_t middle = low + (high - low) / 2;
      if (auto next = fitting(knotsFor(options_, u_, middle))) {
        fit = std::move(*next);
        high = middle;
      } else {
        low = middle + 1;
      }
    }
  }

  const PointSet& points_;
  const FitOptions& asked_;
  FitOptions options_;  // with the solver of the search
  const std::vector<double>& u_;
  bool isFound_ = false;  // a fit within the tolerance
  std::size_t attempts_ = 0;
  std::optional<CurveFit> best_;
  Fault lastFault_{kNoSolution, "no number of control points has a unique solution"};
  double bestDistance_ = std::numeric_limits<double>::infinity();
};

}  // namespace

CurveFit fitWithin(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters) {
  return ToleranceSearch(points, options, parameters).run();
}

}  // namespace knotfit
