// SPDX-License-Identifier: MIT
// The two kinds of pictures.
#pragma once

#include <string>

#include "draw/canvas.h"
#include "draw/pictures.h"

namespace knotfit {

std::string drawCurve(const Spline& spline, const PictureData& data, PictureFormat format);
std::string drawSurface(const Spline& spline, const PictureData& data, PictureFormat format);

/// Draws the distances of a surface's points as colours, with a scale beside them.
void drawResidualMap(Canvas& canvas, const Spline& spline, const PictureData& data,
                     const Rect& area);

}  // namespace knotfit
