// SPDX-License-Identifier: MIT
// Nearest points on curves and surfaces.
//
// Half the squared distance f = |S - p|^2 / 2 is made small by Newton's method with halved steps.
// Its slope is r.S' and its bend S'.S' + r.S'', where r = S - p. Far from a foot the second part of
// the bend may turn it around: then it is left out (the method of Gauss and Newton), and the step
// leads downhill all the same. That finds a foot near the start alone.
//
// The nearest foot of all is found by bounds. A tree over the boxes of the Bezier pieces leads to
// those that come nearer than the best place so far. In a piece where |S'|^2 > |r||S''| throughout,
// f bends upwards, so that one descent finds its only minimum, and none is needed where the best
// place lies in it. Any other piece is halved, until halves are out of reach, or bend upwards, or
// are small.
//
// Source: G. Farin, Curves and Surfaces for CAGD (5th ed., 2002), ch. 5 (hulls and halving).
#include "fit/nearest.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "model/scale.h"

namespace knotfit {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kHalvings = 12;
// A span is searched in 2^6 parts at most, a patch in 2^4 x 2^4.
constexpr int kCurveDepth = 6, kSurfaceDepth = 8;

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

// Of the control vectors at(0) .. at(count - 1) of a derivative, which hold all its values.
template <class At>
Vec3 meanOf(std::size_t count, At at) {
  Vec3 sum{};
  for (std::size_t i = 0; i < count; ++i) {
    const Vec3 a = at(i);
    for (std::size_t c = 0; c < 3; ++c) sum[c] += a[c];
  }
  return times(1.0 / static_cast<double>(count), sum);
}

template <class At>
double spreadSquared(std::size_t count, const Vec3& mean, At at) {
  double most = 0;
  for (std::size_t i = 0; i < count; ++i) most = std::max(most, squaredLength(minus(at(i), mean)));
  return most;
}

template <class At>
double mostSquared(std::size_t count, At at) {
  return spreadSquared(count, Vec3{}, at);
}

// How far from every point of a piece p may be so that f bends upwards: least |S'|^2 / most |S''|.
double bendReach(const Vec3* b, std::size_t count) {
  const double p = static_cast<double>(count - 1);
  const auto first = [&](std::size_t i) { return minus(b[i + 1], b[i]); };
  const auto second = [&](std::size_t i) { return minus(first(i + 1), first(i)); };
  const Vec3 mean = meanOf(count - 1, first);
  const double slowest =
      std::sqrt(squaredLength(mean)) - std::sqrt(spreadSquared(count - 1, mean, first));
  if (!(slowest > 0)) return 0;
  const double bend = count > 2 ? std::sqrt(mostSquared(count - 2, second)) : 0.0;
  return bend > 0 ? p * slowest * slowest / ((p - 1) * bend) : kInfinity;
}

// The same for a patch: least singular value of (Su, Sv) squared / most norm of second derivatives.
double bendReach(const Vec3* b, std::size_t rows, std::size_t columns) {
  const double p = static_cast<double>(rows - 1), q = static_cast<double>(columns - 1);
  const auto at = [&](std::size_t i, std::size_t j) -> const Vec3& { return b[i * columns + j]; };
  const auto su = [&](std::size_t n) {
    const std::size_t i = n / columns, j = n % columns;
    return times(p, minus(at(i + 1, j), at(i, j)));
  };
  const auto sv = [&](std::size_t n) {
    const std::size_t i = n / (columns - 1), j = n % (columns - 1);
    return times(q, minus(at(i, j + 1), at(i, j)));
  };
  const std::size_t alongU = (rows - 1) * columns, alongV = rows * (columns - 1);
  const Vec3 u = meanOf(alongU, su), v = meanOf(alongV, sv);
  const double uu = dot(u, u), uv = dot(u, v), vv = dot(v, v);
  const double least = (uu + vv - std::sqrt((uu - vv) * (uu - vv) + 4 * uv * uv)) / 2;
  const double slowest = std::sqrt(std::max(least, 0.0)) -
                         std::sqrt(spreadSquared(alongU, u, su) + spreadSquared(alongV, v, sv));
  if (!(slowest > 0)) return 0;
  const auto suu = [&](std::size_t n) {
    const std::size_t i = n / columns, j = n % columns;
    return times(p - 1, minus(su((i + 1) * columns + j), su(n)));
  };
  const auto svv = [&](std::size_t n) {
    const std::size_t i = n / (columns - 2), j = n % (columns - 2);
    return times(q - 1, minus(sv(i * (columns - 1) + j + 1), sv(i * (columns - 1) + j)));
  };
  const auto suv = [&](std::size_t n) {
    const std::size_t i = n / (columns - 1), j = n % (columns - 1);
    return times(q, minus(su(i * columns + j + 1), su(i * columns + j)));
  };
  double bend = 2 * mostSquared((rows - 1) * (columns - 1), suv);
  if (rows > 2) bend += mostSquared((rows - 2) * columns, suu);
  if (columns > 2) bend += mostSquared(rows * (columns - 2), svv);
  return bend > 0 ? slowest * slowest / std::sqrt(bend) : kInfinity;
}

// From the centre of the box: all points within it are nearer than this plus half its diagonal.
double reachFrom(const Box& box, double bendReach) {
  return bendReach - std::sqrt(squaredLength(minus(box.high, box.low))) / 2;
}

bool isWithinReach(const Vec3& p, const Vec3& centre, double reach) {
  return reach > 0 && squaredLength(minus(p, centre)) < reach * reach;
}

// Points that follow each other lie together: those of a block share one walk through the tree,
// which finds the pieces that any of them could come nearer to than its first foot.
//   pointAt(i), footFrom(i, point, near): the point and a first foot, `near` that of the one
//   before; improve(point, piece, foot): looks for a nearer one in a piece;  tell(i, foot): takes
//   the result.
template <class Found, class Bounds, class PointAt, class FootFrom, class Improve, class Tell>
void inBlocks(const BoxTree& tree, const Bounds& bounds, std::size_t count, PointAt pointAt,
              FootFrom footFrom, Improve improve, Tell tell) {
  constexpr std::size_t kBlock = 32, kFew = 32;
  std::array<Vec3, kBlock> points;
  std::array<Found, kBlock> feet;
  std::vector<std::size_t> near;
  std::decay_t<decltype(feet[0].span)> span{};
  for (std::size_t start = 0; start < count; start += kBlock) {
    const std::size_t n = std::min(kBlock, count - start);
    double most = 0;
    for (std::size_t i = 0; i < n; ++i) {
      points[i] = pointAt(start + i);
      feet[i] = footFrom(start + i, points[i], span);
      span = feet[i].span;
      most = std::max(most, feet[i].squared);
    }
    near.clear();
    tree.findNear(Box::of(points.data(), n), most, near);
    for (std::size_t i = 0; i < n; ++i) {
      Found& best = feet[i];
      const auto visit = [&](std::size_t piece) { improve(points[i], piece, best); };
      if (near.size() > kFew) {  // far apart, or from the shape
        tree.visitNear(
            points[i], [&] { return best.squared; }, visit);
      } else {
        for (const std::size_t piece : near) {
          if (bounds[piece].box.squaredFrom(points[i]) < best.squared) visit(piece);
        }
      }
      tell(start + i, best);
    }
  }
}

// Whether the vectors are at a right angle, to more digits than a descent that stops early leaves.
bool isAcross(const Vec3& a, const Vec3& b) {
  constexpr double kCosine = 1e-6;
  const double product = dot(a, b);
  return product * product <= kCosine * kCosine * squaredLength(a) * squaredLength(b);
}

std::vector<Box> boxesOf(const CurvePieces& pieces) {
  std::vector<Box> boxes;
  for (std::size_t span = 0; span < pieces.spans().count(); ++span) {
    boxes.push_back(Box::of(pieces.piece(span), pieces.order()));
  }
  return boxes;
}

std::vector<Box> boxesOf(const SurfacePieces& pieces) {
  std::vector<Box> boxes;
  for (std::size_t a = 0; a < pieces.spans(0).count(); ++a) {
    for (std::size_t b = 0; b < pieces.spans(1).count(); ++b) {
      boxes.push_back(Box::of(pieces.piece(a, b), pieces.order(0) * pieces.order(1)));
    }
  }
  return boxes;
}

}  // namespace

