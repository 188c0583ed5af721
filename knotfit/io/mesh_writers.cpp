// SPDX-License-Identifier: MIT
// OBJ free-form geometry, points as CSV, meshes as PLY. OBJ keeps the spline itself; CSV and PLY
// hold points of it, each span divided into equal steps of its parameter so that no knot, where the
// shape may bend sharply, falls between two points.
#include "base/text.h"
#include "io/writers.h"
#include "model/sampling.h"
#include "model/shape.h"

namespace knotfit {
namespace {

template <class Values>
std::string joined(const Values& values, std::size_t n, const char* between) {
  std::string out;
  for (std::size_t i = 0; i < n; ++i) out += (i ? between : "") + shortest(values[i]);
  return out;
}

std::vector<double> along(const Spline& s, std::size_t d, const Tessellation& t) {
  return sampledParameters(s.knots[d], s.degree[d], t.perSpan);
}

// As text, so that it can be read anywhere; and as doubles, so that it loses nothing.
std::string plyHead(std::size_t vertices) {
  return cat("ply\nformat ascii 1.0\ncomment written by knotfit\nelement vertex ", vertices,
             "\nproperty double x\nproperty double y\nproperty double z\n");
}

std::string plyCurve(const Spline& s, const std::vector<double>& u) {
  const CurveShape shape(s);
  std::string out = cat(plyHead(u.size()), "element edge ", u.size() - 1,
                        "\nproperty int vertex1\nproperty int vertex2\nend_header\n");
  for (const double at : u) out += joined(shape.point(at), 3, " ") + "\n";
  for (std::size_t i = 1; i < u.size(); ++i) out += cat(i - 1, " ", i, "\n");
  return out;
}

std::string plySurface(const Spline& s, const std::vector<double>& u,
                       const std::vector<double>& v) {
  const SurfaceShape shape(s);
  std::string out =
      cat(plyHead(u.size() * v.size()), "element face ", 2 * (u.size() - 1) * (v.size() - 1),
          "\nproperty list uchar int vertex_indices\nend_header\n");
  for (const double a : u) {
    for (const double b : v) out += joined(shape.point(a, b), 3, " ") + "\n";
  }
  for (std::size_t i = 0; i + 1 < u.size(); ++i) {
    for (std::size_t j = 0; j + 1 < v.size(); ++j) {
      // Both triangles turn the same way, u towards v: the mesh has one outside.
      const std::size_t a = i * v.size() + j, b = a + v.size();
      out += cat("3 ", a, " ", b, " ", b + 1, "\n3 ", a, " ", b + 1, " ", a + 1, "\n");
    }
  }
  return out;
}

}  // namespace

std::string objText(const Spline& s) {
  std::string out = "# B-spline fitted by knotfit\n";
  for (std::size_t j = 0; j < s.size[1]; ++j) {  // u runs fastest
    for (std::size_t i = 0; i < s.size[0]; ++i) {
      out += "v " + joined(s.control(i, j), static_cast<std::size_t>(s.dim), " ") +
             (s.dim == 2 ? " 0\n" : "\n");
    }
  }
  // Rational forms would need weights behind each vertex; these are polynomial.
  out += "cstype bspline\n";
  out += s.isCurve() ? cat("deg ", s.degree[0], "\n")
                     : cat("deg ", s.degree[0], " ", s.degree[1], "\n");
  out += s.isCurve() ? "curv" : "surf";
  for (int d = 0; d < s.directions; ++d) out += cat(" ", s.first(d), " ", s.last(d));
  for (std::size_t i = 1; i <= s.count(); ++i) out += cat(" ", i);
  out += "\n";
  for (int d = 0; d < s.directions; ++d) {
    const std::vector<double>& knots = s.knots[static_cast<std::size_t>(d)];
    out += cat("parm ", d ? "v " : "u ", joined(knots, knots.size(), " "), "\n");
  }
  return out + "end\n";
}

std::string csvText(const Spline& s, const Tessellation& t) {
  const std::vector<double> u = along(s, 0, t);
  std::string out;
  if (s.isCurve()) {
    const CurveShape shape(s);
    out = s.dim == 2 ? "u,x,y\n" : "u,x,y,z\n";
    for (const double at : u) {
      out += cat(at, ",", joined(shape.point(at), static_cast<std::size_t>(s.dim), ","), "\n");
    }
    return out;
  }
  const SurfaceShape shape(s);
  const std::vector<double> v = along(s, 1, t);
  out = "u,v,x,y,z\n";
  for (const double a : u) {
    for (const double b : v) out += cat(a, ",", b, ",", joined(shape.point(a, b), 3, ","), "\n");
  }
  return out;
}

std::string plyText(const Spline& s, const Tessellation& t) {
  const std::vector<double> u = along(s, 0, t);
  return s.isCurve() ? plyCurve(s, u) : plySurface(s, u, along(s, 1, t));
}

}  // namespace knotfit
