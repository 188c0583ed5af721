// SPDX-License-Identifier: MIT
// Curve fits by the library's banded solver.
//
// The rows of the data are made as they are handed over, some thousand at a time, so that memory
// grows with the control points alone. Tangents' shapes are more right-hand sides of the same
// system: zero but for their own constraint.
#include <algorithm>
#include <map>

#include "base/fault.h"
#include "base/text.h"
#include "fit/curve_system.h"
#include "model/convert.h"

namespace knotfit {
namespace {

// The first few of a list of indices, as a text counts them: "3", "3 and 4", "3, 4, 5 and 7 more".
std::string namedIndices(const IntVec& indices) {
  constexpr int kNamed = 3;
  const int n = static_cast<int>(indices.length());
  std::string text;
  for (int i = 0; i < std::min(n, kNamed); ++i) {
    const char* before = i == 0 ? "" : i + 1 == n ? " and " : ", ";
    text += cat(before, indices(i) + 1);
  }
  return n > kNamed ? cat(text, " and ", n - kNamed, " more") : text;
}

class BandedCurve {
 public:
  BandedCurve(const CurveSystem& system, int degree, const SolverOptions& options)
      : system_(system),
        dim_(static_cast<std::size_t>(system.dim)),
        sides_(dim_ + system.tangentRows.size()),
        unknowns_(system.matrix.unknowns),
        order_(orderOf(system, degree)),
        solver_(reporterOf(options), static_cast<int>(unknowns_), static_cast<int>(order_),
                static_cast<int>(sides_)) {
    checkBandedSize(unknowns_, order_, sides_, system.matrix.constraints);
    solver_.rankTolerance() = options.rankTolerance;
    first_.reserve(kChunk);
    values_.reserve(kChunk * order_);
    rhs_.reserve(kChunk * sides_);
  }

  CurveSolution solve() {
    if (system_.data) {
      system_.data->visit([&](const SparseRow& row, const double* point, double factor) {
        add(row, point, factor);
      });
    }
    const RowMatrix& m = system_.matrix;
    for (std::size_t i = 0; i < system_.freeRows(); ++i) {
      add(m.rows[i], &system_.rhs[i * dim_], 1.0);
    }
    handOver();
    for (std::size_t i = system_.freeRows(); i < m.rows.size(); ++i) addConstraint(i);
    TtupleVector x;
    const int code = solver_.solve(&x);
    if (code != 0) refuse(code);
    return split(stdOf(x.data()));
  }

 private:
  static constexpr std::size_t kChunk = 4096;

  // Second differences take three columns, which is more than those of degree 1.
  static std::size_t orderOf(const CurveSystem& system, int degree) {
    std::size_t order = static_cast<std::size_t>(degree) + 1;
    for (std::size_t i = 0; i < system.freeRows(); ++i) {
      order = std::max(order, system.matrix.rows[i].columns.size());
    }
    return order;
  }

  static TsolverReporter& reporterOf(const SolverOptions& options) {
    static TsolverReporter silent(true);
    return options.reporter ? *options.reporter : silent;
  }

  void add(const SparseRow& row, const double* datum, double factor) {
    const std::size_t first = std::min(row.columns.front(), unknowns_ - order_);
    first_.push_back(static_cast<int>(first));
    values_.resize(values_.size() + order_, 0.0);
    double* const entries = values_.data() + values_.size() - order_;
    for (std::size_t k = 0; k < row.columns.size(); ++k) {
      entries[row.columns[k] - first] = factor * row.values[k];
    }
    for (std::size_t c = 0; c < sides_; ++c) rhs_.push_back(c < dim_ ? factor * datum[c] : 0.0);
    if (first_.size() == kChunk) handOver();
  }

  void handOver() {
    check(solver_.addRows(first_.size(), first_.data(), values_.data(), rhs_.data()));
    first_.clear();
    values_.clear();
    rhs_.clear();
  }

  void addConstraint(std::size_t i) {
    const SparseRow& row = system_.matrix.rows[i];
    std::map<std::size_t, double> entries;  // few columns may stand at both ends of the seam
    for (std::size_t k = 0; k < row.columns.size(); ++k) entries[row.columns[k]] += row.values[k];
    IntVec columns(static_cast<unsigned>(entries.size()), 0);
    DoubleVec values(static_cast<unsigned>(entries.size()), 0.0);
    int k = 0;
    for (const auto& [column, value] : entries) {
      columns(k) = static_cast<int>(column);
      values(k++) = value;
    }
    DoubleVec rhs(static_cast<unsigned>(sides_), 0.0);
    for (std::size_t c = 0; c < dim_; ++c) rhs(static_cast<int>(c)) = system_.rhs[i * dim_ + c];
    for (std::size_t t = 0; t < system_.tangentRows.size(); ++t) {
      if (system_.tangentRows[t] == i) rhs(static_cast<int>(dim_ + t)) = 1.0;
    }
    check(solver_.addConstraint(columns, values, rhs));
  }

  static void check(int code) {
    if (code == -1) throw std::bad_alloc();
    if (code != 0) throw Fault(kInternal, cat("the banded solver answers code ", code));
  }

  [[noreturn]] void refuse(int code) const {
    if (code != 5) check(code);
    constexpr char kMend[] = "; fewer --controls, or a --smooth near 1e-6";
    const IntVec& open = solver_.undetermined();
    if (open.length() > 0) {
      throw Fault(kNoSolution, cat("no unique solution: control point",
                                   open.length() == 1 ? " " : "s ", namedIndices(open),
                                   open.length() == 1 ? " is" : " are", " undetermined", kMend));
    }
    if (solver_.conflicting().length() > 0) {
      throw Fault(kNoSolution,
                  "constraints conflict: points, tangents or the seam ask for different curves; "
                  "more --controls, or leave one out");
    }
    throw Fault(kNoSolution, "the fit leaves the range of numbers; measure in larger units");
  }

  CurveSolution split(const std::vector<double>& x) const {
    CurveSolution solution;
    for (std::size_t j = 0; j < unknowns_; ++j) {
      const auto point = x.begin() + static_cast<std::ptrdiff_t>(j * sides_);
      const auto shape = point + static_cast<std::ptrdiff_t>(dim_);
      solution.controls.insert(solution.controls.end(), point, shape);
      solution.shapes.insert(solution.shapes.end(), shape,
                             point + static_cast<std::ptrdiff_t>(sides_));
    }
    return solution;
  }

  const CurveSystem& system_;
  std::size_t dim_, sides_, unknowns_, order_;
  knotwork::BandedLeastSquares solver_;
  std::vector<int> first_;
  std::vector<double> values_, rhs_;
};

}  // namespace

CurveSolution solvedBanded(const CurveSystem& system, int degree, const SolverOptions& options) {
  return BandedCurve(system, degree, options).solve();
}

}  // namespace knotfit
