// SPDX-License-Identifier: MIT
// The linear system of a curve fit.
//
// min |W (N x - p)|^2 + smooth |D x|^2 subject to C x = c: N holds the basis functions at the
// parameters, W the roots of the weights, D second differences. C stands last, as the solver wants
// it: the seam first, so that it copies a first point which is met itself (meetPlainRows).
#include "fit/curve_system.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "model/vec3.h"

namespace knotfit {
namespace {

bool repeatsFirst(const FitOptions& options, const std::vector<double>& u) {
  return options.closed && u.back() == 1.0;  // a closed sequence may come back to its first point
}

std::set<std::size_t> metPoints(const FitOptions& options, const std::vector<double>& u) {
  std::set<std::size_t> met(options.pass.begin(), options.pass.end());
  if (options.endsExact) met.insert({0, u.size() - 1});
  if (repeatsFirst(options, u) && met.erase(u.size() - 1)) met.insert(0);
  return met;
}

class CurveSystemBuilder {
 public:
  CurveSystemBuilder(const PointSet& points, const FitOptions& options,
                     const std::vector<double>& parameters, const std::vector<double>& knots)
      : points_(points),
        options_(options),
        u_(parameters),
        basis_(basisOf(knots, options.degree[0])),
        domain_{knots.front(), knots.back()} {
    out_.dim = points.dim;
    out_.matrix.unknowns = static_cast<std::size_t>(basis_.count());
  }

  CurveSystem build(bool keepData) {
    const DataRows data(points_, options_, u_, basis_);
    if (keepData) {
      data.visit([&](const SparseRow& row, const double* point, double factor) {
        add(row, point, factor);
      });
    } else {
      out_.data.emplace(data);
    }
    addSmoothing(out_.matrix, basis_, options_.smooth);
    out_.rhs.resize(out_.matrix.rows.size() * static_cast<std::size_t>(out_.dim), 0.0);
    const std::size_t free = out_.matrix.rows.size();
    if (options_.closed) addSeam();
    for (const std::size_t i : data.met()) add(SparseRow(basis_, u_[i]), points_[i], 1.0);
    for (const Tangent& t : options_.tangents) addTangent(t);
    out_.matrix.constraints = out_.matrix.rows.size() - free;
    return std::move(out_);
  }

 private:
  // A row and its datum, null standing for zeros.
  void add(SparseRow row, const double* datum, double factor) {
    out_.matrix.add(std::move(row), factor);
    for (int c = 0; c < out_.dim; ++c) out_.rhs.push_back(datum ? factor * datum[c] : 0.0);
  }

  // A row of derivatives, whose size goes with the knots: brought to that of the other rows.
  void addLevel(SparseRow row) {
    const double scale = 1.0 / row.largest();
    add(std::move(row), nullptr, scale);
  }

  // Value and derivatives below the degree are the same at both ends.
  void addSeam() {
    for (int order = 0; order < basis_.degree(); ++order) {
      SparseRow row(basis_, domain_[0], order);
      row.append(SparseRow(basis_, domain_[1], order), -1.0);
      addLevel(std::move(row));
    }
  }

  // Without a length the tangent's row asks for a derivative of zero; addTangents adds the rest.
  void addTangent(const Tangent& tangent) {
    out_.tangentRows.push_back(out_.matrix.rows.size());
    addLevel(SparseRow(basis_, u_[tangent.point], 1));
  }

  const PointSet& points_;
  const FitOptions& options_;
  const std::vector<double>& u_;
  knotwork::BsplineBasis basis_;
  std::array<double, 2> domain_;
  CurveSystem out_;
};

// The control points that a row speaks of when it says "this one is the datum" (`minus` is then the
// same) or "these two are equal"; nothing for any other row.
struct PlainRow {
  std::size_t plus, minus;
};

std::optional<PlainRow> plainRow(const SparseRow& row) {
  std::vector<std::size_t> plus, minus;
  for (std::size_t e = 0; e < row.values.size(); ++e) {
    const double value = row.values[e];
    if (value != 0.0 && std::abs(value) != 1.0) return std::nullopt;
    if (value == 1.0) plus.push_back(row.columns[e]);
    if (value == -1.0) minus.push_back(row.columns[e]);
  }
  if (plus.size() != 1 || minus.size() > 1) return std::nullopt;
  return PlainRow{plus[0], minus.empty() ? plus[0] : minus[0]};
}

bool isTangent(const CurveSystem& c, std::size_t row) {
  return std::count(c.tangentRows.begin(), c.tangentRows.end(), row) > 0;
}

}  // namespace

DataRows::DataRows(const PointSet& points, const FitOptions& options,
                   const std::vector<double>& parameters, const knotwork::BsplineBasis& basis)
    : points_(points),
      u_(parameters),
      watcher_(options.watcher),
      basis_(basis),
      met_(metPoints(options, parameters)),
      count_(points.count() - (repeatsFirst(options, parameters) ? 1 : 0)) {}

std::size_t DataRows::rows() const {
  std::size_t count = 0;
  for (std::size_t i = 0; i < count_; ++i) {
    count += !met_.count(i) && (points_.weights.empty() || points_.weights[i] != 0);
  }
  return count;
}

CurveSystem curveSystem(const PointSet& points, const FitOptions& options,
                        const std::vector<double>& parameters, const std::vector<double>& knots,
                        bool keepData) {
  return CurveSystemBuilder(points, options, parameters, knots).build(keepData);
}

CurveSolution solvedDense(const CurveSystem& system, const SolverOptions& options) {
  const FactoredSystem factored(system.matrix, options);
  CurveSolution solution;
  solution.controls = factored.solve(system.rhs, system.dim);
  const std::size_t k = system.tangentRows.size();
  if (k == 0) return solution;
  std::vector<double> unit(system.matrix.rows.size() * k, 0.0);
  for (std::size_t t = 0; t < k; ++t) unit[system.tangentRows[t] * k + t] = 1.0;
  solution.shapes = factored.solve(unit, static_cast<int>(k));
  return solution;
}

void meetPlainRows(const CurveSystem& system, std::vector<double>& x) {
  const auto dim = static_cast<std::size_t>(system.dim);
  const std::vector<SparseRow>& rows = system.matrix.rows;
  // The seam's rows stand first: backwards, the first point has its datum when the seam copies it.
  for (std::size_t k = 0; k < system.matrix.constraints; ++k) {
    const std::size_t i = rows.size() - 1 - k;
    if (isTangent(system, i)) continue;  // at a clamped end it looks plain, but has a length to add
    const auto plain = plainRow(rows[i]);
    if (!plain) continue;
    for (std::size_t c = 0; c < dim; ++c) {
      if (plain->minus != plain->plus) {
        x[dim * plain->minus + c] = x[dim * plain->plus + c];
      } else {
        x[dim * plain->plus + c] = system.rhs[dim * i + c];
      }
    }
  }
}

double largestMiss(const CurveSystem& c, const std::vector<double>& x) {
  const std::vector<double> r = c.matrix.residual(c.rhs, x, c.dim);
  const std::size_t rows = c.matrix.rows.size();
  double most = 0;
  for (std::size_t i = rows - c.matrix.constraints; i < rows; ++i) {
    if (isTangent(c, i)) continue;
    most = std::max(most, norm(vec3(&r[i * static_cast<std::size_t>(c.dim)], c.dim)));
  }
  return most;
}

}  // namespace knotfit