// ---- Curves -------------------------------------------------------------------------------------

CurveProjector::CurveProjector(const Spline& original)
    : exponent_(rangeExponent(original.controls)),
      dim_(original.dim),
      pieces_(scaled(original, exponent_)),
      tree_(boxesOf(pieces_)) {
  for (std::size_t span = 0; span < pieces_.spans().count(); ++span) {
    const Vec3* const b = pieces_.piece(span);
    const Box box = Box::of(b, pieces_.order());
    bounds_.push_back({box, box.centre(), reachFrom(box, bendReach(b, pieces_.order()))});
  }
}

// The jet is by u, and at a knot that of the span asked for.
CurveProjector::Place CurveProjector::placeAt(const Vec3& p, double u, std::size_t span) const {
  Place place{u, 0, span, {}};
  const double from = pieces_.spans().from(span);
  const double scale = 1 / (pieces_.spans().to(span) - from);
  place.jet = bezierJet(pieces_.piece(span), pieces_.order(), (u - from) * scale);
  place.jet.first = times(scale, place.jet.first);
  place.jet.second = times(scale * scale, place.jet.second);
  place.squared = squaredLength(minus(place.jet.at, p));
  return place;
}

// Within one span alone its own derivatives hold at both ends, wherever the next one turns to.
CurveProjector::Place CurveProjector::descended(const Vec3& p, double start, double from, double to,
                                                std::optional<std::size_t> only,
                                                std::size_t near) const {
  constexpr int kSteps = 30;
  const auto spanOf = [&](double u, std::size_t before) {
    return only ? *only : pieces_.spans().find(u, before);
  };
  const double begin = std::clamp(start, from, to);
  Place best = placeAt(p, begin, spanOf(begin, near));
  for (int step = 0; step < kSteps; ++step) {
    const CurveJet& c = best.jet;
    const Vec3 r = minus(c.at, p);
    const double slope = dot(r, c.first), speed = dot(c.first, c.first);
    const double bend = speed + dot(r, c.second);
    const double divisor = bend > 0.1 * speed ? bend : speed;  // Newton, else Gauss and Newton
    if (!(divisor > 0) || slope == 0) break;
    double length = -slope / divisor;
    bool isNearer = false;
    Place next = best;
    for (int halving = 0; halving < kHalvings && !isNearer; ++halving, length /= 2) {
      const double u = std::clamp(best.u + length, from, to);
      if (u == best.u) break;
      next = placeAt(p, u, spanOf(u, best.span));
      isNearer = next.squared < best.squared;
    }
    if (!isNearer) break;
    const bool settled = std::abs(next.u - best.u) <= 1e-15 * (to - from);
    best = next;
    if (settled) break;
  }
  best.isLow = isAcross(minus(best.jet.at, p), best.jet.first);
  return best;
}

