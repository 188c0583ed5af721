// SPDX-License-Identifier: MIT
// Fits of curves: the rows of the system, its solution, re-projection of the parameters.
#include "fit/curve_fit.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "base/fault.h"
#include "base/text.h"
#include "fit/nearest.h"

namespace knotfit {
namespace {

// The system of one curve fit and the tangents whose lengths are still open.
struct CurveSystem {
  FitSystem system;
  std::vector<std::size_t> tangentRows;
};

class CurveSystemBuilder {
 public:
  CurveSystemBuilder(const PointSet& points, const FitOptions& options,
                     const std::vector<double>& parameters, const std::vector<double>& knots)
      : points_(points), options_(options), u_(parameters), knots_(knots), p_(options.degree[0]) {
    out_.system.dim = points.dim;
    out_.system.unknowns = knots.size() - static_cast<std::size_t>(p_) - 1;
  }

  CurveSystem build() {
    const std::set<std::size_t> met = metPoints();
    const std::size_t last = points_.count() - (repeatsFirst() ? 1 : 0);
    for (std::size_t i = 0; i < last; ++i) {
      const double weight = points_.weights.empty() ? 1.0 : points_.weights[i];
      if (met.count(i) || weight == 0) continue;
      out_.system.add(SparseRow(rowAt(i)), points_[i], std::sqrt(weight));
    }
    addSmoothing(out_.system, knots_, p_, options_.smooth);
    const std::size_t free = out_.system.rows.size();
    if (options_.closed) addSeam();
    for (const std::size_t i : met) out_.system.add(SparseRow(rowAt(i)), points_[i]);
    for (const Tangent& t : options_.tangents) addTangent(t);
    out_.system.constraints = out_.system.rows.size() - free;
    return std::move(out_);
  }

 private:
  BasisRow rowAt(std::size_t i, int order = 0) const { return basisRow(knots_, p_, u_[i], order); }

  bool repeatsFirst() const {  // a closed sequence may come back to its first point
    return options_.closed && u_.back() == 1.0;
  }

  std::set<std::size_t> metPoints() const {
    std::set<std::size_t> met(options_.pass.begin(), options_.pass.end());
    if (options_.endsExact) met.insert({0, points_.count() - 1});
    if (repeatsFirst() && met.erase(points_.count() - 1)) met.insert(0);
    return met;
  }

  void addSeam() {
    for (int order = 0; order < p_; ++order) {
      SparseRow row(basisRow(knots_, p_, knots_.front(), order));
      row.append(basisRow(knots_, p_, knots_.back(), order), -1.0);
      const double scale = 1.0 / row.largest();
      out_.system.add(std::move(row), nullptr, scale);
    }
  }

  void addTangent(const Tangent& tangent) {
    SparseRow row(rowAt(tangent.point, 1));
    out_.tangentRows.push_back(out_.system.rows.size());
    const double scale = 1.0 / row.largest();
    out_.system.add(std::move(row), nullptr, scale);
  }

  const PointSet& points_;
  const FitOptions& options_;
  const std::vector<double>& u_;
  const std::vector<double>& knots_;
  int p_;
  CurveSystem out_;
};

// What the solver met to rounding is met to the bit where that is plain: a constraint on one
// control point alone gives it its datum, one that two control points be equal makes them so.
void meetPlainRows(const FitSystem& system, std::vector<double>& x) {
  const auto dim = static_cast<std::size_t>(system.dim);
  for (std::size_t k = 0; k < system.constraints;
       ++k) {  // the seam's rows stand first: go backwards
    const std::size_t i = system.rows.size() - 1 - k;
    const SparseRow& row = system.rows[i];
    std::vector<std::size_t> plus, minus;
    bool plain = true;
    for (std::size_t e = 0; e < row.values.size(); ++e) {
      if (row.values[e] == 1.0)
        plus.push_back(row.columns[e]);
      else if (row.values[e] == -1.0)
        minus.push_back(row.columns[e]);
      else
        plain = plain && row.values[e] == 0.0;
    }
    if (!plain || plus.size() != 1 || minus.size() > 1) continue;
    for (std::size_t c = 0; c < dim; ++c) {
      if (minus.empty())
        x[dim * plus[0] + c] = system.rhs[dim * i + c];
      else
        x[dim * minus[0] + c] = x[dim * plus[0] + c];
    }
  }
}

// The open lengths of the tangents: the solution is linear in them, so those of least squares come
// from the normal equations of the solutions with one tangent of length 1 and no data.
class TangentLengths {
 public:
  TangentLengths(const CurveSystem& c, const FactoredSystem& factored, const FitOptions& options)
      : system_(c.system), options_(options), dim_(static_cast<std::size_t>(c.system.dim)) {
    const std::size_t k = c.tangentRows.size();
    std::vector<double> unit(system_.rows.size() * k, 0.0);
    for (std::size_t t = 0; t < k; ++t) unit[c.tangentRows[t] * k + t] = 1.0;
    shapes_ = factored.solve(unit, static_cast<int>(k));
    images_ = system_.residual(std::vector<double>(unit.size(), 0.0), shapes_, static_cast<int>(k));
    for (double& v : images_) v = -v;
    for (const Tangent& t : options.tangents) directions_.push_back(unitDirection(t));
  }

