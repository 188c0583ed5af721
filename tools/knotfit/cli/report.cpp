// SPDX-License-Identifier: MIT
// The report of a fit.
#include "cli/report.h"

#include <cmath>

#include "base/text.h"

namespace knotfit {
namespace {

using Json = nlohmann::ordered_json;

Json finite(double x) { return std::isfinite(x) && x >= 0 ? Json(x) : Json(nullptr); }

std::string conditionText(double condition) {
  if (condition < 0) return "condition not computed";
  return cat("condition ", condition < 1e5 ? decimals(condition, 1) : significant(condition, 2));
}

std::string errorText(const Deviation& d) {
  return cat("rms ", measured(d.rms), ", max ", measured(d.max));
}

std::string spansText(const Spline& s, std::size_t d) {
  std::size_t spans = 0;
  for (std::size_t i = 1; i < s.knots[d].size(); ++i) spans += s.knots[d][i - 1] < s.knots[d][i];
  return cat(spans);
}

void describeOptions(Report& report, const FitOptions& o, std::size_t merged, bool weighted) {
  std::string text;
  const auto note = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  Json& j = report.json;
  if (o.refine > 0) note(cat("parameters re-projected up to ", o.refine, " times"));
  if (o.smooth > 0) note(cat("smoothing ", o.smooth));
  if (weighted) note("weighted points");
  if (merged > 0) note(cat(merged, merged == 1 ? " point merged" : " points merged"));
  if (o.solver.rankTolerance != 1e-10) note(cat("rank tolerance ", o.solver.rankTolerance));
  if (!text.empty()) report.line("with", text);
  j["refine"] = o.refine;
  j["smooth"] = o.smooth;
  j["merged"] = merged;
}

void describeTolerance(Report& report, const ReportContext& context, bool reached) {
  if (!context.tolerance) return;
  report.line("tol",
              cat(context.asked, reached ? " reached" : " not reached: this is the best fit"));
  report.json["tolerance"] = {{"asked", context.asked}, {"reached", reached}};
}

std::string endsText(const CurveFit& fit, const FitOptions& o) {
  std::string text = o.closed ? "closed, smooth at the seam" : o.endsExact ? "met exactly" : "free";
  if (o.closed && o.endsExact) text += ", first point met";
  if (!o.pass.empty()) {
    text += cat(", ", o.pass.size(), o.pass.size() == 1 ? " point passed" : " points passed");
  }
  if (!o.tangents.empty()) {
    text += cat(", ", o.tangents.size(), o.tangents.size() == 1 ? " tangent" : " tangents");
  }
  if (!o.corners.empty()) {
    text += cat(", ", o.corners.size(), o.corners.size() == 1 ? " corner" : " corners");
  }
  return fit.constraints ? cat(text, " (largest miss ", significant(fit.miss, 3), ")") : text;
}

const char* modeOf(const FitOptions& o) { return o.endsExact ? "exact" : "free"; }

}  // namespace

std::string sizeText(const Spline& s) {
  return s.isCurve() ? cat(s.size[0], " control points")
                     : cat(s.size[0], " x ", s.size[1], " control points");
}

void Report::line(const std::string& key, const std::string& value) {
  std::string head = key;
  head.resize(9, ' ');
  text += head + value + "\n";
}

Report reportOf(const CurveFit& fit, const PointSet& points, const FitOptions& o,
                const ReportContext& context, const std::vector<double>& distances,
                const std::vector<double>& nearest) {
  const Spline& s = fit.spline;
  const Deviation at = summaryOf(distances), near = summaryOf(nearest);
  const std::string knots = fit.adapted ? "adapted" : context.knots;
  Report r;
  r.line("curve", cat(points.count(), " points (", points.dim, " columns) -> degree ", s.degree[0],
                      ", ", s.size[0], " control points, ", spansText(s, 0), " spans, ",
                      context.parameters, " parameters, ", knots, " knots"));
  r.line("ends", endsText(fit, o));
  r.line("error", cat("at the parameters: ", errorText(at), " (point ", at.worst + 1,
                      ", u = ", significant(fit.parameters[at.worst], 4), ")"));
  r.line("", cat("nearest distance:  ", errorText(near), " (point ", near.worst + 1, ")"));
  r.line("system", cat(fit.rows, " x ", s.size[0], ", rank ", s.size[0], ", ",
                       conditionText(fit.condition), ", ", nameOf(o.solver.method)));
  r.json["kind"] = "curve";
  r.json["points"] = points.count();
  r.json["dim"] = points.dim;
  r.json["degree"] = {s.degree[0]};
  r.json["controls"] = {s.size[0]};
  r.json["parameters"] = context.parameters;
  r.json["knots"] = knots;
  r.json["ends"] = {{"mode", modeOf(o)},
                    {"closed", o.closed},
                    {"constraints", fit.constraints},
                    {"miss", fit.miss}};
  r.json["error"] = {
      {"rms", at.rms}, {"max", at.max}, {"point", at.worst + 1}, {"u", fit.parameters[at.worst]}};
  r.json["nearest"] = {{"rms", near.rms}, {"max", near.max}, {"point", near.worst + 1}};
  r.json["system"] = {{"rows", fit.rows},
                      {"unknowns", s.size[0]},
                      {"rank", s.size[0]},
                      {"condition", finite(fit.condition)},
                      {"solver", nameOf(o.solver.method)}};
  describeOptions(r, o, points.merged, !points.weights.empty());
  describeTolerance(r, context, fit.reached);
  return r;
}

Report reportOf(const SurfaceFit& fit, const PointGrid& grid, const FitOptions& o,
                const ReportContext& context, const std::vector<double>& distances,
                const std::vector<double>& nearest) {
  const Spline& s = fit.spline;
  const Deviation at = summaryOf(distances), near = summaryOf(nearest);
  const std::size_t row = at.worst / grid.columns, column = at.worst % grid.columns;
  const auto place = [&](std::size_t i) {
    return cat("row ", i / grid.columns + 1, ", column ", i % grid.columns + 1);
  };
  const char* edges = o.edges == Edges::kFree      ? "free"
                      : o.edges == Edges::kCorners ? "corners met exactly"
                                                   : "fitted alone, corners met exactly";
  Report r;
  r.line("surface", cat(grid.rows, " x ", grid.columns, " points -> degree ", s.degree[0], " x ",
                        s.degree[1], ", ", s.size[0], " x ", s.size[1], " control points, ",
                        spansText(s, 0), " x ", spansText(s, 1), " spans, ", context.parameters,
                        " parameters, ", context.knots, " knots"));
  r.line("edges", o.edges == Edges::kFree
                      ? edges
                      : cat(edges, " (largest miss ", significant(fit.miss, 3), ")"));
  r.line("error", cat("at the parameters: ", errorText(at), " (", place(at.worst),
                      ", u = ", significant(fit.parameters[0][row], 4),
                      ", v = ", significant(fit.parameters[1][column], 4), ")"));
  r.line("", cat("nearest distance:  ", errorText(near), " (", place(near.worst), ")"));
  r.line("system", cat(fit.rows[0], " x ", s.size[0], " and ", fit.rows[1], " x ", s.size[1],
                       ", rank ", s.size[0], " and ", s.size[1], ", ", conditionText(fit.condition),
                       ", ", nameOf(o.solver.method)));
  r.json["kind"] = "surface";
  r.json["points"] = {grid.rows, grid.columns};
  r.json["dim"] = 3;
  r.json["degree"] = {s.degree[0], s.degree[1]};
  r.json["controls"] = {s.size[0], s.size[1]};
  r.json["parameters"] = context.parameters;
  r.json["knots"] = context.knots;
  r.json["edges"] = {{"mode", o.edges == Edges::kFree    ? "free"
                              : o.edges == Edges::kExact ? "exact"
                                                         : "corners"},
                     {"miss", fit.miss}};
  r.json["error"] = {{"rms", at.rms},
                     {"max", at.max},
                     {"row", row + 1},
                     {"column", column + 1},
                     {"u", fit.parameters[0][row]},
                     {"v", fit.parameters[1][column]}};
  r.json["nearest"] = {{"rms", near.rms},
                       {"max", near.max},
                       {"row", near.worst / grid.columns + 1},
                       {"column", near.worst % grid.columns + 1}};
  r.json["system"] = {{"rows", fit.rows},
                      {"unknowns", s.size},
                      {"rank", s.size},
                      {"condition", finite(fit.condition)},
                      {"solver", nameOf(o.solver.method)}};
  describeOptions(r, o, 0, false);
  describeTolerance(r, context, fit.reached);
  return r;
}

}  // namespace knotfit
