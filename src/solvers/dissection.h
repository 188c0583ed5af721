// SPDX-License-Identifier: MIT
// The order in which the unknowns of a grid of cells are eliminated.
#pragma once

#include <cstddef>
#include <vector>

namespace knotwork::detail {

/// One direction of a tensor-product system: cell c sees the unknowns c .. c + order - 1, which in
/// a periodic direction go on from the last to the first.
struct CellAxis {
  int unknowns, order;
  bool periodic;

  int cells() const { return periodic ? unknowns : unknowns - order + 1; }
};

/// Nested dissection: the rectangle of all cells is halved across its longer side until single
/// cells are left. An unknown is eliminated in the smallest rectangle that holds all the cells that
/// see it. So what goes on from a rectangle of w x h cells is some (order - 1) x 2 (w + h)
/// unknowns, and n unknowns in a square cost n log n numbers and n^1.5 operations.
///
/// Source: A. George, Nested dissection of a regular finite element mesh (1973).
class Dissection {
 public:
  /// A rectangle of cells. Its columns are the unknowns that its cells see but for those that were
  /// eliminated in its halves, as ranks in ascending order; the first `interior` of them are
  /// eliminated here.
  struct Node {
    int left = -1, right = -1;  // its halves; none for a single cell
    int cell = -1;              // of a single cell: cell of u * cells of v + cell of v
    int interior = 0;
    std::vector<int> columns;
  };

  /// Throws std::bad_alloc.
  Dissection(const CellAxis& u, const CellAxis& v);

  /// Halves stand before the whole; the last one holds all cells.
  const std::vector<Node>& nodes() const { return nodes_; }
  int root() const { return static_cast<int>(nodes_.size()) - 1; }
  /// The place of an unknown in the order of elimination; unknown (i, j) is i * unknowns of v + j.
  int rank(int unknown) const { return ranks_[static_cast<std::size_t>(unknown)]; }
  int unknownOf(int rank) const { return unknowns_[static_cast<std::size_t>(rank)]; }
  int unknowns() const { return static_cast<int>(unknowns_.size()); }

 private:
  struct Box {
    int begin[2], end[2];  // cells
  };

  int build(const Box& box);
  void collect(const Box& box, Node& node) const;
  void eliminate(const Box& box, Node& node);
  bool isWithin(const Box& box, int direction, int unknown) const;
  void rankColumns();

  CellAxis axes_[2];
  std::vector<Node> nodes_;
  std::vector<int> ranks_, unknowns_;
};

}  // namespace knotwork::detail
