// SPDX-License-Identifier: MIT
// What a solver for scattered points keeps of its rows, and how it solves.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "knotwork/solvers/solver_reporter.h"
#include "solvers/cell_rows.h"
#include "solvers/dissection.h"
#include "solvers/exact_rows.h"

namespace knotwork::detail {

/// The rows of a tensor-product system by cells, its constraints and prescribed values. Every
/// operation may throw std::bad_alloc.
class ScatteredSystem {
 public:
  ScatteredSystem(const CellAxis& u, const CellAxis& v, int dimension);

  int unknowns() const { return axes_[0].unknowns * axes_[1].unknowns; }
  std::size_t rowCount() const { return rowCount_; }
  int constraintCount() const { return static_cast<int>(exact_.constraints().size()); }

  void prescribe(int unknown, const double* value) { exact_.prescribe(unknown, value); }
  /// Adds rows of valid cells on at most `threads` threads: makeRow(i, row) writes the entries of
  /// row i and its right-hand sides.
  void addRows(std::size_t count, const int* cells,
               const std::function<void(std::size_t, double*)>& makeRow, int threads);
  void addConstraint(const ConstraintRow& row) { exact_.addConstraint(row); }

  /// Solves, unless `undetermined` or `conflicting` of the result tell why not.
  LsqSolution solve(double tolerance, int threads, TsolverReporter& reporter) const;

 private:
  int order() const { return axes_[0].order * axes_[1].order; }
  int cells() const { return axes_[0].cells() * axes_[1].cells(); }
  int unknownOf(int cell, int k) const;
  int cellOf(const ConstraintRow& row) const;
  std::vector<double> columnLengths() const;
  void appendAsRow(const ConstraintRow& constraint, int cell, const std::vector<double>& lengths,
                   std::vector<double>& rows) const;

  CellAxis axes_[2];
  int dimension_;
  ExactRows exact_;
  CellRows rows_;
  std::size_t rowCount_ = 0;
};

}  // namespace knotwork::detail
