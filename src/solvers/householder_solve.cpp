// SPDX-License-Identifier: MIT
// Right-hand sides through the triangles of the Householder solver.
//
// Sides stand next to each other, so that an element of the factor is read once for all of them;
// each keeps sums of its own, in index order.
#include <algorithm>
#include <cmath>

#include "solvers/householder_system.h"

namespace knotwork::detail {
namespace {

// Sides solved together; more of them go in groups, the registers hold no more sums.
constexpr int kGroup = 4;

template <int Width>
class Solution {
 public:
  // Sides b[i * stride + w] and unknowns x[i * stride + w] for w < Width.
  Solution(const HouseholderSystem& system, double* b, double* x, int stride)
      : s_(system), b_(b), x_(x), stride_(stride) {}

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
        for (int w = 0; w < Width; ++w) to[i * stride_ + w] += factors[w] * v;
      });
      return;
    }
    for (int w = 0; w < Width; ++w) {
      if (!moves[w]) continue;
      eachPlace([&](std::ptrdiff_t i, double v) { to[i * stride_ + w] += factors[w] * v; });
    }
  }

  template <class Visit>
  void sumProducts(const double* from, double* sums, Visit eachPlace) const {
    double total[Width] = {};
    eachPlace([&](std::ptrdiff_t i, double v) {
      for (int w = 0; w < Width; ++w) total[w] += from[i * stride_ + w] * v;
    });
    std::copy(total, total + Width, sums);
  }

  const HouseholderSystem& s_;
  double *b_, *x_;
  std::ptrdiff_t stride_;
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
    const double* x = x_ + s_.colPerm[u + k] * stride_;
    for (int w = 0; w < Width; ++w) sums[w] += x[w] * v;
  }
  const double* side = b_ + s_.rowPerm[q] * stride_;
  double* unknown = x_ + s_.colPerm[u] * stride_;
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

template <int Width>
void solveGroup(const HouseholderSystem& system, double* b, double* x, int stride) {
  Solution<Width>(system, b, x, stride).run();
}

}  // namespace

void solveHouseholder(const HouseholderSystem& system, double* b, double* x, int width) {
  int side = 0;
  for (; width - side > kGroup; side += kGroup)
    solveGroup<kGroup>(system, b + side, x + side, width);
  switch (width - side) {
    case 1:
      return solveGroup<1>(system, b + side, x + side, width);
    case 2:
      return solveGroup<2>(system, b + side, x + side, width);
    case 3:
      return solveGroup<3>(system, b + side, x + side, width);
    case 4:
      return solveGroup<4>(system, b + side, x + side, width);
    default:
      return;
  }
}

}  // namespace knotwork::detail
