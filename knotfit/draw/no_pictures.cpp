// SPDX-License-Identifier: MIT
// Stands in for the drawing code where the program is built without Cairo.
#include "base/fault.h"
#include "draw/pictures.h"

namespace knotfit {

std::string pictureOf(const Spline&, const PictureData&, PictureFormat) {
  throw Fault(kUsage, "this build draws no pictures; write .ply or .csv");
}

}  // namespace knotfit
