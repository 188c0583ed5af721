// SPDX-License-Identifier: MIT
// Vertices of PLY files. Source of the format: G. Turk, The PLY polygon file format (1994). A
// header names the elements and their properties; what comes before the vertices has to be read to
// be passed over, since nothing tells its size in bytes, and what comes behind them is left alone.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

#include "base/fault.h"
#include "base/text.h"
#include "io/readers.h"

namespace knotfit {
namespace {

enum class Scalar { kInt8, kUint8, kInt16, kUint16, kInt32, kUint32, kFloat, kDouble };

struct Property {
  std::string name;
  Scalar type = Scalar::kFloat;
  std::optional<Scalar> listCount;  // a list has a count of this type before its elements
};

struct Element {
  std::string name;
  long long count = 0;
  std::vector<Property> properties;
};

enum class Encoding { kAscii, kLittle, kBig };

// What the header promises of the body.
struct Header {
  Encoding encoding = Encoding::kAscii;
  std::vector<Element> elements;
};

std::vector<std::string> words(std::string_view line) {
  std::vector<std::string> out;
  for (std::string_view left = trimmed(line); !left.empty();) {
    const std::size_t end = std::min(left.find_first_of(" \t"), left.size());
    out.emplace_back(left.substr(0, end));
    left = trimmed(left.substr(end));
  }
  return out;
}

Scalar scalarOf(const ByteSource& source, const std::string& name) {
  constexpr std::array<std::array<const char*, 2>, 8> kNames = {{{"char", "int8"},
                                                                 {"uchar", "uint8"},
                                                                 {"short", "int16"},
                                                                 {"ushort", "uint16"},
                                                                 {"int", "int32"},
                                                                 {"uint", "uint32"},
                                                                 {"float", "float32"},
                                                                 {"double", "float64"}}};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (name == kNames[i][0] || name == kNames[i][1]) return static_cast<Scalar>(i);
  }
  source.fail(cat("unknown type ", inQuotes(name)), "use the types of the PLY format");
}

Property propertyOf(const ByteSource& source, const std::vector<std::string>& w) {
  if (w.size() == 3) return {w[2], scalarOf(source, w[1]), std::nullopt};
  if (w.size() == 5 && w[1] == "list") {
    return {w[4], scalarOf(source, w[3]), scalarOf(source, w[2])};
  }
  source.fail("malformed property", "write property TYPE NAME");
}

void readFormat(const ByteSource& source, const std::vector<std::string>& w, Header& header) {
  if (w.size() < 2) source.fail("malformed format line", "write format ascii 1.0");
  if (w[1] == "ascii") {
    header.encoding = Encoding::kAscii;
  } else if (w[1] == "binary_little_endian") {
    header.encoding = Encoding::kLittle;
  } else if (w[1] == "binary_big_endian") {
    header.encoding = Encoding::kBig;
  } else {
    source.fail(cat("unknown format ", inQuotes(w[1])), "use ascii or binary");
  }
}

Header readHeader(ByteSource& source) {
  constexpr std::size_t kMostHeaderLines = 10000;  // beyond that it is something else
  Header header;
  std::string_view line;
  if (!source.nextLine(line) || trimmed(line) != "ply") {
    source.fail("is no PLY file", "its first line is 'ply'");
  }
  while (source.nextLine(line)) {
    const std::vector<std::string> w = words(line);
    if (source.lineNumber() > kMostHeaderLines) source.fail("endless header", "write end_header");
    if (w.empty() || w[0] == "comment" || w[0] == "obj_info") continue;
    if (w[0] == "end_header") return header;
    if (w[0] == "format") {
      readFormat(source, w, header);
    } else if (w[0] == "element") {
      long long count = 0;
      if (w.size() != 3 || !parseInteger(w[2], count) || count < 0) {
        source.fail("malformed element", "write element NAME COUNT");
      }
      header.elements.push_back({w[1], count, {}});
    } else if (w[0] == "property" && !header.elements.empty()) {
      header.elements.back().properties.push_back(propertyOf(source, w));
    } else {
      source.fail(cat("unknown header line ", inQuotes(line)), "use format, element and property");
    }
  }
  source.fail("header has no end", "write end_header");
}

// One scalar after another from the body of the file.
class Body {
 public:
  Body(ByteSource& source, Encoding encoding) : source_(source), encoding_(encoding) {}

  void startElement() {
    if (encoding_ != Encoding::kAscii) return;
    std::string_view line;
    do {
      if (!source_.nextLine(line)) source_.fail("ends too early", "check the element counts");
    } while (trimmed(line).empty());
    line_.assign(trimmed(line));
    left_ = line_;
  }

  // @return the next number, which belongs to the property.
  double next(Scalar type, const Property& of) {
    return encoding_ == Encoding::kAscii ? text(of) : binary(type);
  }

