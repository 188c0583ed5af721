// SPDX-License-Identifier: MIT
// Axes with round numbers: steps of 1, 2 or 5 times a power of ten, the smallest that makes no more
// of them than wanted. Places are multiples of the step, counted and not summed up, so that none
// drifts.
#include "draw/axes.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace knotfit {
namespace {

constexpr double kLabelSize = 10, kNameSize = 11;

// Labels of six places and more give up all but the last three, or four.
constexpr double kLongLabel = 1e5, kKept = 1000;

// Power of ten of a step of 1, 2 or 5 times such a power.
int powerOf(double step) { return static_cast<int>(std::floor(std::log10(step) + 1e-9)); }

// A multiple of the step. Written out where that is short, else with as many digits as tell it from
// its neighbours.
std::string labelOf(double value, double step) {
  value += 0.0;  // no -0
  const int power = powerOf(step);
  const double size = std::max(std::abs(value), step);
  if (size < 1e6 && step >= 1e-5) return decimals(value, std::max(0, -power));
  return significant(value, 1 + powerOf(size) - power);
}

}  // namespace

void Range::take(double value) {
  low = std::min(low, value);
  high = std::max(high, value);
}

Range Range::widened(double share) const {
  const double margin = size() > 0 ? share * size() : std::max(std::abs(low), 1.0) * 0.5;
  return {low - margin, high + margin};
}

Ticks roundTicks(const Range& range, int wanted) {
  const double raw = range.size() / wanted;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  double step = power;
  for (const double factor : {2.0, 5.0, 10.0}) {
    if (step < raw) step = factor * power;
  }
  Ticks ticks;
  const double first = std::ceil(range.low / step - 1e-9);
  const double last = std::floor(range.high / step + 1e-9);
  // Where all numbers begin with the same long row of digits, it is taken off and told once.
  const double most = std::max(std::abs(first), std::abs(last));
  const double shift = most >= kLongLabel ? std::floor(first / kKept) * kKept : 0;
  ticks.origin = shift * step;
  for (double k = first; k <= last; ++k) {
    ticks.places.push_back(k * step);
    ticks.labels.push_back(labelOf((k - shift) * step, step));
  }
  return ticks;
}

std::string Ticks::named(const std::string& name) const {
  if (origin == 0) return name;
  const std::string amount = significant(std::abs(origin), 15);
  const std::size_t comma = std::min(name.find(','), name.size());  // before the units
  return name.substr(0, comma) + (origin > 0 ? " - " : " + ") + amount + name.substr(comma);
}

Panel Panel::equalScale(Rect area, Range x, Range y) {
  const double scale = std::max(x.size() / area.width, y.size() / area.height);
  const auto fill = [](Range r, double size) {
    const double middle = (r.low + r.high) / 2;
    return Range{middle - size / 2, middle + size / 2};
  };
  return Panel(area, fill(x, scale * area.width), fill(y, scale * area.height));
}

Place Panel::at(double x, double y) const {
  return {area_.x + area_.width * (x - x_.low) / x_.size(),
          area_.bottom() - area_.height * (y - y_.low) / y_.size()};
}

void Panel::draw(Canvas& canvas, const std::string& xName, const std::string& yName) const {
  const Ticks across = roundTicks(x_, std::max(2, static_cast<int>(area_.width / 80)));
  const Ticks up = roundTicks(y_, std::max(2, static_cast<int>(area_.height / 36)));
  double widest = 0;
  for (std::size_t i = 0; i < across.places.size(); ++i) {
    const double x = at(across.places[i], y_.low).x;
    canvas.polyline({{x, area_.y}, {x, area_.bottom()}}, kFaint, 0.5);
    canvas.text({x, area_.bottom() + 10}, across.labels[i], kLabelSize, Anchor::kMiddle);
  }
  for (std::size_t i = 0; i < up.places.size(); ++i) {
    const double y = at(x_.low, up.places[i]).y;
    canvas.polyline({{area_.x, y}, {area_.right(), y}}, kFaint, 0.5);
    canvas.text({area_.x - 6, y}, up.labels[i], kLabelSize, Anchor::kEnd);
    widest = std::max(widest, canvas.textWidth(up.labels[i], kLabelSize));
  }
  canvas.frame(area_, kInk, 0.8);
  canvas.text({area_.x + area_.width / 2, area_.bottom() + 26}, across.named(xName), kNameSize,
              Anchor::kMiddle);
  canvas.text({area_.x - widest - 18, area_.y + area_.height / 2}, up.named(yName), kNameSize,
              Anchor::kMiddle, kInk, true);
}

}  // namespace knotfit
