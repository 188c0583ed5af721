// SPDX-License-Identifier: MIT
// The installed handler, the default one, and the way to it.
#include "knotwork/vector/math_error.h"

#include <cstdio>
#include <cstdlib>

#include "knotwork/vector/math_messages.h"

namespace {

constexpr unsigned kWarning = 0;
constexpr unsigned kMessageDefault = 1;
constexpr unsigned short kUnspecifiedOrigin = 0xF000;

[[noreturn]] void terminateProcessing() {
  std::fputs("** Processing terminated.\n", stderr);
  std::abort();
}

void printAndDecide(MathErrorRecord record, va_list arguments) {
  if (record.code == 0) return;
  std::fputs("** ", stderr);
  const MathMessageEntry* message = findMathMessage(record.code);
  if (message == nullptr) {
    std::fprintf(stderr, "Error number 0x%hx.", record.code);
    terminateProcessing();
  }
  std::vfprintf(stderr, message->format, arguments);
  std::fputs(".\n", stderr);
  const unsigned severity =
      record.severity == kMessageDefault ? message->defaultSeverity : record.severity;
  if (severity != kWarning) terminateProcessing();
  std::fputs("** Processing continues.\n", stderr);
}

constinit MathErrorHandler installedHandler = printAndDecide;

}  // namespace

MathErrorHandler setMathErrorHandler(MathErrorHandler handler) {
  const MathErrorHandler previous = installedHandler;
  installedHandler = handler != nullptr ? handler : printAndDecide;
  return previous;
}

void raiseMathError(MathErrorRecord record, ...) {
  va_list arguments;
  va_start(arguments, record);
  installedHandler(record, arguments);
  va_end(arguments);
}

void raiseMathErrorCode(int code, ...) {
  va_list arguments;
  va_start(arguments, code);
  installedHandler(
      MathErrorRecord(static_cast<unsigned short>(code), kMessageDefault, kUnspecifiedOrigin),
      arguments);
  va_end(arguments);
}
