// SPDX-License-Identifier: MIT
// Linear regression on the library's decompositions.
#include "fit/regression.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

#include <knotwork/knotwork.h>

#include "base/fault.h"
#include "base/text.h"
#include "fit/doubled.h"

namespace knotfit {
namespace {

using NormalSolve = std::function<DoubleVec(const DoubleVec&)>;  // z with A'A z = g

[[noreturn]] void dependent() {
  throw Fault(kNoSolution,
              "no unique solution: the columns depend on each other; leave one of them out");
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
  if (qr->isSingular()) dependent();
  return [qr](const DoubleVec& g) { return solveTriangles(*qr, g); };
}

// The solver's thresholds are absolute, so its right-hand sides are brought to a good size.
DoubleVec solveScaled(Thouseholder& solver, const DoubleVec& b) {
  double most = 0;
  for (unsigned i = 0; i < b.length(); ++i) most = std::max(most, std::abs(b(static_cast<int>(i))));
  if (most == 0) return DoubleVec(static_cast<unsigned>(solver.totalCols()), 0.0);
  const double scale = std::ldexp(1.0, 40 - std::ilogb(most));
  return solver.solve(b * scale) * (1.0 / scale);
}

// The shortest y with A'y = g, then the least-squares solution of A z = y.
NormalSolve byHouseholder(const DoubleGenMat& a) {
  constexpr double kTolerance = 1e-14;
  auto across = std::make_shared<Thouseholder>(kTolerance, 0, false);
  auto down = std::make_shared<Thouseholder>(kTolerance, 0, false);
  if (across->setMatrix(transpose(a), 0, false, false, false) != 0 ||
      down->setMatrix(a, 0, false, false, false) != 0) {
    dependent();
  }
  return [across, down](const DoubleVec& g) { return solveScaled(*down, solveScaled(*across, g)); };
}

NormalSolve bySvd(const DoubleGenMat& a) {
  auto svd = std::make_shared<DoubleSVDecomp>();
  svd->computeLeftVecs(0);
  svd->factor(a);
  const DoubleVec s = svd->singularValues();
  if (svd->fail() || s(static_cast<int>(s.length()) - 1) <= 1e-15 * s(0)) dependent();
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
  if (!ch->isPD()) dependent();
  return [ch](const DoubleVec& g) { return ch->solve(g); };
}

NormalSolve byLu(const DoubleGenMat& a) {
  auto lu = std::make_shared<DoubleGenFact>(transposeProduct(a, a));
  if (lu->fail()) dependent();
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

class Regression {
 public:
  Regression(const RegressionProblem& problem, RegressionMethod method)
      : problem_(problem), n_(problem.columns.size()) {
    const std::size_t rows = problem.response.size();
    if (rows <= n_) {
      throw Fault(kNoSolution, cat(n_, " parameters need at least ", n_ + 1, " rows, the file has ",
                                   rows, "; use a smaller model"));
    }
    scaled_ = problem.columns;
    for (std::vector<double>& column : scaled_) {
      double most = 0;
      for (const double x : column) most = std::max(most, std::abs(x));
      if (most == 0) dependent();
      exponents_.push_back(-std::ilogb(most));
      for (double& x : column) x = std::ldexp(x, exponents_.back());
    }
    DoubleGenMat a(static_cast<unsigned>(rows), static_cast<unsigned>(n_), 0.0);
    for (std::size_t j = 0; j < n_; ++j) {
      for (std::size_t i = 0; i < rows; ++i) {
        a(static_cast<int>(i), static_cast<int>(j)) = scaled_[j][i];
      }
    }
    solve_ = factored(a, method);
  }

  RegressionResult run() {
    const std::vector<Doubled> none(n_);
    const std::vector<Doubled> x = settled(problem_.response, none);
    RegressionResult result;
    for (std::size_t j = 0; j < n_; ++j) {
      result.estimates.push_back(std::ldexp(x[j].value(), exponents_[j]));
    }
    tellResiduals(x, result);
    for (std::size_t j = 0; j < n_; ++j) {
      std::vector<Doubled> unit(n_);
      unit[j].high = 1.0;
      const double variance = settled({}, unit)[j].value();
      result.errors.push_back(
          std::ldexp(result.residualDeviation * std::sqrt(variance), exponents_[j]));
    }
    return result;
  }

 private:
  // response - A x, an empty response standing for zeros.
  std::vector<Doubled> residuals(const std::vector<double>& response,
                                 const std::vector<Doubled>& x) const {
    std::vector<Doubled> r(problem_.response.size());
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
      if (!std::isfinite(moved)) dependent();
      if (moved == 0 || (step > 0 && moved <= 1e-28 * size)) return x;
      if (step > 1 && moved > 0.5 * before) {  // no longer shrinks
        if (moved > 1e-10 * size) dependent();
        return x;
      }
      before = moved;
      for (std::size_t j = 0; j < n_; ++j) x[j] += correction(static_cast<int>(j));
    }
    return x;
  }

  void tellResiduals(const std::vector<Doubled>& x, RegressionResult& result) const {
    const std::vector<double>& y = problem_.response;
    const bool intercept = problem_.names.front() == "B0";
    Doubled squares, mean, total;
    for (const Doubled& r : residuals(y, x)) squares.addProduct(r.value(), r.value());
    for (const double v : y) mean += v;
    const double centre = intercept ? mean.value() / static_cast<double>(y.size()) : 0.0;
    for (const double v : y) total.addProduct(v - centre, v - centre);
    result.freedom = y.size() - n_;
    result.sumOfSquares = squares.value();
    result.residualDeviation = std::sqrt(result.sumOfSquares / static_cast<double>(result.freedom));
    result.rSquared = total.value() > 0 ? 1.0 - result.sumOfSquares / total.value() : 1.0;
  }

  const RegressionProblem& problem_;
  std::size_t n_;
  std::vector<std::vector<double>> scaled_;
  std::vector<int> exponents_;
  NormalSolve solve_;
};

}  // namespace

RegressionResult regression(const RegressionProblem& problem, RegressionMethod method) {
  return Regression(problem, method).run();
}

}  // namespace knotfit
