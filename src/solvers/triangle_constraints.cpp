// SPDX-License-Identifier: MIT
// The system of the header, by two decompositions with pivoting: one of [-T' E]', whose rank tells
// which equations add nothing to those before, and whose Q has the free directions as its last
// columns; one of diag(I, R22) along these, whose rank tells what stays undetermined. Columns and
// equations are first brought to order 1 by powers of 2, which change no digit, so that a rank may
// be told by comparison with the first pivot.
//
// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 20.
#include "solvers/triangle_constraints.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "kernels/square_root.h"

namespace knotwork::detail {
namespace {

// The vectors and matrices of the library are empty where memory ran out.
void require(const DoubleVec& v, unsigned length) {
  if (v.length() != length) throw std::bad_alloc();
}
void require(const DoubleGenMat& m, unsigned rows, unsigned cols) {
  if (m.rows() != rows || m.cols() != cols) throw std::bad_alloc();
}

DoubleGenMat zeroMatrix(int rows, int cols) {
  DoubleGenMat m(static_cast<unsigned>(rows), static_cast<unsigned>(cols), 0.0);
  require(m, static_cast<unsigned>(rows), static_cast<unsigned>(cols));
  return m;
}

DoubleVec zeroVector(int length) {
  DoubleVec v(static_cast<unsigned>(length), 0.0);
  require(v, static_cast<unsigned>(length));
  return v;
}

void factorInto(DoubleQRDecomp& qr, const DoubleGenMat& m, bool pivoting) {
  qr.doPivoting(pivoting);
  qr.factor(m);
  if (qr.rows() != m.rows() || qr.cols() != m.cols()) throw std::bad_alloc();
}

DoubleVec times(const DoubleQRDecomp& qr, const DoubleVec& y) {
  DoubleVec result = qr.computeQy(y, -1);
  require(result, y.length());
  return result;
}

// Leading diagonal elements of R above a share of the first one.
int numericalRank(const DoubleQRDecomp& qr, double tolerance) {
  const DoubleGenMat& r = qr.factors();
  const int most = static_cast<int>(std::min(r.rows(), r.cols()));
  int rank = 0;
  while (rank < most && std::abs(r(rank, rank)) > tolerance * std::abs(r(0, 0))) ++rank;
  return rank;
}

// The power of 2 that brings `length` to between 1/2 and 1; 1 for 0.
double scaleOf(double length) {
  if (!(length > 0) || !std::isfinite(length)) return 1;
  int exponent;
  std::frexp(length, &exponent);
  return std::ldexp(1.0, std::clamp(-exponent, -1000, 1000));
}

}  // namespace

TriangleConstraints::TriangleConstraints(const Triangle& triangle, const ColumnRoles& roles,
                                         const std::vector<ConstraintRow>& rows, double tolerance)
    : triangle_(triangle),
      roles_(roles),
      rows_(rows),
      tolerance_(tolerance),
      count_(static_cast<int>(rows.size())),
      border_(triangle.border()) {
  projectOnBand();
  factorConstraints();
  factorRest();
}

// Z = R11^-T C1' and E = C2 - Z'R12.
void TriangleConstraints::projectOnBand() {
  z_.reference(zeroMatrix(triangle_.columns(), count_));
  e_.reference(zeroMatrix(count_, border_));
  for (int k = 0; k < count_; ++k) {
    const ConstraintRow& row = rows_[static_cast<std::size_t>(k)];
    for (std::size_t t = 0; t < row.columns.size(); ++t) {
      const int column = row.columns[t], b = roles_.borderIndex(column);
      if (b >= 0) {
        e_(k, b) += row.values[t];
      } else {
        z_(column, k) += row.values[t];
      }
    }
  }
  if (count_ > 0) triangle_.solveTransposed(count_, z_.data());
  for (int k = 0; k < count_; ++k) {
    for (int j = 0; j < triangle_.columns(); ++j) {
      if (z_(j, k) == 0) continue;
      const double* const across = triangle_.borderPart(j);
      for (int b = 0; b < border_; ++b) e_(k, b) -= z_(j, k) * across[b];
    }
  }
  for (int b = 0; b < border_; ++b) {
    double squares = 0;
    for (int i = 0; i <= b; ++i) {
      squares += triangle_.borderElement(i, b) * triangle_.borderElement(i, b);
    }
    borderScale_.push_back(scaleOf(squareRoot(squares)));
  }
}

// Q R = [-T' E]' with pivoting: the equations in the order of what each adds to those before it.
void TriangleConstraints::factorConstraints() {
  factorInto(q_, z_, false);
  DoubleGenMat g = zeroMatrix(count_ + border_, count_);
  for (int k = 0; k < count_; ++k) {
    double squares = 0;
    for (int i = 0; i < count_ + border_; ++i) {
      if (i >= count_) {
        const int b = i - count_;
        g(i, k) = e_(k, b) * borderScale_[static_cast<std::size_t>(b)];
      } else if (i <= k && i < static_cast<int>(z_.rows())) {
        g(i, k) = -q_.factors()(i, k);
      }
      squares += g(i, k) * g(i, k);
    }
    equationScale_.push_back(scaleOf(squareRoot(squares)));
    for (int i = 0; i < count_ + border_; ++i) g(i, k) *= equationScale_.back();
  }
  factorInto(equations_, g, true);
  rank_ = numericalRank(equations_, std::max(tolerance_, 1e-12));
}

// The directions that the constraints leave free, and diag(I, R22) along them.
void TriangleConstraints::factorRest() {
  const int size = count_ + border_, free = size - rank_;
  nullSpace_.reference(zeroMatrix(size, free));
  DoubleGenMat rest = zeroMatrix(size, free);
  const std::vector<double> none(static_cast<std::size_t>(border_));
  for (int j = 0; j < free; ++j) {
    DoubleVec unit = zeroVector(size);
    unit(rank_ + j) = 1;
    const DoubleVec direction = times(equations_, unit);
    const DoubleVec image = residualOfRest(direction, none);
    for (int i = 0; i < size; ++i) {
      nullSpace_(i, j) = direction(i);
      rest(i, j) = -image(i);
    }
  }
  factorInto(rest_, rest, true);
  for (int j = numericalRank(rest_, tolerance_); j < free; ++j) nameUndetermined(j);
}

// The direction that column `free` of the pivoted rest adds nothing to: its largest border unknown
// stands for it.
void TriangleConstraints::nameUndetermined(int free) {
  const DoubleGenMat& r = rest_.factors();
  const int rank = numericalRank(rest_, tolerance_);
  DoubleVec direction = zeroVector(static_cast<int>(nullSpace_.cols()));
  direction(free) = 1;
  for (int i = rank - 1; i >= 0; --i) {
    double sum = -r(i, free);
    for (int j = i + 1; j < rank; ++j) sum -= r(i, j) * direction(j);
    direction(i) = sum / r(i, i);
  }
  const DoubleVec along = rest_.unpermute(direction);
  int most = 0;
  double largest = -1;
  for (int b = 0; b < border_; ++b) {
    double sum = 0;
    for (int j = 0; j < static_cast<int>(along.length()); ++j) {
      sum += nullSpace_(count_ + b, j) * along(j);
    }
    if (std::abs(sum) > largest) {
      largest = std::abs(sum);
      most = b;
    }
  }
  if (border_ > 0) {
    undetermined_.push_back(roles_.borderColumns()[static_cast<std::size_t>(most)]);
  }
}

// (0, c2) - diag(I, R22) y, the border's part of y in scaled unknowns.
DoubleVec TriangleConstraints::residualOfRest(const DoubleVec& y,
                                              const std::vector<double>& c2) const {
  DoubleVec result = zeroVector(count_ + border_);
  for (int i = 0; i < count_; ++i) result(i) = -y(i);
  for (int i = 0; i < border_; ++i) {
    double sum = c2[static_cast<std::size_t>(i)];
    for (int b = i; b < border_; ++b) {
      sum -=
          triangle_.borderElement(i, b) * borderScale_[static_cast<std::size_t>(b)] * y(count_ + b);
    }
    result(count_ + i) = sum;
  }
  return result;
}

// The shortest y with -T's + E x2 = g.
DoubleVec TriangleConstraints::meetConstraints(const DoubleVec& g,
                                               std::vector<int>* conflicting) const {
  const DoubleGenMat& r = equations_.factors();
  const IntVec pivots = equations_.pivots();
  DoubleVec y = zeroVector(count_ + border_);
  for (int i = 0; i < count_; ++i) {
    const int k = pivots(i);
    const double side = g(k) * equationScale_[static_cast<std::size_t>(k)];
    double sum = side, size = std::abs(side);
    for (int l = 0; l < std::min(i, rank_); ++l) {
      sum -= r(l, i) * y(l);
      size = std::max(size, std::abs(r(l, i) * y(l)));
    }
    if (i < rank_) {
      y(i) = sum / r(i, i);
    } else if (!(std::abs(sum) <= 1e-9 * size)) {
      conflicting->push_back(k);
    }
  }
  return times(equations_, y);
}

TriangleConstraints::Solution TriangleConstraints::solve(int component,
                                                         const std::vector<double>& d) const {
  std::vector<double> c1, c2;
  for (int j = 0; j < triangle_.columns(); ++j) c1.push_back(triangle_.rhs(j)[component]);
  for (int b = 0; b < border_; ++b) c2.push_back(triangle_.borderRhs(b)[component]);
  return solve(c1, c2, d);
}

TriangleConstraints::Solution TriangleConstraints::correct(const std::vector<double>& d) const {
  return solve(std::vector<double>(static_cast<std::size_t>(triangle_.columns())),
               std::vector<double>(static_cast<std::size_t>(border_)), d);
}

TriangleConstraints::Solution TriangleConstraints::solve(const std::vector<double>& c1,
                                                         const std::vector<double>& c2,
                                                         const std::vector<double>& d) const {
  Solution solution;
  const int columns = triangle_.columns();
  DoubleVec g = zeroVector(count_);
  for (int k = 0; k < count_; ++k) {
    double sum = d[static_cast<std::size_t>(k)];
    for (int j = 0; j < columns; ++j) sum -= z_(j, k) * c1[static_cast<std::size_t>(j)];
    g(k) = sum;
  }
  DoubleVec y = meetConstraints(g, &solution.conflicting);
  DoubleVec missed = residualOfRest(y, c2);
  if (rest_.cols() > 0) {
    DoubleVec steps = rest_.partialSolve(missed, -1);
    require(steps, rest_.cols());
    steps.reference(rest_.unpermute(steps));
    for (int i = 0; i < static_cast<int>(y.length()); ++i) {
      for (int j = 0; j < static_cast<int>(steps.length()); ++j) {
        y(i) += nullSpace_(i, j) * steps(j);
      }
    }
    missed.reference(residualOfRest(y, c2));
  }
  for (int i = 0; i < static_cast<int>(missed.length()); ++i) {
    solution.squares += missed(i) * missed(i);
  }

  DoubleVec v = zeroVector(columns);
  for (int k = 0; k < std::min(count_, columns); ++k) v(k) = y(k);
  if (count_ > 0) v.reference(times(q_, v));
  solution.x.resize(static_cast<std::size_t>(columns));
  for (int j = 0; j < columns; ++j) {
    double sum = c1[static_cast<std::size_t>(j)] - v(j);
    const double* const across = triangle_.borderPart(j);
    for (int b = 0; b < border_; ++b) {
      sum -= across[b] * borderScale_[static_cast<std::size_t>(b)] * y(count_ + b);
    }
    solution.x[static_cast<std::size_t>(j)] = sum;
  }
  triangle_.solve(1, solution.x.data());
  for (int b = 0; b < border_; ++b) {
    const auto column =
        static_cast<std::size_t>(roles_.borderColumns()[static_cast<std::size_t>(b)]);
    solution.x[column] = borderScale_[static_cast<std::size_t>(b)] * y(count_ + b);
  }
  return solution;
}

}  // namespace knotwork::detail
