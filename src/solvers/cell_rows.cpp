// SPDX-License-Identifier: MIT
#include "solvers/cell_rows.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "solvers/at.h"

namespace knotwork::detail {
CellRows::CellRows(int cells, int order, int dimension)
    : order_(order), dimension_(dimension), cells_(at(cells)), ownPlaces_(at(order)) {
  std::iota(ownPlaces_.begin(), ownPlaces_.end(), 0);
}

void CellRows::add(int cell, const double* row, Staircase& room) {
  Cell& c = cells_[at(cell)];
  if (c.rows.size() == 2 * at(order_) * width()) reduce(c, room);
  c.rows.insert(c.rows.end(), row, row + width());
}

void CellRows::reduce(Cell& cell, Staircase& room) const {
  room.begin(order_, dimension_);
  addStaircaseRows(room, cell.rows, ownPlaces_);
  room.reduce(nullptr, 0);
  cell.rows.clear();
  for (int i = 0; i < room.rows(); ++i) {
    cell.rows.insert(cell.rows.end(), room.row(i), room.row(i) + room.width());
  }
  cell.residuals.resize(at(dimension_));
  for (std::size_t c = 0; c < cell.residuals.size(); ++c) cell.residuals[c] += room.residuals()[c];
}

void CellRows::addResiduals(std::vector<double>& squares) const {
  for (const Cell& cell : cells_) {
    for (std::size_t c = 0; c < cell.residuals.size(); ++c) squares[c] += cell.residuals[c];
  }
}

void addStaircaseRows(Staircase& matrix, const std::vector<double>& rows,
                      const std::vector<int>& places) {
  const std::size_t order = places.size();
  const std::size_t width = order + at(matrix.width() - matrix.columns());
  std::vector<std::pair<int, const double*>> leads;
  leads.reserve(rows.size() / width);
  for (const double* row = rows.data(); row != rows.data() + rows.size(); row += width) {
    int lead = matrix.columns();
    for (std::size_t k = 0; k < order; ++k) {
      if (row[k] != 0) lead = std::min(lead, places[k]);
    }
    leads.emplace_back(lead, row);
  }
  std::sort(leads.begin(), leads.end());
  for (const auto& [lead, row] : leads) {
    double* const to = matrix.addRow(lead);
    for (std::size_t k = 0; k < order; ++k) to[places[k]] = row[k];
    std::copy(row + order, row + width, to + matrix.columns());
  }
}

}  // namespace knotwork::detail
