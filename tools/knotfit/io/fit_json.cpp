// SPDX-License-Identifier: MIT
// The program's own format.
#include "io/fit_json.h"

#include <algorithm>

#include "base/fault.h"
#include "base/text.h"
#include "io/byte_source.h"

namespace knotfit {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLargestFile = std::size_t{1} << 29;

bool isFlat(const Json& array) {
  return std::none_of(array.begin(), array.end(), [](const Json& v) { return v.is_structured(); });
}

void append(std::string& out, const Json& value, const std::string& indent);

void appendItems(std::string& out, const Json& value, const std::string& indent) {
  const std::string deeper = indent + "  ";
  bool first = true;
  for (const auto& [key, item] : value.items()) {
    out += first ? "\n" : ",\n";
    first = false;
    out += deeper;
    if (value.is_object()) out += Json(key).dump() + ": ";
    append(out, item, deeper);
  }
  if (!first) out += "\n" + indent;
}

void append(std::string& out, const Json& value, const std::string& indent) {
  if (value.is_number_float()) {
    out += shortest(value.get<double>());
  } else if (value.is_array() && isFlat(value)) {
    out += '[';
    for (std::size_t i = 0; i < value.size(); ++i) {
      if (i) out += ", ";
      append(out, value[i], indent);
    }
    out += ']';
  } else if (value.is_structured()) {
    out += value.is_object() ? '{' : '[';
    appendItems(out, value, indent);
    out += value.is_object() ? '}' : ']';
  } else {
    out += value.dump();
  }
}

// Line of a byte position, counted from 1.
std::size_t lineOf(const std::string& text, std::size_t byte) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size()));
  return 1 + static_cast<std::size_t>(std::count(text.begin(), end, '\n'));
}

Json parsed(const std::string& text, const std::string& name) {
  try {
    return Json::parse(text);
  } catch (const nlohmann::json::parse_error& e) {
    throw Fault(kInput, cat(name, ":", lineOf(text, e.byte),
                            ": is no JSON (write it with knotfit curve or surface)"));
  } catch (const nlohmann::json::out_of_range&) {
    throw Fault(kInput, cat(name, ": a number is out of range (write the fit anew)"));
  }
}

std::vector<std::vector<double>> rowsOf(const Json& value) {
  return value.get<std::vector<std::vector<double>>>();
}

// A whole number that an int holds; anything else is a fault.
int wholeNumber(const Json& value) {
  const bool fits = value.is_number_integer() && value >= 0 && value <= 1 << 30;
  if (!fits) throw Fault(kInput, cat(value.dump().substr(0, 40), " is no count"));
  return value.get<int>();
}

Spline splineOf(const Json& j) {
  if (j.at("format") != "knotfit") throw Fault(kInput, "its format is not \"knotfit\"");
  if (j.at("version") != 1) throw Fault(kInput, "its version is not 1");
  if (j.at("rational") != false) throw Fault(kInput, "rational fits are not read");
  Spline s;
  const auto kind = j.at("kind").get<std::string>();
  if (kind != "curve" && kind != "surface") throw Fault(kInput, "its kind is not known");
  s.directions = kind == "curve" ? 1 : 2;
  const auto n = static_cast<std::size_t>(s.directions);
  s.dim = wholeNumber(j.at("dim"));
  const Json &degree = j.at("degree"), &size = j.at("size");
  const auto knots = rowsOf(j.at("knots"));
  if (degree.size() != n || size.size() != n || knots.size() != n) {
    throw Fault(kInput, "degree, knots and size do not suit its kind");
  }
  for (std::size_t d = 0; d < n; ++d) {
    s.degree[d] = wholeNumber(degree.at(d));
    s.size[d] = static_cast<std::size_t>(wholeNumber(size.at(d)));
    s.knots[d] = knots[d];
  }
  for (const auto& point : rowsOf(j.at("controls"))) {
    if (point.size() != static_cast<std::size_t>(s.dim)) {
      throw Fault(kInput, "a control point is not of its dimension");
    }
    s.controls.insert(s.controls.end(), point.begin(), point.end());
  }
  s.closed = j.at("closed").get<bool>();
  s.units = j.at("units").get<std::string>();
  if (s.units != "mm" && s.units != "cm" && s.units != "m" && s.units != "in") {
    throw Fault(kInput, "its units are not mm, cm, m or in");
  }
  if (j.contains("fit")) s.fit = j["fit"];
  if (const std::string fault = faultOf(s); !fault.empty()) throw Fault(kInput, fault);
  return s;
}

}  // namespace

std::string jsonText(const Json& value) {
  std::string out;
  append(out, value, "");
  return out + "\n";
}

std::string fitJson(const Spline& s) {
  const auto n = static_cast<std::size_t>(s.directions);
  Json j;
  j["format"] = "knotfit";
  j["version"] = 1;
  j["kind"] = s.isCurve() ? "curve" : "surface";
  j["dim"] = s.dim;
  j["degree"] = std::vector<int>(s.degree.begin(), s.degree.begin() + s.directions);
  j["closed"] = s.closed;
  j["rational"] = false;
  j["knots"] = Json::array();
  j["domain"] = Json::array();
  for (std::size_t d = 0; d < n; ++d) {
    j["knots"].push_back(s.knots[d]);
    j["domain"].push_back({s.knots[d].front(), s.knots[d].back()});
  }
  j["size"] = std::vector<std::size_t>(s.size.begin(), s.size.begin() + s.directions);
  j["units"] = s.units;
  j["controls"] = Json::array();
  for (std::size_t i = 0; i < s.count(); ++i) {
    const double* p = s.controls.data() + i * static_cast<std::size_t>(s.dim);
    j["controls"].push_back(std::vector<double>(p, p + s.dim));
  }
  if (!s.fit.is_null()) j["fit"] = s.fit;
  return jsonText(j);
}

Spline readFit(const std::string& path) {
  ByteSource source(path);
  const std::string text = source.rest(kLargestFile);
  const Json j = parsed(text, source.name());
  try {
    return splineOf(j);
  } catch (const nlohmann::json::exception&) {
    throw Fault(kInput, cat(source.name(), ": is no fit of this program (write it with knotfit ",
                            "curve or surface)"));
  } catch (const Fault& fault) {
    throw Fault(kInput, cat(source.name(), ": ", fault.what(), " (write the fit anew)"));
  }
}

}  // namespace knotfit
