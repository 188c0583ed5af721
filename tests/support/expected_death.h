// SPDX-License-Identifier: MIT
// Death tests on the whole text that the default error handler leaves.
#pragma once

#include <gtest/gtest.h>

#include <string>

// Matches this very text and nothing around it (where the C library's abort adds no line of its
// own).
inline auto wholeText(const std::string& text) {
  std::string pattern = "^";
  for (const char c : text) {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) pattern += '\\';
    pattern += c;
  }
#if !defined(_WIN32)
  pattern += "$";
#endif
  return testing::ContainsRegex(pattern);
}

inline auto terminatedBy(const std::string& message) {
  return wholeText("** " + message + ".\n** Processing terminated.\n");
}
