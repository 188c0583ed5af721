// SPDX-License-Identifier: MIT
// Progress of reading, solvers and search on the standard error stream.
#pragma once

#include <chrono>
#include <string>

#include <knotwork/knotwork.h>

#include "base/stage.h"

namespace knotfit {

/// How much the program tells while it works.
enum class Talk { kQuiet, kLine, kVerbose };

/// Shows how far the work is on one line, after half a second, and wipes it in the end; or passes
/// on the solvers' own lines.
class Progress : public TsolverReporter, public Watcher {
 public:
  explicit Progress(Talk talk);
  ~Progress() override;

  void reportMessage(const char* text) override;
  void tell(const std::string& text) override;
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
