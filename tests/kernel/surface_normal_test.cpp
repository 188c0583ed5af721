// SPDX-License-Identifier: MIT
// Normals, held against the surfaces whose control points were rounded to doubles: in 113-bit
// arithmetic, where a pole needs no theory but only a way into the domain.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "kernel/reference.h"

using namespace knotwork::test;
using knotwork::KnotRecord;

namespace {

#if defined(__SIZEOF_FLOAT128__)
__extension__ typedef __float128 Quad;
#else
using Quad = long double;  // has 113 bits where the type above is missing
#endif

constexpr double kEps = std::numeric_limits<double>::epsilon();

using Point = std::array<Quad, 4>;  // and its weight, which is not in the coordinates
using Vector = std::array<double, 3>;

double size(const Vector& a) { return std::hypot(a[0], a[1], a[2]); }

double distance(const Vector& a, const Vector& b) {
  return size({a[0] - b[0], a[1] - b[1], a[2] - b[2]});
}

Vector unit(const Vector& a) { return {a[0] / size(a), a[1] / size(a), a[2] / size(a)}; }

struct Normal {
  Normal(const AP_SURFACE& s, double u, double v) { s.normal(u, v, p.data(), n.data()); }
  Vector p{}, n{1, 1, 1};
};

// Values or derivatives of the basis functions of the span of `near`, continued to t.
std::vector<Quad> basis(const KnotRecord& k, double near, Quad t, int q) {
  const BasisOf<Quad> b(k);
  const int j = b.span(near);
  std::vector<Quad> values;
  for (int i = j; i <= j + b.degree; ++i) values.push_back(b.value(i, q, j, t));
  return values;
}

// A surface with one pole or none, before and after its control points are rounded.
struct Shape {
  enum Kind { kRegular, kShrunkenBorder, kTwoShrunkenRows, kRowsThatCoincide };

  Shape(Maker& make, Kind wanted)
      : kind(wanted),
        rational(std::max(make.upTo(4) - 1, 0)),
        s(3, 1 + make.upTo(4), 1 + make.upTo(4), 1 + make.upTo(2), 1 + make.upTo(2), rational & 1,
          rational & 2),
        inV(make.upTo(1)),
        upper(make.upTo(1)) {
    if (kind > kShrunkenBorder && knots().degree() < 2) kind = kShrunkenBorder;
    clamped = kind > kShrunkenBorder || make.upTo(2) > 0;
    const bool tame = kind > kShrunkenBorder || !clamped;
    fill(make, s.uKnots(), clamped || inV, tame && !inV);
    fill(make, s.vKnots(), clamped || !inV, tame && inV);
    const double far = std::pow(10.0, 2 * make.upTo(3)) - 1;
    const double unlikeness = std::pow(10.0, -5 * make.upTo(3));
    for (int i = 0; i < s.uCount() * s.vCount() + 2; ++i) {
      const double w = rational ? 1 + unlikeness * make.real(-0.5, 0.5) : 1;
      ideal.push_back({make.real(-1, 1) + far, make.real(-1, 1), make.real(-1, 1), w});
    }
    makePole(ideal);
    for (int i = 0; i < s.uCount() * s.vCount(); ++i) {
      const auto& [x, y, z, w] = ideal[at(i)];
      const Quad stored[] = {x * w, y * w, z * w, w};
      for (int c = 0; c < s.Coords(); ++c) s.CV()[s.Coords() * i + c] = double(stored[c]);
    }
  }

  const KnotRecord& knots() const { return inV ? s.vKnots() : s.uKnots(); }

  // The normal, and how far it moves per relative change of the control points.
  std::pair<Vector, double> model(double u, double v) const {
    const Vector n = limit(ideal, u, v);
    Maker make(77);
    std::vector<Point> moved = ideal;
    for (Point& p : moved) {
      for (std::size_t c = 0; c < (rational ? 4 : 3); ++c) p[c] *= 1 + 0x1p-40 * make.real(-1, 1);
    }
    makePole(moved);
    return {n, distance(limit(moved, u, v), n) / 0x1p-40};
  }

  // Even or uneven knots, clamped or not; clamped ones also over nine powers of ten, or one
  // rounding apart.
  static void fill(Maker& make, KnotRecord& k, bool clamped, bool tame) {
    const int kind = make.upTo(tame ? 1 : 3);
    std::vector<double> knots;
    double t = make.real(-1, 1);
    for (int i = k.first(); i <= k.last(); ++i) {
      knots.push_back(t);
      if (clamped && (i < 0 || i >= k.spans())) continue;
      if (kind == 0) t += 1;
      if (kind == 1) t += make.real(0.1, 2);
      if (kind == 2) t += std::pow(10.0, make.real(-9, 0));
      if (kind == 3) t = make.upTo(1) ? std::nextafter(t, 9) : t + make.real(0.1, 1);
    }
    k.assign(knots.data(), static_cast<int>(knots.size()));
  }

