// SPDX-License-Identifier: MIT
// Small types of the spline and surface objects; their values are those of the records of the
// host's spline kernel.
#pragma once

/// How the ends of a curve, or of one direction of a surface, meet; records may hold more values.
enum AP_FORM : int {
  AP_FORM_OPEN = 0,      ///< ends apart
  AP_FORM_CLOSED = 1,    ///< ends at one place
  AP_FORM_PERIODIC = 2,  ///< ends meet with all their derivatives
};

/// Kind of geometry as the records of the host's spline kernel number it; passed on, never
/// interpreted.
enum AP_TYPE : int {
  AP_TYPE_GENERAL = 0,  ///< nothing is known of the shape
};

/// 0 for a polynomial object, else for a rational one, whose control points carry a weight.
using AP_RATIONALITY = int;
