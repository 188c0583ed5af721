// SPDX-License-Identifier: MIT
// Axes with round numbers.
#pragma once

#include <string>
#include <vector>

#include "draw/canvas.h"

namespace knotfit {

struct Range {
  double low = 0, high = 1;
  double size() const { return high - low; }
  void take(double x);
  /// Widened by a share of its size on both sides; a range of no size gets some.
  Range widened(double share) const;
};

/// Round numbers within a range and their texts.
struct Ticks {
  std::vector<double> places;
  std::vector<std::string> labels;  ///< of the places less the origin
  double origin = 0;

  /// @return the axis' name, "x, mm", with the origin where there is one: "x - 4512000, mm".
  std::string named(const std::string& name) const;
};

/// About `wanted` ticks: steps of 1, 2 or 5 times a power of ten.
Ticks roundTicks(const Range& range, int wanted);

/// A panel with a horizontal and a vertical axis.
class Panel {
 public:
  Panel(Rect area, Range x, Range y) : area_(area), x_(x), y_(y) {}
  /// A panel with the same scale on both axes: one of the ranges is widened to fill the area.
  static Panel equalScale(Rect area, Range x, Range y);

  Place at(double x, double y) const;
  const Rect& area() const { return area_; }
  const Range& x() const { return x_; }
  const Range& y() const { return y_; }
  /// Draws grid, frame, numbers and axis names.
  void draw(Canvas& canvas, const std::string& xName, const std::string& yName) const;

 private:
  Rect area_;
  Range x_, y_;
};

}  // namespace knotfit
