// SPDX-License-Identifier: MIT
// What a banded least-squares solver keeps of its rows, and how it solves.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "knotwork/solvers/solver_reporter.h"
#include "solvers/band_triangle.h"
#include "solvers/exact_rows.h"
#include "solvers/span_triangles.h"

namespace knotwork::detail {

/// The rows of a system as triangles, its constraints and prescribed values. Every operation may
/// throw std::bad_alloc.
class BandedSystem {
 public:
  /// @param spans  number of first columns; all of them in a periodic system.
  BandedSystem(int unknowns, int order, int dimension, int spans);

  std::size_t rowCount() const { return rowCount_; }
  int constraintCount() const { return static_cast<int>(exact_.constraints().size()); }
  int spans() const { return spans_.spans(); }

  void prescribe(int unknown, const double* value) { exact_.prescribe(unknown, value); }
  /// Adds `count` rows of valid spans on at most `threads` threads.
  void addRows(std::size_t count, const int* first, const double* values, const double* rhs,
               int threads);
  void addConstraint(const ConstraintRow& row) { exact_.addConstraint(row); }

  /// Solves, unless `undetermined` or `conflicting` of the result tell why not.
  LsqSolution solve(double tolerance, TsolverReporter& reporter) const;

 private:
  /// A system of order 1 has no seam.
  bool isPeriodic() const { return spans() == unknowns_; }
  std::vector<double> columnLengths() const;
  int columnOf(int span, int j) const;
  int spanOf(const ConstraintRow& row) const;
  void addSpans(int firstSpan, int lastSpan, std::size_t count, const int* first,
                const double* values, const double* rhs);
  std::unique_ptr<BandTriangle> reduce(const ColumnRoles& roles, const std::vector<double>& lengths,
                                       double tolerance, TsolverReporter& reporter) const;
  void addRow(int span, const double* row, const ColumnRoles& roles, std::vector<double>& spread,
              BandTriangle& triangle) const;
  void addAsRow(const ConstraintRow& constraint, int span, const std::vector<double>& lengths,
                const ColumnRoles& roles, std::vector<double>& spread,
                BandTriangle& triangle) const;
  bool hasWideConstraint() const;
  std::vector<double> residuals(const BandTriangle& triangle) const;

  int unknowns_, order_, dimension_;
  ExactRows exact_;
  SpanTriangles spans_;
  std::size_t rowCount_ = 0;
};

}  // namespace knotwork::detail
