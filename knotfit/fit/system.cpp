// SPDX-License-Identifier: MIT
// The least-squares system of a fit.
//
// Rows are kept sparse until the solver wants them dense: degree + 1 numbers each, so that
// residuals and smoothing cost what the data weigh and not the size of the matrix.
#include "fit/system.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "base/text.h"
#include "model/convert.h"

namespace knotfit {
namespace {

// The first control point that finds no datum of its own, or their number.
std::size_t firstUndetermined(const std::vector<double>& t, int degree,
                              const std::vector<double>& u) {
  return static_cast<std::size_t>(basisOf(t, degree).firstUndetermined(vecOf(u)));
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

knotwork::BsplineBasis basisOf(const std::vector<double>& knots, int degree) {
  return knotwork::BsplineBasis(degree, vecOf(knots));
}

SparseRow::SparseRow(const knotwork::BsplineBasis& basis, double u, int order) {
  assign(basis, u, order);
}

void SparseRow::assign(const knotwork::BsplineBasis& basis, double u, int order) {
  values.resize(static_cast<std::size_t>(basis.degree()) + 1);
  columns.resize(values.size());
  const auto first = static_cast<std::size_t>(basis.row(u, order, values.data()));
  for (std::size_t k = 0; k < values.size(); ++k) columns[k] = first + k;
}

void SparseRow::append(const SparseRow& row, double factor) {
  columns.insert(columns.end(), row.columns.begin(), row.columns.end());
  for (const double v : row.values) values.push_back(factor * v);
}

double SparseRow::largest() const {
  double most = 0;
  for (const double v : values) most = std::max(most, std::abs(v));
  return most;
}

void RowMatrix::add(SparseRow row, double factor) {
  for (double& v : row.values) v *= factor;
  rows.push_back(std::move(row));
}

std::vector<double> RowMatrix::residual(const std::vector<double>& b, const std::vector<double>& x,
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

void addSmoothing(RowMatrix& matrix, const knotwork::BsplineBasis& basis, double weight) {
  const std::size_t n = matrix.unknowns;
  if (weight <= 0 || n < 3) return;
  const DoubleVec place = basis.greville(), knots = basis.knots();
  const auto at = [](const DoubleVec& v, std::size_t i) { return v(static_cast<int>(i)); };
  const double h = (at(knots, knots.length() - 1) - at(knots, 0)) / static_cast<double>(n - 1);
  for (std::size_t i = 0; i + 2 < n; ++i) {
    const double a = at(place, i), b = at(place, i + 1), c = at(place, i + 2);
    if (!(a < b && b < c)) continue;  // a corner: no course to keep
    SparseRow row;
    row.columns = {i, i + 1, i + 2};
    row.values = {2 * h * h / ((b - a) * (c - a)), -2 * h * h / ((b - a) * (c - b)),
                  2 * h * h / ((c - b) * (c - a))};
    matrix.add(std::move(row), std::sqrt(weight));
  }
}

bool isDetermined(const std::vector<double>& knots, int degree,
                  const std::vector<double>& determined) {
  const knotwork::BsplineBasis basis = basisOf(knots, degree);
  return basis.firstUndetermined(vecOf(determined)) == basis.count();
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
