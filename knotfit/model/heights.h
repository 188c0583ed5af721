// SPDX-License-Identifier: MIT
// Surfaces of heights: x and y are known, z alone is fitted.
//
// Over even places with even parameters, x and y are linear in the parameters. The net that holds a
// linear function has it at the Greville abscissae: so x and y of the control points are put there
// and not fitted, and where the surface is evaluated they are the data's own products.
#pragma once

#include <array>
#include <cstddef>

namespace knotfit {

struct Spline;

/// Along one direction of a grid, one coordinate is `spacing` times 0, 1, ..., `steps`.
struct EvenPlaces {
  std::size_t coordinate = 0;  ///< 0 for x, 1 for y
  double spacing = 1;
  std::size_t steps = 1;

  /// @return the coordinate at a parameter of the domain 0 to 1; at k / steps, exactly what
  /// spacing * k gives.
  double at(double u) const;
  /// @return its change with the parameter.
  double slope() const { return spacing * static_cast<double>(steps); }
};

/// The places of a grid of heights, along u and v.
using HeightPlaces = std::array<EvenPlaces, 2>;

/// Puts x and y of the control points where `spline.heights` says, each rounded once; does nothing
/// where that is empty.
void placeHeights(Spline& spline);

}  // namespace knotfit
