// SPDX-License-Identifier: MIT
// Pictures of fits: SVG, PNG and PDF from one drawing code.
#pragma once

#include <string>
#include <vector>

#include "model/points.h"
#include "model/spline.h"

namespace knotfit {

enum class PictureFormat { kSvg, kPng, kPdf };

/// What is drawn beside the shape itself; null pointers leave their part out.
struct PictureData {
  const PointSet* points = nullptr;                 ///< of a curve, or scattered
  const PointGrid* grid = nullptr;                  ///< of a surface
  const std::vector<double>* parameters = nullptr;  ///< of points; u and v of scattered ones
  const std::vector<double>* distances = nullptr;   ///< at the parameters
};

/// @return the picture's bytes: a curve with data, control polygon, knots and residuals; a surface
/// shaded with its control net and a map of the residuals. Faults (exit code 2) where the program
/// was built without pictures.
std::string pictureOf(const Spline& spline, const PictureData& data, PictureFormat format);

}  // namespace knotfit
