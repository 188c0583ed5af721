// SPDX-License-Identifier: MIT
// An error handler that returns, and keeps what it was handed, for as long as its object lives.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "knotwork/vector/math_error.h"
#include "knotwork/vector/math_messages.h"

// What takeText() tells of a decomposition that has no factors to solve with.
inline const std::string kNotFactored =
    "5011 Can't solve system of equations, matrix not successfully factorized";

struct RecordedError {
  unsigned code;
  unsigned severity;
  unsigned origin;
  std::string text;  // the message with its arguments
};

class RecordedErrors {
 public:
  RecordedErrors() : outer_(std::exchange(current_, this)), before_(setMathErrorHandler(record)) {}
  ~RecordedErrors() {
    setMathErrorHandler(before_);
    current_ = outer_;
  }
  RecordedErrors(const RecordedErrors&) = delete;
  RecordedErrors& operator=(const RecordedErrors&) = delete;

  const std::vector<RecordedError>& all() const { return errors_; }
  void clear() { errors_.clear(); }

  // The errors since the last call.
  std::vector<RecordedError> take() { return std::exchange(errors_, {}); }

  // The errors since the last call as "400d 2x3 matrix not square", one a line.
  std::string takeText() {
    std::string all;
    for (const RecordedError& error : take()) {
      char code[8];
      std::snprintf(code, sizeof code, "%04x ", error.code);
      if (!all.empty()) all += '\n';
      all.append(code).append(error.text);
    }
    return all;
  }

  // The texts since the last call, one a line.
  std::string takeTexts() {
    std::string texts;
    for (const RecordedError& error : take()) texts += error.text + "\n";
    return texts;
  }

 private:
  static void record(MathErrorRecord error, va_list arguments) {
    char text[512] = "unregistered";
    if (const MathMessageEntry* entry = findMathMessage(error.code)) {
      std::vsnprintf(text, sizeof text, entry->format, arguments);
    }
    current_->errors_.push_back({error.code, error.severity, error.origin, text});
  }

  static inline RecordedErrors* current_ = nullptr;
  RecordedErrors* outer_;
  MathErrorHandler before_;
  std::vector<RecordedError> errors_;
};