  Point& point(std::vector<Point>& net, int row, int along) const {
    return net[at(inV ? row * s.uCount() + along : along * s.uCount() + row)];
  }

  // Moves one row so that the border has no length: sum of basis_i w_i (p_i - pole) = 0.
  void makePole(std::vector<Point>& net) const {
    if (kind == kRegular) return;
    const double border = upper ? knots()(knots().spans()) : knots()(0);
    const int first = knots().span(border), count = inV ? s.uCount() : s.vCount();
    const auto b = basis(knots(), border, border, 0);
    const int moved = static_cast<int>(std::max_element(b.begin(), b.end()) - b.begin());
    const Point pole = *(net.end() - 2), second = net.back();
    const int next = upper ? knots().degree() - 1 : 1;
    for (int j = 0; j < count; ++j) {
      Point& target = point(net, first + moved, j);
      if (kind == kTwoShrunkenRows) {
        std::copy_n(second.begin(), 3, point(net, first + next, j).begin());
      }
      if (kind == kRowsThatCoincide) {
        point(net, first + next, j) = target;
        continue;
      }
      for (std::size_t c = 0; c < 3; ++c) {
        Quad rest = 0;
        for (int i = 0; i <= knots().degree(); ++i) {
          const Point& p = point(net, first + i, j);
          if (i != moved) rest += b[at(i)] * p[3] * (p[c] - pole[c]);
        }
        target[c] = pole[c] - rest / (b[at(moved)] * target[3]);
      }
    }
  }

  Vector limit(const std::vector<Point>& net, double u, double v) const {
    if (kind == kRegular) return normal(net, u, v, u, v);
    const double border = inV ? v : u;
    const int j = knots().span(border);
    Vector near[2];
    for (const int i : {0, 1}) {
      const Quad h = (upper ? -1 : 1) * 0x1p-28 / (1 + i) * (knots()(j + 1) - knots()(j));
      near[i] = normal(net, u, v, inV ? Quad(u) : u + h, inV ? v + h : Quad(v));
    }
    for (std::size_t c = 0; c < 3; ++c) near[1][c] += near[1][c] - near[0][c];
    return unit(near[1]);
  }

  // Su x Sv at (tu, tv), continued from the spans of u and v. w^2 Su = w A_u - w_u A.
  Vector normal(const std::vector<Point>& net, double u, double v, Quad tu, Quad tv) const {
    Quad a[3][4] = {};  // A and w, and their partials
    const int firstU = s.uKnots().span(u), firstV = s.vKnots().span(v);
    for (int d = 0; d < 3; ++d) {
      const auto bu = basis(s.uKnots(), u, tu, d == 1), bv = basis(s.vKnots(), v, tv, d == 2);
      for (int i = 0; i <= s.vDegree(); ++i) {
        for (int j = 0; j <= s.uDegree(); ++j) {
          const Point& p = net[at((firstV + i) * s.uCount() + firstU + j)];
          const Quad w = bu[at(j)] * bv[at(i)] * p[3];
          for (std::size_t c = 0; c < 3; ++c) a[d][c] += w * p[c];
          a[d][3] += w;
        }
      }
    }
    std::array<std::array<Quad, 3>, 2> t;
    Quad n[3], largest = 0;
    for (std::size_t d = 0; d < 2; ++d) {
      Quad longest = 0;
      for (std::size_t c = 0; c < 3; ++c) {
        t[d][c] = a[0][3] * a[d + 1][c] - a[d + 1][3] * a[0][c];
        longest = std::max({longest, t[d][c], -t[d][c]});
      }
      for (Quad& x : t[d]) x /= longest;
    }
    for (std::size_t c = 0; c < 3; ++c) {
      n[c] = t[0][(c + 1) % 3] * t[1][(c + 2) % 3] - t[0][(c + 2) % 3] * t[1][(c + 1) % 3];
      largest = std::max({largest, n[c], -n[c]});
    }
    return unit({double(n[0] / largest), double(n[1] / largest), double(n[2] / largest)});
  }

  Kind kind;
  int rational;
  AP_SURFACE s;
  bool inV;  // the way from the pole
  bool upper;
  bool clamped;
  std::vector<Point> ideal;  // control points; the pole; what a second row shrinks to
};

}  // namespace

