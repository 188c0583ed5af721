// SPDX-License-Identifier: MIT
// A tree of boxes over the pieces of a shape. Halves hold as many boxes each, so the depth is the
// logarithm of their number, however they lie.
#include "fit/box_tree.h"

#include <algorithm>
#include <numeric>

namespace knotfit {

Box Box::of(const Vec3* points, std::size_t count) {
  Box box{points[0], points[0]};
  for (std::size_t i = 1; i < count; ++i) box.include({points[i], points[i]});
  return box;
}

void Box::include(const Box& other) {
  for (std::size_t c = 0; c < 3; ++c) {
    low[c] = std::min(low[c], other.low[c]);
    high[c] = std::max(high[c], other.high[c]);
  }
}

BoxTree::BoxTree(const std::vector<Box>& boxes) {
  std::vector<std::size_t> order(boxes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  nodes_.reserve(2 * boxes.size());
  build(boxes, order.data(), order.data() + order.size());
}

void BoxTree::build(const std::vector<Box>& boxes, std::size_t* first, std::size_t* last) {
  Box box = boxes[*first];
  for (const std::size_t* i = first + 1; i != last; ++i) box.include(boxes[*i]);
  const std::size_t node = nodes_.size();
  nodes_.push_back({box, 0, node + 1, *first});
  if (last - first == 1) return;
  const Vec3 size = minus(box.high, box.low);
  const auto axis =
      static_cast<std::size_t>(std::max_element(size.begin(), size.end()) - size.begin());
  std::size_t* const middle = first + (last - first) / 2;
  std::nth_element(first, middle, last, [&](std::size_t a, std::size_t b) {
    const double x = boxes[a].low[axis] + boxes[a].high[axis];
    const double y = boxes[b].low[axis] + boxes[b].high[axis];
    return x < y || (x == y && a < b);
  });
  build(boxes, first, middle);
  nodes_[node].second = nodes_.size();
  build(boxes, middle, last);
  nodes_[node].end = nodes_.size();
}

}  // namespace knotfit
