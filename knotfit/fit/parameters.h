// SPDX-License-Identifier: MIT
// Parameters of data points and knots for them, both on [0, 1].
// Source: L. Piegl and W. Tiller, The NURBS Book, 9.2.1 and 9.4.1.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "model/points.h"

namespace knotfit {

/// How parameters are spread over the data.
enum class Spacing { kUniform, kCentripetal, kChord };

/// @return parameters of the points, from 0 to 1, strictly ascending. Of a closed sequence that
/// does not repeat its first point, the last parameter is below 1: the way back belongs to the
/// range. Points that coincide are a fault (exit code 4), uniform spacing apart.
std::vector<double> parametersOf(const PointSet& points, Spacing spacing, bool closed);

/// @return parameters of the grid's rows (along u) or columns (along v): the mean of those of the
/// lines of points, leaving out lines of no length.
std::vector<double> gridParameters(const PointGrid& grid, bool alongU, Spacing spacing);

/// Checks parameters given by the user: as many as points, finite and strictly ascending; shifts
/// and scales them to [0, 1]. Faults name the file.
std::vector<double> scaledParameters(std::vector<double> given, std::size_t points,
                                     const std::string& file);

/// @return knots (long form) for n control points as knotwork::averagedKnots places them. Corners
/// are parameter indices that get a knot of multiplicity degree. Faults (exit code 2) when n leaves
/// no room for them.
std::vector<double> averagedKnots(const std::vector<double>& parameters, int degree, std::size_t n,
                                  const std::vector<std::size_t>& corners = {});

/// @return clamped knots (long form) that divide [0, 1] evenly.
std::vector<double> uniformKnots(int degree, std::size_t n);

/// Completes knots given by the user, either in the long form or those within the domain alone, and
/// scales them to [0, 1]. Faults say what is wrong.
std::vector<double> completedKnots(std::vector<double> given, int degree, const std::string& file);

}  // namespace knotfit
