// SPDX-License-Identifier: MIT
// The report of a fit. Text shows six places, enough to compare by eye; JSON holds all digits, and
// the same facts under the same names.
#include "cli/report.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <ostream>

#include <nlohmann/json.hpp>

#include "base/text.h"
#include "io/fit_json.h"
#include "model/deviation.h"

namespace knotfit {
namespace {

using Json = nlohmann::ordered_json;

std::string errorText(const Deviation& d) {
  return cat("rms ", measured(d.rms), ", max ", measured(d.max));
}

// Spans that are not empty.
std::size_t spans(const Spline& s, std::size_t direction) {
  const std::vector<double>& t = s.knots[direction];
  std::size_t count = 0;
  for (std::size_t i = 1; i < t.size(); ++i) count += t[i - 1] < t[i];
  return count;
}

std::string plural(std::size_t n, const char* what) { return cat(n, " ", what, n == 1 ? "" : "s"); }

std::string missText(double miss) { return cat(" (largest miss ", significant(miss, 3), ")"); }

// Conditions are orders of magnitude: two digits are enough where they are large.
std::string conditionText(double condition) {
  return cat("condition ", condition < 1e5 ? decimals(condition, 1) : significant(condition, 2));
}

std::string spectrumText(const std::optional<Spectrum>& s) {
  if (!s) return "rank and condition not computed";
  return cat("rank ", s->rank, ", ",
             s->condition ? conditionText(*s->condition) : "condition not computed");
}

// The ends of a curve and whatever else is to be met.
std::string endsText(const CurveFit& fit, const FitOptions& o) {
  std::string text = "free";
  if (o.closed) {
    text = fit.met ? "closed, smooth at the seam" : "closed, not smooth at the seam";
  } else if (o.endsExact) {
    text = fit.met ? "met exactly" : "not met";
  }
  if (o.closed && o.endsExact) text += fit.met ? ", first point met" : ", first point not met";
  if (!o.pass.empty())
    text += cat(", ", plural(o.pass.size(), "point"), fit.met ? "" : " not", " passed");
  if (!o.tangents.empty()) text += cat(", ", plural(o.tangents.size(), "tangent"));
  if (!o.corners.empty()) text += cat(", ", plural(o.corners.size(), "corner"));
  return fit.constraints ? text + missText(fit.miss) : text;
}

std::string edgesText(const SurfaceFit& fit, Edges edges) {
  const char* met = fit.met ? "met exactly" : "not met";
  switch (edges) {
    case Edges::kFree:
      return "free";
    case Edges::kCorners:
      return cat("corners ", met, missText(fit.miss));
    case Edges::kExact:
      break;
  }
  return cat("fitted alone, corners ", met, missText(fit.miss));
}

const char* nameOf(Edges edges) {
  switch (edges) {
    case Edges::kFree:
      return "free";
    case Edges::kCorners:
      return "corners";
    case Edges::kExact:
      break;
  }
  return "exact";
}

// What was asked and what came of it, beside the lines that curves and surfaces have of their own.
void addOptions(Report& report, Json& json, const FitOptions& o, const ReportContext& context) {
  std::string text;
  const auto note = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (o.refine > 0) note(cat("parameters re-projected up to ", o.refine, " times"));
  if (o.smooth > 0) note(cat("smoothing ", o.smooth));
  if (context.weighted) note("weighted points");
  if (context.merged > 0) note(cat(plural(context.merged, "point"), " merged"));
  if (o.solver.rankTolerance != SolverOptions().rankTolerance) {
    note(cat("rank tolerance ", o.solver.rankTolerance));
  }
  if (!text.empty()) report.line("with", text);
  json["refine"] = o.refine;
  json["smooth"] = o.smooth;
  json["merged"] = context.merged;
}

void addTolerance(Report& report, Json& json, double asked, bool reached) {
  if (!(asked > 0)) return;
  report.line("tol", cat(asked, reached ? " reached" : " not reached: this is the best fit"));
  json["tolerance"] = {{"asked", asked}, {"reached", reached}};
}

// Numbers for JSON; null where there is none.
Json finite(double x) { return std::isfinite(x) ? Json(x) : Json(nullptr); }

// Deviations at the parameters and from the nearest places.
struct Deviations {
  Deviation at, near;
};

void tellCurve(Report& r, const CurveFit& fit, const FitOptions& o, const ReportContext& context,
               const Deviations& d) {
  const Spline& s = fit.spline;
  r.line("curve", cat(fit.distances.size(), " points (", s.dim, " columns) -> degree ", s.degree[0],
                      ", ", sizeText(s), ", ", spans(s, 0), " spans, ", context.parameters,
                      " parameters, ", context.knots, " knots"));
  r.line("ends", endsText(fit, o));
  r.line("error", cat("at the parameters: ", errorText(d.at), " (point ", d.at.worst + 1,
                      ", u = ", significant(fit.parameters[d.at.worst], 4), ")"));
  r.line("", cat("nearest distance:  ", errorText(d.near), " (point ", d.near.worst + 1, ")"));
  r.line("system", cat(fit.rows, " x ", s.size[0], ", ", spectrumText(fit.spectrum), ", ",
                       nameOf(fit.method)));
}

Json curveJson(const CurveFit& fit, const FitOptions& o, const ReportContext& context,
               const Deviations& d) {
  const Spline& s = fit.spline;
  Json j;
  j["kind"] = "curve";
  j["points"] = fit.distances.size();
  j["dim"] = s.dim;
  j["degree"] = {s.degree[0]};
  j["controls"] = {s.size[0]};
  j["parameters"] = context.parameters;
  j["knots"] = context.knots;
  j["ends"] = {{"mode", o.endsExact ? "exact" : "free"},
               {"closed", o.closed},
               {"constraints", fit.constraints},
               {"miss", fit.miss},
               {"met", fit.met}};
  j["error"] = {{"rms", d.at.rms},
                {"max", d.at.max},
                {"point", d.at.worst + 1},
                {"u", fit.parameters[d.at.worst]}};
  j["nearest"] = {{"rms", d.near.rms}, {"max", d.near.max}, {"point", d.near.worst + 1}};
  const std::optional<Spectrum>& spectrum = fit.spectrum;
  const bool hasCondition = spectrum && spectrum->condition;
  j["system"] = {{"rows", fit.rows},
                 {"unknowns", s.size[0]},
                 {"rank", spectrum ? Json(spectrum->rank) : Json(nullptr)},
                 {"condition", hasCondition ? finite(*spectrum->condition) : Json(nullptr)},
                 {"solver", nameOf(fit.method)}};
  return j;
}

// A point of a grid, counted from 0.
struct GridPlace {
  std::size_t row, column;
};

GridPlace placeOf(const PointGrid& grid, std::size_t i) {
  return {i / grid.columns, i % grid.columns};
}

std::string placeText(GridPlace p) { return cat("row ", p.row + 1, ", column ", p.column + 1); }

// The condition of the tensor product, which is the product of the two directions' conditions;
// nothing where one of them was not computed.
std::optional<double> conditionOf(const SurfaceFit& fit) {
  const auto& [inU, inV] = fit.spectra;
  if (!inU || !inV || !inU->condition || !inV->condition) return std::nullopt;
  return *inU->condition * *inV->condition;
}

void tellSurface(Report& r, const SurfaceFit& fit, const PointGrid& grid, const FitOptions& o,
                 const ReportContext& context, const Deviations& d) {
  const Spline& s = fit.spline;
  const GridPlace worst = placeOf(grid, d.at.worst);
  r.line("surface", cat(grid.rows, " x ", grid.columns, " points -> degree ", s.degree[0], " x ",
                        s.degree[1], ", ", sizeText(s), ", ", spans(s, 0), " x ", spans(s, 1),
                        " spans, ", context.parameters, " parameters, ", context.knots, " knots"));
  r.line("edges", edgesText(fit, o.edges));
  r.line("error", cat("at the parameters: ", errorText(d.at), " (", placeText(worst),
                      ", u = ", significant(fit.parameters[0][worst.row], 4),
                      ", v = ", significant(fit.parameters[1][worst.column], 4), ")"));
  r.line("", cat("nearest distance:  ", errorText(d.near), " (",
                 placeText(placeOf(grid, d.near.worst)), ")"));
  const std::optional<double> condition = conditionOf(fit);
  const std::string spectrum = condition
                                   ? cat("rank ", fit.spectra[0]->rank, " and ",
                                         fit.spectra[1]->rank, ", ", conditionText(*condition))
                                   : "rank and condition not computed";
  r.line("system",
         cat(fit.matrices[0].rows.size(), " x ", s.size[0], " and ", fit.matrices[1].rows.size(),
             " x ", s.size[1], ", ", spectrum, ", ", nameOf(fit.method)));
}

Json surfaceJson(const SurfaceFit& fit, const PointGrid& grid, const FitOptions& o,
                 const ReportContext& context, const Deviations& d) {
  const Spline& s = fit.spline;
  const GridPlace worst = placeOf(grid, d.at.worst), furthest = placeOf(grid, d.near.worst);
  const std::optional<double> condition = conditionOf(fit);
  Json j;
  j["kind"] = "surface";
  j["points"] = {grid.rows, grid.columns};
  j["dim"] = 3;
  j["degree"] = s.degree;
  j["controls"] = s.size;
  j["parameters"] = context.parameters;
  j["knots"] = context.knots;
  j["edges"] = {{"mode", nameOf(o.edges)}, {"miss", fit.miss}, {"met", fit.met}};
  j["error"] = {{"rms", d.at.rms},
                {"max", d.at.max},
                {"row", worst.row + 1},
                {"column", worst.column + 1},
                {"u", fit.parameters[0][worst.row]},
                {"v", fit.parameters[1][worst.column]}};
  j["nearest"] = {{"rms", d.near.rms},
                  {"max", d.near.max},
                  {"row", furthest.row + 1},
                  {"column", furthest.column + 1}};
  j["system"] = {
      {"rows", {fit.matrices[0].rows.size(), fit.matrices[1].rows.size()}},
      {"unknowns", s.size},
      {"rank", condition ? Json({fit.spectra[0]->rank, fit.spectra[1]->rank}) : Json(nullptr)},
      {"condition", condition ? finite(*condition) : Json(nullptr)},
      {"solver", nameOf(fit.method)}};
  return j;
}

// "204, 3 of them without points, 17 points at most"; the first few empty cells are named.
std::string cellsText(const ScatteredFit& fit) {
  constexpr std::size_t kNamed = 4;
  std::size_t most = 0, empty = 0;
  std::string named;
  for (std::size_t k = 0; k < fit.points.size(); ++k) {
    most = std::max(most, fit.points[k]);
    if (fit.points[k] > 0) continue;
    if (++empty > kNamed) continue;
    named += cat(empty > 1 ? ", " : "", "(", k / fit.cells[1] + 1, ", ", k % fit.cells[1] + 1, ")");
  }
  std::string text = cat(fit.cells[0], " x ", fit.cells[1], ", up to ", plural(most, "point"));
  if (empty == 0) return text + ", none empty";
  return cat(text, ", ", empty, " empty: ", named, empty > kNamed ? ", ..." : "");
}

void tellScattered(Report& r, const ScatteredFit& fit, const FitOptions& o, const Deviations& d) {
  const Spline& s = fit.spline;
  r.line("surface", cat(fit.distances.size(), " scattered points -> degree ", s.degree[0], " x ",
                        s.degree[1], ", ", sizeText(s), ", heights over ",
                        o.bestPlane ? "the best plane" : "x and y", ", uniform knots"));
  r.line("cells", cellsText(fit));
  r.line("error", cat("along the heights: ", errorText(d.at), " (point ", d.at.worst + 1,
                      ", u = ", significant(fit.parameters[2 * d.at.worst], 4),
                      ", v = ", significant(fit.parameters[2 * d.at.worst + 1], 4), ")"));
  r.line("", cat("nearest distance:  ", errorText(d.near), " (point ", d.near.worst + 1, ")"));
  r.line("system",
         cat(fit.distances.size(), " x ", s.count(), ", rank ", s.count(), ", scattered"));
}

Json scatteredJson(const ScatteredFit& fit, const FitOptions& o, const Deviations& d) {
  const Spline& s = fit.spline;
  Json j;
  j["kind"] = "surface";
  j["points"] = fit.distances.size();
  j["dim"] = 3;
  j["degree"] = s.degree;
  j["controls"] = s.size;
  j["plane"] = o.bestPlane ? "fit" : "xy";
  j["knots"] = "uniform";
  const auto [fewest, most] = std::minmax_element(fit.points.begin(), fit.points.end());
  j["cells"] = {{"size", fit.cells},
                {"empty", std::count(fit.points.begin(), fit.points.end(), std::size_t{0})},
                {"fewest", *fewest},
                {"most", *most}};
  j["error"] = {{"rms", d.at.rms},
                {"max", d.at.max},
                {"point", d.at.worst + 1},
                {"u", fit.parameters[2 * d.at.worst]},
                {"v", fit.parameters[2 * d.at.worst + 1]}};
  j["nearest"] = {{"rms", d.near.rms}, {"max", d.near.max}, {"point", d.near.worst + 1}};
  j["system"] = {{"rows", fit.distances.size()},
                 {"unknowns", s.size},
                 {"rank", s.count()},
                 {"condition", nullptr},
                 {"solver", "scattered"}};
  return j;
}

// The lines and members that curves and surfaces have in common, behind those of their own.
Report finished(Report r, Json j, const FitOptions& o, const ReportContext& context, bool reached) {
  addOptions(r, j, o, context);
  addTolerance(r, j, o.tolerance, reached);
  r.json = laidOutJson(j.dump());
  return r;
}

}  // namespace

std::string sizeText(const Spline& s) {
  return s.isCurve() ? cat(s.size[0], " control points")
                     : cat(s.size[0], " x ", s.size[1], " control points");
}

void Report::line(const std::string& key, const std::string& value) {
  std::string head = key;
  head.resize(9, ' ');
  text += head + escaped(value) + "\n";
}

void print(const Report& report, bool aside, const Streams& streams) {
  if (aside) {
    streams.err << report.text;
  } else {
    deliver(streams.out, report.text);
  }
}

Report curveReport(const CurveFit& fit, const FitOptions& o, const ReportContext& context,
                   const std::vector<double>& nearest) {
  const Deviations deviations{summaryOf(fit.distances), summaryOf(nearest)};
  ReportContext told = context;
  if (fit.adapted) told.knots = "adapted";
  Report r;
  tellCurve(r, fit, o, told, deviations);
  return finished(std::move(r), curveJson(fit, o, told, deviations), o, told, fit.reached);
}

Report surfaceReport(const SurfaceFit& fit, const PointGrid& grid, const FitOptions& o,
                     const ReportContext& context, const std::vector<double>& nearest) {
  const Deviations deviations{summaryOf(fit.distances), summaryOf(nearest)};
  Report r;
  tellSurface(r, fit, grid, o, context, deviations);
  return finished(std::move(r), surfaceJson(fit, grid, o, context, deviations), o, context,
                  fit.reached);
}

Report scatteredReport(const ScatteredFit& fit, const FitOptions& o, const ReportContext& context,
                       const std::vector<double>& nearest) {
  const Deviations deviations{summaryOf(fit.distances), summaryOf(nearest)};
  Report r;
  tellScattered(r, fit, o, deviations);
  return finished(std::move(r), scatteredJson(fit, o, deviations), o, context, fit.reached);
}

}  // namespace knotfit
