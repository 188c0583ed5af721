// SPDX-License-Identifier: MIT
// Pictures of surfaces: a shaded view from the side, and a map of the residuals.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/text.h"
#include "draw/axes.h"
#include "draw/scenes.h"
#include "fit/deviation.h"
#include "fit/shape.h"

namespace knotfit {
namespace {

using Vec3 = std::array<double, 3>;

double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// The box of everything that is shown, heights drawn out or pressed where they would not show.
struct Box {
  std::array<Range, 3> range;
  double stretch = 1;  // of z
};

double roundStretch(double wanted) {
  const double power = std::pow(10.0, std::floor(std::log10(wanted)));
  const double digit = wanted / power;
  return power * std::floor(digit);
}

Box boxOf(const Spline& s) {
  Box box;
  for (std::size_t c = 0; c < 3; ++c) {
    Range r{s.controls[c], s.controls[c]};
    for (std::size_t i = c; i < s.controls.size(); i += 3) r.take(s.controls[i]);
    if (r.size() == 0) r = r.widened(0);
    box.range[c] = r;
  }
  const double across = std::max(box.range[0].size(), box.range[1].size());
  const double ratio = box.range[2].size() / across;
  if (ratio < 0.2) box.stretch = roundStretch(0.45 / ratio);
  if (ratio > 2) box.stretch = roundStretch(1.0 / ratio);
  return box;
}

// A parallel view from the front right, above.
class View {
 public:
  View(const Spline& s, const Box& box, Place topLeft, double width, double most) : box_(box) {
    const Vec3 start = turned({box.range[0].low, box.range[1].low, box.range[2].high});
    Range x{start[0], start[0]}, y{start[1], start[1]};
    const auto take = [&](const Vec3& p) {
      x.take(turned(p)[0]);
      y.take(turned(p)[1]);
    };
    for (const double a : {box.range[0].low, box.range[0].high}) {
      for (const double b : {box.range[1].low, box.range[1].high}) take({a, b, box.range[2].low});
    }
    for (std::size_t i = 0; i < s.controls.size(); i += 3) {
      take({s.controls[i], s.controls[i + 1], s.controls[i + 2]});
    }
    scale_ = std::min(width / x.size(), most / y.size());
    origin_ = {topLeft.x + width / 2 - scale_ * (x.low + x.high) / 2, topLeft.y + scale_ * y.high};
    bottom_ = topLeft.y + scale_ * y.size();
  }

  double bottom() const { return bottom_; }

  Place at(const Vec3& p) const {
    const Vec3 t = turned(p);
    return {origin_.x + scale_ * t[0], origin_.y - scale_ * t[1]};
  }
  /// Nearness to the viewer.
  double depth(const Vec3& p) const { return turned(p)[2]; }
  /// Brightness of a facet with this normal in model units, the light being up on the left.
  double light(Vec3 normal) const {
    normal[2] /= box_.stretch;
    const double length = std::sqrt(dot(normal, normal));
    const Vec3 lamp = {-0.35, -0.45, 0.82};
    return length > 0 ? std::abs(dot(normal, lamp)) / length : 1;
  }
  double extent() const {
    return std::max(
        {box_.range[0].size(), box_.range[1].size(), box_.stretch * box_.range[2].size()});
  }

 private:
  Vec3 turned(const Vec3& p) const {
    constexpr double kCosA = 0.5, kSinA = -0.8660254037844386;  // 60 degrees to the right
    constexpr double kCosE = 0.8191520442889918, kSinE = 0.573576436351046;  // 35 degrees above
    const Vec3 q = {p[0] - box_.range[0].low, p[1] - box_.range[1].low,
                    box_.stretch * (p[2] - box_.range[2].low)};
    return {-kSinA * q[0] + kCosA * q[1], -kSinE * (kCosA * q[0] + kSinA * q[1]) + kCosE * q[2],
            kCosE * (kCosA * q[0] + kSinA * q[1]) + kSinE * q[2]};
  }

