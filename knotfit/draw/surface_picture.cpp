// SPDX-License-Identifier: MIT
// Pictures of surfaces: a shaded view from the side with the control net.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/text.h"
#include "draw/axes.h"
#include "draw/scenes.h"
#include "draw/view.h"
#include "model/deviation.h"
#include "model/sampling.h"
#include "model/shape.h"

namespace knotfit {
namespace {

// A facet of the surface or a piece of the control net, to be drawn from far to near.
struct Piece {
  double depth;
  std::vector<Place> places;
  Colour colour;
  double width;  // 0: a facet
};

// Four facets to a span show its bend; few spans get more, many fewer, for the picture's size.
void addFacets(const Spline& s, const View& view, std::vector<Piece>& pieces) {
  const auto count = [&](std::size_t d) {
    return std::clamp<std::size_t>(4 * (s.size[d] - static_cast<std::size_t>(s.degree[d])), 24, 80);
  };
  const std::vector<double> u = evenParameters(s.first(0), s.last(0), count(0) + 1),
                            v = evenParameters(s.first(1), s.last(1), count(1) + 1);
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
  constexpr double kPartLength = 5;           // on the page: hidden to that exactness
  const double lift = 0.006 * view.extent();  // nearer than the facets it lies on
  const double width = s.count() > 600 ? 0.3 : 0.6;
  const auto point = [&](std::size_t i, std::size_t j) { return vec3(s.control(i, j), 3); };
  const auto add = [&](const Vec3& a, const Vec3& b) {
    const Place p = view.at(a), q = view.at(b);
    const int parts = 1 + static_cast<int>(std::hypot(p.x - q.x, p.y - q.y) / kPartLength);
    for (int k = 0; k < parts; ++k) {
      const Vec3 from = between(a, b, static_cast<double>(k) / parts);
      const Vec3 to = between(a, b, static_cast<double>(k + 1) / parts);
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
    const Ticks ticks = roundTicks(r, c == 2 ? 4 : 5);
    for (std::size_t i = 0; i < ticks.places.size(); ++i) {
      from[c] = ticks.places[i];
      const Place p = view.at(from);
      canvas.polyline({p, {p.x + 5 * step.x, p.y + 5 * step.y}}, kInk, 0.7);
      canvas.text({p.x + 12 * step.x, p.y + 12 * step.y}, ticks.labels[i], 10, anchor);
    }
    from[c] = (r.low + r.high) / 2;
    const Place p = view.at(from);
    if (name.empty()) return;
    canvas.text({p.x + nameAt * step.x, p.y + nameAt * step.y}, ticks.named(name), 11, anchor);
  };
  axis(0, {0, y.low, z.low}, {-0.35, 0.94}, Anchor::kMiddle, cat("x, ", units), 36);
  axis(1, {x.high, 0, z.low}, {0.55, 0.83}, Anchor::kStart, cat("y, ", units), 38);
  const std::string times =
      box.stretch == 1 ? "" : cat(" (drawn x ", significant(box.stretch, 3), ")");
  axis(2, {x.low, y.low, 0}, {-1, 0}, Anchor::kEnd, "", 0);
  const Place top = view.at({x.low, y.low, z.high});
  const std::string name = roundTicks(z, 4).named(cat("z, ", units)) + times;
  const double half = canvas.textWidth(name, 11) / 2;
  canvas.text({std::max(top.x - 6, half + 6), top.y - 14}, name, 11, Anchor::kMiddle);
}

// What is near covers what is far, piece by piece (the painter's algorithm). The sort is stable, so
// that pieces of equal depth come alike on every machine.
void drawView(Canvas& canvas, const Spline& s, const Box& box, const View& view) {
  drawFloor(canvas, box, view);
  std::vector<Piece> pieces;
  addFacets(s, view, pieces);
  addNet(s, view, pieces);
  std::stable_sort(pieces.begin(), pieces.end(),
                   [](const Piece& a, const Piece& b) { return a.depth < b.depth; });
  for (const Piece& p : pieces) {
    if (p.width > 0) {
      canvas.polyline(p.places, p.colour, p.width);
    } else {
      canvas.polygon(p.places, p.colour);
    }
  }
  drawNumbers(canvas, box, view, s.units);
}

std::string pointsText(const PictureData& data) {
  return data.grid ? cat(data.grid->rows, " x ", data.grid->columns, " points")
                   : cat(data.points->count(), " scattered points");
}

}  // namespace

std::string drawSurface(const Spline& s, const PictureData& data, PictureFormat format) {
  constexpr double kView = 600, kMost = 460, kMap = 300, kHead = 84;
  const bool map = data.distances && (data.grid || (data.points && data.parameters));
  const Box box = boxOf(s);
  const View view(s, box, {76, kHead}, kView - 130, kMost);
  const double height = std::max(view.bottom() + 56, kHead + 250.0);
  const double width = map ? kView + kMap + 150 : kView + 20;
  Canvas canvas(format, width, height);
  const std::string title = cat("B-spline surface, degree ", s.degree[0], " x ", s.degree[1], ", ",
                                s.size[0], " x ", s.size[1], " control points");
  canvas.fittedText({30, 20}, title, 13, width - 50, true);
  drawView(canvas, s, box, view);
  if (map) {
    const Deviation d = summaryOf(*data.distances);
    canvas.fittedText({30, 40},
                      cat(pointsText(data), ", rms ", significant(d.rms, 4), ", max ",
                          significant(d.max, 4), " ", s.units),
                      11, width - 50);
    const double ratio =
        data.grid ? static_cast<double>(data.grid->columns) / static_cast<double>(data.grid->rows)
                  : 1;
    const double high = std::clamp(kMap * ratio, 140.0, height - kHead - 50);
    const double wide = std::clamp(high / ratio, 140.0, kMap);
    drawResidualMap(canvas, s, data,
                    {kView + 56, kHead - 10 + (height - kHead - 40 - high) / 2, wide, high});
  }
  return canvas.finish();
}

}  // namespace knotfit
