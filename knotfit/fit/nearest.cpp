// SPDX-License-Identifier: MIT
// Nearest points on curves and surfaces.
//
// Half the squared distance f = |S - p|^2 / 2 is made small by Newton's method with halved steps.
// Its slope is r.S' and its bend S'.S' + r.S'', where r = S - p. Far from a foot the second part of
// the bend may turn it around: then it is left out (the method of Gauss and Newton), and the step
// leads downhill all the same. That finds a foot near the start alone, so the starts are sampled:
// in every span or patch, the samples that are nearer than those around them. Spans whose control
// points' box is further away than a place already found hold no nearer one and are passed over.
#include "fit/nearest.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/scale.h"

namespace knotfit {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kHalvings = 12;

Spline scaled(Spline s, int exponent) {
  scaleBy(s, -exponent);
  return s;
}

// The point in scaled coordinates. One far away from all of the shape comes nearer along its ray,
// so that squares stay finite; the foot is the same as far as its digits tell.
Vec3 scaledPoint(const double* p, int dim, int exponent) {
  constexpr double kFar = 0x1p300;
  Vec3 out = vec3(p, dim);
  for (double& c : out) c = std::ldexp(c, -exponent);
  const double most = std::max({std::abs(out[0]), std::abs(out[1]), std::abs(out[2])});
  if (most <= kFar) return out;
  const int e = std::ilogb(std::min(most, std::numeric_limits<double>::max())) - 300;
  for (double& c : out) c = std::isfinite(c) ? std::ldexp(c, -e) : std::copysign(kFar, c);
  return out;
}

double squaredLength(const Vec3& a) { return dot(a, a); }

void widen(Vec3& low, Vec3& high, const Vec3& p) {
  for (std::size_t c = 0; c < 3; ++c) {
    low[c] = std::min(low[c], p[c]);
    high[c] = std::max(high[c], p[c]);
  }
}

// The square of the distance from a box, 0 within it.
double boxSquared(const Vec3& low, const Vec3& high, const Vec3& p) {
  Vec3 out;
  for (std::size_t c = 0; c < 3; ++c) out[c] = std::max({low[c] - p[c], p[c] - high[c], 0.0});
  return squaredLength(out);
}

}  // namespace

CurveProjector::CurveProjector(const Spline& original)
    : exponent_(evenExponent(original.controls)),
      dim_(original.dim),
      shape_(scaled(original, exponent_)) {
  const Spline s = scaled(original, exponent_);
  const auto p = static_cast<std::size_t>(s.degree[0]);
  const int samples = 2 * s.degree[0] + 2;
  const std::vector<double>& t = s.knots[0];
  for (std::size_t k = p; k < s.size[0]; ++k) {
    if (!(t[k] < t[k + 1])) continue;
    Span span{t[k], t[k + 1], vec3(s.control(k), dim_), vec3(s.control(k), dim_), {}};
    for (std::size_t i = k - p; i < k; ++i) widen(span.low, span.high, vec3(s.control(i), dim_));
    for (int i = 0; i <= samples; ++i) {
      span.samples.push_back(shape_.point(span.from + (span.to - span.from) * i / samples));
    }
    spans_.push_back(std::move(span));
  }
}

double CurveProjector::squared(const Vec3& p, double u) const {
  return squaredLength(minus(shape_.point(u), p));
}

CurveProjector::Place CurveProjector::descended(const Vec3& p, double start, double from,
                                                double to) const {
  constexpr int kSteps = 30;
  Place best{std::clamp(start, from, to), 0};
  best.squared = squared(p, best.u);
  for (int step = 0; step < kSteps; ++step) {
    std::array<Vec3, 3> d;  // C, C', C''
    shape_.eval(best.u, 2, d[0].data());
    const Vec3 r = minus(d[0], p);
    const double slope = dot(r, d[1]), speed = dot(d[1], d[1]);
    const double bend = speed + dot(r, d[2]);
    const double divisor = bend > 0.1 * speed ? bend : speed;  // Newton, else Gauss and Newton
    if (!(divisor > 0) || slope == 0) break;
    Place next = best;
    double length = -slope / divisor;
    for (int halving = 0; halving < kHalvings; ++halving, length /= 2) {
      next.u = std::clamp(best.u + length, from, to);
      next.squared = squared(p, next.u);
      if (next.squared < best.squared) break;
    }
    if (!(next.squared < best.squared)) break;
    const bool settled = std::abs(next.u - best.u) <= 1e-15 * (to - from);
    best = next;
    if (settled) break;
  }
  return best;
}

