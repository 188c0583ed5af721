// SPDX-License-Identifier: MIT
// Vertices of PLY files. Source of the format: G. Turk, The PLY polygon file format (1994).
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

#include "base/text.h"
#include "io/points.h"

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
  constexpr std::size_t kMostHeaderLines = 10000;
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

  double next(Scalar type) { return encoding_ == Encoding::kAscii ? text() : binary(type); }

 private:
  double text() {
    const std::size_t end = std::min(left_.find_first_of(" \t"), left_.size());
    double value = 0;
    if (parseNumber(left_.substr(0, end), value) != NumberFault::kNone) {
      source_.fail(cat("not a number: ", inQuotes(left_.substr(0, end))), "check the vertex lines");
    }
    left_ = trimmed(left_.substr(end));
    return value;
  }

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

// Reads one element; the vertex's coordinates go to xyz, everything else is passed over.
void readElement(Body& body, const Element& element, std::array<double, 3>& xyz) {
  body.startElement();
  for (const Property& p : element.properties) {
    if (p.listCount) {
      for (double left = body.next(*p.listCount); left >= 1; --left) body.next(p.type);
      continue;
    }
    const double value = body.next(p.type);
    if (p.name.size() == 1 && p.name[0] >= 'x' && p.name[0] <= 'z') {
      xyz[static_cast<std::size_t>(p.name[0] - 'x')] = value;
    }
  }
}

}  // namespace

PointSet readPlyPoints(ByteSource& source, const TableOptions& options) {
  const Header header = readHeader(source);
  Body body(source, header.encoding);
  PointSet points;
  points.dim = 3;
  for (const Element& element : header.elements) {
    const bool vertices = element.name == "vertex";
    for (long long i = 0; i < element.count && !element.properties.empty(); ++i) {
      std::array<double, 3> xyz{};
      readElement(body, element, xyz);
      if (!vertices || i % static_cast<long long>(options.thin) != 0) continue;
      for (const double value : xyz) {
        if (!std::isfinite(value)) {
          source.fail(cat("vertex ", i + 1, " is not finite"), "remove the vertex");
        }
      }
      points.coords.insert(points.coords.end(), xyz.begin(), xyz.end());
      checkRoom(source, points.coords);
    }
    if (vertices) break;
  }
  return points;
}

}  // namespace knotfit
