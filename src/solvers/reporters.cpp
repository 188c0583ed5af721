// SPDX-License-Identifier: MIT
// The reporters, and the one of them that hears the host's spline kernel.
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <iterator>

#include "knotwork/platform/foundation/string.h"
#include "knotwork/platform/kernel/ticks.h"
#include "knotwork/solvers/solver_reporter.h"

namespace {

constexpr std::size_t kMessageSize = 1024;  // with the closing zero
constexpr std::size_t kNumberSize = 32;     // the longest shortest form has 24 characters

// The kernel calls a function without an object: one reporter at a time hears it.
TbaseReporter* hearsKernel = nullptr;

// @return false if there is no memory for the text, whatever the foundation throws then.
bool describeProgress(double percentage, Tstring& text) try {
  Tstring number;
  number.setDouble(percentage);
  text = Tstring("Constraint solving ... ");
  text += number;
  text += " completed.";
  return true;
} catch (...) {
  return false;
}

extern "C" int passTick(int step, int maximum) {
  return hearsKernel != nullptr ? hearsKernel->reportStep(step, maximum) : 0;
}

// Unformatted: the base, width, fill and locale that the host left in the stream do not matter.
void print(const char* text) {
  std::cerr.write(text, static_cast<std::streamsize>(std::strlen(text)));
}

}  // namespace

TbaseReporter::TbaseReporter(bool silent) : silent_(silent) {}
TbaseReporter::TbaseReporter(const TbaseReporter&) = default;
TbaseReporter& TbaseReporter::operator=(const TbaseReporter&) = default;
TbaseReporter::~TbaseReporter() { enableTicks(false); }

void TbaseReporter::reportFormatted(const char* format, ...) {
  if (format == nullptr) return;
  char message[kMessageSize] = "";
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(message, kMessageSize, format, arguments);
  va_end(arguments);
  reportMessage(message);
}

void TbaseReporter::reportString(const Tstring& text) { reportMessage(text.asChar()); }

bool TbaseReporter::stopRequested() const { return false; }

int TbaseReporter::reportStep(int step, int maximum) {
  if (silent_) return 0;
  char line[80];
  std::snprintf(line, sizeof line, "Report: Step %d out of maximum %d\n", step, maximum);
  print(line);
  return 0;
}

void TbaseReporter::reportMessage(const char* text) {
  if (silent_) return;
  print("Report: (");
  if (text != nullptr) print(text);
  print(")\n");
}

bool TbaseReporter::isVerbose() const { return !silent_; }
bool TbaseReporter::isSilent() const { return silent_; }
bool& TbaseReporter::silent() { return silent_; }

void TbaseReporter::enableTicks(bool on) {
  if (on) {
    if (hearsKernel == nullptr) ag_register_tick_function(passTick);
    hearsKernel = this;
  } else if (hearsKernel == this) {
    hearsKernel = nullptr;
    ag_register_tick_function(nullptr);
  }
}

TsolverReporter::TsolverReporter(bool silent) : TbaseReporter(silent) {}
TsolverReporter::TsolverReporter(const TsolverReporter&) = default;
TsolverReporter& TsolverReporter::operator=(const TsolverReporter&) = default;
TsolverReporter::~TsolverReporter() = default;

void TsolverReporter::reportProgress(double fraction) {
  Tstring text;
  if (describeProgress(fraction * 100, text)) return reportString(text);
  char number[kNumberSize] = "";
  std::to_chars(number, std::end(number) - 1, fraction * 100);
  reportFormatted("Constraint solving ... %s completed.", number);
}
