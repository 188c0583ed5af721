// SPDX-License-Identifier: MIT
// The options of the fitting commands as they stand on the command line. Each takes the one word
// behind it: an option that took all that follow would take the next file for a value.
#include "cli/fit_arguments.h"

#include <CLI/CLI.hpp>

#include "cli/app.h"

namespace knotfit {
namespace {

constexpr std::size_t kMany = 1000000000;  // more than any file has points

CLI::IsMember oneOf(std::vector<std::string> names) { return CLI::IsMember(std::move(names)); }

}  // namespace

void FitArguments::addCommon(CLI::App& app) {
  app.add_option("--degree", degree, "degree of the spline, P or P,Q [3]")->type_name("P[,Q]");
  app.add_option("--controls", controls,
                 "number of control points [min(points, max(P+1, points/4))]")
      ->type_name("N[,M]");
  addNumber(app, "--tol", tolerance, Least::kAboveZero,
            "take the fewest control points that keep the largest nearest distance within this");
  app.add_option("--knots", knots, "average|uniform, for curves also a file or a list [average]")
      ->type_name("KNOTS");
  addNumber(app, "--smooth", smooth, Least::kZero,
            "weight of the control points' second differences [0]");
  addNumber(app, "--rank-tol", rankTolerance, Least::kZero,
            "what the solver takes for zero [1e-10]");
  table.addTo(app);
  addCount(app, "--thin", thin, 1, kMany, "take every N-th point [1]");
  app.add_option("--units", units, "mm|cm|m|in [mm]")
      ->check(oneOf({"mm", "cm", "m", "in"}))
      ->type_name("UNIT");
  app.add_option("--report", report, "also write the report as JSON")->type_name("FILE.json");
  CLI::Option* silent = app.add_flag("-q,--quiet", quiet, "print nothing but errors");
  app.add_flag("-v,--verbose", verbose, "print the solver's own lines")->excludes(silent);
  app.add_option("--progress", progress, "auto|always|never [auto]")
      ->check(oneOf({"auto", "always", "never"}))
      ->type_name("WHEN");
  outputs.addTo(app);
}

void FitArguments::addPointColumns(CLI::App& app) {
  app.add_option("--weights", weights, "a column or a file of weights of the squared distances")
      ->type_name("COLUMN|FILE");
  app.add_option("--columns", columns, "columns of x, y and z, by name or number from 1")
      ->type_name("X,Y,Z");
}

void FitArguments::addCurve(CLI::App& app) {
  app.add_option("POINTS", input, "CSV, XYZ, OBJ or PLY points; - for standard input")->required();
  addCommon(app);
  app.add_option("--solver", solver, "auto|householder|qr|banded [auto]")
      ->check(oneOf({"auto", "householder", "qr", "banded"}))
      ->type_name("NAME");
  app.add_option("--param", param, "chord|centripetal|uniform or a file of parameters [chord]")
      ->type_name("PARAM");
  addCount(app, "--refine", refine, 0, 1000, "project the parameters anew up to K times [0]");
  app.add_option("--ends", ends, "free|exact [exact; free for --closed and --solver qr]")
      ->check(oneOf({"free", "exact"}))
      // Exact ends are the usual ones, and some fits cannot have them: only who asks is refused.
      ->each([this](const std::string&) { endsGiven = true; })
      ->type_name("HOW");
  app.add_option("--pass", pass, "points to be met exactly, counted from 1")
      ->type_name("I[,I...]")
      ->allow_extra_args(false);
  app.add_option("--tangent", tangents, "direction at a point: start=dx,dy,dz, end=..., at=I:...")
      ->type_name("PLACE=D")
      ->allow_extra_args(false);
  app.add_flag("--closed", closed, "the curve closes, smoothly at the seam");
  app.add_option("--corner", corners, "points where the curve may have a corner")
      ->type_name("I[,I...]")
      ->allow_extra_args(false);
  addPointColumns(app);
  addNumber(app, "--merge", merge, Least::kZero, "leave out points this near to the one before");
  app.footer(
      "\nExample: knotfit curve section.csv --controls 40 --param centripetal -o section.svg");
}

void FitArguments::addSurface(CLI::App& app) {
  app.add_option("GRID", input, "grid of x,y,z triples or heights, or points; - for standard input")
      ->required();
  addCommon(app);
  app.add_option("--solver", solver, "auto|householder|qr [auto]")
      ->check(oneOf({"auto", "householder", "qr"}))
      ->type_name("NAME");
  app.add_option("--param", param, "chord|centripetal|uniform [chord; uniform for --height]")
      ->check(oneOf({"chord", "centripetal", "uniform"}))
      ->type_name("PARAM");
  app.add_option("--edges", edges,
                 "free, corners met, or exact: borders fitted alone with corners met [free]")
      ->check(oneOf({"free", "exact", "corners"}))
      ->type_name("HOW");
  app.add_flag("--height", heights, "the grid holds z alone");
  app.add_option("--spacing", spacing, "distance of rows and columns of heights [1,1]")
      ->type_name("DX,DY");
  app.add_option("--order", order, "rows|columns: which index runs along u [rows]")
      ->check(oneOf({"rows", "columns"}))
      ->type_name("WHICH");
  app.add_flag("--scattered", scattered, "the points come in any order, as heights over a plane");
  app.add_option("--plane", plane, "xy, or fit: the best plane of scattered points [xy]")
      ->check(oneOf({"xy", "fit"}))
      ->type_name("WHICH");
  addPointColumns(app);
  app.footer(
      "\nExample: knotfit surface heights.csv --height --spacing 10,10 --controls 30,21 "
      "-o hill.igs");
}

}  // namespace knotfit
