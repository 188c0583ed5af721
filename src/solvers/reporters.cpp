// SPDX-License-Identifier: MIT
// The reporters, and the one of them that hears the kernel.
#include <cstdarg>
#include <cstdio>
#include <iostream>

#include "knotwork/platform/foundation/string.h"
#include "knotwork/platform/kernel/ticks.h"
#include "knotwork/solvers/solver_reporter.h"

namespace {

constexpr std::size_t kMessageSize = 1024;

TbaseReporter* hearsKernel = nullptr;

extern "C" int passTick(int step, int maximum) {
  return hearsKernel != nullptr ? hearsKernel->reportStep(step, maximum) : 0;
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
  if (!silent_) std::cerr << "Report: Step " << step << " out of maximum " << maximum << "\n";
  return 0;
}

void TbaseReporter::reportMessage(const char* text) {
  if (!silent_) std::cerr << "Report: (" << (text != nullptr ? text : "") << ")\n";
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
TsolverReporter::~TsolverReporter() { enableTicks(false); }

void TsolverReporter::reportProgress(double fraction) {
  Tstring percentage;
  percentage.setDouble(fraction * 100);
  Tstring text("Constraint solving ... ");
  text += percentage;
  text += " completed.";
  reportString(text);
}
