// SPDX-License-Identifier: MIT
// A fitted curve or surface as it is stored, exchanged and drawn.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model/heights.h"

namespace knotfit {

/// A polynomial B-spline curve (one direction) or surface (two directions, u and v).
struct Spline {
  int directions = 1;
  int dim = 3;                               ///< 2 or 3 for a curve, 3 for a surface
  std::array<int, 2> degree{3, 0};           ///< per direction
  std::array<std::vector<double>, 2> knots;  ///< long form: size + degree + 1 per direction
  std::array<std::size_t, 2> size{0, 1};     ///< control points per direction
  std::vector<double> controls;              ///< point (i, j) at dim * (i * size[1] + j)
  bool closed = false;                       ///< the curve ends where it begins, smoothly
  std::string units = "mm";                  ///< mm, cm, m or in
  std::optional<HeightPlaces> heights;       ///< of a surface over even places, with domain 0 to 1

  bool isCurve() const { return directions == 1; }
  std::size_t count() const { return size[0] * size[1]; }
  const double* control(std::size_t i, std::size_t j = 0) const {
    return controls.data() + static_cast<std::size_t>(dim) * (i * size[1] + j);
  }
  double first(int direction) const { return knots[index(direction)][degreeOf(direction)]; }
  double last(int direction) const {
    const auto& t = knots[index(direction)];
    return t[t.size() - 1 - degreeOf(direction)];
  }

 private:
  static std::size_t index(int direction) { return static_cast<std::size_t>(direction); }
  std::size_t degreeOf(int direction) const {
    return static_cast<std::size_t>(degree[index(direction)]);
  }
};

/// Says what is wrong with knots for `size` control points. @return an empty text when all is well.
std::string knotFault(const std::vector<double>& knots, int degree, std::size_t size);

/// Says what is wrong with the numbers of a spline: shapes, degrees, knot order and multiplicity,
/// values that are not finite. @return an empty text when all is well.
std::string faultOf(const Spline& spline);

}  // namespace knotfit
