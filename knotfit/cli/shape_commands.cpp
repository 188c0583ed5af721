// SPDX-License-Identifier: MIT
// The commands insert and convert: the same shape in another form. The report of the fit goes
// along, since it stays true.
#include <algorithm>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/outputs.h"
#include "cli/report.h"
#include "io/fit_json.h"
#include "model/shape.h"

namespace knotfit {
namespace {

struct InsertArguments {
  std::string input, direction = "u";
  std::vector<std::string> knots;
  OutputOptions outputs;
};

struct Insertion {
  double at = 0;
  int times = 1;
};

Insertion insertionOf(const std::string& text, const Spline& s, int direction) {
  const std::size_t colon = text.find(':');
  Insertion in;
  long long times = 1;
  const bool ok = parseNumber(text.substr(0, colon), in.at) == NumberFault::kNone &&
                  (colon == std::string::npos || parseInteger(text.substr(colon + 1), times));
  if (!ok) throw Fault(kUsage, cat("--knot: wants T or T:TIMES, not ", inQuotes(text)));
  const auto d = static_cast<std::size_t>(direction);
  if (!(in.at > s.first(direction) && in.at < s.last(direction))) {
    throw Fault(kUsage, cat("--knot ", in.at, " is not within the domain ", s.first(direction),
                            " to ", s.last(direction), "; name a place inside"));
  }
  // More than the degree would tear the curve apart.
  const auto there = std::count(s.knots[d].begin(), s.knots[d].end(), in.at);
  if (times < 1 || there + times > s.degree[d]) {
    throw Fault(kUsage, cat("--knot ", text, ": ", there, " stand there, and degree ", s.degree[d],
                            " takes ", s.degree[d], " at most; insert 1 to ",
                            std::max<long long>(s.degree[d] - there, 0)));
  }
  in.times = static_cast<int>(times);
  return in;
}

Spline inserted(const Spline& s, const Insertion& in, int direction) {
  if (s.isCurve()) {
    CurveShape shape(s);
    shape.insert(in.at, in.times);
    return shape.spline(s);
  }
  SurfaceShape shape(s);
  shape.insert(direction, in.at, in.times);
  return shape.spline(s);
}

// Writes the files and tells of them, where that can be told.
void writeAndTell(FitOutputs& outputs, const Spline& s, const OutputOptions& o,
                  const Streams& streams) {
  Report report;
  report.line(s.isCurve() ? "curve" : "surface", sizeText(s));
  report.line("wrote", outputs.list(s));
  outputs.commit([&] { print(report, o.takesStandardOutput(), streams); });
}

int insertCommand(const InsertArguments& a, const Streams& streams) {
  FitOutputs outputs(a.outputs, {a.input});
  StoredFit fit = readFit(a.input);
  Spline& s = fit.spline;
  const int direction = a.direction == "v" ? 1 : 0;
  if (direction >= s.directions) throw Fault(kUsage, "--dir v: a curve has no direction v");
  for (const std::string& text : a.knots) {  // each is checked against the knots that stand by then
    s = inserted(s, insertionOf(text, s, direction), direction);
  }
  outputs.addFit(fit, {});
  writeAndTell(outputs, s, a.outputs, streams);
  return kDone;
}

int convertCommand(const std::string& input, const OutputOptions& o, const Streams& streams) {
  FitOutputs outputs(o, {input});
  const StoredFit fit = readFit(input);
  outputs.addFit(fit, {});
  writeAndTell(outputs, fit.spline, o, streams);
  return kDone;
}

}  // namespace

void addInsertCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("insert", "insert knots; the shape stays the same");
  const auto a = std::make_shared<InsertArguments>();
  command->add_option("FIT", a->input, "a fit written as JSON")->required();
  command->add_option("--knot", a->knots, "where, and how often [1]; may repeat")
      ->type_name("T[:MULT]")
      ->allow_extra_args(false)
      ->required();
  command->add_option("--dir", a->direction, "u|v: direction of a surface [u]")
      ->check(CLI::IsMember({"u", "v"}))
      ->type_name("DIR");
  a->outputs.addTo(*command);
  command->get_option("--output")->required();
  command->footer("\nExample: knotfit insert section.json --knot 0.5:3 -o split.json");
  command->callback(
      [a, &chosen] { chosen = [a](const Streams& s) { return insertCommand(*a, s); }; });
}

void addConvertCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("convert", "write a fit in other formats");
  const auto a = std::make_shared<InsertArguments>();
  command->add_option("FIT", a->input, "a fit written as JSON")->required();
  a->outputs.addTo(*command);
  command->get_option("--output")->required();
  command->footer("\nExample: knotfit convert section.json -o section.stp -o section.pdf");
  command->callback([a, &chosen] {
    chosen = [a](const Streams& s) { return convertCommand(a->input, a->outputs, s); };
  });
}

}  // namespace knotfit
