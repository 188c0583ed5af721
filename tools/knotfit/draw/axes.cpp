// SPDX-License-Identifier: MIT
// Axes with round numbers.
#include "draw/axes.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace knotfit {
namespace {

constexpr double kLabelSize = 10, kNameSize = 11;

// Powers of ten that are written out; beyond them the exponent form is shorter.
std::string labelOf(double value, double step) {
  const int power = static_cast<int>(std::floor(std::log10(step) + 1e-9));
  const double size = std::max(std::abs(value), step);
  if (size >= 1e6 || step < 1e-5) return significant(value, 6);
  return decimals(value == 0 ? 0.0 : value, std::max(0, -power));
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
  const double step = power * (raw > 5 * power ? 10 : raw > 2 * power ? 5 : raw > power ? 2 : 1);
  Ticks ticks;
  const double first = std::ceil(range.low / step - 1e-9);
  for (double k = first; k * step <= range.high + 1e-9 * step; ++k) {
    ticks.places.push_back(k * step);
    ticks.labels.push_back(labelOf(k * step, step));
  }
  return ticks;
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
  canvas.text({area_.x + area_.width / 2, area_.bottom() + 26}, xName, kNameSize, Anchor::kMiddle);
  canvas.text({area_.x - widest - 18, area_.y + area_.height / 2}, yName, kNameSize,
              Anchor::kMiddle, kInk, true);
}

}  // namespace knotfit
