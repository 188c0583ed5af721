// SPDX-License-Identifier: MIT
// The least-squares system of a fit.
#include "fit/system.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

// Assigns each control point, from the first on, the first free parameter behind its first knot.
// @return the first control point without one before its last knot, or their number.
std::size_t firstUndetermined(const std::vector<double>& t, int degree,
                              const std::vector<double>& u) {
  const std::size_t order = static_cast<std::size_t>(degree) + 1, n = t.size() - order;
  std::size_t next = 0;
  for (std::size_t j = 0; j < n; ++j, ++next) {
    while (next < u.size() && !(u[next] > t[j] || (j == 0 && u[next] == t[0]))) ++next;
    const bool within =
        next < u.size() && (u[next] < t[j + order] || (j + 1 == n && u[next] == t[j + order]));
    if (!within) return j;
  }
  return n;
}

// Control points whose basis functions live on [from, to] alone.
std::pair<std::size_t, std::size_t> controlsWithin(const std::vector<double>& t, std::size_t order,
                                                   double from, double to) {
  std::size_t first = t.size(), last = 0;
  for (std::size_t j = 0; j + order < t.size(); ++j) {
    if (t[j] < from || t[j + order] > to) continue;
    first = std::min(first, j);
    last = j;
  }
  return {first, last};
}

// Data within the knots, those at an end of the domain included.
std::size_t dataBetween(const std::vector<double>& t, const std::vector<double>& u, double from,
                        double to) {
  const auto first = from == t.front() ? u.begin() : std::upper_bound(u.begin(), u.end(), from);
  const auto last = to == t.back() ? u.end() : std::lower_bound(u.begin(), u.end(), to);
  return last > first ? static_cast<std::size_t>(last - first) : 0;
}

}  // namespace

SparseRow::SparseRow(const BasisRow& row, double factor) { append(row, factor); }

void SparseRow::append(const BasisRow& row, double factor) {
  for (std::size_t k = 0; k < row.values.size(); ++k) {
    columns.push_back(row.first + k);
    values.push_back(factor * row.values[k]);
  }
}

double SparseRow::largest() const {
  double most = 0;
  for (const double v : values) most = std::max(most, std::abs(v));
  return most;
}

void FitSystem::add(SparseRow row, const double* datum, double factor) {
  for (double& v : row.values) v *= factor;
  rows.push_back(std::move(row));
  for (int c = 0; c < dim; ++c) rhs.push_back(datum ? factor * datum[c] : 0.0);
}

std::vector<double> FitSystem::residual(const std::vector<double>& b, const std::vector<double>& x,
                                        int components) const {
  const auto width = static_cast<std::size_t>(components);
  std::vector<double> r = b;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t k = 0; k < rows[i].columns.size(); ++k) {
      const double* point = x.data() + width * rows[i].columns[k];
      for (std::size_t c = 0; c < width; ++c) r[width * i + c] -= rows[i].values[k] * point[c];
    }
  }
  return r;
}

void addSmoothing(FitSystem& system, const std::vector<double>& knots, int degree, double weight) {
  const std::size_t n = knots.size() - static_cast<std::size_t>(degree) - 1;
  if (weight <= 0 || n < 3) return;
  const double h = (knots.back() - knots.front()) / static_cast<double>(n - 1);
  for (std::size_t i = 0; i + 2 < n; ++i) {
    const double a = greville(knots, degree, i), b = greville(knots, degree, i + 1),
                 c = greville(knots, degree, i + 2);
    if (!(a < b && b < c)) continue;  // a corner: no course to keep
    SparseRow row;
    row.columns = {i, i + 1, i + 2};
    row.values = {2 * h * h / ((b - a) * (c - a)), -2 * h * h / ((b - a) * (c - b)),
                  2 * h * h / ((c - b) * (c - a))};
    system.add(std::move(row), nullptr, std::sqrt(weight));
  }
}

bool isDetermined(const std::vector<double>& knots, int degree,
                  const std::vector<double>& determined) {
  return firstUndetermined(knots, degree, determined) + static_cast<std::size_t>(degree) + 1 ==
         knots.size();
}

void checkDetermined(const std::vector<double>& t, int degree, const std::vector<double>& u) {
  const std::size_t order = static_cast<std::size_t>(degree) + 1, n = t.size() - order;
  const std::size_t bad = firstUndetermined(t, degree, u);
  if (bad == n) return;
  // The shortest run of knots up to the end of the bad function that holds too few data.
  double to = t[bad + order];
  double from = t[bad];
  std::pair<std::size_t, std::size_t> range = controlsWithin(t, order, from, to);
  std::size_t data = dataBetween(t, u, from, to);
  for (std::size_t j = bad; j > 0 && data >= range.second - range.first + 1;) {
    from = t[--j];
    range = controlsWithin(t, order, from, to);
    data = dataBetween(t, u, from, to);
  }
  for (std::size_t k = bad + order + 1; data == 0 && k < t.size(); ++k) {  // the whole of a gap
    if (dataBetween(t, u, from, t[k]) > 0) break;
    to = t[k];
  }
  range = controlsWithin(t, order, from, to);
  const std::string amount =
      data == 0 ? "no data" : cat("only ", data, data == 1 ? " datum" : " data");
  const std::string points =
      range.first == range.second
          ? cat("control point ", range.first + 1, " is")
          : cat("control points ", range.first + 1, " to ", range.second + 1, " are");
  throw Fault(kNoSolution,
              cat(amount, " between knots ", significant(from, 4), " and ", significant(to, 4),
                  ": ", points, " undetermined; fewer --controls or --knots average"));
}

}  // namespace knotfit
