// SPDX-License-Identifier: MIT
// Pictures of fits.
#include "draw/pictures.h"

#include "draw/scenes.h"

namespace knotfit {

std::string pictureOf(const Spline& spline, const PictureData& data, PictureFormat format) {
  return spline.isCurve() ? drawCurve(spline, data, format) : drawSurface(spline, data, format);
}

}  // namespace knotfit