void CurveProjector::improve(const Vec3& p, std::size_t span, Place& best) const {
  const double from = pieces_.spans().from(span), to = pieces_.spans().to(span);
  if (isWithinReach(p, bounds_[span].centre, bounds_[span].reach)) {
    if (best.isLow && from < best.u && best.u < to) return;
    const Place place = descended(p, best.u, from, to, span);
    if (place.squared < best.squared) best = place;
    return;
  }
  const Vec3* const b = pieces_.piece(span);
  search(p, {{b, b + pieces_.order()}, from, to}, span, 0, best);
}

void CurveProjector::search(const Vec3& p, const Piece& piece, std::size_t span, int depth,
                            Place& best) const {
  const std::size_t order = pieces_.order();
  const Box box = Box::of(piece.controls.data(), order);
  if (box.squaredFrom(p) >= best.squared) return;
  const double reach = reachFrom(box, bendReach(piece.controls.data(), order));
  const bool bendsUp = isWithinReach(p, box.centre(), reach);
  if (bendsUp && best.isLow && piece.from < best.u && best.u < piece.to) return;
  const double middle = piece.from + (piece.to - piece.from) / 2;
  if (bendsUp || depth == kCurveDepth) {
    const Place place = descended(p, middle, piece.from, piece.to, span);
    if (place.squared < best.squared) best = place;
    return;
  }
  Piece first{piece.controls, piece.from, middle}, second{piece.controls, middle, piece.to};
  halveBezier(first.controls.data(), second.controls.data(), order);
  const auto away = [&](const Piece& half) {
    return Box::of(half.controls.data(), order).squaredFrom(p);
  };
  if (away(second) < away(first)) std::swap(first, second);
  search(p, first, span, depth + 1, best);
  search(p, second, span, depth + 1, best);
}

