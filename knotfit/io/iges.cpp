// SPDX-License-Identifier: MIT
// IGES 5.3 files with one B-spline entity: lines of 80 columns in five sections (start, global,
// directory, parameters, terminate), each numbered on its own. Readers count columns and take what
// stands in them without complaint: a real without a point is an integer to them, and a count that
// is wrong shifts all numbers behind it. So no field is broken over two lines, and every flag says
// what is true of the numbers rather than what the fit was asked for.
#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "io/writers.h"

namespace knotfit {
namespace {

std::string hollerith(const std::string& text) { return cat(text.size(), "H", text); }

std::string padded(const std::string& text, std::size_t width, bool right) {
  const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
  return right ? blanks + text : text + blanks;
}

// Fields joined with commas, ended with a semicolon, no field broken over lines of `width`.
std::vector<std::string> wrapped(const std::vector<std::string>& fields, std::size_t width) {
  std::vector<std::string> lines(1);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::string piece = fields[i] + (i + 1 < fields.size() ? "," : ";");
    if (lines.back().size() + piece.size() > width && !lines.back().empty()) lines.emplace_back();
    lines.back() += piece;
  }
  return lines;
}

struct Unit {
  const char* flag;
  const char* name;
};

// Flags of the global section's table of units.
Unit unitOf(const std::string& units) {
  if (units == "in") return {"1", "IN"};
  if (units == "m") return {"6", "M"};
  if (units == "cm") return {"10", "CM"};
  return {"2", "MM"};
}

double largestCoordinate(const Spline& s) {
  double most = 0;
  for (const double x : s.controls) most = std::max(most, std::abs(x));
  return most;
}

std::vector<std::string> globalFields(const Spline& s) {
  const Unit unit = unitOf(s.units);
  return {hollerith(","),
          hollerith(";"),
          hollerith("fit"),
          hollerith("fit.igs"),
          hollerith("knotfit"),
          hollerith("1"),
          "32",  // bits of an integer; then the largest exponents and the digits of reals, twice
          "308",
          "15",
          "308",
          "15",
          hollerith("fit"),
          "1.",  // model space is as large as what it stands for
          unit.flag,
          hollerith(unit.name),
          "1",  // widths of lines: one, of this size
          "0.01",
          hollerith("20000101.000000"),  // a fixed date: the same input gives the same file
          "1.E-9",  // places nearer than this are one; no place is further out than the next number
          pointed(std::max(largestCoordinate(s), 1e-9)),
          hollerith(""),
          hollerith(""),
          "11",  // version 5.3; no drafting standard
          "0",
          hollerith("20000101.000000")};
}

void appendControls(const Spline& s, std::vector<std::string>& fields) {
  for (std::size_t i = 0; i < s.count(); ++i) fields.push_back("1.");  // weights
  for (std::size_t j = 0; j < s.size[1]; ++j) {                        // u runs fastest
    for (std::size_t i = 0; i < s.size[0]; ++i) {
      for (int c = 0; c < 3; ++c) fields.push_back(c < s.dim ? pointed(s.control(i, j)[c]) : "0.");
    }
  }
}

void appendReals(const std::vector<double>& values, std::vector<std::string>& fields) {
  for (const double v : values) fields.push_back(pointed(v));
}

std::string flag(bool on) { return on ? "1" : "0"; }

std::vector<std::string> curveFields(const Spline& s) {
  const auto normal = planeNormal(s);
  std::vector<std::string> fields = {"126",
                                     cat(s.size[0] - 1),
                                     cat(s.degree[0]),
                                     flag(normal.has_value()),
                                     flag(meetsItself(s, 0)),
                                     "1",
                                     "0"};
  appendReals(s.knots[0], fields);
  appendControls(s, fields);
  appendReals({s.first(0), s.last(0)}, fields);  // V0 and V1: the whole curve, not a part
  const std::array<double, 3> n = normal.value_or(std::array<double, 3>{});
  appendReals({n[0], n[1], n[2]}, fields);
  return fields;
}

std::vector<std::string> surfaceFields(const Spline& s) {
  std::vector<std::string> fields = {"128",
                                     cat(s.size[0] - 1),
                                     cat(s.size[1] - 1),
                                     cat(s.degree[0]),
                                     cat(s.degree[1]),
                                     flag(meetsItself(s, 0)),
                                     flag(meetsItself(s, 1)),
                                     "1",
                                     "0",
                                     "0"};
  appendReals(s.knots[0], fields);
  appendReals(s.knots[1], fields);
  appendControls(s, fields);
  appendReals({s.first(0), s.last(0), s.first(1), s.last(1)}, fields);
  return fields;
}

// One line of 80 columns: text, section letter in column 73, sequence number behind it.
void appendLine(std::string& out, const std::string& text, char section, std::size_t number) {
  out += padded(text, 72, false) + section + padded(cat(number), 7, true) + "\n";
}

}  // namespace

std::string igesText(const Spline& s) {
  const std::string type = s.isCurve() ? "126" : "128";
  const auto global = wrapped(globalFields(s), 72);
  const auto data = wrapped(s.isCurve() ? curveFields(s) : surfaceFields(s), 64);
  const auto eight = [](const std::string& t) { return padded(t, 8, true); };
  std::string out;
  appendLine(out, "B-spline fitted by knotfit", 'S', 1);
  for (std::size_t i = 0; i < global.size(); ++i) appendLine(out, global[i], 'G', i + 1);
  appendLine(out,
             eight(type) + eight("1") + eight("0") + eight("0") + eight("0") + eight("0") +
                 eight("0") + eight("0") + "00000000",
             'D', 1);
  appendLine(out,
             eight(type) + eight("0") + eight("0") + eight(cat(data.size())) + eight("0") +
                 eight("") + eight("") + eight("FIT") + eight("1"),
             'D', 2);
  for (std::size_t i = 0; i < data.size(); ++i) {
    appendLine(out, padded(data[i], 64, false) + eight("1"), 'P', i + 1);
  }
  appendLine(out,
             "S" + padded("1", 7, true) + "G" + padded(cat(global.size()), 7, true) + "D" +
                 padded("2", 7, true) + "P" + padded(cat(data.size()), 7, true),
             'T', 1);
  return out;
}

}  // namespace knotfit
