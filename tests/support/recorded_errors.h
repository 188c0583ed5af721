// SPDX-License-Identifier: MIT
// An error handler that returns and keeps what was reported.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "knotwork/vector/math_error.h"
#include "knotwork/vector/math_messages.h"

struct RecordedError {
  int code;
  unsigned severity;
  int origin;
  std::string text;  // formatted as the default handler prints it
};

// Records while it lives, then puts back the handler that was installed before.
class RecordedErrors {
 public:
  RecordedErrors() : before_(setMathErrorHandler(record)) { errors().clear(); }
  ~RecordedErrors() { setMathErrorHandler(before_); }
  RecordedErrors(const RecordedErrors&) = delete;
  RecordedErrors& operator=(const RecordedErrors&) = delete;

  // The errors since the last call.
  std::vector<RecordedError> take() { return std::exchange(errors(), {}); }

  // "400d 2x3 matrix not square", one line for each error since the last call.
  std::string takeText() {
    std::string all;
    for (const RecordedError& error : take()) {
      char code[8];
      std::snprintf(code, sizeof code, "%04x ", static_cast<unsigned>(error.code) & 0xFFFFu);
      all += (all.empty() ? "" : "\n") + (code + error.text);
    }
    return all;
  }

 private:
  static std::vector<RecordedError>& errors() {
    static std::vector<RecordedError> recorded;
    return recorded;
  }

  static void record(MathErrorRecord r, va_list arguments) {
    char text[256] = "";
    const MathMessageEntry* message = findMathMessage(r.code);
    if (message != nullptr) std::vsnprintf(text, sizeof text, message->format, arguments);
    errors().push_back({r.code, r.severity, r.origin, text});
  }

  MathErrorHandler before_;
};