Foot CurveProjector::footAt(const double* point, const Place& place) const {
  Vec3 c = place.jet.at;
  if (exponent_ != 0) {
    for (double& x : c) x = std::ldexp(x, exponent_);
  }
  return {place.u, 0, norm(minus(c, vec3(point, dim_)))};
}

Foot CurveProjector::at(const double* point, double u) const {
  return footAt(point, placeAt(scaledPoint(point, dim_, exponent_), u, pieces_.spans().find(u)));
}

Foot CurveProjector::nearestWithin(const double* point, double start, double from,
                                   double to) const {
  return footAt(point, descended(scaledPoint(point, dim_, exponent_), start, from, to));
}

Foot CurveProjector::nearest(const double* point, std::optional<double> guess) const {
  const double first = pieces_.spans().from(0), last = pieces_.spans().to(bounds_.size() - 1);
  const Vec3 p = scaledPoint(point, dim_, exponent_);
  Place best{first, kInfinity, 0, {}};
  if (guess && *guess >= first && *guess <= last) best = descended(p, *guess, first, last);
  tree_.visitNear(
      p, [&] { return best.squared; }, [&](std::size_t span) { improve(p, span, best); });
  return footAt(point, best);
}

void CurveProjector::appendNearest(const double* points, std::size_t count, const double* guesses,
                                   std::vector<double>& distances) const {
  const double first = pieces_.spans().from(0), last = pieces_.spans().to(bounds_.size() - 1);
  const auto dim = static_cast<std::size_t>(dim_);
  inBlocks<Place>(
      tree_, bounds_, count,
      [&](std::size_t i) { return scaledPoint(points + dim * i, dim_, exponent_); },
      [&](std::size_t i, const Vec3& p, std::size_t near) {
        const double u = std::clamp(guesses[i], first, last);
        return descended(p, u, first, last, {}, near);
      },
      [&](const Vec3& p, std::size_t span, Place& best) { improve(p, span, best); },
      [&](std::size_t i, const Place& best) {
        distances.push_back(footAt(points + dim * i, best).distance);
      });
}

// ---- Surfaces -----------------------------------------------------------------------------------

SurfaceProjector::SurfaceProjector(const Spline& original)
    : exponent_(rangeExponent(original.controls)),
      pieces_(scaled(original, exponent_)),
      domain_{{original.first(0), original.first(1)}, {original.last(0), original.last(1)}},
      tree_(boxesOf(pieces_)) {
  const std::size_t rows = pieces_.order(0), columns = pieces_.order(1);
  for (std::size_t a = 0; a < pieces_.spans(0).count(); ++a) {
    for (std::size_t b = 0; b < pieces_.spans(1).count(); ++b) {
      const Vec3* const net = pieces_.piece(a, b);
      const Box box = Box::of(net, rows * columns);
      bounds_.push_back({box, box.centre(), reachFrom(box, bendReach(net, rows, columns))});
    }
  }
}

