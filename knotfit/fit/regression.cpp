// SPDX-License-Identifier: MIT
// Linear regression on the library's decompositions.
//
// Every decomposition of A gives a way to solve A'A z = g. With it the estimates are corrected:
// x := x + z where g = A'(y - A x) is taken in doubled precision, until corrections no longer
// shrink. Each one leaves an error of about condition^2 roundings of the last (condition^2 times
// 1e-16 for normal equations), so it converges wherever the decomposition is good for a digit, and
// to the same digits. The variances are the diagonal of the inverse of A'A, from the same loop.
#include "fit/regression.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>

#include <knotwork/knotwork.h>

#include "base/doubled.h"
#include "base/fault.h"
#include "base/text.h"
#include "model/scale.h"

namespace knotfit {
namespace {

using NormalSolve = std::function<DoubleVec(const DoubleVec&)>;  // z with A'A z = g

// Cholesky and LU factor A'A, whose condition is the square of A's: what they cannot do need not be
// dependent.
[[noreturn]] void unsolvable(RegressionMethod method) {
  if (method == RegressionMethod::kCholesky || method == RegressionMethod::kLu) {
    throw Fault(kNoSolution, cat("no unique solution: the columns are too ill-conditioned for ",
                                 nameOf(method), "; use --solver householder, qr or svd"));
  }
  throw Fault(kNoSolution,
              "no unique solution: the columns depend on each other; leave one of them out");
}

double largest(const std::vector<double>& values) {
  double most = 0;
  for (const double x : values) most = std::max(most, std::abs(x));
  return most;
}

// e with 2^-e x in 1 .. 2 for the largest x; 0 for zeros.
int exponentOf(double most) { return most > 0 ? std::ilogb(most) : 0; }

Doubled scaled(const Doubled& x, int exponent) {
  return {std::ldexp(x.high, exponent), std::ldexp(x.low, exponent)};
}

// z from R'R z = P'g.
DoubleVec solveTriangles(const DoubleQRDecomp& qr, const DoubleVec& g) {
  const DoubleGenMat& r = qr.factors();
  const int n = static_cast<int>(qr.cols());
  DoubleVec z = qr.permute(g).copy();
  for (int i = 0; i < n; ++i) {
    for (int k = 0; k < i; ++k) z(i) -= r(k, i) * z(k);
    z(i) /= r(i, i);
  }
  for (int i = n - 1; i >= 0; --i) {
    for (int k = i + 1; k < n; ++k) z(i) -= r(i, k) * z(k);
    z(i) /= r(i, i);
  }
  return qr.unpermute(z);
}

NormalSolve byQr(const DoubleGenMat& a) {
  auto qr = std::make_shared<DoubleQRDecomp>(a);
  if (qr->isSingular()) unsolvable(RegressionMethod::kQr);
  return [qr](const DoubleVec& g) { return solveTriangles(*qr, g); };
}

// The solver's thresholds are absolute, so its right-hand sides are brought to a good size.
DoubleVec solveScaled(Thouseholder& solver, const DoubleVec& b) {
  const double scale = solverScale(b.data(), b.length());
  return solver.solve(b * scale) * (1.0 / scale);
}

// The shortest y with A'y = g, then the least-squares solution of A z = y.
NormalSolve byHouseholder(const DoubleGenMat& a) {
  constexpr double kTolerance = 1e-14;
  auto across = std::make_shared<Thouseholder>(kTolerance, 0, false);
  auto down = std::make_shared<Thouseholder>(kTolerance, 0, false);
  if (across->setMatrix(transpose(a), 0, false, false, false) != 0 ||
      down->setMatrix(a, 0, false, false, false) != 0) {
    unsolvable(RegressionMethod::kHouseholder);
  }
  return [across, down](const DoubleVec& g) { return solveScaled(*down, solveScaled(*across, g)); };
}

NormalSolve bySvd(const DoubleGenMat& a) {
  auto svd = std::make_shared<DoubleSVDecomp>();
  svd->computeLeftVecs(0);
  svd->factor(a);
  const DoubleVec s = svd->singularValues();
  if (svd->fail() || s(static_cast<int>(s.length()) - 1) <= 1e-15 * s(0)) {
    unsolvable(RegressionMethod::kSvd);
  }
  return [svd](const DoubleVec& g) {
    const DoubleGenMat v = svd->rightVecs();
    const DoubleVec values = svd->singularValues();
    DoubleVec z(g.length(), 0.0);
    for (int k = 0; k < static_cast<int>(g.length()); ++k) {
      const DoubleVec direction = v.col(k);
      z += direction * (dot(direction, g) / (values(k) * values(k)));
    }
    return z;
  };
}

NormalSolve byCholesky(const DoubleGenMat& a) {
  auto ch = std::make_shared<DoubleChDecomp>(transposeProduct(a, a));
  if (!ch->isPD()) unsolvable(RegressionMethod::kCholesky);
  return [ch](const DoubleVec& g) { return ch->solve(g); };
}

NormalSolve byLu(const DoubleGenMat& a) {
  auto lu = std::make_shared<DoubleGenFact>(transposeProduct(a, a));
  if (lu->fail()) unsolvable(RegressionMethod::kLu);
  return [lu](const DoubleVec& g) { return lu->solve(g); };
}

NormalSolve factored(const DoubleGenMat& a, RegressionMethod method) {
  switch (method) {
    case RegressionMethod::kHouseholder:
      return byHouseholder(a);
    case RegressionMethod::kQr:
      return byQr(a);
    case RegressionMethod::kSvd:
      return bySvd(a);
    case RegressionMethod::kCholesky:
      return byCholesky(a);
    case RegressionMethod::kLu:
      break;
  }
  return byLu(a);
}

// Chebyshev polynomials T0, T1, ... of t = (z - c) g, which is within -1 .. 1 for all z =
// 2^exponent x. With T0 = 1, T1 = t and T(k+1) = 2 t Tk - T(k-1) the same recurrence gives values
// and, with t as a polynomial in z, the powers of z in each of them.
class Chebyshev {
 public:
  Chebyshev(const std::vector<double>& x, int exponent)
      : values_(x.size(), Doubled{1, 0}),
        valuesBefore_(x.size()),
        powers_{{1, 0}},
        powersBefore_{{0, 0}} {
    const auto [low, high] = std::minmax_element(x.begin(), x.end());
    const double from = std::ldexp(*low, exponent), to = std::ldexp(*high, exponent);
    const double centre = from / 2 + to / 2, half = to / 2 - from / 2;
    slope_ = half > 0 ? 1.0 / half : 1.0;
    shift_ = Doubled{-centre, 0} * slope_;
    for (const double v : x) {
      Doubled z{std::ldexp(v, exponent), 0};
      z += -centre;
      t_.push_back(z * slope_);
    }
  }

