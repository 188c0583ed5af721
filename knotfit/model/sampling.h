// SPDX-License-Identifier: MIT
// Parameters at which a shape is sampled, for meshes, tables and pictures.
#pragma once

#include <cstddef>
#include <vector>

namespace knotfit {

/// @return parameters that divide every span of a direction evenly, both ends included.
std::vector<double> sampledParameters(const std::vector<double>& knots, int degree, int perSpan);

/// @return n parameters at even distances, both ends included exactly; `from` alone for n = 1.
std::vector<double> evenParameters(double from, double to, std::size_t n);

}  // namespace knotfit