// The jet is by u and v, and at knots that of the patch asked for.
SurfaceProjector::Found SurfaceProjector::placeAt(const Vec3& p, Place at,
                                                  const Patch& patch) const {
  const Spans &us = pieces_.spans(0), &vs = pieces_.spans(1);
  const auto [a, b] = patch;
  Found found{at, 0, patch, {}};
  const double su = 1 / (us.to(a) - us.from(a)), sv = 1 / (vs.to(b) - vs.from(b));
  PatchJet& jet = found.jet;
  jet = patchJet(pieces_.piece(a, b), pieces_.order(0), pieces_.order(1), (at.u - us.from(a)) * su,
                 (at.v - vs.from(b)) * sv);
  pieces_.tellPlaces(at.u, at.v, jet.at);
  jet.u = times(su, jet.u);
  jet.v = times(sv, jet.v);
  jet.uu = times(su * su, jet.uu);
  jet.uv = times(su * sv, jet.uv);
  jet.vv = times(sv * sv, jet.vv);
  found.squared = squaredLength(minus(jet.at, p));
  return found;
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

LocalModel localModel(const PatchJet& s, const Vec3& p) {
  const Vec3 r = minus(s.at, p);
  const Bend gauss{dot(s.u, s.u), dot(s.u, s.v), dot(s.v, s.v)};
  const Bend newton{gauss.uu + dot(r, s.uu), gauss.uv + dot(r, s.uv), gauss.vv + dot(r, s.vv)};
  return {dot(r, s.u), dot(r, s.v), newton.isPositive() ? newton : gauss};
}

// The step to the model's lowest place; where the bend is singular, along one direction alone. A
// direction that is not free, because the slope leads out of the range, keeps its parameter.
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

SurfaceProjector::Found SurfaceProjector::descended(const Vec3& p, Place start, const Range& range,
                                                    std::optional<Patch> only, Patch near) const {
  constexpr int kSteps = 40;
  const auto &from = range.from, &to = range.to;
  const auto patchOf = [&](const Place& place, const Patch& before) {
    if (only) return *only;
    return Patch{pieces_.spans(0).find(place.u, before[0]),
                 pieces_.spans(1).find(place.v, before[1])};
  };
  const auto within = [&](double u, double v) {
    return Place{std::clamp(u, from.u, to.u), std::clamp(v, from.v, to.v)};
  };
  const double size = to.u - from.u + to.v - from.v;
  const Place begin = within(start.u, start.v);
  Found best = placeAt(p, begin, patchOf(begin, near));
  for (int step = 0; step < kSteps; ++step) {
    const auto [u, v] = best.place;
    const LocalModel model = localModel(best.jet, p);
    const bool outU = (u <= from.u && model.slopeU > 0) || (u >= to.u && model.slopeU < 0);
    const bool outV = (v <= from.v && model.slopeV > 0) || (v >= to.v && model.slopeV < 0);
    Place move = stepOf(model, !outU, !outV);
    bool isNearer = false;
    Found next = best;
    for (int halving = 0; halving < kHalvings && !isNearer; ++halving) {
      const Place place = within(u + move.u, v + move.v);
      if (place.u == u && place.v == v) break;
      next = placeAt(p, place, patchOf(place, best.span));
      isNearer = next.squared < best.squared;
      move = {move.u / 2, move.v / 2};
    }
    if (!isNearer) break;
    const bool settled = std::abs(next.place.u - u) + std::abs(next.place.v - v) <= 1e-14 * size;
    best = next;
    if (settled) break;
  }
  const Vec3 r = minus(best.jet.at, p);
  best.isLow = isAcross(r, best.jet.u) && isAcross(r, best.jet.v);
  return best;
}

namespace {

// Whether the place lies within, not on the border: there the pieces may meet at an edge.
bool holds(const SurfaceProjector::Place& from, const SurfaceProjector::Place& to,
           const SurfaceProjector::Place& place) {
  return from.u < place.u && place.u < to.u && from.v < place.v && place.v < to.v;
}

}  // namespace

void SurfaceProjector::improve(const Vec3& p, std::size_t patch, Found& best) const {
  const std::size_t a = patch / pieces_.spans(1).count(), b = patch % pieces_.spans(1).count();
  const Range range{{pieces_.spans(0).from(a), pieces_.spans(1).from(b)},
                    {pieces_.spans(0).to(a), pieces_.spans(1).to(b)}};
  if (isWithinReach(p, bounds_[patch].centre, bounds_[patch].reach)) {
    if (best.isLow && holds(range.from, range.to, best.place)) return;
    const Found found = descended(p, best.place, range, Patch{a, b});
    if (found.squared < best.squared) best = found;
    return;
  }
  const Vec3* const net = pieces_.piece(a, b);
  search(p, {{net, net + pieces_.order(0) * pieces_.order(1)}, range}, {a, b}, 0, best);
}

void SurfaceProjector::search(const Vec3& p, const Piece& piece, const Patch& patch, int depth,
                              Found& best) const {
  const std::size_t rows = pieces_.order(0), columns = pieces_.order(1);
  const std::vector<Vec3>& net = piece.controls;
  const Box box = Box::of(net.data(), net.size());
  if (box.squaredFrom(p) >= best.squared) return;
  const auto& [from, to] = piece.range;
  const bool bendsUp =
      isWithinReach(p, box.centre(), reachFrom(box, bendReach(net.data(), rows, columns)));
  if (bendsUp && best.isLow && holds(from, to, best.place)) return;
  const Place middle{from.u + (to.u - from.u) / 2, from.v + (to.v - from.v) / 2};
  if (bendsUp || depth == kSurfaceDepth) {
    const Found found = descended(p, middle, piece.range, patch);
    if (found.squared < best.squared) best = found;
    return;
  }
  Piece first = piece, second = piece;
  if (depth % 2 == 0) {
    for (std::size_t j = 0; j < columns; ++j) {
      halveBezier(&first.controls[j], &second.controls[j], rows, columns);
    }
    first.range.to.u = second.range.from.u = middle.u;
  } else {
    for (std::size_t i = 0; i < rows; ++i) {
      halveBezier(&first.controls[i * columns], &second.controls[i * columns], columns);
    }
    first.range.to.v = second.range.from.v = middle.v;
  }
  const auto away = [&](const Piece& half) {
    return Box::of(half.controls.data(), half.controls.size()).squaredFrom(p);
  };
  if (away(second) < away(first)) std::swap(first, second);
  search(p, first, patch, depth + 1, best);
  search(p, second, patch, depth + 1, best);
}

Foot SurfaceProjector::nearest(const double* point, std::optional<Place> guess) const {
  const Vec3 p = scaledPoint(point, 3, exponent_);
  Found best{domain_.from, kInfinity, {0, 0}, {}};
  if (guess) best = descended(p, *guess, domain_);
  tree_.visitNear(
      p, [&] { return best.squared; }, [&](std::size_t patch) { improve(p, patch, best); });
  return {best.place.u, best.place.v, distanceOf(point, best)};
}

double SurfaceProjector::distanceOf(const double* point, const Found& found) const {
  Vec3 s = found.jet.at;
  if (exponent_ != 0) {
    for (double& x : s) x = std::ldexp(x, exponent_);
  }
  return norm(minus(s, vec3(point, 3)));
}

void SurfaceProjector::appendNearest(const double* points, std::size_t count, const Place* guesses,
                                     std::vector<double>& distances) const {
  inBlocks<Found>(
      tree_, bounds_, count,
      [&](std::size_t i) { return scaledPoint(points + 3 * i, 3, exponent_); },
      [&](std::size_t i, const Vec3& p, const Patch& near) {
        return descended(p, guesses[i], domain_, {}, near);
      },
      [&](const Vec3& p, std::size_t patch, Found& best) { improve(p, patch, best); },
      [&](std::size_t i, const Found& best) {
        distances.push_back(distanceOf(points + 3 * i, best));
      });
}

}  // namespace knotfit
