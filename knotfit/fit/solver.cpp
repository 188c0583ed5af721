// SPDX-License-Identifier: MIT
// The library's solvers behind one door.
//
// Row normalisation and the cleaning of zeros stay off: the one changes the weights of the data,
// the other drops entries. One step of refinement follows each solution: the fit of the residual
// is added, which brings the last digits that a solution by reflections leaves.
#include "fit/solver.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

#include "base/fault.h"
#include "base/text.h"
#include "model/convert.h"
#include "model/scale.h"

namespace knotfit {
namespace {

constexpr std::size_t kHouseholderLimit = 65536;  // its counts have 16 bits

bool fitsMemory(double bytes, std::optional<double> room) {
  constexpr double kShare = 0.9;  // of the free memory: the rest is for rows and files
  const double addresses = std::ldexp(1.0, std::numeric_limits<std::size_t>::digits - 2);
  return bytes <= addresses && (!room || bytes <= kShare * *room);
}

std::string gigabytes(double bytes) { return cat(decimals(bytes / 1e9, 1), " GB"); }

std::vector<double> singularValues(const DoubleGenMat& a) {
  DoubleSVDecomp svd;
  svd.computeLeftVecs(0);
  svd.computeRightVecs(0);
  svd.factor(a);
  return stdOf(svd.singularValues());
}

// A'A, whose eigenvalues are the squares of A's singular values.
DoubleGenMat normalMatrix(const RowMatrix& matrix) {
  const auto n = static_cast<unsigned>(matrix.unknowns);
  DoubleGenMat g(n, n, 0.0);
  for (const SparseRow& row : matrix.rows) {
    for (std::size_t a = 0; a < row.columns.size(); ++a) {
      for (std::size_t b = 0; b < row.columns.size(); ++b) {
        g(static_cast<int>(row.columns[a]), static_cast<int>(row.columns[b])) +=
            row.values[a] * row.values[b];
      }
    }
  }
  return g;
}

std::string deficientText(const RowMatrix& matrix) {
  return cat("no unique solution: the ", matrix.rows.size(), " x ", matrix.unknowns,
             " system is rank deficient or its constraints depend on each other; ",
             "fewer --controls, or a --smooth near 1e-6");
}

}  // namespace

const char* nameOf(Method method) {
  switch (method) {
    case Method::kAuto:
      return "auto";
    case Method::kQr:
      return "qr";
    case Method::kBanded:
      return "banded";
    case Method::kHouseholder:
      break;
  }
  return "householder";
}

std::unique_ptr<TsolveConstrainedLsq> newSolver(const SolverOptions& o) {
  static TsolverReporter silent(true);
  TsolverReporter& reporter = o.reporter ? *o.reporter : silent;
  if (o.method == Method::kQr) {
    return std::make_unique<TsolveConstrainedLsqQR>(reporter, o.rankTolerance, false);
  }
  return std::make_unique<Thouseholder>(reporter, o.rankTolerance, 0, false);
}

DoubleGenMat denseMatrix(const RowMatrix& matrix) {
  DoubleGenMat a(static_cast<unsigned>(matrix.rows.size()), static_cast<unsigned>(matrix.unknowns),
                 0.0);
  for (std::size_t i = 0; i < matrix.rows.size(); ++i) {
    const SparseRow& row = matrix.rows[i];
    for (std::size_t k = 0; k < row.columns.size(); ++k) {
      a(static_cast<int>(i), static_cast<int>(row.columns[k])) += row.values[k];
    }
  }
  return a;
}

std::optional<double> freeMemory() {
  std::ifstream account("/proc/meminfo");
  for (std::string word; account >> word;) {
    if (word != "MemAvailable:") continue;
    std::string kilobytes;
    double value = 0;
    account >> kilobytes;
    if (parseNumber(kilobytes, value) == NumberFault::kNone) return 1024.0 * value;
  }
  return std::nullopt;
}

void checkSize(std::size_t rows, std::size_t unknowns, Method method, std::optional<double> room) {
  constexpr double kBytesPerEntry = 24;  // three copies: handed over, the solver's own, its factors
  constexpr double kMostEntries = 4294967295.0;  // the library counts a matrix in 32 bits
  if (method != Method::kQr && std::max(rows, unknowns) >= kHouseholderLimit) {
    throw Fault(kUsage,
                cat(rows, " rows and ", unknowns, " control points: the householder solver ",
                    "takes fewer than ", kHouseholderLimit, "; use --thin ",
                    rows / kHouseholderLimit + 1, " or --solver qr, for a curve --solver auto"));
  }
  const double entries = static_cast<double>(rows) * static_cast<double>(unknowns);
  const double bytes = kBytesPerEntry * entries;
  if (fitsMemory(bytes, room) && entries <= kMostEntries) return;
  throw Fault(kUsage, cat("the dense system of ", rows, " x ", unknowns, " takes ",
                          gigabytes(bytes), room ? cat(", ", gigabytes(*room), " are free") : "",
                          "; use fewer --controls or --thin N"));
}

Method methodFor(Method asked, std::size_t rows, std::size_t unknowns) {
  constexpr double kMostEntries = 1e7;  // beyond, the dense matrix costs seconds
  if (asked != Method::kAuto) return asked;
  const double entries = static_cast<double>(rows) * static_cast<double>(unknowns);
  const bool isDense = entries <= kMostEntries && std::max(rows, unknowns) < kHouseholderLimit;
  return isDense ? Method::kHouseholder : Method::kBanded;
}

void checkBandedSize(std::size_t unknowns, std::size_t order, std::size_t sides,
                     std::size_t constraints, std::optional<double> room) {
  const double n = static_cast<double>(unknowns), width = static_cast<double>(order + sides);
  // A triangle for each span, the band, the solution in a few copies, constraints across the band.
  const double bytes = 8 * n *
                       (static_cast<double>(order) * width + width +
                        8 * static_cast<double>(sides) + 6 * static_cast<double>(constraints));
  constexpr double kMostNumbers = 2147483647.0;  // the library counts numbers in 31 bits
  if (fitsMemory(bytes, room) && n * static_cast<double>(sides + constraints) <= kMostNumbers) {
    return;
  }
  throw Fault(kUsage,
              cat("the banded system of ", unknowns, " control points takes ", gigabytes(bytes),
                  room ? cat(", ", gigabytes(*room), " are free") : "", "; use fewer --controls"));
}

FactoredSystem::FactoredSystem(const RowMatrix& matrix, const SolverOptions& options)
    : matrix_(matrix) {
  if (matrix.constraints > matrix.unknowns) {
    throw Fault(kNoSolution, cat("constraints conflict: ", matrix.constraints, " rows for ",
                                 matrix.unknowns, " unknowns"));
  }
  checkSize(matrix.rows.size(), matrix.unknowns, options.method);
  solver_ = newSolver(options);
  const bool tooFew = matrix.rows.size() < matrix.unknowns;
  if (tooFew || solver_->setMatrix(denseMatrix(matrix), static_cast<int>(matrix.constraints), false,
                                   false, false) != 0) {
    throw Fault(kNoSolution, deficientText(matrix));
  }
}

std::vector<double> FactoredSystem::solveOnce(const std::vector<double>& rhs,
                                              int components) const {
  const ColumnScale scale(rhs.data(), rhs.size(), static_cast<std::size_t>(components));
  TtupleVector b(components, static_cast<int>(matrix_.rows.size()), rhs.data());
  scale.enlarge(b.data().data(), rhs.size());
  TtupleVector x(components, static_cast<int>(matrix_.unknowns), 0.0);
  const int code = solver_->solve(b, &x, false);
  if (code != 0) {
    throw Fault(code == 5 ? kNoSolution : kInternal, cat("the solver answers code ", code));
  }
  std::vector<double> solution = stdOf(x.data());
  scale.restore(solution.data(), solution.size());
  return solution;
}

std::vector<double> FactoredSystem::solve(const std::vector<double>& rhs, int components) const {
  std::vector<double> x = solveOnce(rhs, components);
  const std::vector<double> step = solveOnce(matrix_.residual(rhs, x, components), components);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] += step[i];
  for (const double value : x) {
    if (!std::isfinite(value)) throw Fault(kNoSolution, deficientText(matrix_));
  }
  return x;
}

std::optional<Spectrum> spectrumOf(const RowMatrix& matrix) {
  // Beyond that much work the eigenvalues of A'A are taken: half the digits of the condition, in
  // the time of its n x n matrix. Rank is counted there as well.
  constexpr double kDirectWork = 3e7;  // operations: a fraction of a second
  constexpr std::size_t kMostUnknowns = 700;
  const double m = static_cast<double>(matrix.rows.size());
  const double n = static_cast<double>(matrix.unknowns);
  const bool direct = m * n * n <= kDirectWork;
  if (!direct && matrix.unknowns > kMostUnknowns) return std::nullopt;
  std::vector<double> s = singularValues(direct ? denseMatrix(matrix) : normalMatrix(matrix));
  const double size = s.empty() ? 0.0 : s.front();
  const double rounding = size * std::max(m, n) * std::numeric_limits<double>::epsilon();
  Spectrum out;
  out.rank = static_cast<std::size_t>(
      std::count_if(s.begin(), s.end(), [&](double x) { return x > rounding; }));
  const double ratio = s.empty() ? 1.0 : size / s.back();  // infinity for a zero
  out.condition = direct ? ratio : std::sqrt(ratio);
  return out;
}

}  // namespace knotfit