  Box box_;
  double scale_ = 1, bottom_ = 0;
  Place origin_;
};

// A facet of the surface or a piece of the control net, to be drawn from far to near.
struct Piece {
  double depth;
  std::vector<Place> places;
  Colour colour;
  double width;  // 0: a facet
};

std::vector<double> evenly(double from, double to, std::size_t n) {
  std::vector<double> u;
  for (std::size_t i = 0; i <= n; ++i) {
    u.push_back(from + (to - from) * static_cast<double>(i) / static_cast<double>(n));
  }
  return u;
}

void addFacets(const Spline& s, const View& view, std::vector<Piece>& pieces) {
  const auto count = [&](std::size_t d) {
    return std::clamp<std::size_t>(4 * (s.size[d] - static_cast<std::size_t>(s.degree[d])), 24, 80);
  };
  const std::vector<double> u = evenly(s.first(0), s.last(0), count(0)),
                            v = evenly(s.first(1), s.last(1), count(1));
  const SurfaceShape shape(s);
  std::vector<Vec3> points;
  for (const double a : u) {
    for (const double b : v) points.push_back(shape.point(a, b));
  }
  for (std::size_t i = 0; i + 1 < u.size(); ++i) {
    for (std::size_t j = 0; j + 1 < v.size(); ++j) {
      const std::size_t k = i * v.size() + j;
      Piece piece{0, {}, {}, 0};
      for (const std::size_t corner : {k, k + v.size(), k + v.size() + 1, k + 1}) {
        piece.places.push_back(view.at(points[corner]));
        piece.depth += view.depth(points[corner]) / 4;
      }
      const Vec3 n = shape.normal((u[i] + u[i + 1]) / 2, (v[j] + v[j + 1]) / 2);
      const double light = 0.35 + 0.62 * view.light(n);
      piece.colour = {0.86 * light, 0.93 * light, std::min(1.0, 1.02 * light)};
      pieces.push_back(std::move(piece));
    }
  }
}

void addNet(const Spline& s, const View& view, std::vector<Piece>& pieces) {
  constexpr int kParts = 3;
  const double lift = 0.006 * view.extent();  // nearer than the facets it lies on
  const double width = s.count() > 600 ? 0.3 : 0.6;
  const auto point = [&](std::size_t i, std::size_t j) {
    const double* p = s.control(i, j);
    return Vec3{p[0], p[1], p[2]};
  };
  const auto add = [&](const Vec3& a, const Vec3& b) {
    for (int k = 0; k < kParts; ++k) {
      Vec3 from, to;
      for (std::size_t c = 0; c < 3; ++c) {
        from[c] = a[c] + (b[c] - a[c]) * k / kParts;
        to[c] = a[c] + (b[c] - a[c]) * (k + 1) / kParts;
      }
      pieces.push_back({(view.depth(from) + view.depth(to)) / 2 + lift,
                        {view.at(from), view.at(to)},
                        kShape,
                        width});
    }
  };
  for (std::size_t i = 0; i < s.size[0]; ++i) {
    for (std::size_t j = 0; j < s.size[1]; ++j) {
      if (i + 1 < s.size[0]) add(point(i, j), point(i + 1, j));
      if (j + 1 < s.size[1]) add(point(i, j), point(i, j + 1));
    }
  }
}

void drawFloor(Canvas& canvas, const Box& box, const View& view) {
  const auto& [x, y, z] = box.range;
  const Vec3 corners[] = {{x.low, y.low, z.low},
                          {x.high, y.low, z.low},
                          {x.high, y.high, z.low},
                          {x.low, y.high, z.low}};
  std::vector<Place> outline;
  for (const Vec3& c : corners) outline.push_back(view.at(c));
  outline.push_back(outline.front());
  canvas.polyline(outline, kMuted, 0.7);
  canvas.polyline({view.at({x.low, y.low, z.low}), view.at({x.low, y.low, z.high})}, kMuted, 0.7);
}

// Numbers along the front edges of the floor and the left upright edge.
void drawNumbers(Canvas& canvas, const Box& box, const View& view, const std::string& units) {
  const auto& [x, y, z] = box.range;
  const auto axis = [&](std::size_t c, Vec3 from, Place step, Anchor anchor,
                        const std::string& name, double nameAt) {
    const Range& r = box.range[c];
    const Ticks ticks = roundTicks(r, c == 2 ? 3 : 5);
    for (std::size_t i = 0; i < ticks.places.size(); ++i) {
      from[c] = ticks.places[i];
      const Place p = view.at(from);
      canvas.polyline({p, {p.x + 5 * step.x, p.y + 5 * step.y}}, kInk, 0.7);
      canvas.text({p.x + 12 * step.x, p.y + 12 * step.y}, ticks.labels[i], 10, anchor);
    }
    from[c] = (r.low + r.high) / 2;
    const Place p = view.at(from);
    canvas.text({p.x + nameAt * step.x, p.y + nameAt * step.y}, name, 11, anchor);
  };
  axis(0, {0, y.low, z.low}, {-0.35, 0.94}, Anchor::kMiddle, cat("x, ", units), 36);
  axis(1, {x.high, 0, z.low}, {0.55, 0.83}, Anchor::kStart, cat("y, ", units), 38);
  const std::string times =
      box.stretch == 1 ? "" : cat(" (drawn x ", significant(box.stretch, 3), ")");
  axis(2, {x.low, y.low, 0}, {-1, 0}, Anchor::kEnd, "", 0);
  const Place top = view.at({x.low, y.low, z.high});
  canvas.text({top.x - 6, top.y - 14}, cat("z, ", units, times), 11, Anchor::kMiddle);
}

void drawView(Canvas& canvas, const Spline& s, const Box& box, const View& view) {
  drawFloor(canvas, box, view);
  std::vector<Piece> pieces;
  addFacets(s, view, pieces);
  addNet(s, view, pieces);
  std::stable_sort(pieces.begin(), pieces.end(),
                   [](const Piece& a, const Piece& b) { return a.depth < b.depth; });
  for (const Piece& p : pieces) {
    if (p.width > 0)
      canvas.polyline(p.places, p.colour, p.width);
    else
      canvas.polygon(p.places, p.colour);
  }
  drawNumbers(canvas, box, view, s.units);
}

// From light to dark in even steps of grey, so that a copy without colour reads the same.
Colour mapColour(double share) {
  constexpr std::array<Colour, 5> kStops = {{{0.98, 0.97, 0.90},
                                             {0.80, 0.86, 0.62},
                                             {0.36, 0.70, 0.62},
                                             {0.18, 0.42, 0.58},
                                             {0.13, 0.10, 0.30}}};
  const double at = std::clamp(share, 0.0, 1.0) * (kStops.size() - 1);
  const auto k = std::min<std::size_t>(static_cast<std::size_t>(at), kStops.size() - 2);
  const double t = at - static_cast<double>(k);
  const auto mixed = [t](double a, double b) { return a + t * (b - a); };
  return {mixed(kStops[k].red, kStops[k + 1].red), mixed(kStops[k].green, kStops[k + 1].green),
          mixed(kStops[k].blue, kStops[k + 1].blue)};
}

void drawBar(Canvas& canvas, const Rect& bar, double top, const std::string& units) {
  constexpr int kSteps = 128;
  for (int i = 0; i < kSteps; ++i) {
    const double h = bar.height / kSteps;
    canvas.rectangle({bar.x, bar.bottom() - h * (i + 1), bar.width, h + 0.3},
                     mapColour((i + 0.5) / kSteps));
  }
  canvas.frame(bar, kInk, 0.8);
  const Ticks ticks = roundTicks({0, top}, 6);
  for (std::size_t i = 0; i < ticks.places.size(); ++i) {
    const double y = bar.bottom() - bar.height * ticks.places[i] / top;
    canvas.polyline({{bar.right(), y}, {bar.right() + 4, y}}, kInk, 0.8);
    canvas.text({bar.right() + 7, y}, ticks.labels[i], 10, Anchor::kStart);
  }
  canvas.text({bar.x + bar.width / 2, bar.y - 12}, units, 10, Anchor::kMiddle);
}

void drawMap(Canvas& canvas, const Spline& s, const PictureData& data, const Rect& area) {
  const PointGrid& grid = *data.grid;
  const double top = std::max(summaryOf(*data.distances).max, 1e-300);
  const double n = static_cast<double>(grid.rows), m = static_cast<double>(grid.columns);
  const Panel panel(area, {0.5, n + 0.5}, {0.5, m + 0.5});
  canvas.clip(area);
  for (std::size_t i = 0; i < grid.rows; ++i) {
    for (std::size_t j = 0; j < grid.columns; ++j) {
      const double x = static_cast<double>(i) + 0.5, y = static_cast<double>(j) + 0.5;
      const Place low = panel.at(x, y), high = panel.at(x + 1, y + 1);
      canvas.rectangle({low.x, high.y, high.x - low.x + 0.3, low.y - high.y + 0.3},
                       mapColour((*data.distances)[i * grid.columns + j] / top));
    }
  }
  canvas.unclip();
  const auto axis = [&](double count, bool across) {
    for (const double k : roundTicks({1, count}, 5).places) {
      const Place p = across ? panel.at(k, 0.5) : panel.at(0.5, k);
      canvas.text(across ? Place{p.x, p.y + 10} : Place{p.x - 6, p.y}, cat(static_cast<int>(k)), 10,
                  across ? Anchor::kMiddle : Anchor::kEnd);
    }
  };
  axis(n, true);
  axis(m, false);
  canvas.frame(area, kInk, 0.8);
  canvas.text({area.x + area.width / 2, area.bottom() + 26}, "grid row (u)", 11, Anchor::kMiddle);
  canvas.text({area.x - 36, area.y + area.height / 2}, "grid column (v)", 11, Anchor::kMiddle, kInk,
              true);
  canvas.text({area.x, area.y - 12}, "distance at the parameters", 11, Anchor::kStart);
  drawBar(canvas, {area.right() + 16, area.y, 12, area.height}, top, s.units);
}

}  // namespace

std::string drawSurface(const Spline& s, const PictureData& data, Format format) {
  constexpr double kView = 600, kMost = 460, kMap = 300, kHead = 84;
  const bool map = data.grid && data.distances;
  const Box box = boxOf(s);
  const View view(s, box, {76, kHead}, kView - 130, kMost);
  const double height = std::max(view.bottom() + 56, kHead + 250.0);
  Canvas canvas(format, map ? kView + kMap + 150 : kView + 20, height);
  const std::string title = cat("B-spline surface, degree ", s.degree[0], " x ", s.degree[1], ", ",
                                s.size[0], " x ", s.size[1], " control points");
  canvas.text({30, 20}, title, 13, Anchor::kStart, kInk, false, true);
  drawView(canvas, s, box, view);
  if (map) {
    const Deviation d = summaryOf(*data.distances);
    canvas.text({30, 40},
                cat(data.grid->rows, " x ", data.grid->columns, " points, rms ",
                    significant(d.rms, 4), ", max ", significant(d.max, 4), " ", s.units),
                11, Anchor::kStart);
    const double ratio =
        static_cast<double>(data.grid->columns) / static_cast<double>(data.grid->rows);
    const double high = std::clamp(kMap * ratio, 140.0, height - kHead - 50);
    const double wide = std::clamp(high / ratio, 140.0, kMap);
    drawMap(canvas, s, data,
            {kView + 56, kHead - 10 + (height - kHead - 40 - high) / 2, wide, high});
  }
  return canvas.finish();
}

}  // namespace knotfit
