// SPDX-License-Identifier: MIT
// The parts that the columns of a system play.
#pragma once

#include <cstddef>
#include <vector>

namespace knotwork::detail {

/// Which part of the system a column belongs to: the band; the border, where columns are full, as
/// those across the seam of a periodic system; or none, where its unknown is prescribed.
class ColumnRoles {
 public:
  explicit ColumnRoles(int columns) : border_(static_cast<std::size_t>(columns), kBand) {}

  void prescribe(int column) { at(column) = kPrescribed; }
  void moveToBorder(int column) {
    at(column) = static_cast<int>(borderColumns_.size());
    borderColumns_.push_back(column);
  }

  bool isInBand(int column) const { return role(column) == kBand; }
  bool isPrescribed(int column) const { return role(column) == kPrescribed; }
  /// The place of a border column in the border, negative for all others.
  int borderIndex(int column) const { return role(column); }

  int columns() const { return static_cast<int>(border_.size()); }
  const std::vector<int>& borderColumns() const { return borderColumns_; }

 private:
  static constexpr int kBand = -1, kPrescribed = -2;

  int& at(int column) { return border_[static_cast<std::size_t>(column)]; }
  int role(int column) const { return border_[static_cast<std::size_t>(column)]; }

  std::vector<int> border_;
  std::vector<int> borderColumns_;
};

}  // namespace knotwork::detail
