// SPDX-License-Identifier: MIT
// Where messages and progress of the solvers go.
#pragma once

#include "knotwork/solvers/base_reporter.h"

/// The reporter that solvers take by reference and never own.
class KNOTWORK_API TsolverReporter : public TbaseReporter {
 public:
  /// @param silent  whether nothing is to be written.
  explicit TsolverReporter(bool silent);
  TsolverReporter(const TsolverReporter& other);
  TsolverReporter& operator=(const TsolverReporter& other);
  ~TsolverReporter() override;

  /// Passes "Constraint solving ... 65 completed." to `reportString`.
  /// @param fraction  part of the work that is done; 100 times it is shown, as the shortest decimal
  ///                  that reads back the same.
  void reportProgress(double fraction);
};