// Descends from the samples of a span that are nearer than their neighbours.
void CurveProjector::improve(const Vec3& p, const Span& span, Place& best) const {
  const std::size_t n = span.samples.size();
  std::vector<double> value(n);
  for (std::size_t i = 0; i < n; ++i) value[i] = squaredLength(minus(span.samples[i], p));
  const double step = (span.to - span.from) / static_cast<double>(n - 1);
  for (std::size_t i = 0; i < n; ++i) {
    if ((i > 0 && value[i - 1] < value[i]) || (i + 1 < n && value[i + 1] < value[i])) continue;
    const double u = span.from + step * static_cast<double>(i);
    const Place place = descended(p, u, std::max(span.from, u - step), std::min(span.to, u + step));
    if (place.squared < best.squared) best = place;
  }
}

Foot CurveProjector::at(const double* point, double u) const {
  Vec3 c = shape_.point(u);
  for (double& x : c) x = std::ldexp(x, exponent_);
  return {u, 0, norm(minus(c, vec3(point, dim_)))};
}

Foot CurveProjector::nearestWithin(const double* point, double start, double from,
                                   double to) const {
  return at(point, descended(scaledPoint(point, dim_, exponent_), start, from, to).u);
}

Foot CurveProjector::nearest(const double* point, std::optional<double> guess) const {
  const double first = spans_.front().from, last = spans_.back().to;
  const Vec3 p = scaledPoint(point, dim_, exponent_);
  Place best{first, kInfinity};
  if (guess && *guess >= first && *guess <= last) best = descended(p, *guess, first, last);
  for (const Span& span : spans_) {
    if (boxSquared(span.low, span.high, p) < best.squared) improve(p, span, best);
  }
  return at(point, best.u);
}

SurfaceProjector::SurfaceProjector(const Spline& original)
    : exponent_(evenExponent(original.controls)),
      shape_(scaled(original, exponent_)),
      first_{original.first(0), original.first(1)},
      last_{original.last(0), original.last(1)} {
  const Spline s = scaled(original, exponent_);
  const auto p = static_cast<std::size_t>(s.degree[0]), q = static_cast<std::size_t>(s.degree[1]);
  const std::vector<double>&tu = s.knots[0], &tv = s.knots[1];
  for (std::size_t a = p; a < s.size[0]; ++a) {
    for (std::size_t b = q; b < s.size[1]; ++b) {
      if (!(tu[a] < tu[a + 1] && tv[b] < tv[b + 1])) continue;
      const Vec3 corner = vec3(s.control(a, b), 3);
      Patch patch{{tu[a], tv[b]}, {tu[a + 1], tv[b + 1]}, corner, corner};
      for (std::size_t i = a - p; i <= a; ++i) {
        for (std::size_t j = b - q; j <= b; ++j) {
          widen(patch.low, patch.high, vec3(s.control(i, j), 3));
        }
      }
      patches_.push_back(patch);
    }
  }
}

double SurfaceProjector::squared(const Vec3& p, Place place) const {
  return squaredLength(minus(shape_.point(place.u, place.v), p));
}

SurfaceProjector::Place SurfaceProjector::within(Place place) const {
  return {std::clamp(place.u, first_.u, last_.u), std::clamp(place.v, first_.v, last_.v)};
}

namespace {

// The matrix of second derivatives of f, or what stands for it.
struct Bend {
  double uu, uv, vv;
  double determinant() const { return uu * vv - uv * uv; }
  // Whether f bends upwards in all directions, by more than rounding.
  bool isPositive() const { return uu > 0 && vv > 0 && determinant() > 1e-12 * uu * vv; }
};

// f near a place to second order: f + slope.step + step.bend.step / 2.
struct LocalModel {
  double slopeU, slopeV;
  Bend bend;
};

LocalModel localModel(const SurfaceShape& shape, const Vec3& p, double u, double v) {
  std::array<Vec3, 9> d;  // order 2, u fastest: S Su Suu, Sv Suv -, Svv - -
  shape.eval(u, v, 2, d[0].data());
  const Vec3 r = minus(d[0], p);
  const Vec3 &su = d[1], &suu = d[2], &sv = d[3], &suv = d[4], &svv = d[6];
  const Bend gauss{dot(su, su), dot(su, sv), dot(sv, sv)};
  const Bend newton{gauss.uu + dot(r, suu), gauss.uv + dot(r, suv), gauss.vv + dot(r, svv)};
  return {dot(r, su), dot(r, sv), newton.isPositive() ? newton : gauss};
}

// The step to the model's lowest place; where the bend is singular, along one direction alone. A
// direction that is not free, because the slope leads out of the domain, keeps its parameter.
SurfaceProjector::Place stepOf(const LocalModel& m, bool freeU, bool freeV) {
  const Bend& b = m.bend;
  if (freeU && freeV && b.determinant() > 1e-12 * b.uu * b.vv) {
    const double det = b.determinant();
    return {(-m.slopeU * b.vv + m.slopeV * b.uv) / det, (-m.slopeV * b.uu + m.slopeU * b.uv) / det};
  }
  if (freeU && b.uu > 0) return {-m.slopeU / b.uu, 0};
  if (freeV && b.vv > 0) return {0, -m.slopeV / b.vv};
  return {0, 0};
}

}  // namespace

