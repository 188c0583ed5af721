// SPDX-License-Identifier: MIT
// Names of formats, and what several writers need.
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "base/fault.h"
#include "base/text.h"
#include "io/writers.h"

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

using Vec3 = std::array<double, 3>;

Vec3 minus(const Spline& s, std::size_t i, const Vec3& origin) {
  Vec3 d{};
  for (int c = 0; c < s.dim; ++c) {
    const auto k = static_cast<std::size_t>(c);
    d[k] = s.controls[i * static_cast<std::size_t>(s.dim) + k] - origin[k];
  }
  return d;
}

Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double length(const Vec3& a) { return std::hypot(a[0], a[1], a[2]); }

}  // namespace

Format formatOf(const std::string& path, const std::string& forced) {
  std::string name = forced;
  if (name.empty()) name = std::filesystem::path(path).extension().string();
  if (!name.empty() && name.front() == '.') name.erase(0, 1);
  for (const Name& n : kNames) {
    if (lowered(name) == n.suffix) return n.format;
  }
  throw Fault(kUsage, cat(path, ": no known suffix; use .json .igs .stp .obj .csv .ply .svg .png ",
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

std::vector<double> sampledParameters(const std::vector<double>& knots, int degree, int perSpan) {
  const auto p = static_cast<std::size_t>(degree);
  std::vector<double> out;
  for (std::size_t k = p; k + p + 1 < knots.size(); ++k) {
    if (!(knots[k] < knots[k + 1])) continue;
    for (int i = 0; i < perSpan; ++i) {
      out.push_back(knots[k] + (knots[k + 1] - knots[k]) * i / perSpan);
    }
  }
  out.push_back(knots.back());
  return out;
}

std::optional<Vec3> planeNormal(const Spline& s) {
  if (s.dim == 2) return Vec3{0, 0, 1};
  const Vec3 origin = minus(s, 0, {});
  Vec3 axis{}, normal{};
  double size = 0;
  for (std::size_t i = 1; i < s.count(); ++i) {
    const Vec3 d = minus(s, i, origin);
    if (length(d) > length(axis)) axis = d;
  }
  size = length(axis);
  for (std::size_t i = 1; i < s.count(); ++i) {
    const Vec3 n = cross(axis, minus(s, i, origin));
    if (length(n) > length(normal)) normal = n;
  }
  if (length(normal) <= 1e-12 * size * size) {  // on a line: any direction across it
    normal = cross(axis, std::abs(axis[0]) <= std::abs(axis[2]) ? Vec3{1, 0, 0} : Vec3{0, 0, 1});
    if (length(normal) == 0) return Vec3{0, 0, 1};
  }
  const double scale = length(normal);
  for (double& c : normal) c /= scale;
  for (std::size_t i = 1; i < s.count(); ++i) {
    const Vec3 d = minus(s, i, origin);
    if (std::abs(d[0] * normal[0] + d[1] * normal[1] + d[2] * normal[2]) > 1e-12 * size) {
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