  const std::vector<Doubled>& values() const { return values_; }
  const std::vector<Doubled>& powers() const {
    return powers_;
  }  ///< coefficients of 1, z, z^2, ...

  void advance() {
    const double factor = powers_.size() == 1 ? 1 : 2;
    for (std::size_t i = 0; i < values_.size(); ++i) {
      Doubled next = t_[i] * values_[i] * factor;
      next += -std::exchange(valuesBefore_[i], values_[i]);
      values_[i] = next;
    }
    std::vector<Doubled> next(powers_.size() + 1);
    for (std::size_t j = 0; j < powers_.size(); ++j) {
      next[j].addProduct(shift_ * factor, powers_[j]);
      next[j + 1].addProduct(Doubled{slope_ * factor, 0}, powers_[j]);
      next[j] += -powersBefore_[j];
    }
    powersBefore_ = std::exchange(powers_, std::move(next));
    powersBefore_.emplace_back();
  }

 private:
  double slope_ = 1;
  Doubled shift_;
  std::vector<Doubled> t_, values_, valuesBefore_, powers_, powersBefore_;
};

class Regression {
 public:
  Regression(const RegressionProblem& problem, RegressionMethod method)
      : problem_(problem), method_(method), n_(problem.columns.size()) {
    const std::size_t rows = problem.response.size();
    if (rows <= n_) {
      throw Fault(kNoSolution, cat(n_, " parameters need at least ", n_ + 1, " rows, the file has ",
                                   rows, "; use a smaller model"));
    }
    scaleResponse();
    DoubleGenMat a(static_cast<unsigned>(rows), static_cast<unsigned>(n_), 0.0);
    for (const std::vector<Doubled>& column : problem.columns) {
      const int j = static_cast<int>(scaled_.size());
      scaleColumn(column);
      for (std::size_t i = 0; i < rows; ++i) {
        a(static_cast<int>(i), j) = scaled_.back()[i].value();
      }
    }
    solve_ = factored(a, method);
  }

