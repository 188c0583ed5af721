// SPDX-License-Identifier: MIT
// What the options of the fitting commands mean. What is given acts or is refused: an option whose
// value is passed over would leave the user with a fit other than the one asked for.
#include "cli/fit_arguments.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"

namespace knotfit {
namespace {

[[noreturn]] void wrong(const std::string& option, const std::string& wanted,
                        const std::string& got) {
  throw Fault(kUsage, cat(option, ": wants ", wanted, ", not ", inQuotes(got)));
}

bool isFile(const std::string& name) {
  std::error_code ignored;
  return std::filesystem::exists(name, ignored);
}

Spacing spacingOf(const std::string& name) {
  if (name == "uniform") return Spacing::kUniform;
  return name == "centripetal" ? Spacing::kCentripetal : Spacing::kChord;
}

bool isSpacing(const std::string& name) {
  return name == "chord" || name == "centripetal" || name == "uniform";
}

// A point counted from 1 on the command line. @return its index from 0.
std::size_t pointIndex(const std::string& option, std::size_t number, std::size_t points) {
  if (number > points) {
    throw Fault(kUsage, cat(option, ": there is no point ", number, ", the file has ", points));
  }
  return number - 1;
}

std::vector<std::size_t> pointIndices(const std::string& option,
                                      const std::vector<std::string>& texts, std::size_t points) {
  std::vector<std::size_t> out;
  for (const std::string& text : texts) {
    for (const std::size_t n : countList(option, text))
      out.push_back(pointIndex(option, n, points));
  }
  std::sort(out.begin(), out.end());
  out.erase(std::unique(out.begin(), out.end()), out.end());
  return out;
}

// start=dx,dy,dz, end=dx,dy,dz or at=I:dx,dy,dz.
Tangent tangentOf(const std::string& text, const PointSet& points) {
  constexpr char kForm[] = "start=dx,dy,dz, end=dx,dy,dz or at=I:dx,dy,dz";
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) wrong("--tangent", kForm, text);
  const std::string place = text.substr(0, equals);
  std::string numbers = text.substr(equals + 1);
  Tangent tangent;
  if (place == "end") {
    tangent.point = points.count() - 1;
  } else if (place == "at") {
    const std::size_t colon = numbers.find(':');
    if (colon == std::string::npos) wrong("--tangent", kForm, text);
    tangent.point =
        pointIndex("--tangent", countOf("--tangent", numbers.substr(0, colon)), points.count());
    numbers.erase(0, colon + 1);
  } else if (place != "start") {
    wrong("--tangent", kForm, text);
  }
  const std::vector<double> d = numberList("--tangent", numbers);
  double largest = 0;
  for (const double x : d) largest = std::max(largest, std::abs(x));
  if (d.size() != static_cast<std::size_t>(points.dim) || largest == 0) {
    wrong("--tangent", cat("a direction of ", points.dim, " numbers that is not zero"), text);
  }
  // Divided by the largest, the direction neither overflows nor vanishes when it is squared.
  for (std::size_t c = 0; c < d.size(); ++c) tangent.direction[c] = d[c] / largest;
  return tangent;
}

// The numbers of both directions; a single one stands for both.
std::array<std::size_t, 2> onePerDirection(const std::string& option, const std::string& text,
                                           int directions, std::size_t usual, std::size_t most) {
  if (text.empty()) return {usual, usual};
  const std::vector<std::size_t> n = countList(option, text);
  if (n.size() > static_cast<std::size_t>(directions)) {
    wrong(option, directions == 1 ? "one number" : "one or two numbers", text);
  }
  if (*std::max_element(n.begin(), n.end()) > most) wrong(option, cat("at most ", most), text);
  return {n.front(), n.back()};
}

void readWeightFile(const std::string& file, PointSet& points) {
  points.weights = readNumbers(file);
  if (points.weights.size() != points.count()) {
    throw Fault(kInput, cat(file, ": ", points.weights.size(), " weights for ", points.count(),
                            " points (give one a line for each point)"));
  }
}

void checkWeights(const PointSet& points) {
  for (std::size_t i = 0; i < points.weights.size(); ++i) {
    if (points.weights[i] < 0) {
      throw Fault(kInput, cat("the weight of point ", i + 1, " is negative: ", points.weights[i],
                              " (weights are 0 or more)"));
    }
  }
}

}  // namespace

