// SPDX-License-Identifier: MIT
// Right-hand sides through the triangles of the Householder solver.
//
// Sides stand next to each other, as the side kernels want them: with the notation of
// householder_system.h, b <- Q'b for the column reflections, R y = b from the last row on, and
// x = H y for the row reflections.
#include <algorithm>
#include <cmath>

#include "kernels/kernels.h"
#include "solvers/householder_system.h"
#include "vector/memory_watch.h"

namespace knotwork::detail {
namespace {

class Solution {
 public:
  Solution(const HouseholderFactors& factors, double* b, double* x, int width)
      : s_(factors), b_{b, width}, x_{x, width} {}

  void run() {
    for (int j = 0; j < s_.freeColumns(); ++j) reflectSides(j);
    for (int q = s_.rows - 1; q >= s_.firstPivotRow(); --q) substitute(q);
    for (int s = s_.rows - s_.constraints; s < s_.rows; ++s) reflectUnknowns(s);
  }

 private:
  // Column reflection j, in the rows that it saw. Least-squares rows are never permuted.
  void reflectSides(int j) {
    const int p = s_.firstPivotRow() + j;
    kernels_.reflect(
        {s_.column(j), 1, s_.firstPivotRow(), p, s_.leastSquaresRows(), s_.beta[p], s_.skip}, b_);
  }

  // Row q of the triangle gives its unknown. A negligible diagonal does not divide.
  void substitute(int q) {
    const int u = q - (s_.rows - s_.cols);
    double sums[SideKernels::kMost];
    kernels_.sumProducts(s_.colPerm + u + 1, s_.cols - u - 1, &s_.f[q] + place(u + 1, s_.rows),
                         s_.rows, x_, sums);
    const double* side = b_.x + place(s_.rowPerm[q], b_.width);
    double* unknown = x_.x + place(s_.colPerm[u], x_.width);
    const bool divides = std::abs(s_.sigma[q]) > s_.skip;
    for (int w = 0; w < x_.width; ++w) {
      const double value = side[w] - sums[w];
      unknown[w] = divides ? value / s_.sigma[q] : value;
    }
  }

  // Row reflection s, which takes the unknowns at their own index.
  void reflectUnknowns(int s) {
    const int end = s_.cols - s_.rows + s + 1;
    kernels_.reflect({&s_.f[s], s_.rows, 0, 0, end, s_.beta[s], s_.skip}, x_);
  }

  static std::ptrdiff_t place(int i, int width) { return std::ptrdiff_t{i} * width; }

  const SideKernels& kernels_ = sideKernels();
  const HouseholderFactors& s_;
  const Sides b_, x_;
};

// to[i * toStep + w] = from[i * fromStep + w] for i < n and w < width; where the source has fewer
// components, its last one is repeated.
void copyBlock(const double* from, int fromStep, int components, double* to, int toStep, int n,
               int width) {
  for (int i = 0; i < n; ++i, from += fromStep, to += toStep) {
    for (int w = 0; w < width; ++w) to[w] = from[std::min(w, components - 1)];
  }
}

}  // namespace

// Points of other dimensions than the kernels take are taken apart into lists that lie together in
// memory. The place of a missing component is filled by one that there is, so that its side moves
// whenever that one does.
bool solveHouseholder(const HouseholderFactors& factors, DoubleVec& b, DoubleVec& x,
                      int dimension) {
  if (factors.rows == 0 || factors.cols == 0) return true;  // x is right, and may have no address
  if (SideKernels::widthFor(dimension) == dimension) {
    Solution(factors, b.data(), x.data(), dimension).run();
    return true;
  }
  const MemoryWatch memory;
  const int most = SideKernels::widthFor(dimension);
  DoubleVec sides(static_cast<unsigned>(factors.rows * most));
  DoubleVec unknowns(static_cast<unsigned>(factors.cols * most));
  if (memory.ranOut()) return false;
  for (int first = 0; first < dimension; first += most) {
    const int left = std::min(dimension - first, most), width = SideKernels::widthFor(left);
    unknowns = 0.0;
    copyBlock(b.data() + first, dimension, left, sides.data(), width, factors.rows, width);
    Solution(factors, sides.data(), unknowns.data(), width).run();
    copyBlock(unknowns.data(), width, left, x.data() + first, dimension, factors.cols, left);
  }
  return true;
}

}  // namespace knotwork::detail
