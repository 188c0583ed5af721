// SPDX-License-Identifier: MIT
// Numbers to text and back through <charconv>: what a locale does to streams and printf must change
// no file.
#include "base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace knotfit {
namespace {

template <class... Form>
std::string rendered(double x, Form... form) {
  std::array<char, 400> buffer;  // the largest number has 309 digits before the point
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), x, form...);
  return std::string(buffer.data(), end.ptr);
}

}  // namespace

std::string shortest(double x) { return rendered(x); }

std::string pointed(double x) {
  const std::string text = shortest(x);
  const std::size_t exponent = text.find('e');
  std::string mantissa = text.substr(0, exponent);
  if (mantissa.find('.') == std::string::npos) mantissa += '.';
  return exponent == std::string::npos ? mantissa : mantissa + "E" + text.substr(exponent + 1);
}

std::string significant(double x, int digits) {
  return rendered(x, std::chars_format::general, digits);
}

std::string decimals(double x, int places) { return rendered(x, std::chars_format::fixed, places); }

std::string measured(double x) {
  const double size = std::abs(x);
  if (size == 0) return "0";
  return size >= 0.1 && size < 1e9 ? decimals(x, 6) : significant(x, 7);
}

std::string escaped(std::string_view text) {
  constexpr char kHex[] = "0123456789abcdef";
  std::string out;
  const auto at = [&](std::size_t i) {
    return static_cast<unsigned char>(i < text.size() ? text[i] : 0);
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    // Bytes from 0x80 are letters of UTF-8 and stay; only C2 80 to C2 9F are commands to terminals.
    const bool pair = (at(i) == 0xc2 && at(i + 1) >= 0x80 && at(i + 1) < 0xa0) ||
                      (i > 0 && at(i - 1) == 0xc2 && at(i) < 0xa0);
    if (at(i) < 0x20 || at(i) == 0x7f || pair) {
      out += {'\\', 'x', kHex[at(i) >> 4], kHex[at(i) & 15]};
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string inQuotes(std::string_view token) {
  constexpr std::size_t kShown = 40;  // a line of error stays a line, whatever was given
  return "'" + escaped(token.substr(0, kShown)) + (token.size() > kShown ? "...'" : "'");
}

std::string shownName(const std::string& path) {
  const std::string safe = escaped(path);
  return safe.empty() || safe != path ? "'" + safe + "'" : path;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::string lowered(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

std::vector<std::string> commaList(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    parts.emplace_back(trimmed(std::string_view(text).substr(at, end - at)));
    at = end + 1;
  }
  return parts;
}

// from_chars takes no plus sign. It takes "inf" and "nan", which no measurement is.
NumberFault parseNumber(std::string_view token, double& value) {
  if (token.size() > 1 && token[0] == '+' && token[1] != '-') token.remove_prefix(1);
  const char* end = token.data() + token.size();
  const auto [stop, error] = std::from_chars(token.data(), end, value);
  if (error == std::errc::result_out_of_range && stop == end) return NumberFault::kOutOfRange;
  if (error != std::errc() || stop != end || !std::isfinite(value)) return NumberFault::kNotANumber;
  return NumberFault::kNone;
}

bool parseInteger(std::string_view token, long long& value) {
  const char* end = token.data() + token.size();
  const auto [stop, error] = std::from_chars(token.data(), end, value);
  return error == std::errc() && stop == end;
}

}  // namespace knotfit
