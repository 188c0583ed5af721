// SPDX-License-Identifier: MIT
// The library's solvers behind one door.
#include "fit/solver.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

constexpr std::size_t kHouseholderLimit = 65536;

// Bytes that can be had, from the system's own account; 0 where there is none.
double freeMemory() {
  std::ifstream account("/proc/meminfo");
  for (std::string word; account >> word;) {
    if (word != "MemAvailable:") continue;
    std::string kilobytes;
    double value = 0;
    account >> kilobytes;
    return parseNumber(kilobytes, value) == NumberFault::kNone ? 1024.0 * value : 0.0;
  }
  return 0;
}

std::string gigabytes(double bytes) { return cat(decimals(bytes / 1e9, 1), " GB"); }

// Exponent that brings the largest magnitude to about 2^40.
int scaleExponent(const std::vector<double>& v) {
  double most = 0;
  for (const double x : v) most = std::max(most, std::abs(x));
  return most > 0 ? 40 - std::ilogb(most) : 0;
}

double singularRatio(const DoubleGenMat& a) {
  DoubleSVDecomp svd;
  svd.computeLeftVecs(0);
  svd.computeRightVecs(0);
  svd.factor(a);
  const DoubleVec s = svd.singularValues();
  const int last = static_cast<int>(s.length()) - 1;
  if (last < 0) return 1;
  return s(last) > 0 ? s(0) / s(last) : std::numeric_limits<double>::infinity();
}

DoubleGenMat normalMatrix(const FitSystem& system) {
  const auto n = static_cast<unsigned>(system.unknowns);
  DoubleGenMat g(n, n, 0.0);
  for (const SparseRow& row : system.rows) {
    for (std::size_t a = 0; a < row.columns.size(); ++a) {
      for (std::size_t b = 0; b < row.columns.size(); ++b) {
        g(static_cast<int>(row.columns[a]), static_cast<int>(row.columns[b])) +=
            row.values[a] * row.values[b];
      }
    }
  }
  return g;
}

std::string deficientText(const FitSystem& system) {
  return cat("no unique solution: the ", system.rows.size(), " x ", system.unknowns,
             " system is rank deficient or its constraints depend on each other; ",
             "fewer --controls, or add --smooth 1e-6");
}

}  // namespace

const char* nameOf(Method method) { return method == Method::kQr ? "qr" : "householder"; }

std::unique_ptr<TsolveConstrainedLsq> newSolver(const SolverOptions& o) {
  static TsolverReporter silent(true);
  TsolverReporter& reporter = o.reporter ? *o.reporter : silent;
  if (o.method == Method::kQr) {
    return std::make_unique<TsolveConstrainedLsqQR>(reporter, o.rankTolerance, false);
  }
  return std::make_unique<Thouseholder>(reporter, o.rankTolerance, 0, false);
}

DoubleGenMat denseMatrix(const FitSystem& system) {
  DoubleGenMat a(static_cast<unsigned>(system.rows.size()), static_cast<unsigned>(system.unknowns),
                 0.0);
  for (std::size_t i = 0; i < system.rows.size(); ++i) {
    const SparseRow& row = system.rows[i];
    for (std::size_t k = 0; k < row.columns.size(); ++k) {
      a(static_cast<int>(i), static_cast<int>(row.columns[k])) += row.values[k];
    }
  }
  return a;
}

void checkSize(std::size_t rows, std::size_t unknowns, Method method) {
  if (method == Method::kHouseholder && std::max(rows, unknowns) >= kHouseholderLimit) {
    throw Fault(kUsage,
                cat(rows, " rows and ", unknowns, " control points: the householder solver ",
                    "takes fewer than ", kHouseholderLimit, "; use --thin ",
                    rows / kHouseholderLimit + 1, " or --solver qr"));
  }
  // Three copies of the matrix live at once: the solver's own, its factors and the one handed over.
  const double bytes = 24.0 * static_cast<double>(rows) * static_cast<double>(unknowns);
  const double room = freeMemory();
  const double most = static_cast<double>(std::numeric_limits<std::size_t>::max() / 4);
  if ((room > 0 && bytes > 0.9 * room) || bytes > most ||
      static_cast<double>(rows) * static_cast<double>(unknowns) > 4294967295.0) {
    throw Fault(kUsage,
                cat("the dense system of ", rows, " x ", unknowns, " takes ", gigabytes(bytes),
                    ", ", gigabytes(room), " are free; use fewer --controls or --thin N"));
  }
}

FactoredSystem::FactoredSystem(const FitSystem& system, const SolverOptions& options)
    : system_(system) {
  if (system.constraints > system.unknowns) {
    throw Fault(kNoSolution, cat("constraints conflict: ", system.constraints, " rows for ",
                                 system.unknowns, " unknowns"));
  }
  checkSize(system.rows.size(), system.unknowns, options.method);
  solver_ = newSolver(options);
  const bool tooFew = system.rows.size() < system.unknowns;
  if (tooFew || solver_->setMatrix(denseMatrix(system), static_cast<int>(system.constraints), false,
                                   false, false) != 0) {
    throw Fault(kNoSolution, deficientText(system));
  }
}

std::vector<double> FactoredSystem::solveOnce(std::vector<double> rhs, int components) const {
  const int exponent = scaleExponent(rhs);
  for (double& b : rhs) b = std::ldexp(b, exponent);
  const TtupleVector b(components, static_cast<int>(system_.rows.size()), rhs.data());
  TtupleVector x(components, static_cast<int>(system_.unknowns), 0.0);
  const int code = solver_->solve(b, &x, false);
  if (code != 0) {
    throw Fault(code == 5 ? kNoSolution : kInternal, cat("the solver answers code ", code));
  }
  std::vector<double> out(system_.unknowns * static_cast<std::size_t>(components));
  TagRw::dvToV(x.data(), out.data(), -1);
  for (double& value : out) value = std::ldexp(value, -exponent);
  return out;
}

std::vector<double> FactoredSystem::solve(const std::vector<double>& rhs, int components) const {
  std::vector<double> x = solveOnce(rhs, components);
  const std::vector<double> step = solveOnce(system_.residual(rhs, x, components), components);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] += step[i];
  for (const double value : x) {
    if (!std::isfinite(value)) throw Fault(kNoSolution, deficientText(system_));
  }
  return x;
}

double conditionOf(const FitSystem& system) {
  constexpr double kDirectWork = 3e7;
  constexpr std::size_t kMostUnknowns = 700;
  const double n = static_cast<double>(system.unknowns);
  if (static_cast<double>(system.rows.size()) * n * n <= kDirectWork) {
    return singularRatio(denseMatrix(system));
  }
  if (system.unknowns > kMostUnknowns) return -1;
  return std::sqrt(singularRatio(normalMatrix(system)));
}

}  // namespace knotfit
