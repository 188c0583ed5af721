// SPDX-License-Identifier: MIT
// Pictures of fits.
#include "draw/pictures.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "draw/scenes.h"

namespace knotfit {
namespace {

// Axes reach somewhat beyond what they show, and lengths are differences.
void checkRange(const std::vector<double>& coords) {
  constexpr double kMost = 1e307;
  const auto isFar = [](double x) { return std::abs(x) > kMost; };
  if (std::none_of(coords.begin(), coords.end(), isFar)) return;
  throw Fault(kOutput,
              "the picture cannot be drawn: a control point is beyond 1e307 "
              "(measure in other units, or leave the picture out)");
}

}  // namespace

std::string pictureOf(const Spline& spline, const PictureData& data, PictureFormat format) {
  checkRange(spline.controls);
  return spline.isCurve() ? drawCurve(spline, data, format) : drawSurface(spline, data, format);
}

}  // namespace knotfit
