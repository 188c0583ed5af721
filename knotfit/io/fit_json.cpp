// SPDX-License-Identifier: MIT
// The program's own format. A file is read in bounded memory, whatever it holds: rows of knots and
// control points go into plain vectors as soon as they end and are dropped from the parser's tree,
// values and nesting are counted while they are read. So hundreds of megabytes of control points
// take little more than their doubles, and no depth can overflow the stack of what walks the tree
// later on.
#include "io/fit_json.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "io/byte_source.h"
#include "io/table.h"

namespace knotfit {
namespace {

using Json = nlohmann::ordered_json;

// What no fit of this program comes near: its reports are a hundred values in three levels.
constexpr int kDeepest = 16;
constexpr std::size_t kMostValues = std::size_t{1} << 22;
constexpr std::size_t kLongestValue = std::size_t{1} << 22;  // in bytes, blanks included

// Arrays of numbers stand on one line, whatever their length; all else goes down a line a value.
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

std::string textOf(const Json& value) {
  std::string out;
  append(out, value, "");
  return out + "\n";
}

// A file's bytes as the parser takes them, and the line that they have come to.
class Bytes {
 public:
  explicit Bytes(ByteSource& source) : source_(source) { next(); }

  char at() const { return byte_; }
  bool ended() const { return ended_; }
  void next() {
    if (ended_) return;
    ended_ = !source_.nextByte(byte_);
    if (++sinceValue_ > kLongestValue) {
      source_.fail(cat("a value of more than ", kLongestValue, " bytes"), "write the fit anew");
    }
  }
  void valueSeen() { sinceValue_ = 0; }
  const ByteSource& source() const { return source_; }

 private:
  ByteSource& source_;
  char byte_ = 0;
  bool ended_ = false;
  std::size_t sinceValue_ = 0;
};

// The same as an iterator; the end is the iterator without bytes.
class ByteIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  explicit ByteIterator(Bytes* bytes = nullptr) : bytes_(bytes) {}
  char operator*() const { return bytes_->at(); }
  ByteIterator& operator++() {
    bytes_->next();
    return *this;
  }
  bool operator==(const ByteIterator& other) const { return ended() == other.ended(); }
  bool operator!=(const ByteIterator& other) const { return !(*this == other); }

 private:
  bool ended() const { return !bytes_ || bytes_->ended(); }
  Bytes* bytes_;
};

// A file in parts: its tree without knots and control points, and those.
struct FitParts {  // NOLINT(bugprone-exception-escape): moving a tree throws nothing, as it says
  Json tree;
  std::vector<std::vector<double>> knots;
  std::vector<double> controls;
  std::size_t dim = 0;  // of the control points
};

// Looks at each value as it is parsed, takes the rows of numbers and keeps the bounds.
class PartsTaker {
 public:
  PartsTaker(Bytes& bytes, FitParts& parts) : bytes_(bytes), parts_(parts) {}

  bool keeps(int depth, Json::parse_event_t event, const Json& value) {
    using Event = Json::parse_event_t;
    bytes_.valueSeen();
    if ((event == Event::array_start || event == Event::object_start) && depth >= kDeepest) {
      fail(cat("nested deeper than ", kDeepest, " levels"));
    }
    if (event == Event::value && ++values_ > kMostValues) {
      fail(cat("more than ", kMostValues, " values beside its control points"));
    }
    // Keys of the outermost object; rows of their arrays end at depth 2.
    if (event == Event::key && depth == 1) {
      knots_ = value == "knots";
      controls_ = value == "controls";
    }
    if (event != Event::array_end || depth != 2 || !(knots_ || controls_)) return true;
    takeRow(value);
    values_ -= std::min(values_, value.size());
    return false;
  }

 private:
  [[noreturn]] void fail(const std::string& cause) const {
    bytes_.source().fail(cause, "write the fit anew");
  }

  void takeRow(const Json& row) {
    std::vector<double> numbers;
    for (const Json& x : row) {
      if (!x.is_number()) fail("knots and control points are rows of numbers");
      numbers.push_back(x.get<double>());
    }
    if (knots_) return parts_.knots.push_back(std::move(numbers));
    if (parts_.controls.empty()) parts_.dim = numbers.size();
    if (numbers.empty() || numbers.size() != parts_.dim) {
      fail("a control point is not of its dimension");
    }
    parts_.controls.insert(parts_.controls.end(), numbers.begin(), numbers.end());
    if (parts_.controls.size() > kMostNumbers) fail(cat("more than ", kMostNumbers, " numbers"));
  }