  void addTo(std::vector<double>& x) const {
    const std::size_t k = directions_.size();
    const DoubleVec lengths = solveLengths(system_.residual(system_.rhs, x, system_.dim));
    for (std::size_t t = 0; t < k; ++t) {
      const double length = lengths(static_cast<int>(t));
      if (!(length > 0)) {
        throw Fault(kNoSolution, cat("the tangent at point ", options_.tangents[t].point + 1,
                                     " points against the data; reverse its sign"));
      }
      for (std::size_t j = 0; j < system_.unknowns; ++j) {
        for (std::size_t c = 0; c < dim_; ++c) {
          x[j * dim_ + c] += length * shapes_[j * k + t] * directions_[t][c];
        }
      }
    }
  }

 private:
  std::array<double, 3> unitDirection(const Tangent& t) const {
    std::array<double, 3> d = t.direction;
    double sum = 0;
    for (std::size_t c = 0; c < dim_; ++c) sum += d[c] * d[c];
    for (double& v : d) v /= std::sqrt(sum);
    return d;
  }

  DoubleVec solveLengths(const std::vector<double>& residual) const {
    const std::size_t k = directions_.size(), free = system_.rows.size() - system_.constraints;
    const auto size = static_cast<unsigned>(k);
    DoubleGenMat normal(size, size, 0.0);
    DoubleVec right(size, 0.0);
    for (std::size_t s = 0; s < k; ++s) {
      for (std::size_t i = 0; i < free; ++i) {
        const double image = images_[i * k + s];
        for (std::size_t c = 0; c < dim_; ++c) {
          right(static_cast<int>(s)) += image * directions_[s][c] * residual[i * dim_ + c];
        }
        for (std::size_t t = 0; t < k; ++t) {
          double cosine = 0;
          for (std::size_t c = 0; c < dim_; ++c) cosine += directions_[s][c] * directions_[t][c];
          normal(static_cast<int>(s), static_cast<int>(t)) += image * images_[i * k + t] * cosine;
        }
      }
    }
    TsolveConstrainedLsqQR solver(1e-14, false);
    DoubleVec lengths(size, 0.0);
    if (solver.setMatrix(normal, 0, false, false, false) != 0 ||
        solver.solve(right, &lengths, false) != 0) {
      throw Fault(kNoSolution, "the tangents have no unique lengths; ask for fewer of them");
    }
    return lengths;
  }

  const FitSystem& system_;
  const FitOptions& options_;
  std::size_t dim_;
  std::vector<double> shapes_, images_;
  std::vector<std::array<double, 3>> directions_;
};

double largestMiss(const CurveSystem& c, const std::vector<double>& x) {
  const std::vector<double> r = c.system.residual(c.system.rhs, x, c.system.dim);
  const auto dim = static_cast<std::size_t>(c.system.dim);
  double most = 0;
  for (std::size_t i = c.system.rows.size() - c.system.constraints; i < c.system.rows.size(); ++i) {
    if (std::count(c.tangentRows.begin(), c.tangentRows.end(), i)) continue;
    double sum = 0;
    for (std::size_t k = 0; k < dim; ++k) sum += r[dim * i + k] * r[dim * i + k];
    most = std::max(most, std::sqrt(sum));
  }
  return most;
}

void checkControls(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters, const std::vector<double>& knots) {
  if (options.smooth > 0 || options.closed) return;
  std::vector<double> all;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (points.weights.empty() || points.weights[i] > 0) all.push_back(parameters[i]);
  }
  for (const Tangent& t : options.tangents) all.push_back(parameters[t.point]);
  std::sort(all.begin(), all.end());
  checkDetermined(knots, options.degree[0], all);
}

CurveFit fitOnce(const PointSet& points, const FitOptions& options,
                 const std::vector<double>& parameters, const std::vector<double>& knots) {
  checkControls(points, options, parameters, knots);
  const CurveSystem c = CurveSystemBuilder(points, options, parameters, knots).build();
  const FactoredSystem factored(c.system, options.solver);
  CurveFit fit;
  Spline& s = fit.spline;
  s.dim = points.dim;
  s.degree = {options.degree[0], 0};
  s.knots[0] = knots;
  s.size = {c.system.unknowns, 1};
  s.closed = options.closed;
  s.units = options.units;
  s.controls = factored.solve(c.system.rhs, points.dim);
  if (!options.tangents.empty()) TangentLengths(c, factored, options).addTo(s.controls);
  if (options.solver.method == Method::kHouseholder) meetPlainRows(c.system, s.controls);
  fit.parameters = parameters;
  fit.rows = c.system.rows.size();
  fit.constraints = c.system.constraints;
  fit.miss = largestMiss(c, s.controls);
  return fit;
}

// Moves every inner parameter to the foot of its point, as far as its neighbours leave room.
std::vector<double> reprojected(const CurveFit& fit, const PointSet& points) {
  const CurveProjector projector(fit.spline);
  std::vector<double> u = fit.parameters;
  for (std::size_t i = 1; i + 1 < u.size(); ++i) {
    const double foot = projector.downhill(points[i], u[i], u[i - 1], fit.parameters[i + 1]).u;
    if (foot > u[i - 1] && foot < fit.parameters[i + 1]) u[i] = foot;
  }
  return u;
}

}  // namespace