  RegressionResult run() {
    const std::vector<Doubled> none(n_);
    const std::vector<Doubled> x = settled(response_, none);
    RegressionResult result;
    for (std::size_t k = 0; k < n_; ++k) {
      const Combination b = parameter(k);
      result.estimates.push_back(told(k, summed(b, x), b.exponent + responseExponent_));
    }
    tellResiduals(x, result);
    for (std::size_t k = 0; k < n_; ++k) {
      const Combination b = parameter(k);
      const double variance = summed(b, settled({}, b.weights));
      result.errors.push_back(told(k, result.residualDeviation * std::sqrt(variance), b.exponent));
    }
    return result;
  }

 private:
  // A parameter by the scaled unknowns, with weights of about 1.
  Combination parameter(std::size_t k) const {
    Combination b{std::vector<Doubled>(n_), exponents_[k]};
    if (problem_.parameters.empty()) {
      b.weights[k].high = 1.0;
      return b;
    }
    double most = 0;
    for (std::size_t j = 0; j < n_; ++j) {
      b.weights[j] = scaled(problem_.parameters[k].weights[j], exponents_[j]);
      most = std::max(most, std::abs(b.weights[j].high));
    }
    const int size = exponentOf(most);
    for (Doubled& w : b.weights) w = scaled(w, -size);
    b.exponent = problem_.parameters[k].exponent + size;
    return b;
  }

  static double summed(const Combination& b, const std::vector<Doubled>& x) {
    Doubled sum;
    for (std::size_t j = 0; j < x.size(); ++j) sum.addProduct(b.weights[j], x[j]);
    return sum.value();
  }

  // scaled * 2^exponent of parameter j; infinity, or a zero that is none, would be a wrong answer.
  double told(std::size_t j, double scaled, int exponent) const {
    const double value = std::ldexp(scaled, exponent);
    if (scaled == 0 || std::isnormal(value)) return value;
    throw Fault(kNoSolution, cat(problem_.names[j], " or its standard error leaves the range of ",
                                 "numbers; measure in other units"));
  }

  void scaleResponse() {
    response_ = problem_.response;
    responseExponent_ = exponentOf(largest(response_));
    for (double& y : response_) y = std::ldexp(y, -responseExponent_);
  }

  void scaleColumn(const std::vector<Doubled>& column) {
    double most = 0;
    for (const Doubled& x : column) most = std::max(most, std::abs(x.high));
    if (most == 0) unsolvable(RegressionMethod::kHouseholder);
    const int e = exponentOf(most);
    scaled_.push_back(column);
    for (Doubled& x : scaled_.back()) x = scaled(x, -e);
    exponents_.push_back(-e);
  }

  // response - A x, an empty response standing for zeros.
  std::vector<Doubled> residuals(const std::vector<double>& response,
                                 const std::vector<Doubled>& x) const {
    std::vector<Doubled> r(response_.size());
    for (std::size_t i = 0; i < r.size(); ++i) {
      if (!response.empty()) r[i] += response[i];
      for (std::size_t j = 0; j < n_; ++j) r[i].addProduct(-scaled_[j][i], x[j]);
    }
    return r;
  }