// 2048 units of rounding, times what a change of the control points does to the normal: at ends,
// corners, knots and between.
TEST(SurfaceNormal, IsThatOfTheSurfaceWhoseControlPointsWereRounded) {
  Maker make(31);
  for (int n = 0; n < 400; ++n) {
    const Shape shape(make, static_cast<Shape::Kind>(n % 4));
    const auto parameter = [&](const KnotRecord& k, int choice, bool across) {
      if (across && shape.kind != Shape::kRegular) return k(shape.upper ? k.spans() : 0);
      if (choice < 3) return k(choice == 0 ? 0 : choice == 1 ? k.spans() : make.upTo(k.spans()));
      return make.real(k(0), k(k.spans()));
    };
    for (int choice = 0; choice < 4; ++choice) {
      const double u = parameter(shape.s.uKnots(), choice, !shape.inV);
      const double v = parameter(shape.s.vKnots(), choice, shape.inV);
      const auto [want, condition] = shape.model(u, v);
      ASSERT_LT(distance(Normal(shape.s, u, v).n, want), 2048 * kEps * (1 + condition))
          << n << " at " << u << " " << v;
    }
  }
}

// An eighth of a sphere: u around the axis, v from the equator to the pole, or from there. Next to
// the pole rounding turns the shrinking partial, or the pole's normal stands for the point's.
TEST(SurfaceNormal, OnASphereOfAnySizeItIsThePointAlsoAtAndNearThePole) {
  const double w = std::sqrt(0.5);
  const double arc[3][3] = {{1, 0, 1}, {w, w, w}, {0, 1, 1}};  // weighted x, y and the weight
  for (const double scale : {1e-150, 1.0, 1e150}) {
    AP_SURFACE s(3, 2, 2, 1, 1, 1, 1), turned(s), away(s);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        const double radius = scale * arc[i][0], weight = arc[i][2] * arc[j][2];
        double p[] = {radius * arc[j][0], radius * arc[j][1], scale * arc[i][1] * arc[j][2],
                      weight};
        s.set(i, j, p, 4);
        turned.set(2 - i, j, p, 4);
        for (int c = 0; c < 2; ++c) p[c] += 1e4 * scale * weight;
        away.set(i, j, p, 4);
      }
    }
    EXPECT_NEAR(Normal(away, 0.3, 1).n[2], 1, 1e-9);
    for (int i = 0; i <= 20; ++i) {
      for (const double h : {0.0, 1e-15, 1e-13, 1e-10, 1e-8, 2e-8, 1e-6, 0.1, 0.5, 0.9, 1.0}) {
        const Normal at(s, i / 20.0, 1 - h), opposite(turned, i / 20.0, h);
        const double blur = 4 * kEps + (h < 0x1p-26 ? 2 * h : 2 * kEps / h);
        const Vector x{at.p[0] / scale, at.p[1] / scale, at.p[2] / scale};
        EXPECT_LT(distance(at.n, x), blur) << h;
        EXPECT_LT(distance(opposite.n, {-x[0], -x[1], -x[2]}), blur) << h;
        EXPECT_NEAR(size(x), 1, 16 * kEps);
      }
    }
  }
}

TEST(SurfaceNormal, PartialsOfUnlikeSizesAreBothSeen) {
  for (const auto& [x, y] : {std::pair{1e9, 1e-14}, {1e9, 1e-150}, {1e-14, 1.0}, {1e-150, 1e150}}) {
    AP_SURFACE s(3, 1, 1, 1, 1, 0, 0);
    const double points[] = {0, 0, 5, x, 0, 5, 0, y, 5, x, y, 5};
    s.set(points, 12);
    for (const double t : {0.0, 0.5}) EXPECT_EQ(Normal(s, t, t).n, (Vector{0, 0, 1}));
  }
  AP_SURFACE rays(3, 1, 1, 1, 1, 1, 0);  // moved by their weights alone
  const double points[] = {1, 0, 0, 1, 1, 0, 0, 0.5, 1, 0, 1, 1, 1, 0, 1, 0.5};
  rays.set(points, 16);
  EXPECT_NEAR(Normal(rays, 0.25, 0.5).n[1], -1, 4 * kEps);
}

TEST(SurfaceNormal, WithoutTwoDirectionsOrOutsideOfSpaceIsZero) {
  AP_SURFACE line(3, 1, 1, 1, 1, 0, 0), point(line), flat(2, 1, 1, 1, 1, 0, 0);
  const double points[] = {0, 0, 0, 1, 1, 1, 2, 2, 2, 5, 5, 5};
  line.set(points, 12);
  flat.set(points, 8);
  std::fill_n(point.CV(), 12, 0.1);
  for (const double v : {0.0, 0.5, 1.0}) {
    EXPECT_EQ(Normal(line, 0.5, v).n, Vector{}) << v;
    EXPECT_EQ(Normal(point, 0, v).n, Vector{}) << v;
  }
  EXPECT_EQ(Normal(line, 0.5, 0.5).p[0], 2);
  EXPECT_EQ(Normal(flat, 0, 1).n, (Vector{0, 0, 1}));  // two coordinates are written
  EXPECT_EQ(Normal(flat, 0, 1).p[1], 1);
}
