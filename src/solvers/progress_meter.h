// SPDX-License-Identifier: MIT
// Progress of one phase of a factorisation.
#pragma once

#include <cmath>

#include "knotwork/solvers/solver_reporter.h"

namespace knotwork::detail {

/// Pivots cost less and less work, from `weight` units down to none; every 10000 units a verbose
/// reporter is told the part of the pivots that is done.
class ProgressMeter {
 public:
  ProgressMeter(TsolverReporter& reporter, int pivots, int weight)
      : reporter_(reporter), pivots_(pivots), weight_(weight) {}

  void step() {
    if (!reporter_.isVerbose()) return;
    const double done = static_cast<double>(++steps_) / pivots_;
    work_ += std::floor((1 - done) * weight_ + 0.5);
    if (work_ <= kWorkPerReport) return;
    work_ -= kWorkPerReport;
    hasReported_ = true;
    reporter_.reportProgress(done);
  }

  void finish() {
    if (hasReported_) reporter_.reportProgress(1.0);
  }

 private:
  static constexpr double kWorkPerReport = 10000;

  TsolverReporter& reporter_;
  int pivots_, weight_;
  int steps_ = 0;
  double work_ = 0;
  bool hasReported_ = false;
};

}  // namespace knotwork::detail
