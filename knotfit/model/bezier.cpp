// SPDX-License-Identifier: MIT
// Bezier pieces. All is done by de Casteljau's steps between neighbours, c(i) := (1 - t) c(i) + t
// c(i + 1), which lose no digits at any degree; derivatives are differences of the last ones.
#include "model/bezier.h"

#include <algorithm>

namespace knotfit {
namespace {

constexpr std::size_t kMostOrder = 26;

// Exact at both ends.
inline Vec3 mix(const Vec3& a, const Vec3& b, double t) {
  const double s = 1 - t;
  return {s * a[0] + t * b[0], s * a[1] + t * b[1], s * a[2] + t * b[2]};
}

// One step on the first `count` places.
inline void step(Vec3* c, std::size_t count, double t) {
  for (std::size_t i = 0; i < count; ++i) c[i] = mix(c[i], c[i + 1], t);
}

// Steps down to the last three places, or all there are.
inline void reduce(Vec3* c, std::size_t count, double t) {
  for (std::size_t left = count; left > 3; --left) step(c, left - 1, t);
}

// The jet from the last three control points, two where the degree is 1.
inline CurveJet lastSteps(Vec3* c, std::size_t count, double t) {
  const double p = static_cast<double>(count - 1);
  CurveJet jet{};
  if (count > 2) {
    for (std::size_t k = 0; k < 3; ++k) {
      jet.second[k] = p * (p - 1) * ((c[2][k] - c[1][k]) - (c[1][k] - c[0][k]));
    }
    step(c, 2, t);
  }
  jet.first = times(p, minus(c[1], c[0]));
  jet.at = mix(c[0], c[1], t);
  return jet;
}

// The Bezier points of span [t(k), t(k + 1)] of a B-spline: point i is the blossom at p - i times
// t(k) and i times t(k + 1). `out` holds control points k - p .. k, `stride` apart, and takes them.
void toBezier(const std::vector<double>& t, std::size_t k, std::size_t p, Vec3* out,
              std::size_t stride) {
  std::array<Vec3, kMostOrder> given, work;
  for (std::size_t i = 0; i <= p; ++i) given[i] = out[i * stride];
  for (std::size_t i = 0; i <= p; ++i) {
    work = given;
    for (std::size_t r = 1; r <= p; ++r) {
      const double at = t[r <= i ? k + 1 : k];
      for (std::size_t j = p; j >= r; --j) {
        const double from = t[k - p + j], to = t[j + k + 1 - r];
        work[j] = mix(work[j - 1], work[j], (at - from) / (to - from));
      }
    }
    out[i * stride] = work[p];
  }
}

}  // namespace

CurveJet bezierJet(const Vec3* controls, std::size_t count, double t) {
  std::array<Vec3, kMostOrder> c;
  std::copy(controls, controls + count, c.begin());
  reduce(c.data(), count, t);
  return lastSteps(c.data(), count, t);
}

Vec3 bezierPoint(const Vec3* controls, std::size_t count, double t) {
  std::array<Vec3, kMostOrder> c;
  std::copy(controls, controls + count, c.begin());
  for (std::size_t left = count - 1; left > 0; --left) step(c.data(), left, t);
  return c[0];
}

void halveBezier(Vec3* controls, Vec3* second, std::size_t count, std::size_t stride) {
  std::array<Vec3, kMostOrder> c;
  for (std::size_t i = 0; i < count; ++i) c[i] = controls[i * stride];
  for (std::size_t left = count; left > 0; --left) {
    controls[(count - left) * stride] = c[0];
    second[(left - 1) * stride] = c[left - 1];
    step(c.data(), left - 1, 0.5);
  }
}

PatchJet patchJet(const Vec3* controls, std::size_t rows, std::size_t columns, double u, double v) {
  std::array<Vec3, kMostOrder> at, first, second;  // of each row, by v
  for (std::size_t i = 0; i < rows; ++i) {
    const CurveJet row = bezierJet(controls + i * columns, columns, v);
    at[i] = row.at;
    first[i] = row.first;
    second[i] = row.second;
  }
  reduce(at.data(), rows, u);
  reduce(first.data(), rows, u);
  const CurveJet byAt = lastSteps(at.data(), rows, u), byFirst = lastSteps(first.data(), rows, u);
  for (std::size_t left = rows - 1; left > 0; --left) step(second.data(), left, u);
  return {byAt.at, byAt.first, byFirst.at, byAt.second, byFirst.first, second[0]};
}

Spans::Spans(const std::vector<double>& t, int degree) {
  const auto p = static_cast<std::size_t>(degree);
  for (std::size_t k = p; k + p + 1 < t.size(); ++k) {
    if (!(t[k] < t[k + 1])) continue;
    bounds_.push_back(t[k]);
    knots_.push_back(k);
  }
  bounds_.push_back(t[t.size() - 1 - p]);
}

std::size_t Spans::find(double u, std::size_t near) const {
  const std::size_t last = count() - 1;
  for (std::size_t span = near; span <= std::min(near + 1, last); ++span) {
    if (from(span) <= u && u < to(span)) return span;
  }
  const auto behind = std::upper_bound(bounds_.begin() + 1, bounds_.end() - 1, u);
  return static_cast<std::size_t>(behind - bounds_.begin()) - 1;
}

CurvePieces::CurvePieces(const Spline& s)
    : spans_(s.knots[0], s.degree[0]), order_(static_cast<std::size_t>(s.degree[0]) + 1) {
  controls_.reserve(spans_.count() * order_);
  for (std::size_t span = 0; span < spans_.count(); ++span) {
    const std::size_t k = spans_.knot(span);
    for (std::size_t i = k + 1 - order_; i <= k; ++i) {
      controls_.push_back(vec3(s.control(i), s.dim));
    }
    toBezier(s.knots[0], k, order_ - 1, controls_.data() + span * order_, 1);
  }
}

Vec3 CurvePieces::point(double u, std::size_t& span) const {
  span = spans_.find(u, span);
  const double from = spans_.from(span), to = spans_.to(span);
  return bezierPoint(piece(span), order_, (u - from) / (to - from));
}

SurfacePieces::SurfacePieces(const Spline& s)
    : spans_{Spans(s.knots[0], s.degree[0]), Spans(s.knots[1], s.degree[1])},
      order_{static_cast<std::size_t>(s.degree[0]) + 1, static_cast<std::size_t>(s.degree[1]) + 1},
      heights_(s.heights) {
  const std::size_t size = order_[0] * order_[1];
  controls_.reserve(spans_[0].count() * spans_[1].count() * size);
  for (std::size_t a = 0; a < spans_[0].count(); ++a) {
    for (std::size_t b = 0; b < spans_[1].count(); ++b) {
      const std::size_t k = spans_[0].knot(a), l = spans_[1].knot(b);
      const std::size_t start = controls_.size();
      for (std::size_t i = k + 1 - order_[0]; i <= k; ++i) {
        for (std::size_t j = l + 1 - order_[1]; j <= l; ++j) {
          controls_.push_back(vec3(s.control(i, j), 3));
        }
      }
      Vec3* const net = controls_.data() + start;
      for (std::size_t j = 0; j < order_[1]; ++j) {
        toBezier(s.knots[0], k, order_[0] - 1, net + j, order_[1]);
      }
      for (std::size_t i = 0; i < order_[0]; ++i) {
        toBezier(s.knots[1], l, order_[1] - 1, net + i * order_[1], 1);
      }
    }
  }
}

Vec3 SurfacePieces::point(double u, double v, std::array<std::size_t, 2>& span) const {
  const auto local = [&](std::size_t direction, double at) {
    const Spans& spans = spans_[direction];
    std::size_t& k = span[direction];
    k = spans.find(at, k);
    return (at - spans.from(k)) / (spans.to(k) - spans.from(k));
  };
  const double s = local(0, u), t = local(1, v);
  const Vec3* const net = piece(span[0], span[1]);
  std::array<Vec3, kMostOrder> line;
  for (std::size_t i = 0; i < order_[0]; ++i) {
    line[i] = bezierPoint(net + i * order_[1], order_[1], t);
  }
  Vec3 at = bezierPoint(line.data(), order_[0], s);
  tellPlaces(u, v, at);
  return at;
}

void SurfacePieces::tellPlaces(double u, double v, Vec3& at) const {
  if (!heights_) return;
  at[(*heights_)[0].coordinate] = (*heights_)[0].at(u);
  at[(*heights_)[1].coordinate] = (*heights_)[1].at(v);
}

}  // namespace knotfit
