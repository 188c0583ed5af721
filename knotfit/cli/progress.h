// SPDX-License-Identifier: MIT
// Progress of the solvers on the standard error stream.
#pragma once

#include <chrono>

#include <knotwork/knotwork.h>

namespace knotfit {

/// How much the program tells while it works.
enum class Talk { kQuiet, kLine, kVerbose };

/// Shows how far a solver is on one line, after half a second, and wipes it in the end; or passes
/// on the library's own lines.
class Progress : public TsolverReporter {
 public:
  explicit Progress(Talk talk);
  ~Progress() override;

  void reportMessage(const char* text) override;
  /// Takes the line away.
  void wipe();

 private:
  Talk talk_;
  std::chrono::steady_clock::time_point start_;
  bool drawn_ = false;
};

/// @return whether standard error is a terminal.
bool errorIsTerminal();

}  // namespace knotfit
