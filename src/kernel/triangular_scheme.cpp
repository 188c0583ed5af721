// SPDX-License-Identifier: MIT
// De Boor's triangle for each order, on the control points of the derivative of that order.
//
// With b the blossom of derivative q and x_i the i-th knot from the near end onwards, r steps leave
// b(t, ..., t, x_(i-m+q+r+1), ..., x_i) in row i. A step divides the leg between two rows as t
// divides the knots they do not share, reckoned from the nearer one; a difference divides the leg
// by the distance of these knots. Differences come first, while the distances are at their widest:
// so no digit is lost that the data do not lose. Control points that coincide give exactly that
// point, and derivatives 0. Read from the right end, the same steps are the mirrored scheme.
// Source: L. Ramshaw, Blossoming (1987); C. de Boor, A Practical Guide to Splines, ch. X.
#include "kernel/triangular_scheme.h"

#include <algorithm>
#include <cmath>

namespace knotwork::detail {

namespace {

// Spans without length have no ratios; 0 keeps the near control point.
double ratio(double numerator, double denominator) {
  return denominator != 0.0 ? numerator / denominator : 0.0;
}

// Share 0 is the point itself: adding 0 * (...) would lose signed zeros and meet infinities.
template <int kWidth>
void blend(double* out, const double* from, const double* to, double share, int width) {
  if (share == 0.0) {
    if (out != from) std::copy_n(from, width, out);
    return;
  }
  for (int c = 0; c < (kWidth ? kWidth : width); ++c) out[c] = from[c] + share * (to[c] - from[c]);
}

// A row of points: the control points themselves, or the rows of the work space.
struct Rows {
  const double* first;
  std::ptrdiff_t stride;
  const double* operator[](int i) const { return first + i * stride; }
};

// kWidth is the row width where it is known at compile time, else 0.
template <int kWidth>
class Scheme {
 public:
  Scheme(double* work, int width, int degree, const NearEnd& end, double t)
      : work_(work), width_(kWidth ? kWidth : width), m_(degree), end_(end), t_(t) {}

  // Derivative q <= degree; the first level reads the control points, the others work in place.
  void derivative(Rows points, int q, double* out) const {
    Rows rows = points;
    for (int level = 1; level <= m_; ++level) {
      level <= q ? differences(rows, level) : steps(rows, level);
      rows = {work_, width_};
    }
    std::copy_n(rows[0], width_, out);
  }

 private:
  double knot(int x) const { return end_.knot[end_.step * x]; }

  void differences(Rows rows, int level) const {
    double* x = work_;
    for (int i = 0; i <= m_ - level; ++i, x += width_) {
      const double factor = ratio(m_ - level + 1, knot(i + 1) - knot(i - m_ + level));
      const double* const a = rows[i];
      const double* const b = rows[i + 1];
      for (int c = 0; c < width_; ++c) x[c] = factor * (b[c] - a[c]);
    }
  }

  void steps(Rows rows, int level) const {
    double* x = work_;
    for (int i = 0; i <= m_ - level; ++i, x += width_) {
      const double low = knot(i - m_ + level), high = knot(i + 1);
      const double toLow = t_ - low, toHigh = high - t_;
      const bool nearLow = std::abs(toLow) <= std::abs(toHigh);
      const double share = ratio(nearLow ? toLow : toHigh, high - low);
      blend<kWidth>(x, rows[nearLow ? i : i + 1], rows[nearLow ? i + 1 : i], share, width_);
    }
  }

  double* work_;
  int width_;
  int m_;
  NearEnd end_;
  double t_;
};

template <int kWidth>
void run(Rows points, double* work, double* out, int width, int degree, int nderiv,
         const NearEnd& end, double t) {
  const Scheme<kWidth> scheme(work, width, degree, end, t);
  for (int q = 0; q <= std::min(nderiv, degree); ++q, out += width)
    scheme.derivative(points, q, out);
  if (nderiv > degree) {
    std::fill_n(out, static_cast<std::ptrdiff_t>(nderiv - degree) * width, 0.0);
  }
}

}  // namespace

void triangularScheme(const double* points, std::ptrdiff_t stride, double* work, double* out,
                      int width, int degree, int nderiv, const NearEnd& end, double t) {
  const Rows rows = end.step > 0 ? Rows{points, stride} : Rows{points + degree * stride, -stride};
  switch (width) {
    case 2:
      return run<2>(rows, work, out, width, degree, nderiv, end, t);
    case 3:
      return run<3>(rows, work, out, width, degree, nderiv, end, t);
    case 4:
      return run<4>(rows, work, out, width, degree, nderiv, end, t);
    default:
      return run<0>(rows, work, out, width, degree, nderiv, end, t);
  }
}

}  // namespace knotwork::detail
