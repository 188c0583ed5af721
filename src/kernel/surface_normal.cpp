// SPDX-License-Identifier: MIT
// Unit normals Su x Sv of surfaces in space, poles included.
//
// Zero or small? A partial that vanishes comes out as rounding, and rounding is no direction. How
// large it may be is known only from the sums themselves: each leg of the control net enters with a
// weight that has the knot distance which the leg bridges in its denominator, and knots may lie one
// rounding apart or nine powers of ten. So where that is in question, the partials are evaluated by
// the steps of eval() in numbers that carry the bound of their rounding (bounded.h); a vector that
// is no longer than its bound counts as zero, any other as a direction.
//
// Poles. On a border where one of the partials vanishes, let h be the way into the domain and D the
// derivative across the border; an upper border is left against D. Then
//   Su x Sv = sum over q of (+-h)^q c_q / q!,
//   c_q = sum over a + b = q of C(q, a) (D^a Su) x (D^b Sv),
// and the unit normal tends to the direction of the first c_q that is not zero. Times the third
// power of the weight, Su x Sv is a polynomial in h of degree 3 m - 1 at most, m being the degree
// across: if the c_q vanish so far, they all do.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "kernel/quotient_rule.h"
#include "kernel/storage.h"
#include "kernel/tensor_product.h"
#include "kernels/square_root.h"
#include "knotwork/kernel/surface.h"
#include "knotwork/kernel/surface_direction.h"

using namespace knotwork::detail;
using knotwork::KnotRecord;

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

// The control points of a pole were computed: each is a product with its weight, mostly after some
// transformation. So many roundings are granted to them, relative to their size.
constexpr double kPoleError = 4 * kEps;

// In spans from a pole, within which its normal is taken for that of the point. The normal changes
// by the order of that distance, while the partial that shrinks towards the pole is off by the
// order of kEps over it; here the two are alike.
constexpr double kNear = 0x1p-26;

// The share of what its terms could give, above which a partial is neither rounding, at most some
// hundred kEps, nor next to a pole, where the degree times kNear is all that is left of it.
constexpr double kClear = 0x1p-20;

template <class Number>
struct Vector {
  Number x, y, z;
};

