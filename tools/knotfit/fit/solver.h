// SPDX-License-Identifier: MIT
// The library's solvers behind one door: size checks before, faults in words after.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <knotwork/knotwork.h>

#include "fit/system.h"

namespace knotfit {

/// Which of the library's solvers works.
enum class Method { kHouseholder, kQr };

/// @return "householder" or "qr".
const char* nameOf(Method method);

struct SolverOptions {
  Method method = Method::kHouseholder;
  double rankTolerance = 1e-10;
  TsolverReporter* reporter = nullptr;  ///< null: silent
};

/// @return a new solver of the library.
std::unique_ptr<TsolveConstrainedLsq> newSolver(const SolverOptions& options);

/// @return the rows as a dense matrix.
DoubleGenMat denseMatrix(const FitSystem& system);

/// Faults (exit code 2) when the dense system is larger than the solver takes or memory holds.
void checkSize(std::size_t rows, std::size_t unknowns, Method method);

/// A factored system.
class FactoredSystem {
 public:
  /// Factors. Faults: checkSize; constraints that conflict or a deficient rank (exit code 4).
  FactoredSystem(const FitSystem& system, const SolverOptions& options);

  /// Solves for `components` right-hand sides at once, `components` numbers per row. The data are
  /// scaled by a power of two beforehand, since the solver's thresholds are absolute, and one step
  /// of refinement takes back what the thresholds left out of the factors.
  std::vector<double> solve(const std::vector<double>& rhs, int components) const;

 private:
  std::vector<double> solveOnce(std::vector<double> rhs, int components) const;

  const FitSystem& system_;
  std::unique_ptr<TsolveConstrainedLsq> solver_;
};

/// @return ratio of the largest to the smallest singular value; infinity for a deficient system,
/// a negative number where it would take too long to find out.
double conditionOf(const FitSystem& system);

}  // namespace knotfit
