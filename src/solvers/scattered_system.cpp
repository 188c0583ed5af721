// SPDX-License-Identifier: MIT
// The stages of a fit to scattered points: rows into the triangles of their cells, cells into the
// fronts of the dissection, constraints, back substitution.
#include "solvers/scattered_system.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "solvers/at.h"
#include "solvers/balanced_spans.h"
#include "solvers/dissected_triangle.h"
#include "solvers/rotation.h"

namespace knotwork::detail {
ScatteredSystem::ScatteredSystem(const CellAxis& u, const CellAxis& v, int dimension)
    : axes_{u, v},
      dimension_(dimension),
      exact_(unknowns(), dimension),
      rows_(cells(), order(), dimension) {}

// The k-th unknown that a cell sees.
int ScatteredSystem::unknownOf(int cell, int k) const {
  const int i = cell / axes_[1].cells() + k / axes_[1].order;
  const int j = cell % axes_[1].cells() + k % axes_[1].order;
  return i % axes_[0].unknowns * axes_[1].unknowns + j % axes_[1].unknowns;
}

void ScatteredSystem::addRows(std::size_t count, const int* cells,
                              const std::function<void(std::size_t, double*)>& makeRow,
                              int threads) {
  onBalancedSpans(count, cells, this->cells(), threads, [&](int from, int to) {
    Staircase room;
    std::vector<double> row(at(order() + dimension_));
    for (std::size_t i = 0; i < count; ++i) {
      const int cell = cells[i];
      if (cell < from || cell >= to) continue;
      makeRow(i, row.data());
      for (int k = 0; exact_.anyPrescribed() && k < order(); ++k) {
        const int unknown = unknownOf(cell, k);
        if (exact_.isPrescribed(unknown)) {
          exact_.takeOut(unknown, row[at(k)], row.data() + order());
        }
      }
      rows_.add(cell, row.data(), room);
    }
  });
  rowCount_ += count;
}

// The cell that sees all unknowns of the row; -1 if there is none.
int ScatteredSystem::cellOf(const ConstraintRow& row) const {
  if (row.columns.empty()) return -1;
  int cell[2];
  for (const int direction : {0, 1}) {
    const CellAxis& axis = axes_[direction];
    const auto place = [&](int column) {
      return direction == 0 ? column / axes_[1].unknowns : column % axes_[1].unknowns;
    };
    const auto holdsAll = [&](int first) {
      return std::all_of(row.columns.begin(), row.columns.end(), [&](int column) {
        const int distance = place(column) - first;
        return (distance < 0 && axis.periodic ? distance + axis.unknowns : distance) < axis.order &&
               (distance >= 0 || axis.periodic);
      });
    };
    const auto found = std::find_if(row.columns.begin(), row.columns.end(), [&](int column) {
      return holdsAll(std::min(place(column), axis.cells() - 1));
    });
    if (found == row.columns.end()) return -1;
    cell[direction] = std::min(place(*found), axis.cells() - 1);
  }
  return cell[0] * axes_[1].cells() + cell[1];
}

std::vector<double> ScatteredSystem::columnLengths() const {
  std::vector<double> lengths(at(unknowns()));
  for (int cell = 0; cell < cells(); ++cell) {
    const std::vector<double>& rows = rows_.rowsOf(cell);
    for (std::size_t start = 0; start < rows.size(); start += rows_.width()) {
      for (int k = 0; k < order(); ++k) {
        const double entry = rows[start + at(k)];
        double& length = lengths[at(unknownOf(cell, k))];
        if (entry != 0) length = rotationOf(length, entry).length;
      }
    }
  }
  // Columns without data get the size that their constraints are given.
  for (double& length : lengths) length = length > 0 ? length : 1;
  return lengths;
}

// A constraint that fits a cell also counts as a least-squares row.
void ScatteredSystem::appendAsRow(const ConstraintRow& constraint, int cell,
                                  const std::vector<double>& lengths,
                                  std::vector<double>& rows) const {
  const double weight = ExactRows::weightAsRow(constraint, lengths);
  for (int k = 0; k < order(); ++k) {
    const auto entry =
        std::find(constraint.columns.begin(), constraint.columns.end(), unknownOf(cell, k));
    const auto t = static_cast<std::size_t>(entry - constraint.columns.begin());
    rows.push_back(entry == constraint.columns.end() ? 0 : weight * constraint.values[t]);
  }
  for (const double side : constraint.rhs) rows.push_back(weight * side);
}

LsqSolution ScatteredSystem::solve(double tolerance, int threads, TsolverReporter& reporter) const {
  const std::vector<double> lengths = columnLengths();
  std::multimap<int, const ConstraintRow*> local;
  for (const ConstraintRow& row : exact_.constraints()) {
    if (const int cell = cellOf(row); cell >= 0) local.emplace(cell, &row);
  }
  const Dissection dissection(axes_[0], axes_[1]);
  std::vector<double> lengthsByRank(lengths.size());
  for (int j = 0; j < unknowns(); ++j) lengthsByRank[at(dissection.rank(j))] = lengths[at(j)];

  const auto addCellRows = [&](int cell, const std::vector<int>& columns, Staircase& matrix) {
    std::vector<int> places;
    for (int k = 0; k < order(); ++k) {
      const int rank = dissection.rank(unknownOf(cell, k));
      const auto place = std::lower_bound(columns.begin(), columns.end(), rank);
      places.push_back(static_cast<int>(place - columns.begin()));
    }
    const auto [first, last] = local.equal_range(cell);
    if (first == last) return addStaircaseRows(matrix, rows_.rowsOf(cell), places);
    std::vector<double> rows = rows_.rowsOf(cell);
    for (auto entry = first; entry != last; ++entry) {
      appendAsRow(*entry->second, cell, lengths, rows);
    }
    addStaircaseRows(matrix, rows, places);
  };
  const auto report = [&](double done) {
    if (reporter.isVerbose()) reporter.reportProgress(done);
  };
  DissectedTriangle triangle(dissection, dimension_, lengthsByRank, tolerance);
  triangle.reduce(addCellRows, report, threads);
  std::vector<int> open;
  for (int j = 0; j < unknowns(); ++j) {
    if (!exact_.isPrescribed(j) && !triangle.hasPivot(j)) open.push_back(j);
  }
  std::vector<double> squares = triangle.residuals();
  rows_.addResiduals(squares);
  return exact_.solve(triangle, exact_.roles(), tolerance, open, squares);
}

}  // namespace knotwork::detail
