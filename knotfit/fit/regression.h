// SPDX-License-Identifier: MIT
// Linear regression on the library's decompositions, with standard errors.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/doubled.h"

namespace knotfit {

/// Which decomposition factors the scaled columns.
enum class RegressionMethod { kHouseholder, kQr, kSvd, kCholesky, kLu };

/// @return "householder", "qr", "svd", "cholesky" or "lu".
const char* nameOf(RegressionMethod method);

/// A parameter as a sum of coefficients of the columns: 2^exponent times sum weights[j] c[j].
struct Combination {
  std::vector<Doubled> weights;
  int exponent = 0;
};

/// The columns of a regression problem.
struct RegressionProblem {
  std::vector<std::string> names;             ///< of the parameters
  std::vector<std::vector<Doubled>> columns;  ///< one per parameter
  std::vector<Combination> parameters;        ///< empty: the columns' coefficients themselves
  std::vector<double> response;
  bool intercept = false;  ///< the first column is constant: R squared is about the mean
};

/// @return the problem of B0 + B1 x + ... + Bk x^k, k being `degree`. Powers are nearly dependent:
/// the columns are Chebyshev polynomials over the range of x, and the parameters follow from their
/// coefficients, both in doubled precision.
RegressionProblem polynomialProblem(const std::vector<double>& x, const std::vector<double>& y,
                                    int degree);

/// @return the problem of B1 x1 + B2 x2 + ..., with B0 in front where an intercept is wanted.
RegressionProblem linearProblem(const std::vector<std::vector<double>>& x,
                                const std::vector<double>& y, bool intercept);

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
/// Faults (exit code 4): fewer rows than parameters; columns that depend on each other, or too
/// nearly so for the method; an estimate or error beyond the range of numbers.
RegressionResult regression(const RegressionProblem& problem, RegressionMethod method);

}  // namespace knotfit
