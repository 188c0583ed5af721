// SPDX-License-Identifier: MIT
// Right-hand sides through the triangles of the Householder solver.
//
// Sides stand next to each other, so that an element of the factor is read once for all of them;
// each keeps sums of its own, in index order.
#include <algorithm>
#include <cmath>

#include "solvers/householder_system.h"
#include "vector/memory_watch.h"

namespace knotwork::detail {
namespace {

template <int Width>
class Solution {
 public:
  Solution(const HouseholderFactors& factors, double* b, double* x) : s_(factors), b_(b), x_(x) {}

  void run() {
    for (int j = 0; j < s_.freeColumns(); ++j) reflectSides(j);
    for (int q = s_.rows - 1; q >= s_.firstPivotRow(); --q) substitute(q);
    for (int s = s_.rows - s_.constraints; s < s_.rows; ++s) reflectUnknowns(s);
  }

 private:
  void reflectSides(int j);
  void substitute(int q);
  void reflectUnknowns(int s);

  // Sides move as one where they all do; a sum of at most the threshold leaves its side alone.
  template <class Visit>
  void addMultiples(double* to, const double* sums, double beta, Visit eachPlace) const {
    bool moves[Width];
    double factors[Width];
    for (int w = 0; w < Width; ++w) {
      moves[w] = std::abs(sums[w]) > s_.skip;
      factors[w] = sums[w] * beta;
    }
    if (std::all_of(moves, moves + Width, [](bool m) { return m; })) {
      eachPlace([&](std::ptrdiff_t i, double v) {
        for (int w = 0; w < Width; ++w) to[i * Width + w] += factors[w] * v;
      });
      return;
    }
    for (int w = 0; w < Width; ++w) {
      if (!moves[w]) continue;
      eachPlace([&](std::ptrdiff_t i, double v) { to[i * Width + w] += factors[w] * v; });
    }
  }

  template <class Visit>
  void sumProducts(const double* from, double* sums, Visit eachPlace) const {
    double total[Width] = {};
    eachPlace([&](std::ptrdiff_t i, double v) {
      for (int w = 0; w < Width; ++w) total[w] += from[i * Width + w] * v;
    });
    std::copy(total, total + Width, sums);
  }

  const HouseholderFactors& s_;
  double *b_, *x_;
};

// Column reflection j, in the rows that it saw. Least-squares rows are never permuted.
template <int Width>
void Solution<Width>::reflectSides(int j) {
  const int p = s_.firstPivotRow() + j;
  const double* v = s_.column(j);
  const auto eachPlace = [&](auto visit) {
    for (int i = 0; i < s_.firstPivotRow(); ++i) visit(i, v[i]);
    for (int i = p; i < s_.leastSquaresRows(); ++i) visit(i, v[i]);
  };
  double sums[Width];
  sumProducts(b_, sums, eachPlace);
  addMultiples(b_, sums, s_.beta[p], eachPlace);
}

// Row q of the triangle gives its unknown. A negligible diagonal does not divide.
template <int Width>
void Solution<Width>::substitute(int q) {
  const int u = q - (s_.rows - s_.cols);
  double sums[Width] = {};
  const int known = s_.cols - u - 1;
  for (int k = 1; k <= known; ++k) {
    const double v = s_.at(q, u + k);
    const double* x = x_ + std::ptrdiff_t{s_.colPerm[u + k]} * Width;
    for (int w = 0; w < Width; ++w) sums[w] += x[w] * v;
  }
  const double* side = b_ + std::ptrdiff_t{s_.rowPerm[q]} * Width;
  double* unknown = x_ + std::ptrdiff_t{s_.colPerm[u]} * Width;
  const bool divides = std::abs(s_.sigma[q]) > s_.skip;
  for (int w = 0; w < Width; ++w) {
    const double value = side[w] - sums[w];
    unknown[w] = divides ? value / s_.sigma[q] : value;
  }
}

// Row reflection s, which takes the unknowns at their own index.
template <int Width>
void Solution<Width>::reflectUnknowns(int s) {
  const auto eachPlace = [&](auto visit) {
    for (int j = 0; j <= s_.cols - s_.rows + s; ++j) visit(j, s_.at(s, j));
  };
  double sums[Width];
  sumProducts(x_, sums, eachPlace);
  addMultiples(x_, sums, s_.beta[s], eachPlace);
}

// As many components as go together.
constexpr int kFewSides = 4;
constexpr int kManySides = 8;

// `width` components, up to kFewSides or just kManySides: entry i of side w is b[i * width + w].
void solveTogether(const HouseholderFactors& factors, double* b, double* x, int width) {
  switch (width) {
    case 1:
      return Solution<1>(factors, b, x).run();
    case 2:
      return Solution<2>(factors, b, x).run();
    case 3:
      return Solution<3>(factors, b, x).run();
    case kFewSides:
      return Solution<kFewSides>(factors, b, x).run();
    case kManySides:
      return Solution<kManySides>(factors, b, x).run();
    default:
      return;
  }
}

// to[i * toStep + w] = from[i * fromStep + w] for i < n and w < width
void copyBlock(const double* from, int fromStep, double* to, int toStep, int n, int width) {
  for (int i = 0; i < n; ++i, from += fromStep, to += toStep) std::copy_n(from, width, to);
}

}  // namespace

// Points of many components are taken apart into lists of fewer, which lie together in memory.
bool solveHouseholder(const HouseholderFactors& factors, DoubleVec& b, DoubleVec& x,
                      int dimension) {
  if (factors.rows == 0 || factors.cols == 0) return true;  // x is right, and may have no address
  if (dimension <= kFewSides) {
    solveTogether(factors, b.data(), x.data(), dimension);
    return true;
  }
  const MemoryWatch memory;
  DoubleVec sides(static_cast<unsigned>(factors.rows * kManySides));
  DoubleVec unknowns(static_cast<unsigned>(factors.cols * kManySides));
  if (memory.ranOut()) return false;
  for (int first = 0; first < dimension; first += kManySides) {
    const int left = dimension - first;
    const int width = left <= kFewSides ? left : kManySides;
    const int filled = std::min(left, width);
    sides = 0.0;
    unknowns = 0.0;
    copyBlock(b.data() + first, dimension, sides.data(), width, factors.rows, filled);
    solveTogether(factors, sides.data(), unknowns.data(), width);
    copyBlock(unknowns.data(), width, x.data() + first, dimension, factors.cols, filled);
  }
  return true;
}

}  // namespace knotwork::detail