  Bytes& bytes_;
  FitParts& parts_;
  bool knots_ = false, controls_ = false;  // which key is being read
  std::size_t values_ = 0;                 // that the tree holds
};

FitParts partsOf(ByteSource& source) {
  Bytes bytes(source);
  FitParts parts;
  PartsTaker taker(bytes, parts);
  try {
    parts.tree = Json::parse(ByteIterator(&bytes), ByteIterator(),
                             [&](int depth, Json::parse_event_t event, Json& value) {
                               return taker.keeps(depth, event, value);
                             });
  } catch (const Json::parse_error&) {
    source.fail("is no JSON", "write it with knotfit curve or surface");
  } catch (const Json::out_of_range&) {
    source.fail("a number is out of range", "write the fit anew");
  }
  return parts;
}

// A whole number that an int holds; anything else is a fault.
int wholeNumber(const Json& value) {
  const bool fits = value.is_number_integer() && value >= 0 && value <= 1 << 30;
  if (!fits) throw Fault(kInput, cat(value.dump().substr(0, 40), " is no count"));
  return value.get<int>();
}

constexpr const char* kAxes[] = {"x", "y"};

Json heightsJson(const HeightPlaces& h) {
  return {{"along", {kAxes[h[0].coordinate], kAxes[h[1].coordinate]}},
          {"spacing", {h[0].spacing, h[1].spacing}},
          {"steps", {h[0].steps, h[1].steps}}};
}

// Places that are not those of the control points would show another surface than these do.
void readHeights(const Json& json, Spline& s) {
  Spline placed = s;
  HeightPlaces& h = placed.heights.emplace();
  for (std::size_t d = 0; d < 2; ++d) {
    h[d].coordinate = json.at("along").at(d) == kAxes[0] ? 0 : 1;
    h[d].spacing = json.at("spacing").at(d).get<double>();
    h[d].steps = static_cast<std::size_t>(wholeNumber(json.at("steps").at(d)));
  }
  const bool suit = !s.isCurve() && h[0].coordinate != h[1].coordinate;
  if (suit) placeHeights(placed);
  const auto isUnit = [](const std::vector<double>& t) { return t.front() == 0 && t.back() == 1; };
  if (!suit || !isUnit(s.knots[0]) || !isUnit(s.knots[1]) || placed.controls != s.controls) {
    throw Fault(kInput, "its control points are not those of its \"heights\"");
  }
  s.heights = h;
}

StoredFit fitOf(FitParts parts) {
  const Json& j = parts.tree;
  if (j.at("format") != "knotfit") throw Fault(kInput, "its format is not \"knotfit\"");
  if (j.at("version") != 1) throw Fault(kInput, "its version is not 1");
  if (j.at("rational") != false) throw Fault(kInput, "rational fits are not read");
  StoredFit fit;
  Spline& s = fit.spline;
  const auto kind = j.at("kind").get<std::string>();
  if (kind != "curve" && kind != "surface") throw Fault(kInput, "its kind is not known");
  s.directions = kind == "curve" ? 1 : 2;
  const auto n = static_cast<std::size_t>(s.directions);
  s.dim = wholeNumber(j.at("dim"));
  const Json &degree = j.at("degree"), &size = j.at("size");
  const auto& knots = parts.knots;
  if (!j.at("knots").empty() || !j.at("controls").empty()) {  // their rows have been taken out
    throw Fault(kInput, "knots and control points are rows of numbers");
  }
  if (degree.size() != n || size.size() != n || knots.size() != n) {
    throw Fault(kInput, "degree, knots and size do not suit its kind");
  }
  for (std::size_t d = 0; d < n; ++d) {
    s.degree[d] = wholeNumber(degree.at(d));
    s.size[d] = static_cast<std::size_t>(wholeNumber(size.at(d)));
    s.knots[d] = knots[d];
  }
  if (parts.dim != static_cast<std::size_t>(s.dim)) {
    throw Fault(kInput, "a control point is not of its dimension");
  }
  s.controls = std::move(parts.controls);
  s.closed = j.at("closed").get<bool>();
  s.units = j.at("units").get<std::string>();
  if (s.units != "mm" && s.units != "cm" && s.units != "m" && s.units != "in") {
    throw Fault(kInput, "its units are not mm, cm, m or in");
  }
  if (j.contains("fit") && !j["fit"].is_null()) fit.report = textOf(j["fit"]);
  if (const std::string fault = faultOf(s); !fault.empty()) throw Fault(kInput, fault);
  for (std::size_t d = 0; d < n && j.contains("domain"); ++d) {
    if (j["domain"].at(d) == Json{s.knots[d].front(), s.knots[d].back()}) continue;
    throw Fault(kInput, "its domain is not from its first knot to its last");
  }
  if (j.contains("heights")) readHeights(j["heights"], s);
  return fit;
}

}  // namespace

std::string laidOutJson(const std::string& json) { return textOf(Json::parse(json)); }

std::string fitJson(const StoredFit& fit) {
  const Spline& s = fit.spline;
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
  if (s.heights) j["heights"] = heightsJson(*s.heights);
  // Control points are written straight to the text: a tree of them would take ten times as much.
  std::string out = textOf(j);
  out.resize(out.size() - std::string_view("\n}\n").size());
  out += ",\n  \"controls\": [";
  for (std::size_t i = 0; i < s.controls.size(); ++i) {
    const bool starts = i % static_cast<std::size_t>(s.dim) == 0;
    if (starts) out += i ? "],\n    [" : "\n    [";
    out += (starts ? "" : ", ") + shortest(s.controls[i]);
  }
  out += "]\n  ]";
  if (!fit.report.empty()) {
    out += ",\n  \"fit\": ";
    append(out, Json::parse(fit.report), "  ");
  }
  out += "\n}\n";
  return out;
}

StoredFit readFit(const std::string& path) {
  ByteSource source(path);
  FitParts parts = partsOf(source);
  try {
    return fitOf(std::move(parts));
  } catch (const nlohmann::json::exception&) {
    throw Fault(kInput, cat(source.name(), ": is no fit of this program (write it with knotfit ",
                            "curve or surface)"));
  } catch (const Fault& fault) {
    throw Fault(kInput, cat(source.name(), ": ", fault.what(), " (write the fit anew)"));
  }
}

}  // namespace knotfit