template <class Number>
Vector<Number> operator+(const Vector<Number>& a, const Vector<Number>& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

template <class Number>
Vector<Number> operator*(double factor, const Vector<Number>& a) {
  return {factor * a.x, factor * a.y, factor * a.z};
}

template <class Number>
Vector<Number> cross(const Vector<Number>& a, const Vector<Number>& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

template <class Number>
double length(const Vector<Number>& a) {
  return lengthOf(valueOf(a.x), valueOf(a.y), valueOf(a.z));
}

// Times a power of two, without rounding.
Vector<Bounded> scaled(const Vector<Bounded>& a, int exponent) {
  const auto scale = [exponent](const Bounded& x) {
    return Bounded(std::scalbn(x.value, exponent), std::scalbn(x.error, exponent));
  };
  return {scale(a.x), scale(a.y), scale(a.z)};
}

// Whether the vector is no more than rounding, or no number.
bool vanishes(const Vector<Bounded>& a) {
  return !(length(a) > lengthOf(a.x.error, a.y.error, a.z.error));
}

// A parameter pair, and the border that is meant: the direction that leads across it, and its side.
struct Place {
  double u, v;
  TsurfaceDirection across = TsurfaceDirection::v;
  bool upper = false;

  bool inV() const { return across == TsurfaceDirection::v; }
};

// The partials at one place, in spans, with the bounds of their rounding.
//
// The direction along the border goes first: in rows that shrink to a point, its legs are zero, and
// stay so; once the large numbers of a short span across are in, their rounding would remain.
class Partials {
 public:
  // @param order      highest order across the border; along it, 1.
  // @param dataError  what the control points are off by, relative to their size.
  Partials(const AP_SURFACE& s, const Place& place, int order, double dataError)
      : inV_(place.inV()),
        along_(inV_ ? s.uKnots() : s.vKnots(), inV_ ? place.u : place.v, 1),
        across_(inV_ ? s.vKnots() : s.uKnots(), inV_ ? place.v : place.u, order),
        coords_(s.Coords()),
        values_(size(2 * (order + 1), coords_)) {
    std::vector<Bounded> net;
    for (int i = along_.end.span; i <= along_.end.span + along_.degree; ++i) {
      for (int j = across_.end.span; j <= across_.end.span + across_.degree; ++j) {
        const double* const p = inV_ ? s.index(j, i) : s.index(i, j);
        for (int c = 0; c < coords_; ++c) net.emplace_back(p[c], dataError * std::abs(p[c]));
      }
    }
    const int stretch = (across_.degree + 1) * coords_;
    std::vector<Bounded> rows(size(2, stretch));
    std::vector<Bounded> spare(
        static_cast<std::size_t>(schemeNumbers(std::max(along_.degree, across_.degree))));
    evaluateTensorProduct(net.data(), stretch, coords_, across_, along_, spare.data(), rows.data(),
                          values_.data());
    if (coords_ > 3) quotientRule(values_.data(), 3, order, 1);
    alongUnit_ = spanExponent(inV_ ? s.uKnots() : s.vKnots(), along_);
    acrossUnit_ = spanExponent(inV_ ? s.vKnots() : s.uKnots(), across_);
  }

  // Partials of order q across the border, of the surface and of its derivative along the border;
  // exactly zero if they are no more than rounding.
  Vector<Bounded> across(int q) const { return partial(0, q); }
  Vector<Bounded> alongThenAcross(int q) const { return partial(1, q); }

 private:
  static std::size_t size(int a, int b) {
    return static_cast<std::size_t>(a) * static_cast<std::size_t>(b);
  }

  // The length of the span, as a power of two.
  static int spanExponent(const KnotRecord& knots, const Direction& d) {
    if (d.degree == 0) return 0;
    const double length = knots(d.end.span + 1) - knots(d.end.span);
    return length > 0.0 && std::isfinite(length) ? std::ilogb(length) : 0;
  }

  Vector<Bounded> partial(int along, int across) const {
    const Bounded* const p = &values_[size((across_.order + 1) * along + across, coords_)];
    const Vector<Bounded> v = scaled({p[0], p[1], p[2]}, alongUnit_ * along + acrossUnit_ * across);
    return vanishes(v) ? Vector<Bounded>{} : v;
  }

  bool inV_;
  Direction along_, across_;
  int coords_;
  std::vector<Bounded> values_;  // order after order along the border
  int alongUnit_, acrossUnit_;
};

// Scales vectors by one power of two, so that products of two families neither overflow nor vanish.
void scaleToOne(std::vector<Vector<Bounded>>& family) {
  double longest = 0.0;
  for (const Vector<Bounded>& a : family) longest = std::max(longest, length(a));
  if (!(longest > 0.0) || !std::isfinite(longest)) return;
  const int exponent = std::ilogb(longest);
  for (Vector<Bounded>& a : family) a = scaled(a, -exponent);
}

// The direction of the first c_q that is more than rounding, q <= last, as it counts for the way
// into the domain; zero if there is none. c_0 is Su x Sv itself.
Vector<Bounded> firstTerm(const AP_SURFACE& s, const Place& place, int last, double dataError) {
  const Partials partials(s, place, last + 1, dataError);
  std::vector<Vector<Bounded>> along, across;
  for (int a = 0; a <= last; ++a) {
    along.push_back(partials.alongThenAcross(a));
    across.push_back(partials.across(a + 1));
  }
  scaleToOne(along);
  scaleToOne(across);
  for (int q = 0; q <= last; ++q) {
    Vector<Bounded> c;
    double binomial = 1.0;
    for (int a = 0; a <= q; binomial = binomial * (q - a) / (a + 1), ++a) {
      const auto i = static_cast<std::size_t>(a), j = static_cast<std::size_t>(q - a);
      c = c + binomial * cross(along[i], across[j]);
    }
    if (vanishes(c)) continue;
    const bool backwards = place.upper && q % 2;
    return (place.inV() != backwards ? 1.0 : -1.0) * c;  // along x across is Su x Sv, or Sv x Su
  }
  return {};
}

// The end of the domain that t lies on or next to.
struct Border {
  bool found = false;
  bool upper = false;
  double at = 0.0;
};

Border borderAt(const KnotRecord& knots, double t) {
  if (knots.degree() == 0) return {};
  const double first = knots(0), last = knots(knots.spans());
  const int j = knots.span(t);
  const double near = kNear * (knots(j + 1) - knots(j));
  if (std::abs(t - first) <= near) return {true, false, first};
  return {std::abs(t - last) <= near, true, last};
}

// The pole next to (u, v), on a border that one direction leads across, if there is one there.
struct Pole {
  bool found = false;
  bool shrunkenBorder = false;  // the border itself shrinks to a point, not the rows next to it
  Place at{};
};

Pole poleOn(const AP_SURFACE& s, double u, double v, TsurfaceDirection across) {
  const bool inV = across == TsurfaceDirection::v;
  const Border border = inV ? borderAt(s.vKnots(), v) : borderAt(s.uKnots(), u);
  if (!border.found) return {};
  const Place at{inV ? u : border.at, inV ? border.at : v, across, border.upper};
  const Partials partials(s, at, 1, kPoleError);
  const bool alongVanishes = vanishes(partials.alongThenAcross(0));
  const bool acrossVanishes = vanishes(partials.across(1));
  return {alongVanishes != acrossVanishes, alongVanishes, at};
}

// The limit of the normal at a pole; zero where there is none.
Vector<Bounded> poleNormal(const AP_SURFACE& s, double u, double v) {
  std::array<Pole, 2> poles{poleOn(s, u, v, TsurfaceDirection::v),
                            poleOn(s, u, v, TsurfaceDirection::u)};
  // From a corner the way leads across the border that shrinks; along it all is rounding.
  if (poles[1].found && poles[1].shrunkenBorder) std::swap(poles[0], poles[1]);
  for (const Pole& pole : poles) {
    if (!pole.found) continue;
    const int m = pole.at.inV() ? s.vDegree() : s.uDegree();
    for (const int last : {1, 3 * m - 1}) {  // the first term is enough but for odd poles
      const Vector<Bounded> n = firstTerm(s, pole.at, last, kPoleError);
      if (!vanishes(n)) return n;
    }
  }
  return {};
}

Vector<double> vectorAt(const double* p) { return {p[0], p[1], p[2]}; }

// Degree over span j, the most that a derivative's weights add up to within the span.
double growth(const KnotRecord& knots, int j, double t) {
  if (knots.degree() == 0) return 0.0;
  const bool within = knots(j) <= t && t <= knots(j + 1);
  return within ? knots.degree() / (knots(j + 1) - knots(j))
                : std::numeric_limits<double>::infinity();
}

// Whether rounding and poles are out of the question: a test that is cheap, and mostly true. The
// terms of Su = (A_u - w_u S) / w, with A the coordinates times their weight w, are at most
// growth (max |A| + |S| max w) / w.
// @param out  point and partials, as eval() gives them.
bool isClear(const AP_SURFACE& s, double u, double v, const double* out) {
  const std::ptrdiff_t coords = s.Coords();
  const int row = s.vKnots().span(v), column = s.uKnots().span(u);
  double farthest = 0.0, heaviest = 0.0;
  for (int i = row; i <= row + s.vDegree(); ++i) {
    const double* p = s.index(i, column);
    for (int j = 0; j <= s.uDegree(); ++j, p += coords) {
      for (int c = 0; c < 3; ++c) farthest = std::max(farthest, std::abs(p[c]));
      if (coords > 3) heaviest = std::max(heaviest, std::abs(p[3]));
    }
  }
  if (coords > 3) farthest = (farthest + length(vectorAt(out)) * heaviest) / std::abs(out[3]);
  const Vector<double> su = vectorAt(out + coords), sv = vectorAt(out + 2 * coords);
  const double uSize = length(su), vSize = length(sv);
  return uSize > kClear * farthest * growth(s.uKnots(), column, u) &&
         vSize > kClear * farthest * growth(s.vKnots(), row, v) &&
         length(cross(su, sv)) > kClear * uSize * vSize;
}

// A normal of any length; zero where there is none.
// @param out  point and partials, as eval() gives them.
Vector<double> normalAt(const AP_SURFACE& s, double u, double v, const double* out) {
  if (isClear(s, u, v, out)) {
    const std::ptrdiff_t coords = s.Coords();
    return cross(vectorAt(out + coords), vectorAt(out + 2 * coords));
  }
  Vector<Bounded> n = poleNormal(s, u, v);
  if (vanishes(n)) n = firstTerm(s, {u, v}, 0, 0.0);
  return {n.x.value, n.y.value, n.z.value};
}

}  // namespace

void AP_SURFACE::normal(double u, double v, double* point, double* normal) const {
  Scratch<double, 256> out(workspace(1));
  eval(out.data(), u, v, 1);
  if (point) std::copy_n(out.data(), dim_, point);
  std::fill_n(normal, dim_, 0.0);
  if (dim_ != 3 || isEmpty()) return;
  const Vector<double> n = normalAt(*this, u, v, out.data());
  const double size = length(n);
  if (!(size > 0.0)) return;
  normal[0] = n.x / size;
  normal[1] = n.y / size;
  normal[2] = n.z / size;
}