std::size_t controlCount(std::size_t asked, int degree, std::size_t points, bool smoothed,
                         const char* what) {
  const auto least = static_cast<std::size_t>(degree) + 1;
  const std::size_t n = asked ? asked : std::min(points, std::max(least, points / 4));
  if (asked && asked < least) {
    throw Fault(kUsage, cat("degree ", degree, " takes at least ", least, " control points; use ",
                            "--controls ", least, " or a lower --degree"));
  }
  if (points < 2 || (points < least && !(smoothed && asked))) {
    throw Fault(kNoSolution, cat("degree ", degree, " needs at least ", least, " data points, the ",
                                 what, " has ", points, "; use a lower --degree"));
  }
  if (n > points && !smoothed) {
    throw Fault(kNoSolution, cat(n, " control points need at least ", n, " data points, the ", what,
                                 " has ", points, "; use --controls ", points, " or fewer"));
  }
  return n;
}

std::vector<double> knotsFor(const FitOptions& options, const std::vector<double>& parameters,
                             std::size_t n) {
  if (options.knots == KnotChoice::kGiven) return options.knotValues;
  if (options.knots == KnotChoice::kUniform || n > parameters.size()) {
    return uniformKnots(options.degree[0], n);
  }
  std::vector<double> u = parameters;
  if (options.closed && u.back() < 1.0) u.push_back(1.0);
  return averagedKnots(u, options.degree[0], n, options.corners);
}

CurveFit fitWithKnots(const PointSet& points, const FitOptions& options,
                      const std::vector<double>& parameters, const std::vector<double>& knots) {
  CurveFit fit = fitOnce(points, options, parameters, knots);
  double rms = summaryOf(distancesAt(fit.spline, points, fit.parameters)).rms;
  for (int k = 0; k < options.refine; ++k) {
    try {
      CurveFit next = fitOnce(points, options, reprojected(fit, points), knots);
      const double nextRms = summaryOf(distancesAt(next.spline, points, next.parameters)).rms;
      if (!(nextRms < rms)) break;
      fit = std::move(next);
      rms = nextRms;
    } catch (const Fault&) {
      break;  // the moved parameters leave a control point undetermined: keep the fit before
    }
  }
  return fit;
}

CurveFit fitCurve(const PointSet& points, const FitOptions& options) {
  const std::vector<double> u = options.parameters.empty()
                                    ? parametersOf(points, options.spacing, options.closed)
                                    : options.parameters;
  CurveFit fit;
  if (options.tolerance > 0) {
    fit = fitWithin(points, options, u);
  } else {
    const std::size_t n =
        options.knots == KnotChoice::kGiven
            ? options.knotValues.size() - static_cast<std::size_t>(options.degree[0]) - 1
            : options.controls[0];
    const std::size_t count =
        controlCount(n, options.degree[0], points.count(), options.smooth > 0, "file");
    fit = fitWithKnots(points, options, u, knotsFor(options, u, count));
  }
  fit.condition = conditionOf(
      CurveSystemBuilder(points, options, fit.parameters, fit.spline.knots[0]).build().system);
  return fit;
}

std::vector<double> distancesAt(const Spline& spline, const PointSet& points,
                                const std::vector<double>& parameters) {
  const CurveShape shape(spline);
  std::vector<double> out;
  for (std::size_t i = 0; i < points.count(); ++i) {
    const std::array<double, 3> at = shape.point(parameters[i]);
    double sum = 0;
    for (int c = 0; c < points.dim; ++c) {
      const double d = at[static_cast<std::size_t>(c)] - points[i][c];
      sum += d * d;
    }
    out.push_back(std::sqrt(sum));
  }
  return out;
}

std::vector<double> nearestDistances(const Spline& spline, const PointSet& points,
                                     const std::vector<double>& parameters) {
  const CurveProjector projector(spline);
  std::vector<double> out;
  for (std::size_t i = 0; i < points.count(); ++i) {
    out.push_back(projector.nearest(points[i], parameters[i]).distance);
  }
  return out;
}

}  // namespace knotfit
