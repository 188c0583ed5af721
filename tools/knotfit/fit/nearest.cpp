// SPDX-License-Identifier: MIT
// Nearest points on curves and surfaces.
#include "fit/nearest.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace knotfit {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
using Vec3 = std::array<double, 3>;

void widen(Vec3& low, Vec3& high, const double* p, int dim) {
  for (int c = 0; c < dim; ++c) {
    const auto k = static_cast<std::size_t>(c);
    low[k] = std::min(low[k], p[c]);
    high[k] = std::max(high[k], p[c]);
  }
}

double boxSquared(const Vec3& low, const Vec3& high, const double* p, int dim) {
  double sum = 0;
  for (int c = 0; c < dim; ++c) {
    const auto k = static_cast<std::size_t>(c);
    const double out = std::max({low[k] - p[c], p[c] - high[k], 0.0});
    sum += out * out;
  }
  return sum;
}

double squaredTo(const double* a, const double* p, int dim) {
  double sum = 0;
  for (int c = 0; c < dim; ++c) sum += (a[c] - p[c]) * (a[c] - p[c]);
  return sum;
}

double dot(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

}  // namespace

CurveProjector::CurveProjector(const Spline& s) : shape_(s), dim_(s.dim) {
  const auto p = static_cast<std::size_t>(s.degree[0]);
  const int samples = 2 * s.degree[0] + 2;
  const std::vector<double>& t = s.knots[0];
  for (std::size_t k = p; k < s.size[0]; ++k) {
    if (!(t[k] < t[k + 1])) continue;
    Span span{t[k],
              t[k + 1],
              {kInfinity, kInfinity, kInfinity},
              {-kInfinity, -kInfinity, -kInfinity},
              {}};
    for (std::size_t i = k - p; i <= k; ++i) widen(span.low, span.high, s.control(i), dim_);
    for (int i = 0; i <= samples; ++i) {
      span.samples.push_back(shape_.point(span.from + (span.to - span.from) * i / samples));
    }
    spans_.push_back(std::move(span));
  }
}

double CurveProjector::squared(const double* point, double u) const {
  const Vec3 at = shape_.point(u);
  return squaredTo(at.data(), point, dim_);
}

Foot CurveProjector::downhill(const double* point, double start, double from, double to) const {
  constexpr int kSteps = 30;
  Vec3 p{};
  std::copy(point, point + dim_, p.begin());
  double u = std::clamp(start, from, to), best = squared(point, u);
  for (int step = 0; step < kSteps; ++step) {
    std::array<double, 9> d;
    shape_.eval(u, 2, d.data());
    const Vec3 r = {d[0] - p[0], d[1] - p[1], d[2] - p[2]};
    const double slope = dot(r.data(), &d[3]), speed = dot(&d[3], &d[3]);
    const double bend = speed + dot(r.data(), &d[6]);
    const double divisor = bend > 0.1 * speed ? bend : speed;  // Newton, else Gauss and Newton
    if (!(divisor > 0) || slope == 0) break;
    double length = -slope / divisor, next = u, value = best;
    for (int halving = 0; halving < 12; ++halving, length /= 2) {
      next = std::clamp(u + length, from, to);
      value = squared(point, next);
      if (value < best) break;
    }
    if (!(value < best)) break;
    const bool settled = std::abs(next - u) <= 1e-15 * (to - from);
    u = next;
    best = value;
    if (settled) break;
  }
  return {u, 0, std::sqrt(best)};
}

Foot CurveProjector::nearest(const double* point, double guess) const {
  const double first = spans_.front().from, last = spans_.back().to;
  Foot best{first, 0, kInfinity};
  if (guess >= first && guess <= last) best = downhill(point, guess, first, last);
  for (const Span& span : spans_) {
    if (boxSquared(span.low, span.high, point, dim_) >= best.distance * best.distance) continue;
    const std::size_t n = span.samples.size();
    std::vector<double> value(n);
    for (std::size_t i = 0; i < n; ++i) value[i] = squaredTo(span.samples[i].data(), point, dim_);
    const double step = (span.to - span.from) / static_cast<double>(n - 1);
    for (std::size_t i = 0; i < n; ++i) {
      if ((i > 0 && value[i - 1] < value[i]) || (i + 1 < n && value[i + 1] < value[i])) continue;
      const double u = span.from + step * static_cast<double>(i);
      const Foot foot =
          downhill(point, u, std::max(span.from, u - step), std::min(span.to, u + step));
      if (foot.distance < best.distance) best = foot;
    }
  }
  return best;
}

SurfaceProjector::SurfaceProjector(const Spline& s)
    : shape_(s), domain_{s.first(0), s.last(0), s.first(1), s.last(1)} {
  const auto p = static_cast<std::size_t>(s.degree[0]), q = static_cast<std::size_t>(s.degree[1]);
  const std::vector<double>&tu = s.knots[0], &tv = s.knots[1];
  for (std::size_t a = p; a < s.size[0]; ++a) {
    for (std::size_t b = q; b < s.size[1]; ++b) {
      if (!(tu[a] < tu[a + 1] && tv[b] < tv[b + 1])) continue;
      Patch patch{tu[a],
                  tu[a + 1],
                  tv[b],
                  tv[b + 1],
                  {kInfinity, kInfinity, kInfinity},
                  {-kInfinity, -kInfinity, -kInfinity}};
      for (std::size_t i = a - p; i <= a; ++i) {
        for (std::size_t j = b - q; j <= b; ++j) widen(patch.low, patch.high, s.control(i, j), 3);
      }
      patches_.push_back(patch);
    }
  }
}