std::string FitArguments::usedParam() const {
  if (!param.empty()) return param;
  return heights ? "uniform" : "chord";  // heights stand at even distances
}

TableOptions FitArguments::tableOptions() const {
  TableOptions t = table.options();
  t.thin = thin;
  return t;
}

// All that is read, so that nothing of it is written over.
std::vector<std::string> FitArguments::inputs() const {
  std::vector<std::string> all = {input};
  for (const std::string& name : {param, knots, weights}) {
    if (isFile(name)) all.push_back(name);
  }
  return all;
}

PointOptions FitArguments::pointOptions() const {
  PointOptions o;
  o.table = tableOptions();
  o.columns = columns;
  if (!weights.empty() && !isFile(weights)) o.weightColumn = weights;
  o.merge = merge;
  return o;
}

GridOptions FitArguments::gridOptions() const {
  GridOptions o;
  o.table = tableOptions();
  o.heights = heights;
  o.columnsAlongU = order == "columns";
  if (spacing.empty()) return o;
  if (!heights) throw Fault(kUsage, "--spacing: is for grids of heights; add --height");
  const std::vector<double> d = numberList("--spacing", spacing);
  if (d.size() != 2 || !(d[0] > 0 && d[1] > 0)) wrong("--spacing", "two positive numbers", spacing);
  o.dx = d[0];
  o.dy = d[1];
  return o;
}

void FitArguments::readShared(FitOptions& o, int directions) const {
  const auto d = onePerDirection("--degree", degree, directions, 3, 25);
  o.degree = {static_cast<int>(d[0]), static_cast<int>(d[1])};
  o.controls = onePerDirection("--controls", controls, directions, 0, 100000000);
  if (tolerance > 0 && !controls.empty()) {
    throw Fault(kUsage, "--tol finds the number of control points itself; leave out --controls");
  }
  o.tolerance = tolerance;
  o.spacing = spacingOf(usedParam());
  o.refine = static_cast<int>(refine);
  o.smooth = smooth;
  for (const Method m : {Method::kHouseholder, Method::kQr, Method::kBanded}) {
    if (solver == nameOf(m)) o.solver.method = m;
  }
  o.solver.rankTolerance = rankTolerance;
  o.units = units;
  o.knotsAsked = !knots.empty();
  o.knots = knots == "uniform" ? KnotChoice::kUniform : KnotChoice::kAverage;
}

void FitArguments::readKnots(FitOptions& o) const {
  if (knots.empty() || knots == "average" || knots == "uniform") return;
  if (tolerance > 0) throw Fault(kUsage, "--tol places knots itself; leave out the given --knots");
  const bool file = isFile(knots);
  double ignored = 0;
  // What begins with a number is a list with a fault in it; anything else a misspelt word.
  if (!file && parseNumber(commaList(knots).front(), ignored) == NumberFault::kNotANumber) {
    wrong("--knots", "average, uniform, a file or a list of numbers", knots);
  }
  const std::vector<double> given = file ? readNumbers(knots) : numberList("--knots", knots);
  o.knots = KnotChoice::kGiven;
  o.knotValues = completedKnots(given, o.degree[0], file ? knots : "--knots");
  const std::size_t n = o.knotValues.size() - static_cast<std::size_t>(o.degree[0]) - 1;
  if (o.controls[0] && o.controls[0] != n) {
    throw Fault(kUsage, cat("--knots gives ", n, " control points, --controls wants ",
                            o.controls[0], "; leave out --controls"));
  }
}

