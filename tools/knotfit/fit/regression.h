// SPDX-License-Identifier: MIT
// Linear regression on the library's decompositions, with standard errors.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace knotfit {

/// Which decomposition factors the scaled columns.
enum class RegressionMethod { kHouseholder, kQr, kSvd, kCholesky, kLu };

/// The columns of a regression problem.
struct RegressionProblem {
  std::vector<std::string> names;            ///< of the parameters
  std::vector<std::vector<double>> columns;  ///< one per parameter
  std::vector<double> response;
};

struct RegressionResult {
  std::vector<double> estimates, errors;  ///< per parameter: value and standard deviation
  double residualDeviation = 0, rSquared = 0, sumOfSquares = 0;
  std::size_t freedom = 0;  ///< rows less parameters
};

/// Solves in the sense of least squares.
///
/// Columns are scaled by powers of two before they are factored; the normal equations' residual,
/// taken in doubled precision, then corrects the estimates until they stand. So the decompositions
/// agree nearly to the last digit wherever they are good for one.
/// Source: A. Bjorck, Numerical Methods for Least Squares Problems (1996), 2.9.
/// Faults (exit code 4): fewer rows than parameters; columns that depend on each other.
RegressionResult regression(const RegressionProblem& problem, RegressionMethod method);

}  // namespace knotfit
