// SPDX-License-Identifier: MIT
// A tree of boxes over the pieces of a shape, for nearest points.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "model/vec3.h"

namespace knotfit {

/// An axis-parallel box.
struct Box {
  Vec3 low, high;

  /// @return the box of control points, which holds their piece.
  static Box of(const Vec3* points, std::size_t count);
  void include(const Box& other);
  Vec3 centre() const { return between(low, high, 0.5); }
  /// @return the square of the distance from another box, 0 where they meet.
  double squaredFrom(const Box& other) const {
    double sum = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      const double out = std::max({low[c] - other.high[c], other.low[c] - high[c], 0.0});
      sum += out * out;
    }
    return sum;
  }
  /// @return the square of the distance from a point, 0 within the box.
  double squaredFrom(const Vec3& p) const {
    double sum = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      const double out = std::max({low[c] - p[c], p[c] - high[c], 0.0});
      sum += out * out;
    }
    return sum;
  }
};

/// Boxes in a binary tree, each inner box halved along its longest side.
class BoxTree {
 public:
  explicit BoxTree(const std::vector<Box>& boxes);

  /// Calls visit(index) for the boxes nearer to the point than the root of squared(), the nearer
  /// half of a box first; `squared` may shrink with every visit.
  template <class Squared, class Visit>
  void visitNear(const Vec3& p, Squared squared, Visit visit) const {
    constexpr std::size_t kMostDepth = 128;
    struct Waiting {
      std::size_t node;
      double squared;
    };
    std::array<Waiting, kMostDepth> stack;
    std::size_t waiting = 0;
    stack[waiting++] = {0, nodes_[0].box.squaredFrom(p)};
    while (waiting > 0) {
      const Waiting next = stack[--waiting];
      if (next.squared >= squared()) continue;
      const Node& node = nodes_[next.node];
      if (node.second == 0) {
        visit(node.index);
        continue;
      }
      Waiting near{next.node + 1, nodes_[next.node + 1].box.squaredFrom(p)};
      Waiting far{node.second, nodes_[node.second].box.squaredFrom(p)};
      if (far.squared < near.squared) std::swap(near, far);
      stack[waiting++] = far;
      stack[waiting++] = near;
    }
  }

  /// Appends the indices of the boxes nearer to another one than the root of `squared`.
  void findNear(const Box& other, double squared, std::vector<std::size_t>& found) const {
    for (std::size_t n = 0; n < nodes_.size();) {
      const Node& node = nodes_[n];
      const bool isNear = node.box.squaredFrom(other) < squared;
      if (isNear && node.second == 0) found.push_back(node.index);
      n = isNear ? n + 1 : node.end;
    }
  }

 private:
  // The first half of an inner node follows it.
  struct Node {
    Box box;
    std::size_t second;  // node of the second half, 0 for a leaf
    std::size_t end;     // node behind all of its parts
    std::size_t index;   // of a leaf's box
  };
  void build(const std::vector<Box>& boxes, std::size_t* first, std::size_t* last);

  std::vector<Node> nodes_;
};

}  // namespace knotfit
