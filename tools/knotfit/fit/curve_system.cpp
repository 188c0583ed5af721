// SPDX-License-Identifier: MIT
// The linear system of a curve fit.
#include "fit/curve_system.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace knotfit {
namespace {

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

}  // namespace

CurveSystem curveSystem(const PointSet& points, const FitOptions& options,
                        const std::vector<double>& parameters, const std::vector<double>& knots) {
  return CurveSystemBuilder(points, options, parameters, knots).build();
}

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

}  // namespace knotfit