FitOptions FitArguments::curveOptions(PointSet& points) const {
  FitOptions o;
  readShared(o, 1);
  readKnots(o);
  if (!isSpacing(usedParam())) {
    if (!isFile(param))
      wrong("--param", "chord, centripetal, uniform or a file of parameters", param);
    o.parameters = scaledParameters(readNumbers(param), points.count(), param);
  }
  o.closed = closed;
  // A closed curve needs no ends, and the solver of data alone meets none.
  const bool endsMatter = !closed && o.solver.method != Method::kQr;
  o.endsExact = ends == "exact" && (endsMatter || endsGiven);
  o.pass = pointIndices("--pass", pass, points.count());
  o.corners = pointIndices("--corner", corners, points.count());
  for (const std::size_t c : o.corners) {
    if (c == 0 || c + 1 == points.count()) {
      throw Fault(kUsage, "--corner: the end points are corners already; name inner points");
    }
  }
  if (!o.corners.empty() && o.knots != KnotChoice::kAverage) {
    throw Fault(kUsage, "--corner places knots itself; use --knots average");
  }
  for (const std::string& text : tangents) o.tangents.push_back(tangentOf(text, points));
  std::vector<std::size_t> at;
  for (const Tangent& t : o.tangents) at.push_back(t.point);
  std::sort(at.begin(), at.end());
  if (std::adjacent_find(at.begin(), at.end()) != at.end()) {
    throw Fault(kUsage, "--tangent: names a point twice; give one direction for each point");
  }
  readWeights(points);
  return o;
}

void FitArguments::readWeights(PointSet& points) const {
  if (!weights.empty() && isFile(weights)) readWeightFile(weights, points);
  checkWeights(points);
}

FitOptions FitArguments::surfaceOptions() const {
  FitOptions o;
  for (const auto& [option, given] :
       {std::pair("--columns", !columns.empty()), std::pair("--weights", !weights.empty()),
        std::pair("--plane fit", plane == "fit")}) {
    if (given) throw Fault(kUsage, cat(option, ": is for points in any order; add --scattered"));
  }
  readShared(o, 2);
  if (!knots.empty() && knots != "average" && knots != "uniform") {
    wrong("--knots", "average or uniform for a surface", knots);
  }
  if (edges == "exact") o.edges = Edges::kExact;
  if (edges == "corners") o.edges = Edges::kCorners;
  return o;
}

// Scattered points have neither rows nor borders, and knots that their number could not place.
FitOptions FitArguments::scatteredOptions() const {
  FitOptions o;
  readShared(o, 2);
  for (const auto& [option, given] :
       {std::pair("--height", heights), std::pair("--spacing", !spacing.empty()),
        std::pair("--order", order != "rows"), std::pair("--edges", edges != "free"),
        std::pair("--param", !param.empty()), std::pair("--solver", solver != "auto"),
        std::pair("--rank-tol", rankTolerance != SolverOptions().rankTolerance)}) {
    if (given) {
      throw Fault(kUsage, cat(option, ": is for grids; leave it out, or leave out --scattered"));
    }
  }
  if (!knots.empty() && knots != "uniform") {
    wrong("--knots", "uniform for scattered points", knots);
  }
  o.knots = KnotChoice::kUniform;
  o.bestPlane = plane == "fit";
  if (o.smooth > 0 && std::min(o.degree[0], o.degree[1]) < 2) {
    throw Fault(kUsage, "--smooth of scattered points wants degree 2 or more in both directions");
  }
  return o;
}

ReportContext FitArguments::context() const {
  ReportContext c;
  const std::string used = usedParam();
  c.parameters = isSpacing(used) ? used : "given";
  if (used == "chord") c.parameters = "chord-length";
  c.knots = knots == "uniform" ? "uniform" : "given";
  if (knots.empty() || knots == "average") c.knots = "averaged";
  return c;
}

Talk FitArguments::talk() const {
  if (progress == "always" && (quiet || verbose)) {
    throw Fault(kUsage, cat("--progress always: leave out ", quiet ? "-q" : "-v",
                            ", which takes the bar's place"));
  }
  if (quiet) return Talk::kQuiet;
  if (verbose) return Talk::kVerbose;
  const bool line = progress == "always" || (progress == "auto" && errorIsTerminal());
  return line ? Talk::kLine : Talk::kQuiet;
}

}  // namespace knotfit
