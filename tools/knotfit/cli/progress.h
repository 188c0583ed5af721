// SPDX-License-Identifier: MIT
// Progress of the solvers on the standard error stream.
#pragma once

#include <chrono>

#include <knotwork/knotwork.h>

namespace knotfit {

/// How much the program tells while it works.
enum class Talk { kQuiet, kBar, kVerbose };

/// Draws a bar after half a second and wipes it in the end; or passes on the library's own lines.
class Progress : public TsolverReporter {
 public:
  explicit Progress(Talk talk);
  ~Progress() override;

  void reportMessage(const char* text) override;
  int reportStep(int step, int maximum) override;
  /// Takes the bar away.
  void wipe();

 private:
  void draw(double fraction);

  Talk talk_;
  std::chrono::steady_clock::time_point start_;
  bool drawn_ = false;
};

/// @return whether standard error is a terminal.
bool errorIsTerminal();

}  // namespace knotfit
