// SPDX-License-Identifier: MIT
// Measured points: a sequence for curves, a grid for surfaces.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "model/heights.h"

namespace knotfit {

/// A sequence of points of dimension 2 or 3.
struct PointSet {
  int dim = 0;
  std::vector<double> coords;   ///< point after point
  std::vector<double> weights;  ///< one per point, or empty
  std::size_t merged = 0;       ///< points left out because they coincide with the one before

  std::size_t count() const { return dim ? coords.size() / static_cast<std::size_t>(dim) : 0; }
  const double* operator[](std::size_t i) const {
    return coords.data() + i * static_cast<std::size_t>(dim);
  }
};

/// A rows x columns grid of 3-D points; rows run along u, columns along v.
struct PointGrid {
  std::size_t rows = 0, columns = 0;
  std::vector<double> coords;           ///< point (i, j) at 3 * (i * columns + j)
  std::optional<HeightPlaces> heights;  ///< of a grid of heights: its even places

  const double* at(std::size_t i, std::size_t j) const {
    return coords.data() + 3 * (i * columns + j);
  }
};

}  // namespace knotfit
