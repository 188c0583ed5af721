// SPDX-License-Identifier: MIT
// The two kinds of pictures.
#pragma once

#include <string>

#include "draw/pictures.h"

namespace knotfit {

std::string drawCurve(const Spline& spline, const PictureData& data, Format format);
std::string drawSurface(const Spline& spline, const PictureData& data, Format format);

}  // namespace knotfit
