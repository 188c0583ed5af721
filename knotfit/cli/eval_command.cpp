// SPDX-License-Identifier: MIT
// The command eval: a table of places, derivatives and normals. Columns are named by coordinate and
// derivative (x, x1, x2 along curves; x, x_u, x_v, x_uu on surfaces), so that a reader needs no
// count.
#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/outputs.h"
#include "io/fit_json.h"
#include "io/output.h"
#include "model/sampling.h"
#include "model/shape.h"

namespace knotfit {
namespace {

struct EvalArguments {
  std::string input, at, grid, output = "-";
  std::size_t n = 0, derivatives = 0;
  bool normals = false, force = false;
};

// From end to end of the domain.
std::vector<double> evenly(const Spline& s, int direction, std::size_t n) {
  return evenParameters(s.first(direction), s.last(direction), n);
}

void checkInside(const Spline& s, int direction, double u) {
  if (u >= s.first(direction) && u <= s.last(direction)) return;
  throw Fault(kUsage, cat("--at ", u, " is outside the domain ", s.first(direction), " to ",
                          s.last(direction)));
}

// The shortest decimals that read back the same: a table loses nothing.
void appendRow(std::string& out, const std::vector<double>& row) {
  for (std::size_t i = 0; i < row.size(); ++i) out += (i ? "," : "") + shortest(row[i]);
  out += '\n';
}

// Left normal of a plane curve at unit length, zero where the curve stands still.
void appendPlaneNormal(std::vector<double>& row, const double* tangent) {
  const double length = std::hypot(tangent[0], tangent[1]);
  row.push_back(length > 0 ? -tangent[1] / length : 0);
  row.push_back(length > 0 ? tangent[0] / length : 0);
}

std::string evalCurve(const EvalArguments& a, const Spline& s) {
  if (a.normals && s.dim != 2) throw Fault(kUsage, "--normals: for surfaces and plane curves");
  if (!a.grid.empty()) throw Fault(kUsage, "--grid is for surfaces; use --n");
  std::vector<double> u = evenly(s, 0, a.n ? a.n : 101);
  if (!a.at.empty()) u = numberList("--at", a.at);
  if (!a.at.empty() && u.size() != 1) throw Fault(kUsage, "--at: a curve takes one parameter");
  checkInside(s, 0, u.front());
  const int order = static_cast<int>(a.derivatives);
  const auto dim = static_cast<std::size_t>(s.dim);
  std::string out = "u";
  for (int k = 0; k <= order; ++k) {
    for (std::size_t c = 0; c < dim; ++c) out += cat(",", "xyz"[c], k ? cat(k) : std::string());
  }
  out += a.normals ? ",nx,ny\n" : "\n";
  const CurveShape shape(s);
  const int needed = std::max(order, a.normals ? 1 : 0);  // normals come from the tangent
  std::vector<double> d(3 * (static_cast<std::size_t>(needed) + 1));
  for (const double at : u) {
    shape.eval(at, needed, d.data());
    std::vector<double> row = {at};
    for (std::size_t k = 0; k <= a.derivatives; ++k) {
      row.insert(row.end(), &d[3 * k], &d[3 * k] + dim);
    }
    if (a.normals) appendPlaneNormal(row, &d[3]);
    appendRow(out, row);
  }
  return out;
}

std::array<std::size_t, 2> gridSize(const std::string& text) {
  if (text.empty()) return {21, 21};
  const std::size_t x = text.find('x');
  long long n = 0, m = 0;
  const bool ok = x != std::string::npos && parseInteger(text.substr(0, x), n) &&
                  parseInteger(text.substr(x + 1), m) && n >= 2 && m >= 2 && n <= 10000 &&
                  m <= 10000;
  if (!ok)
    throw Fault(kUsage, cat("--grid: wants NxM from 2x2 to 10000x10000, not ", inQuotes(text)));
  return {static_cast<std::size_t>(n), static_cast<std::size_t>(m)};
}

std::string evalSurface(const EvalArguments& a, const Spline& s) {
  if (a.n) throw Fault(kUsage, "--n is for curves; use --grid NxM");
  const auto size = gridSize(a.grid);
  std::vector<double> u = evenly(s, 0, size[0]), v = evenly(s, 1, size[1]);
  if (!a.at.empty()) {
    const std::vector<double> at = numberList("--at", a.at);
    if (at.size() != 2) throw Fault(kUsage, "--at: a surface takes two parameters, U,V");
    u = {at[0]};
    v = {at[1]};
    checkInside(s, 0, at[0]);
    checkInside(s, 1, at[1]);
  }
  // The evaluator lays partials out as a square, u fastest; those of a total order above the asked
  // one are left out, lower orders come first.
  const std::size_t order = a.derivatives, side = order + 1;
  std::string out = "u,v,x,y,z";
  std::vector<std::size_t> places;  // of the partials with i + j <= order
  for (std::size_t total = 0; total <= order; ++total) {
    for (std::size_t j = 0; j <= total; ++j) {
      const std::size_t i = total - j;
      places.push_back(3 * (side * j + i));
      if (total == 0) continue;
      for (const char c : {'x', 'y', 'z'}) {
        out += cat(",", c, "_", std::string(i, 'u'), std::string(j, 'v'));
      }
    }
  }
  out += a.normals ? ",nx,ny,nz\n" : "\n";
  const SurfaceShape shape(s);
  std::vector<double> d(3 * side * side);
  for (const double atU : u) {
    for (const double atV : v) {
      shape.eval(atU, atV, static_cast<int>(order), d.data());
      std::vector<double> row = {atU, atV};
      for (const std::size_t at : places) row.insert(row.end(), &d[at], &d[at] + 3);
      if (a.normals) {
        const auto n = shape.normal(atU, atV);
        row.insert(row.end(), n.begin(), n.end());
      }
      appendRow(out, row);
    }
  }
  return out;
}

int evalCommand(const EvalArguments& a, const Streams& streams) {
  OutputSet outputs(a.force);
  outputs.protect(a.input);
  outputs.announce(a.output);
  checkSuffix(a.output, Format::kCsv);
  const Spline s = readFit(a.input).spline;
  const std::string text = s.isCurve() ? evalCurve(a, s) : evalSurface(a, s);
  if (a.output == "-") {
    deliver(streams.out, text);
  } else {
    outputs.add(a.output, text);
    outputs.commit();
  }
  return kDone;
}

}  // namespace

void addEvalCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("eval", "points, derivatives and normals of a fit as CSV");
  const auto a = std::make_shared<EvalArguments>();
  command->add_option("FIT", a->input, "a fit written as JSON")->required();
  CLI::Option* at = command->add_option("--at", a->at, "one place")->type_name("U[,V]");
  addCount(*command, "--n", a->n, 2, 10000000, "places along a curve [101]")->excludes(at);
  command->add_option("--grid", a->grid, "places on a surface [21x21]")
      ->type_name("NxM")
      ->excludes(at);
  addCount(*command, "--deriv", a->derivatives, 0, 25, "highest derivative [0]");
  command->add_flag("--normals", a->normals, "unit normals of a surface or a plane curve");
  command->add_option("-o,--output", a->output, "file to write [-]")->type_name("FILE");
  command->add_flag("--force", a->force, "overwrite files that exist");
  command->footer("\nExample: knotfit eval section.json --n 200 --deriv 2 -o section_points.csv");
  command->callback(
      [a, &chosen] { chosen = [a](const Streams& s) { return evalCommand(*a, s); }; });
}

}  // namespace knotfit
