// SPDX-License-Identifier: MIT
// The map of a surface's residuals over its parameters. A grid has a cell for each point, placed by
// row and column and not by its coordinates, so that points that stand close do not hide each
// other; scattered points share cells, which show the largest of theirs, so that many points make
// no large picture.
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

constexpr double kNone = -1;  // the value of a cell without points

// The map's cells, along u first, and what its axes count.
struct Cells {
  std::size_t across, up;
  std::vector<double> values;
  Range u, v;  // from edge to edge
  const char *nameU, *nameV;
};

Cells cellsOf(const PointGrid& grid, const std::vector<double>& distances) {
  const double n = static_cast<double>(grid.rows), m = static_cast<double>(grid.columns);
  return {grid.rows,      grid.columns,   distances,        {0.5, n + 0.5},
          {0.5, m + 0.5}, "grid row (u)", "grid column (v)"};
}

Cells cellsOf(const std::vector<double>& parameters, const std::vector<double>& distances) {
  constexpr std::size_t kCells = 48;
  Cells cells{kCells, kCells, std::vector<double>(kCells * kCells, kNone), {0, 1}, {0, 1},
              "u",    "v"};
  const auto place = [](double t) {
    return std::min(static_cast<std::size_t>(t * kCells), kCells - 1);
  };
  for (std::size_t i = 0; i < distances.size(); ++i) {
    double& value = cells.values[place(parameters[2 * i]) * kCells + place(parameters[2 * i + 1])];
    value = std::max(value, distances[i]);
  }
  return cells;
}

void drawCells(Canvas& canvas, const Cells& cells, const Panel& panel, double top) {
  const auto edge = [](const Range& r, std::size_t k, std::size_t n) {
    return r.low + (r.high - r.low) * static_cast<double>(k) / static_cast<double>(n);
  };
  for (std::size_t i = 0; i < cells.across; ++i) {
    for (std::size_t j = 0; j < cells.up; ++j) {
      const double value = cells.values[i * cells.up + j];
      if (value == kNone) continue;
      const Place low = panel.at(edge(cells.u, i, cells.across), edge(cells.v, j, cells.up));
      const Place high =
          panel.at(edge(cells.u, i + 1, cells.across), edge(cells.v, j + 1, cells.up));
      canvas.rectangle({low.x, high.y, high.x - low.x + 0.3, low.y - high.y + 0.3},
                       mapColour(value / top));
    }
  }
}

// Ticks of a grid's lines stand at their middle, those of parameters at their places.
void drawTicks(Canvas& canvas, const Cells& cells, const Panel& panel, bool isAcross) {
  const Range& r = isAcross ? cells.u : cells.v;
  const bool counts = r.low > 0;
  const Ticks ticks = roundTicks(counts ? Range{1, r.high - 0.5} : r, 5);
  for (std::size_t k = 0; k < ticks.places.size(); ++k) {
    const double at = ticks.places[k];
    const Place p = isAcross ? panel.at(at, cells.v.low) : panel.at(cells.u.low, at);
    canvas.text(isAcross ? Place{p.x, p.y + 10} : Place{p.x - 6, p.y},
                counts ? cat(static_cast<int>(at)) : ticks.labels[k], 10,
                isAcross ? Anchor::kMiddle : Anchor::kEnd);
  }
}

}  // namespace

void drawResidualMap(Canvas& canvas, const Spline& s, const PictureData& data, const Rect& area) {
  const Cells cells =
      data.grid ? cellsOf(*data.grid, *data.distances) : cellsOf(*data.parameters, *data.distances);
  const double top = std::max(summaryOf(*data.distances).max, 1e-300);  // a divisor
  const Panel panel(area, cells.u, cells.v);
  canvas.clip(area);
  drawCells(canvas, cells, panel, top);
  canvas.unclip();
  drawTicks(canvas, cells, panel, true);
  drawTicks(canvas, cells, panel, false);
  canvas.frame(area, kInk, 0.8);
  canvas.text({area.x + area.width / 2, area.bottom() + 26}, cells.nameU, 11, Anchor::kMiddle);
  canvas.text({area.x - 36, area.y + area.height / 2}, cells.nameV, 11, Anchor::kMiddle, kInk,
              true);
  canvas.text({area.x, area.y - 12}, "distance at the parameters", 11, Anchor::kStart);
  drawBar(canvas, {area.right() + 16, area.y, 12, area.height}, top, s.units);
}

}  // namespace knotfit
