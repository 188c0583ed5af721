// SPDX-License-Identifier: MIT
// Numbers to text and back, independent of any locale.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace knotfit {

/// @return the shortest decimal that reads back as x.
std::string shortest(double x);
/// @return the shortest decimal that reads back as x, with a decimal point and `E` before the
/// exponent: as CAD formats want their reals.
std::string pointed(double x);
/// @return x with `digits` significant digits, trailing zeros dropped.
std::string significant(double x, int digits);
/// @return x with `places` digits behind the point; in exponent form where that shows no digit.
std::string decimals(double x, int places);
/// @return x with six places, or seven significant digits where x is small or large: as reports
/// show lengths.
std::string measured(double x);
/// @return the text with bytes that command a terminal, or end a line, as \xHH.
std::string escaped(std::string_view text);
/// @return a file's name as messages show it: as it is, or escaped and in quotes where it is empty
/// or holds what cannot be shown.
std::string shownName(const std::string& path);
/// @return the token in single quotes, cut at 40 characters, with unprintable bytes as \xHH.
std::string inQuotes(std::string_view token);
/// @return text without blanks, tabs and carriage returns at its ends.
std::string_view trimmed(std::string_view text);
/// @return text in lower case (ASCII letters alone).
std::string lowered(std::string_view text);
/// @return the comma separated parts of text, blanks trimmed.
std::vector<std::string> commaList(const std::string& text);

/// Why a token is no usable number.
enum class NumberFault { kNone, kNotANumber, kOutOfRange };
/// Reads the whole token as a finite number; a leading '+' is accepted.
[[nodiscard]] NumberFault parseNumber(std::string_view token, double& value);
/// Reads the whole token as a decimal integer. @return false when it is none.
[[nodiscard]] bool parseInteger(std::string_view token, long long& value);

namespace detail {
inline std::string piece(std::string_view s) { return std::string(s); }
inline std::string piece(const char* s) { return s; }
inline std::string piece(char c) { return std::string(1, c); }
inline std::string piece(double x) { return shortest(x); }
template <std::integral T>
std::string piece(T n) {
  return std::to_string(n);
}
}  // namespace detail

/// @return the arguments one after another; doubles in their shortest form.
template <class... Args>
std::string cat(const Args&... args) {
  std::string out;
  ((out += detail::piece(args)), ...);
  return out;
}

}  // namespace knotfit
