// SPDX-License-Identifier: MIT
// The program's own format: one versioned JSON object per fit.
#pragma once

#include <string>

#include "model/spline.h"

namespace knotfit {

/// A fit as its file holds it.
struct StoredFit {
  Spline spline;
  std::string report;  ///< the report of the fit as JSON text; empty when unknown
};

/// @return the fit as JSON, doubles in their shortest form, one control point a line.
std::string fitJson(const StoredFit& fit);

/// Reads a fit. Faults (exit code 3) name the file and what is wrong with it.
StoredFit readFit(const std::string& path);

/// @return JSON text laid out anew: objects indented, arrays of numbers on one line, doubles in
/// their shortest form, a line end behind all.
std::string laidOutJson(const std::string& json);

}  // namespace knotfit
