// SPDX-License-Identifier: MIT
// Names of formats, and what several writers need to know of a shape: whether it lies in a plane,
// and whether it closes. Both are read off the control points, since a spline lies in the plane of
// its control points and, clamped, begins and ends at them.
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "base/fault.h"
#include "base/text.h"
#include "io/writers.h"
#include "model/scale.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

struct Name {
  const char* suffix;
  Format format;
};

constexpr std::array<Name, 11> kNames = {{{"json", Format::kJson},
                                          {"igs", Format::kIges},
                                          {"iges", Format::kIges},
                                          {"stp", Format::kStep},
                                          {"step", Format::kStep},
                                          {"obj", Format::kObj},
                                          {"csv", Format::kCsv},
                                          {"ply", Format::kPly},
                                          {"svg", Format::kSvg},
                                          {"png", Format::kPng},
                                          {"pdf", Format::kPdf}}};

// The control point i seen from the first one.
Vec3 fromFirst(const Spline& s, std::size_t i) {
  return minus(vec3(s.controls.data() + i * static_cast<std::size_t>(s.dim), s.dim),
               vec3(s.controls.data(), s.dim));
}

std::optional<Format> formatNamed(const std::string& name) {
  const auto at = std::find_if(kNames.begin(), kNames.end(),
                               [&](const Name& n) { return lowered(name) == n.suffix; });
  return at == kNames.end() ? std::nullopt : std::optional(at->format);
}

}  // namespace

std::optional<Format> suffixFormat(const std::string& path) {
  const std::string suffix = std::filesystem::path(path).extension().string();
  return suffix.empty() ? std::nullopt : formatNamed(suffix.substr(1));
}

Format formatOf(const std::string& path, const std::string& forced) {
  const auto format = forced.empty() ? suffixFormat(path) : formatNamed(forced);
  if (format) return *format;
  if (!forced.empty()) {
    throw Fault(kUsage, cat("--format: wants json igs stp obj csv ply svg png or pdf, not ",
                            inQuotes(forced)));
  }
  throw Fault(kUsage, cat(shownName(path),
                          ": no known suffix; use .json .igs .stp .obj .csv .ply .svg .png ",
                          ".pdf, or --format"));
}

std::string describe(Format format, const Spline& s) {
  const char* kind = s.isCurve() ? "curve" : "surface";
  switch (format) {
    case Format::kJson:
      return "JSON";
    case Format::kIges:
      return s.isCurve() ? "IGES 126" : "IGES 128";
    case Format::kStep:
      return "STEP AP214";
    case Format::kObj:
      return cat("OBJ ", kind);
    case Format::kCsv:
      return "CSV points";
    case Format::kPly:
      return s.isCurve() ? "PLY edges" : "PLY mesh";
    case Format::kSvg:
      return "SVG";
    case Format::kPng:
      return "PNG";
    case Format::kPdf:
      break;
  }
  return "PDF";
}

bool isPicture(Format f) { return f == Format::kSvg || f == Format::kPng || f == Format::kPdf; }

std::optional<Vec3> planeNormal(const Spline& original) {
  Spline s = original;  // near size 1, so that products stay in the range of numbers
  scaleBy(s.controls, -evenExponent(s.controls));
  if (s.dim == 2) return Vec3{0, 0, 1};
  // The plane through the first point, the furthest from it, and the furthest from their line: the
  // widest triangle there is, so that its normal is told as well as the points allow.
  Vec3 axis{}, normal{};
  double size = 0;
  for (std::size_t i = 1; i < s.count(); ++i) {
    const Vec3 d = fromFirst(s, i);
    if (norm(d) > norm(axis)) axis = d;
  }
  size = norm(axis);
  for (std::size_t i = 1; i < s.count(); ++i) {
    const Vec3 n = cross(axis, fromFirst(s, i));
    if (norm(n) > norm(normal)) normal = n;
  }
  if (norm(normal) <= 1e-12 * size * size) {  // on a line: any direction across it
    normal = cross(axis, std::abs(axis[0]) <= std::abs(axis[2]) ? Vec3{1, 0, 0} : Vec3{0, 0, 1});
    if (norm(normal) == 0) return Vec3{0, 0, 1};
  }
  const double scale = norm(normal);
  for (double& c : normal) c /= scale;
  // 1e-12 of the size: a few thousand roundings, far below what any reader takes for a distance.
  for (std::size_t i = 1; i < s.count(); ++i) {
    const Vec3 d = fromFirst(s, i);
    if (std::abs(dot(d, normal)) > 1e-12 * size) {
      return std::nullopt;
    }
  }
  return normal;
}

bool meetsItself(const Spline& s, int direction) {
  const std::size_t across = direction == 0 ? s.size[1] : s.size[0];
  for (std::size_t k = 0; k < across; ++k) {
    const double* a = direction == 0 ? s.control(0, k) : s.control(k, 0);
    const double* b = direction == 0 ? s.control(s.size[0] - 1, k) : s.control(k, s.size[1] - 1);
    for (int c = 0; c < s.dim; ++c) {
      if (a[c] != b[c]) return false;
    }
  }
  return true;
}

}  // namespace knotfit