// Newton's method with halved steps; where its matrix is not positive, the residual's bend is left
// out of it (Gauss and Newton).
Foot SurfaceProjector::downhill(const double* p, double u, double v) const {
  constexpr int kSteps = 40;
  const auto squared = [&](double a, double b) {
    const Vec3 at = shape_.point(a, b);
    return squaredTo(at.data(), p, 3);
  };
  double best = squared(u, v);
  for (int step = 0; step < kSteps; ++step) {
    std::array<double, 27> d;  // order 2: S, Su, Suu, Sv, Suv, ...
    shape_.eval(u, v, 2, d.data());
    const Vec3 r = {d[0] - p[0], d[1] - p[1], d[2] - p[2]};
    const double *su = &d[3], *sv = &d[9];
    const double gu = dot(r.data(), su), gv = dot(r.data(), sv);
    double a = dot(su, su), b = dot(su, sv), c = dot(sv, sv);
    const double bentA = a + dot(r.data(), &d[6]), bentB = b + dot(r.data(), &d[12]),
                 bentC = c + dot(r.data(), &d[18]);
    if (bentA > 0 && bentC > 0 && bentA * bentC - bentB * bentB > 1e-12 * bentA * bentC) {
      a = bentA;
      b = bentB;
      c = bentC;
    }
    const bool fixU = (u <= domain_[0] && gu > 0) || (u >= domain_[1] && gu < 0);
    const bool fixV = (v <= domain_[2] && gv > 0) || (v >= domain_[3] && gv < 0);
    double du = 0, dv = 0;
    const double det = a * c - b * b;
    if (!fixU && !fixV && det > 1e-12 * a * c) {
      du = (-gu * c + gv * b) / det;
      dv = (-gv * a + gu * b) / det;
    } else if (!fixU && a > 0) {
      du = -gu / a;
    } else if (!fixV && c > 0) {
      dv = -gv / c;
    }
    double nextU = u, nextV = v, value = best;
    for (int halving = 0; halving < 12; ++halving, du /= 2, dv /= 2) {
      nextU = std::clamp(u + du, domain_[0], domain_[1]);
      nextV = std::clamp(v + dv, domain_[2], domain_[3]);
      value = squared(nextU, nextV);
      if (value < best) break;
    }
    if (!(value < best)) break;
    const bool settled = std::abs(nextU - u) + std::abs(nextV - v) <=
                         1e-14 * (domain_[1] - domain_[0] + domain_[3] - domain_[2]);
    u = nextU;
    v = nextV;
    best = value;
    if (settled) break;
  }
  return {u, v, std::sqrt(best)};
}

// Samples of a patch that are no further from the point than the samples around them.
std::vector<Foot> SurfaceProjector::valleys(const double* p, const Patch& patch) const {
  constexpr int kSide = 6;
  std::array<std::array<double, kSide>, kSide> squared;
  const auto at = [&](int i, int j) {
    const double a = static_cast<double>(i) / (kSide - 1), b = static_cast<double>(j) / (kSide - 1);
    return Foot{patch.u0 + (patch.u1 - patch.u0) * a, patch.v0 + (patch.v1 - patch.v0) * b, 0};
  };
  const auto value = [&](int i, int j) -> double& {
    return squared[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
  };
  for (int i = 0; i < kSide; ++i) {
    for (int j = 0; j < kSide; ++j) {
      value(i, j) = squaredTo(shape_.point(at(i, j).u, at(i, j).v).data(), p, 3);
    }
  }
  std::vector<Foot> out;
  for (int i = 0; i < kSide; ++i) {
    for (int j = 0; j < kSide; ++j) {
      bool low = true;
      for (int a = std::max(i - 1, 0); a <= std::min(i + 1, kSide - 1); ++a) {
        for (int b = std::max(j - 1, 0); b <= std::min(j + 1, kSide - 1); ++b) {
          low = low && value(i, j) <= value(a, b);
        }
      }
      if (low) out.push_back(at(i, j));
    }
  }
  return out;
}

Foot SurfaceProjector::nearest(const double* p, double uGuess, double vGuess) const {
  Foot best{domain_[0], domain_[2], kInfinity};
  if (uGuess >= domain_[0] && vGuess >= domain_[2]) best = downhill(p, uGuess, vGuess);
  for (const Patch& patch : patches_) {
    if (boxSquared(patch.low, patch.high, p, 3) >= best.distance * best.distance) continue;
    for (const Foot& start : valleys(p, patch)) {
      const Foot foot = downhill(p, start.u, start.v);
      if (foot.distance < best.distance) best = foot;
    }
  }
  return best;
}

}  // namespace knotfit
