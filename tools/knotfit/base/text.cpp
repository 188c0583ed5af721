// SPDX-License-Identifier: MIT
// Numbers to text and back through <charconv>.
#include "base/text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace knotfit {
namespace {

template <class... Form>
std::string rendered(double x, Form... form) {
  std::array<char, 400> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), x, form...);
  return std::string(buffer.data(), end.ptr);
}

}  // namespace

std::string shortest(double x) { return rendered(x); }

std::string significant(double x, int digits) {
  return rendered(x, std::chars_format::general, digits);
}

std::string decimals(double x, int places) { return rendered(x, std::chars_format::fixed, places); }

std::string measured(double x) {
  const double size = std::abs(x);
  return size == 0 || (size >= 0.1 && size < 1e9) ? (size == 0 ? "0" : decimals(x, 6))
                                                  : significant(x, 7);
}

std::string inQuotes(std::string_view token) {
  constexpr std::size_t kShown = 40;
  constexpr char kHex[] = "0123456789abcdef";
  std::string out = "'";
  for (const char c : token.substr(0, kShown)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      out += c;
    } else {
      out += {'\\', 'x', kHex[byte >> 4], kHex[byte & 15]};
    }
  }
  return out + (token.size() > kShown ? "...'" : "'");
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
