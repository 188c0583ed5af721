// SPDX-License-Identifier: MIT
// The map of a surface's residuals over its grid: a cell for each point, placed by row and column
// and not by its coordinates, so that points that stand close do not hide each other.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/text.h"
#include "draw/axes.h"
#include "draw/scenes.h"
#include "model/deviation.h"

namespace knotfit {
namespace {

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

}  // namespace

void drawResidualMap(Canvas& canvas, const Spline& s, const PictureData& data, const Rect& area) {
  const PointGrid& grid = *data.grid;
  const double top = std::max(summaryOf(*data.distances).max, 1e-300);  // a divisor
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

}  // namespace knotfit
