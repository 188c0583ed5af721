// SPDX-License-Identifier: MIT
// The program's own format: one versioned JSON object per fit.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "fit/spline.h"

namespace knotfit {

/// @return the fit as JSON, doubles in their shortest form, one control point a line.
std::string fitJson(const Spline& spline);

/// Reads a fit. Faults (exit code 3) name the file and what is wrong with it.
Spline readFit(const std::string& path);

/// @return JSON text of a value: objects indented, arrays of numbers on one line, shortest doubles.
std::string jsonText(const nlohmann::ordered_json& value);

}  // namespace knotfit
