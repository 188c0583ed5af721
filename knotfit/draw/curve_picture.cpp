// SPDX-License-Identifier: MIT
// Pictures of curves: the plane, or three projections of a space curve, and the residuals.
//
// A projection has one scale in both directions, so that shapes are not bent. The range holds the
// control points too: they show why a curve goes where it does. Data are drawn under the curve, the
// knots on it. What many points would hide behind each other is drawn once: a file of a million
// points must make a picture that a viewer opens.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include "base/text.h"
#include "draw/axes.h"
#include "draw/scenes.h"
#include "model/deviation.h"
#include "model/sampling.h"
#include "model/shape.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

constexpr double kLeft = 74, kTop = 62, kGap = 46;  // room for labels, head and legend, names

using Points3 = std::vector<Vec3>;

constexpr std::size_t kMany = 2000;  // symbols: from here on they are dots, one for each speck

struct Scene {
  Points3 curve, knots, controls, data;
};

Scene sceneOf(const Spline& s, const PictureData& data) {
  constexpr std::size_t kPerSpan = 24, kPieces = 12000;  // smooth to the eye; and of a size to send
  const int perSpan = static_cast<int>(std::clamp<std::size_t>(kPieces / s.size[0], 2, kPerSpan));
  Scene scene;
  const CurveShape shape(s);
  for (const double u : sampledParameters(s.knots[0], s.degree[0], perSpan)) {
    scene.curve.push_back(shape.point(u));
  }
  for (const double u : sampledParameters(s.knots[0], s.degree[0], 1)) {
    scene.knots.push_back(shape.point(u));
  }
  for (std::size_t i = 0; i < s.size[0]; ++i) {
    scene.controls.push_back(vec3(s.control(i), s.dim));
  }
  for (std::size_t i = 0; data.points && i < data.points->count(); ++i) {
    scene.data.push_back(vec3((*data.points)[i], s.dim));
  }
  return scene;
}

Range rangeOf(const Scene& scene, std::size_t c) {
  Range r{scene.curve[0][c], scene.curve[0][c]};
  for (const Points3* points : {&scene.curve, &scene.controls, &scene.data}) {
    for (const auto& p : *points) r.take(p[c]);
  }
  return r.widened(0.04);
}

std::vector<Place> projected(const Panel& panel, const Points3& points, std::size_t a,
                             std::size_t b) {
  std::vector<Place> out;
  for (const auto& p : points) out.push_back(panel.at(p[a], p[b]));
  return out;
}

// Symbols shrink where there are many of them.
double symbolSize(std::size_t count) {
  if (count > kMany) return 0.8;
  return count > 400 ? 1.3 : 2.0;
}

// One place for each speck of the page that holds any.
std::vector<Place> specks(const std::vector<Place>& places) {
  constexpr double kSpeck = 0.5;  // points of the page
  std::set<std::pair<long, long>> taken;
  std::vector<Place> out;
  for (const Place& p : places) {
    if (taken.emplace(std::lround(p.x / kSpeck), std::lround(p.y / kSpeck)).second) {
      out.push_back(p);
    }
  }
  return out;
}

// The highest place of each column of the page: sticks to it cover those to the others.
std::vector<Place> summits(const std::vector<Place>& places) {
  constexpr double kColumn = 0.5;  // points of the page
  std::map<long, Place> highest;
  for (const Place& p : places) {
    const auto at = highest.emplace(std::lround(p.x / kColumn), p).first;
    if (p.y < at->second.y) at->second = p;
  }
  std::vector<Place> out;
  out.reserve(highest.size());
  for (const auto& [column, p] : highest) out.push_back(p);
  return out;
}

// Symbols by `draw`; where there are many, dots.
template <class Draw>
void drawSymbols(Canvas& canvas, const std::vector<Place>& places, Colour colour, Draw draw) {
  if (places.size() > kMany) return canvas.dots(specks(places), symbolSize(places.size()), colour);
  for (const Place& p : places) draw(p);
}

void drawProjection(Canvas& canvas, const Scene& scene, const Rect& area, std::size_t a,
                    std::size_t b, const std::string& units) {
  const Panel panel = Panel::equalScale(area, rangeOf(scene, a), rangeOf(scene, b));
  const auto name = [&](std::size_t c) { return cat("xyz"[c], ", ", units); };
  panel.draw(canvas, name(a), name(b));
  canvas.clip(area);
  const std::vector<Place> controls = projected(panel, scene.controls, a, b);
  canvas.polyline(controls, kMuted, 0.6, true);
  drawSymbols(canvas, controls, kMuted, [&](const Place& p) {
    canvas.square(p, 2.2 * symbolSize(controls.size()), kMuted, 0.7);
  });
  drawSymbols(canvas, projected(panel, scene.data, a, b), kDatum,
              [&](const Place& p) { canvas.ring(p, symbolSize(scene.data.size()), kDatum, 0.7); });
  canvas.polyline(projected(panel, scene.curve, a, b), kShape, 1.2);
  drawSymbols(canvas, projected(panel, scene.knots, a, b), kInk,
              [&](const Place& p) { canvas.dot(p, 0.75 * symbolSize(scene.knots.size()), kInk); });
  canvas.unclip();
}

