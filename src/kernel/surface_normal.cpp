// SPDX-License-Identifier: MIT
// Surface normals, poles included: where a partial vanishes on a border, the first term of the
// expansion of Su x Sv into the domain that does not vanish gives the limit.
#include <algorithm>
#include <cmath>
#include <limits>

#include "kernel/span_search.h"
#include "kernel/storage.h"
#include "knotwork/kernel/surface.h"

using namespace knotwork::detail;
using knotwork::KnotRecord;

namespace {

// A partial below this share of what the control net's legs could give is rounding; so is the sine
// of an angle between two partials.
constexpr double kNoise = 256 * std::numeric_limits<double>::epsilon();

struct Vec3 {
  double x = 0.0, y = 0.0, z = 0.0;
};

Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double size(const Vec3& a) { return std::hypot(a.x, a.y, a.z); }

Vec3 scaled(const Vec3& a, double factor) { return {a.x * factor, a.y * factor, a.z * factor}; }

Vec3 sum(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }

// Which border of the domain t lies on, or too near to for a partial that vanishes there to be
// seen: -1 the lower one, 1 the upper one, 0 none.
int border(const KnotRecord& knots, double t) {
  if (knots.degree() == 0) return 0;
  const int j = knots.span(t);
  const double near = kNoise * (knots(j + 1) - knots(j));
  if (t <= knots(0) + near) return -1;
  return t >= knots(knots.spans()) - near ? 1 : 0;
}

// How fast derivatives of one direction may grow per order: degree over span.
double growth(const KnotRecord& knots, double t) {
  if (knots.degree() == 0) return 0.0;
  const int j = knots.span(t);
  return knots.degree() / (knots(j + 1) - knots(j));
}

// The longest leg of the control net at (u, v) in one direction. A change of weight counts as what
// it moves the surface point by.
// @param point  the surface point there, and its weight.
double longestLeg(const AP_SURFACE& s, double u, double v, bool alongV, const double* point) {
  const int row = s.vKnots().span(v), column = s.uKnots().span(u);
  const int rows = s.vDegree() + !alongV, columns = s.uDegree() + alongV;
  const bool rational = s.Coords() > 3;
  const double far = std::max({std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
  double longest = 0.0;
  for (int i = row; i < row + rows; ++i) {
    for (int j = column; j < column + columns; ++j) {
      const double *const p = s.index(i, j), *const next = s.index(i + alongV, j + !alongV);
      for (int c = 0; c < 3; ++c) longest = std::max(longest, std::abs(next[c] - p[c]));
      if (rational) longest = std::max(longest, far * std::abs(next[3] - p[3]));
    }
  }
  return rational ? longest / std::abs(point[3]) : longest;
}

// The partials at one point in units of the longest leg of their direction, so that no direction's
// range and noise depend on the other's; those that are rounding alone are zero.
class Partials {
 public:
  Partials(const AP_SURFACE& s, double u, double v, int order, double* work)
      : values_(work),
        coords_(s.Coords()),
        order_(order),
        uGrowth_(growth(s.uKnots(), u)),
        vGrowth_(growth(s.vKnots(), v)) {
    s.eval(work, u, v, order);
    uLeg_ = longestLeg(s, u, v, false, work);
    vLeg_ = longestLeg(s, u, v, true, work);
  }

  /// The partial of order (i, j) of Su.
  Vec3 su(int i, int j) const { return value(i + 1, j, uLeg_); }
  /// The partial of order (i, j) of Sv.
  Vec3 sv(int i, int j) const { return value(i, j + 1, vLeg_); }

 private:
  Vec3 value(int i, int j, double leg) const {
    const double* const p = values_ + (static_cast<std::ptrdiff_t>(order_ + 1) * j + i) * coords_;
    const Vec3 v{p[0] / leg, p[1] / leg, p[2] / leg};
    return size(v) > kNoise * std::pow(uGrowth_, i) * std::pow(vGrowth_, j) ? v : Vec3{};
  }

  const double* values_;
  int coords_;
  int order_;
  double uGrowth_, vGrowth_;
  double uLeg_, vLeg_;
};

// Su x Sv at unit length; zero if one is zero or they are parallel.
Vec3 unitCross(const Vec3& su, const Vec3& sv) {
  const double uSize = size(su), vSize = size(sv);
  if (!(uSize > 0.0) || !(vSize > 0.0)) return {};
  const Vec3 n = cross(scaled(su, 1.0 / uSize), scaled(sv, 1.0 / vSize));
  const double sine = size(n);
  return sine > kNoise ? scaled(n, 1.0 / sine) : Vec3{};
}

// The limit of the unit normal for h -> 0 from inside, h being the way from a border into v (or u):
// Su x Sv = sum over q of h^q c_q, c_q = sum over a + b = q of (D^a Su / a!) x (D^b Sv / b!).
Vec3 limit(const Partials& s, bool alongV, int side, int orders) {
  for (int q = 1; q < orders; ++q) {
    Vec3 c;
    double reach = 0.0;
    double binomial = 1.0;  // q! / (a! b!); the common factor q! changes no direction
    for (int a = 0; a <= q; binomial = binomial * (q - a) / (a + 1), ++a) {
      const int b = q - a;
      const Vec3 su = alongV ? s.su(0, a) : s.su(a, 0);
      const Vec3 sv = alongV ? s.sv(0, b) : s.sv(b, 0);
      c = sum(c, scaled(cross(su, sv), binomial));
      reach += binomial * size(su) * size(sv);
    }
    const double length = size(c);
    if (length > kNoise * reach) return scaled(c, (side > 0 && q % 2 ? -1.0 : 1.0) / length);
  }
  return {};
}

Vec3 poleNormal(const AP_SURFACE& s, double u, double v) {
  const int orders = std::max({s.uDegree(), s.vDegree(), 1}) + 1;
  const auto work = tryArray<double>(s.workspace(orders));
  if (!work) return {};
  const Partials partials(s, u, v, orders, work.get());
  Vec3 n;
  const int vSide = border(s.vKnots(), v), uSide = border(s.uKnots(), u);
  if (vSide) n = limit(partials, true, vSide, orders);
  if (uSide && size(n) == 0.0) n = limit(partials, false, uSide, orders);
  return n;
}

Vec3 normalAt(const AP_SURFACE& s, double u, double v, double* point) {
  double small[256];
  std::unique_ptr<double[]> large;
  double* work = small;
  if (s.workspace(1) > 256) {
    large = tryArray<double>(s.workspace(1));
    if (!(work = large.get())) return {};
  }
  const Partials partials(s, u, v, 1, work);
  if (point) std::copy_n(work, 3, point);
  const Vec3 su = partials.su(0, 0), sv = partials.sv(0, 0);
  const bool oneVanishes = (size(su) == 0.0) != (size(sv) == 0.0);
  return oneVanishes ? poleNormal(s, u, v) : unitCross(su, sv);
}

}  // namespace

void AP_SURFACE::normal(double u, double v, double* point, double* normal) const {
  if (dim_ == 3 && !isEmpty()) {
    const Vec3 n = normalAt(*this, u, v, point);
    normal[0] = n.x;
    normal[1] = n.y;
    normal[2] = n.z;
    return;
  }
  std::fill_n(normal, dim_, 0.0);
  const auto work = tryArray<double>(workspace(0));
  if (!point || !work) return;
  eval(work.get(), u, v, 0);
  std::copy_n(work.get(), dim_, point);
}