  // x with A'(response - A x) + extra = 0, corrected until the corrections no longer shrink.
  std::vector<Doubled> settled(const std::vector<double>& response,
                               const std::vector<Doubled>& extra) const {
    constexpr int kMostSteps = 200;
    std::vector<Doubled> x(n_);
    double before = INFINITY;
    for (int step = 0; step < kMostSteps; ++step) {
      const std::vector<Doubled> r = residuals(response, x);
      DoubleVec g(static_cast<unsigned>(n_), 0.0);
      for (std::size_t j = 0; j < n_; ++j) {
        Doubled sum = extra[j];
        for (std::size_t i = 0; i < r.size(); ++i) sum.addProduct(scaled_[j][i], r[i]);
        g(static_cast<int>(j)) = sum.value();
      }
      const DoubleVec correction = solve_(g);
      double moved = 0, size = 0;
      for (std::size_t j = 0; j < n_; ++j) {
        moved = std::max(moved, std::abs(correction(static_cast<int>(j))));
        size = std::max(size, std::abs(x[j].value()));
      }
      if (!std::isfinite(moved)) unsolvable(method_);
      if (moved == 0 || (step > 0 && moved <= 1e-28 * size)) return x;
      if (step > 1 && moved > 0.5 * before) {  // no longer shrinks
        if (moved > 1e-10 * size) unsolvable(method_);
        return x;
      }
      before = moved;
      for (std::size_t j = 0; j < n_; ++j) x[j] += correction(static_cast<int>(j));
    }
    return x;
  }

  void tellResiduals(const std::vector<Doubled>& x, RegressionResult& result) const {
    const std::vector<double>& y = response_;
    Doubled squares, mean, total;
    for (const Doubled& r : residuals(y, x)) squares.addProduct(r.value(), r.value());
    for (const double v : y) mean += v;
    const double centre = problem_.intercept ? mean.value() / static_cast<double>(y.size()) : 0.0;
    for (const double v : y) total.addProduct(v - centre, v - centre);
    result.freedom = y.size() - n_;
    const double sum = squares.value();
    result.sumOfSquares = std::ldexp(sum, 2 * responseExponent_);
    result.residualDeviation =
        std::ldexp(std::sqrt(sum / static_cast<double>(result.freedom)), responseExponent_);
    result.rSquared = total.value() > 0 ? 1.0 - sum / total.value() : 1.0;
  }

  const RegressionProblem& problem_;
  RegressionMethod method_;
  std::size_t n_;
  std::vector<double> response_;  // scaled by 2^-responseExponent_
  int responseExponent_ = 0;
  std::vector<std::vector<Doubled>> scaled_;
  std::vector<int> exponents_;  // coefficient j is 2^exponents_[j] times the scaled one
  NormalSolve solve_;
};

}  // namespace

const char* nameOf(RegressionMethod method) {
  switch (method) {
    case RegressionMethod::kHouseholder:
      return "householder";
    case RegressionMethod::kQr:
      return "qr";
    case RegressionMethod::kSvd:
      return "svd";
    case RegressionMethod::kCholesky:
      return "cholesky";
    case RegressionMethod::kLu:
      break;
  }
  return "lu";
}

RegressionProblem polynomialProblem(const std::vector<double>& x, const std::vector<double>& y,
                                    int degree) {
  RegressionProblem p;
  p.response = y;
  p.intercept = true;
  const int e = exponentOf(largest(x));  // powers of 2^-e x stay in the range of numbers
  Chebyshev t(x, -e);
  const auto n = static_cast<std::size_t>(degree) + 1;
  for (std::size_t k = 0; k < n; ++k) {
    p.names.push_back(cat("B", k));
    p.parameters.push_back({std::vector<Doubled>(n), -static_cast<int>(k) * e});
  }
  for (std::size_t k = 0; k < n; ++k, t.advance()) {
    p.columns.push_back(t.values());
    for (std::size_t j = 0; j <= k; ++j) p.parameters[j].weights[k] = t.powers()[j];
  }
  return p;
}

RegressionProblem linearProblem(const std::vector<std::vector<double>>& x,
                                const std::vector<double>& y, bool intercept) {
  RegressionProblem p;
  p.response = y;
  p.intercept = intercept;
  if (intercept) {
    p.names.push_back("B0");
    p.columns.emplace_back(y.size(), Doubled{1.0, 0.0});
  }
  for (const std::vector<double>& column : x) {
    p.names.push_back(cat("B", p.columns.size() + (intercept ? 0 : 1)));
    p.columns.emplace_back();
    for (const double value : column) p.columns.back().push_back({value, 0.0});
  }
  return p;
}

RegressionResult regression(const RegressionProblem& problem, RegressionMethod method) {
  return Regression(problem, method).run();
}

}  // namespace knotfit
