// SPDX-License-Identifier: MIT
// The library's solvers behind one door: size checks before, faults in words after.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <knotwork/knotwork.h>

#include "fit/system.h"

namespace knotfit {

/// Which of the library's solvers works; kAuto stands for the one that suits the size.
enum class Method { kAuto, kHouseholder, kQr, kBanded };

/// @return "auto", "householder", "qr" or "banded".
const char* nameOf(Method method);

struct SolverOptions {
  Method method = Method::kAuto;
  double rankTolerance = 1e-10;
  TsolverReporter* reporter = nullptr;  ///< null: silent
};

/// @return a new solver of the library.
std::unique_ptr<TsolveConstrainedLsq> newSolver(const SolverOptions& options);

/// @return the rows as a dense matrix.
DoubleGenMat denseMatrix(const RowMatrix& matrix);

/// @return bytes of memory that can be had, by the system's own account; nothing where there is
/// none.
std::optional<double> freeMemory();

/// Faults (exit code 2) when the dense system is larger than the solver takes or memory holds.
/// @param room  bytes of free memory, where known.
void checkSize(std::size_t rows, std::size_t unknowns, Method method,
               std::optional<double> room = freeMemory());

/// @return the solver that `asked` stands for: for kAuto the dense one by reflections where the
/// dense system has at most 1e7 entries and the solver takes it, the banded one beyond.
Method methodFor(Method asked, std::size_t rows, std::size_t unknowns);

/// Faults (exit code 2) when the banded system is larger than memory holds.
/// @param sides  right-hand sides.
void checkBandedSize(std::size_t unknowns, std::size_t order, std::size_t sides,
                     std::size_t constraints, std::optional<double> room = freeMemory());

/// A factored system.
class FactoredSystem {
 public:
  /// Factors; the matrix is to outlive the object. Faults: checkSize; constraints that conflict or
  /// a deficient rank (exit code 4).
  FactoredSystem(const RowMatrix& matrix, const SolverOptions& options);

  /// Solves for right-hand sides of `components` numbers per row, with one step of refinement.
  /// @return the unknowns, `components` numbers each.
  std::vector<double> solve(const std::vector<double>& rhs, int components) const;

 private:
  std::vector<double> solveOnce(const std::vector<double>& rhs, int components) const;

  const RowMatrix& matrix_;
  std::unique_ptr<TsolveConstrainedLsq> solver_;
};

/// What the singular values of a matrix tell, or the solver alone.
struct Spectrum {
  std::size_t rank = 0;             ///< singular values above rounding, or pivots above tolerance
  std::optional<double> condition;  ///< largest over smallest; infinity where the rank is deficient
};

/// @return the spectrum of the whole matrix, constraints included; nothing where finding it would
/// take longer than the fit.
std::optional<Spectrum> spectrumOf(const RowMatrix& matrix);

}  // namespace knotfit