 private:
  double text(const Property& of) {
    const std::size_t end = std::min(left_.find_first_of(" \t"), left_.size());
    double value = 0;
    if (parseNumber(left_.substr(0, end), value) != NumberFault::kNone) {
      source_.fail(cat(of.name, " is not a number: ", inQuotes(left_.substr(0, end))),
                   "mend the line, or remove it and lower the count");
    }
    left_ = trimmed(left_.substr(end));
    return value;
  }

  // A number as it stands in memory, its bytes turned where the file's order is the other one.
  template <class T>
  double raw() {
    std::array<char, sizeof(T)> bytes;
    if (!source_.bytes(bytes.data(), bytes.size())) {
      source_.fail("ends too early", "check the element counts");
    }
    const bool littleHere = std::endian::native == std::endian::little;
    if ((encoding_ == Encoding::kLittle) != littleHere) {
      for (std::size_t i = 0; i < bytes.size() / 2; ++i) {
        std::swap(bytes[i], bytes[bytes.size() - 1 - i]);
      }
    }
    T value;
    std::memcpy(&value, bytes.data(), sizeof(T));
    return static_cast<double>(value);
  }

  double binary(Scalar type) {
    switch (type) {
      case Scalar::kInt8:
        return raw<std::int8_t>();
      case Scalar::kUint8:
        return raw<std::uint8_t>();
      case Scalar::kInt16:
        return raw<std::int16_t>();
      case Scalar::kUint16:
        return raw<std::uint16_t>();
      case Scalar::kInt32:
        return raw<std::int32_t>();
      case Scalar::kUint32:
        return raw<std::uint32_t>();
      case Scalar::kFloat:
        return raw<float>();
      case Scalar::kDouble:
        break;
    }
    return raw<double>();
  }

  ByteSource& source_;
  Encoding encoding_;
  std::string line_;
  std::string_view left_;
};

// Reads one element; `values` gets its scalars in the order of the properties, lists are passed
// over.
void readElement(Body& body, const Element& element, std::vector<double>& values) {
  values.clear();
  body.startElement();
  for (const Property& p : element.properties) {
    if (p.listCount) {
      for (double left = body.next(*p.listCount, p); left >= 1; --left) body.next(p.type, p);
    } else {
      values.push_back(body.next(p.type, p));
    }
  }
}

std::vector<std::string> scalarNames(const Element& element) {
  std::vector<std::string> names;
  for (const Property& p : element.properties) {
    if (!p.listCount) names.push_back(p.name);
  }
  return names;
}

// The properties asked for, or x, y and z in any case; z may be missing, as from plane outlines.
std::vector<std::size_t> coordinates(const ByteSource& source, const PointOptions& options,
                                     const std::vector<std::string>& names) {
  std::vector<std::size_t> found;
  if (!options.columns.empty()) {
    found = namedColumns(options.columns, names, names.size());
    if (found.size() == 2 || found.size() == 3) return found;
    throw Fault(kUsage, cat("--columns: points have 2 or 3 columns, not ", found.size()));
  }
  for (const char* wanted : {"x", "y", "z"}) {
    const auto at = std::find_if(names.begin(), names.end(),
                                 [&](const std::string& n) { return lowered(n) == wanted; });
    if (at != names.end()) found.push_back(static_cast<std::size_t>(at - names.begin()));
    if (at == names.end() && *wanted != 'z') {
      throw Fault(kInput, cat(source.name(), ": its vertices have no ", wanted,
                              " (name the properties x, y and z, or choose them with --columns)"));
    }
  }
  return found;
}

}  // namespace

PointSet readPlyPoints(ByteSource& source, const PointOptions& options) {
  const Header header = readHeader(source);
  Body body(source, header.encoding);
  PointSet points;
  std::vector<double> values;
  for (const Element& element : header.elements) {
    if (element.name != "vertex") {  // what stands before the vertices is read over
      for (long long i = 0; i < element.count && !element.properties.empty(); ++i) {
        readElement(body, element, values);
      }
      continue;
    }
    const std::vector<std::string> names = scalarNames(element);
    const std::vector<std::size_t> chosen = coordinates(source, options, names);
    points.dim = static_cast<int>(chosen.size());
    const bool weighted = !options.weightColumn.empty();
    const std::size_t weight = weighted ? findColumn(options.weightColumn, names, names.size()) : 0;
    const auto finite = [&](long long vertex, std::size_t column) {
      if (std::isfinite(values[column])) return values[column];
      source.fail(cat("vertex ", vertex + 1, ": ", names[column], " is not finite"),
                  "remove the vertex");
    };
    for (long long i = 0; i < element.count; ++i) {
      readElement(body, element, values);
      if (i % static_cast<long long>(options.table.thin) != 0) continue;  // read all the same
      for (const std::size_t column : chosen) points.coords.push_back(finite(i, column));
      if (weighted) points.weights.push_back(finite(i, weight));
      checkRoom(source, points.coords);
    }
    break;
  }
  return points;
}

}  // namespace knotfit
