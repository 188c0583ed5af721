// SPDX-License-Identifier: MIT
// Fits in formats that other programs read. All numbers are shortest round-trip decimals.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "model/spline.h"

namespace knotfit {

enum class Format { kJson, kIges, kStep, kObj, kCsv, kPly, kSvg, kPng, kPdf };

/// @return the format named by `forced` ("json", "igs", ...), or else by the path's suffix.
/// Faults (exit code 2) list the known ones.
Format formatOf(const std::string& path, const std::string& forced);
/// @return the format that a path's suffix stands for, if any.
std::optional<Format> suffixFormat(const std::string& path);
/// @return what reports call a format, with the entity it holds: "IGES 126", "SVG", ...
std::string describe(Format format, const Spline& spline);
/// @return whether it is a picture.
bool isPicture(Format format);

/// How far shapes are divided into straight pieces.
struct Tessellation {
  int perSpan = 8;  ///< pieces per knot span and direction
};

/// Source of the format: IGES 5.3, rational B-spline curve (126) and surface (128).
std::string igesText(const Spline& spline);
/// Source of the format: ISO 10303-21 and -214, b_spline_curve_with_knots and its surface kin.
std::string stepText(const Spline& spline);
/// Source of the format: the OBJ format, version 3.0, free-form geometry.
std::string objText(const Spline& spline);
/// Points of the shape: u,x,y[,z] or u,v,x,y,z with a head line.
std::string csvText(const Spline& spline, const Tessellation& tessellation);
/// A mesh of triangles, or the edges of a curve. Source of the format: G. Turk (1994).
std::string plyText(const Spline& spline, const Tessellation& tessellation);

/// @return unit normal of the plane that the control points lie in, within their rounding; nothing
/// when they lie in none. Points on a line lie in a plane too.
std::optional<std::array<double, 3>> planeNormal(const Spline& spline);
/// @return whether the first and last control points of a direction are equal.
bool meetsItself(const Spline& spline, int direction);

}  // namespace knotfit