SurfaceProjector::Found SurfaceProjector::descended(const Vec3& p, Place start) const {
  constexpr int kSteps = 40;
  const double size = last_.u - first_.u + last_.v - first_.v;
  Found best{within(start), 0};
  best.squared = squared(p, best.place);
  for (int step = 0; step < kSteps; ++step) {
    const auto [u, v] = best.place;
    const LocalModel model = localModel(shape_, p, u, v);
    const bool outU = (u <= first_.u && model.slopeU > 0) || (u >= last_.u && model.slopeU < 0);
    const bool outV = (v <= first_.v && model.slopeV > 0) || (v >= last_.v && model.slopeV < 0);
    Place move = stepOf(model, !outU, !outV);
    Found next = best;
    for (int halving = 0; halving < kHalvings; ++halving) {
      next.place = within({u + move.u, v + move.v});
      next.squared = squared(p, next.place);
      if (next.squared < best.squared) break;
      move = {move.u / 2, move.v / 2};
    }
    if (!(next.squared < best.squared)) break;
    const bool settled = std::abs(next.place.u - u) + std::abs(next.place.v - v) <= 1e-14 * size;
    best = next;
    if (settled) break;
  }
  return best;
}

// Samples of a patch that are no further from the point than the samples around them.
std::vector<SurfaceProjector::Place> SurfaceProjector::valleys(const Vec3& p,
                                                               const Patch& patch) const {
  constexpr int kSide = 6;
  const auto place = [&](int i, int j) {
    const double a = static_cast<double>(i) / (kSide - 1), b = static_cast<double>(j) / (kSide - 1);
    return Place{patch.from.u + (patch.to.u - patch.from.u) * a,
                 patch.from.v + (patch.to.v - patch.from.v) * b};
  };
  std::array<double, std::size_t{kSide} * kSide> values;
  const auto value = [&](int i, int j) -> double& {
    return values[static_cast<std::size_t>(i) * kSide + static_cast<std::size_t>(j)];
  };
  for (int i = 0; i < kSide; ++i) {
    for (int j = 0; j < kSide; ++j) value(i, j) = squared(p, place(i, j));
  }
  const auto isLow = [&](int i, int j) {
    for (int a = std::max(i - 1, 0); a <= std::min(i + 1, kSide - 1); ++a) {
      for (int b = std::max(j - 1, 0); b <= std::min(j + 1, kSide - 1); ++b) {
        if (value(a, b) < value(i, j)) return false;
      }
    }
    return true;
  };
  std::vector<Place> out;
  for (int i = 0; i < kSide; ++i) {
    for (int j = 0; j < kSide; ++j) {
      if (isLow(i, j)) out.push_back(place(i, j));
    }
  }
  return out;
}

Foot SurfaceProjector::nearest(const double* point, std::optional<Place> guess) const {
  const Vec3 p = scaledPoint(point, 3, exponent_);
  Found best{first_, kInfinity};
  if (guess) best = descended(p, *guess);
  for (const Patch& patch : patches_) {
    if (boxSquared(patch.low, patch.high, p) >= best.squared) continue;
    for (const Place& start : valleys(p, patch)) {
      const Found found = descended(p, start);
      if (found.squared < best.squared) best = found;
    }
  }
  Vec3 s = shape_.point(best.place.u, best.place.v);
  for (double& x : s) x = std::ldexp(x, exponent_);
  return {best.place.u, best.place.v, norm(minus(s, vec3(point, 3)))};
}

}  // namespace knotfit
