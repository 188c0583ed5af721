// SPDX-License-Identifier: MIT
#include "solvers/dissection.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace knotwork::detail {

Dissection::Dissection(const CellAxis& u, const CellAxis& v) : axes_{u, v} {
  const auto unknowns = static_cast<std::size_t>(u.unknowns) * static_cast<std::size_t>(v.unknowns);
  const auto cells = static_cast<std::size_t>(u.cells()) * static_cast<std::size_t>(v.cells());
  ranks_.resize(unknowns);
  unknowns_.reserve(unknowns);
  nodes_.reserve(2 * cells);
  build({{0, 0}, {u.cells(), v.cells()}});
  rankColumns();
}

int Dissection::build(const Box& box) {
  Node node;
  const int wide = box.end[0] - box.begin[0], high = box.end[1] - box.begin[1];
  if (wide * high > 1) {
    const int across = wide >= high ? 0 : 1;
    Box first = box, second = box;
    first.end[across] = second.begin[across] = (box.begin[across] + box.end[across]) / 2;
    node.left = build(first);
    node.right = build(second);
  } else {
    node.cell = box.begin[0] * axes_[1].cells() + box.begin[1];
  }
  collect(box, node);
  eliminate(box, node);
  nodes_.push_back(std::move(node));
  return static_cast<int>(nodes_.size()) - 1;
}

// The unknowns that a cell sees, or that its halves have left, in ascending order.
void Dissection::collect(const Box& box, Node& node) const {
  if (node.cell >= 0) {
    for (int a = 0; a < axes_[0].order; ++a) {
      for (int b = 0; b < axes_[1].order; ++b) {
        const int i = (box.begin[0] + a) % axes_[0].unknowns;
        const int j = (box.begin[1] + b) % axes_[1].unknowns;
        node.columns.push_back(i * axes_[1].unknowns + j);
      }
    }
    std::sort(node.columns.begin(), node.columns.end());
    return;
  }
  const Node& left = nodes_[static_cast<std::size_t>(node.left)];
  const Node& right = nodes_[static_cast<std::size_t>(node.right)];
  std::set_union(left.columns.begin() + left.interior, left.columns.end(),
                 right.columns.begin() + right.interior, right.columns.end(),
                 std::back_inserter(node.columns));
}

// Whether the box holds all cells that see the unknown, as far as one direction goes.
bool Dissection::isWithin(const Box& box, int direction, int unknown) const {
  const CellAxis& axis = axes_[direction];
  const int begin = box.begin[direction], end = box.end[direction];
  if (end - begin == axis.cells()) return true;
  const int first = unknown - axis.order + 1;
  if (axis.periodic) return first >= begin && unknown < end;
  return std::max(first, 0) >= begin && std::min(unknown, axis.cells() - 1) < end;
}

// The columns that the box holds come first, and get the next ranks.
void Dissection::eliminate(const Box& box, Node& node) {
  const auto rest = std::stable_partition(node.columns.begin(), node.columns.end(), [&](int id) {
    return isWithin(box, 0, id / axes_[1].unknowns) && isWithin(box, 1, id % axes_[1].unknowns);
  });
  node.interior = static_cast<int>(rest - node.columns.begin());
  for (auto id = node.columns.begin(); id != rest; ++id) {
    ranks_[static_cast<std::size_t>(*id)] = static_cast<int>(unknowns_.size());
    unknowns_.push_back(*id);
  }
}

// What goes on from a box is eliminated later, so ascending ranks keep its interior in front.
void Dissection::rankColumns() {
  for (Node& node : nodes_) {
    for (int& column : node.columns) column = rank(column);
    std::sort(node.columns.begin(), node.columns.end());
  }
}

}  // namespace knotwork::detail