void drawLegend(Canvas& canvas, double y, bool data) {
  double x = kLeft;
  const auto entry = [&](const std::string& text, auto symbol) {
    symbol(Place{x + 9, y});
    canvas.text({x + 23, y}, text, 10, Anchor::kStart);
    x += 23 + canvas.textWidth(text, 10) + 20;
  };
  const auto stroke = [&](Place p, Colour c, double width, bool dashed) {
    canvas.polyline({{p.x - 9, p.y}, {p.x + 9, p.y}}, c, width, dashed);
  };
  entry("curve", [&](Place p) { stroke(p, kShape, 1.4, false); });
  entry("knots", [&](Place p) { canvas.dot(p, 1.8, kInk); });
  entry("control polygon", [&](Place p) {
    stroke(p, kMuted, 0.7, true);
    canvas.square(p, 4.4, kMuted, 0.7);
  });
  if (data) entry("data", [&](Place p) { canvas.ring(p, 2, kDatum, 0.8); });
}

void drawResiduals(Canvas& canvas, const Rect& area, const Spline& s, const PictureData& data) {
  const Deviation d = summaryOf(*data.distances);
  const double top = d.max > 0 ? 1.08 * d.max : 1.0;  // zeros have a range too
  const Panel panel(area, {s.first(0), s.last(0)}, {0, top});
  panel.draw(canvas, "parameter u", cat("distance, ", s.units));
  canvas.clip(area);
  std::vector<Place> marks, sticks, tips;
  for (const double t : s.knots[0]) {
    const Place p = panel.at(t, 0);
    marks.insert(marks.end(), {p, {p.x, p.y - 6}});
  }
  for (std::size_t i = 0; i < data.distances->size(); ++i) {
    tips.push_back(panel.at((*data.parameters)[i], (*data.distances)[i]));
  }
  const std::size_t count = tips.size();
  if (count > kMany) tips = summits(tips);
  for (const Place& p : tips) sticks.insert(sticks.end(), {{p.x, area.bottom()}, p});
  canvas.segments(marks, kInk, 0.8);
  canvas.segments(sticks, kDatum, 0.6);
  canvas.dots(tips, 0.8 * symbolSize(count), kDatum);
  canvas.unclip();
  const Place mean = panel.at(panel.x().high, d.rms);
  canvas.polyline({panel.at(panel.x().low, d.rms), mean}, kShape, 0.9, true);
  canvas.text({mean.x + 5, mean.y}, "rms", 10, Anchor::kStart, kShape);
}

void drawHead(Canvas& canvas, const Spline& s, const PictureData& data, double width) {
  const std::string title = cat(s.closed ? "Closed B-spline curve" : "B-spline curve", ", degree ",
                                s.degree[0], ", ", s.size[0], " control points");
  canvas.fittedText({kLeft, 20}, title, 13, width - kLeft - 20, true);
  if (!data.distances) return;
  const Deviation d = summaryOf(*data.distances);
  const double after = kLeft + canvas.textWidth(title, 13, true) + 18;
  canvas.fittedText({after, 20},
                    cat(data.distances->size(), " points, rms ", significant(d.rms, 4), ", max ",
                        significant(d.max, 4), " ", s.units),
                    11, width - after - 20);
}

std::string drawPlane(const Spline& s, const PictureData& data, PictureFormat format) {
  constexpr double kWidth = 860, kLeast = 210, kMost = 560, kResiduals = 130;
  const Scene scene = sceneOf(s, data);
  const Range x = rangeOf(scene, 0), y = rangeOf(scene, 1);
  const double width = kWidth - kLeft - 40;
  const double height = std::clamp(width * y.size() / x.size(), kLeast, kMost);
  const double full = kTop + height + kGap + (data.distances ? kResiduals + kGap : 0);
  Canvas canvas(format, kWidth, full);
  drawHead(canvas, s, data, kWidth);
  drawLegend(canvas, 43, data.points != nullptr);
  drawProjection(canvas, scene, {kLeft, kTop, width, height}, 0, 1, s.units);
  if (data.distances) {
    drawResiduals(canvas, {kLeft, kTop + height + kGap, width, kResiduals}, s, data);
  }
  return canvas.finish();
}

std::string drawSpace(const Spline& s, const PictureData& data, PictureFormat format) {
  constexpr double kCell = 330, kHigh = 290, kBetween = 86;
  const Scene scene = sceneOf(s, data);
  constexpr double kWidth = kLeft + 2 * kCell + kBetween + 40;
  Canvas canvas(format, kWidth, kTop + 2 * (kHigh + kGap));
  drawHead(canvas, s, data, kWidth);
  drawLegend(canvas, 43, data.points != nullptr);
  const double right = kLeft + kCell + kBetween, below = kTop + kHigh + kGap;
  drawProjection(canvas, scene, {kLeft, kTop, kCell, kHigh}, 0, 1, s.units);
  drawProjection(canvas, scene, {right, kTop, kCell, kHigh}, 0, 2, s.units);
  drawProjection(canvas, scene, {kLeft, below, kCell, kHigh}, 1, 2, s.units);
  if (data.distances) drawResiduals(canvas, {right, below, kCell, kHigh}, s, data);
  return canvas.finish();
}

}  // namespace

std::string drawCurve(const Spline& spline, const PictureData& data, PictureFormat format) {
  return spline.dim == 2 ? drawPlane(spline, data, format) : drawSpace(spline, data, format);
}

}  // namespace knotfit
