// SPDX-License-Identifier: MIT
// The installed handler, the default one, and the way to it.
//
// A report is a call of one function pointer with the arguments of the message still unformatted: a
// handler that only counts, or that has texts of its own, pays for no formatting.
#include "knotwork/vector/math_error.h"

#include <cstdio>
#include <cstdlib>

#include "knotwork/vector/math_messages.h"
#include "vector/severity.h"

namespace {

using knotwork::detail::kMessageDefault;
using knotwork::detail::kWarning;

constexpr unsigned short kUnspecifiedOrigin = 0xF000;  // of reports by code alone

[[noreturn]] void terminateProcessing() {
  std::fputs("** Processing terminated.\n", stderr);
  std::abort();
}

void printAndDecide(MathErrorRecord record, va_list arguments) {
  if (record.code == 0) return;  // no error
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

// Set before any code runs: constructors of static objects may report.
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
