// SPDX-License-Identifier: MIT
// The system of a fit against slow models, on random data of fixed seeds.
#include "fit/system.h"

#include <gtest/gtest.h>

#include "base/fault.h"
#include "fit/parameters.h"
#include "fit/solver.h"
#include "model/spline.h"
#include "points.h"

namespace knotfit::test {
namespace {

// Whether every control point can have a datum of its own within its function's support: by search
// for augmenting paths.
class Matching {
 public:
  Matching(const std::vector<double>& t, std::size_t order, const std::vector<double>& u)
      : t_(t), order_(order), u_(u), owner_(u.size(), -1) {}
  bool perfect() {
    for (std::size_t j = 0; j + order_ < t_.size(); ++j) {
      seen_.assign(u_.size(), false);
      if (!place(static_cast<int>(j))) return false;
    }
    return true;
  }

 private:
  bool reaches(std::size_t j, double x) const {
    const bool within = x > t_[j] && x < t_[j + order_];
    return within || (j == 0 && x == t_[0]) || (j + order_ + 1 == t_.size() && x == t_.back());
  }
  bool place(int j) {
    for (std::size_t i = 0; i < u_.size(); ++i) {
      if (seen_[i] || !reaches(static_cast<std::size_t>(j), u_[i])) continue;
      seen_[i] = true;
      if (owner_[i] < 0 || place(owner_[i])) {
        owner_[i] = j;
        return true;
      }
    }
    return false;
  }
  const std::vector<double>& t_;
  std::size_t order_;
  const std::vector<double>& u_;
  std::vector<int> owner_;
  std::vector<bool> seen_;
};

TEST(System, DeterminedMeansThatEveryControlPointHasADatumOfItsOwn) {
  std::mt19937 random(8);
  int determined = 0;
  for (int trial = 0; trial < 500; ++trial) {
    const int degree = 1 + trial % 4;
    const std::size_t order = static_cast<std::size_t>(degree) + 1;
    const std::vector<double> u = ascending(random, 8 + random() % 12);
    std::vector<double> t(order, 0.0), inner = ascending(random, 2 + random() % 7);
    for (std::size_t k = 1; k + 1 < inner.size(); ++k) {
      t.push_back(random() % 3 ? inner[k] : u[1 + random() % (u.size() - 2)]);
    }
    std::sort(t.begin() + static_cast<std::ptrdiff_t>(order), t.end());
    t.insert(t.end(), order, 1.0);
    if (!knotFault(t, degree, t.size() - order).empty()) continue;  // no curve breaks apart
    const bool expected = Matching(t, order, u).perfect();
    EXPECT_EQ(isDetermined(t, degree, u), expected);
    determined += expected;
    if (expected) {
      EXPECT_NO_THROW(checkDetermined(t, degree, u));
    } else {
      EXPECT_THROW(checkDetermined(t, degree, u), Fault);
    }
  }
  EXPECT_GT(determined, 50);
  EXPECT_LT(determined, 450);
}

TEST(System, BothSolversFindTheSameMinimum) {
  std::mt19937 random(21);
  std::uniform_real_distribution<double> place(-1, 1);
  for (int trial = 0; trial < 20; ++trial) {
    const std::vector<double> u = ascending(random, 60);
    const std::vector<double> t = averagedKnots(u, 3, 12);
    const knotwork::BsplineBasis basis = basisOf(t, 3);
    RowMatrix matrix;
    matrix.unknowns = 12;
    std::vector<double> rhs;
    for (const double at : u) {
      rhs.insert(rhs.end(), {1e-7 * place(random), 1e9 * place(random)});  // sizes apart
      matrix.add(SparseRow(basis, at));
    }
    std::vector<double> x[2];
    for (const Method method : {Method::kHouseholder, Method::kQr}) {
      SolverOptions options;
      options.method = method;
      x[method == Method::kQr] = FactoredSystem(matrix, options).solve(rhs, 2);
    }
    const std::vector<double> r = matrix.residual(rhs, x[0], 2);
    for (std::size_t k = 0; k < x[0].size(); ++k) {
      const double size = k % 2 ? 1e9 : 1e-7;
      EXPECT_NEAR(x[0][k], x[1][k], 1e-10 * size) << k;
      double slope = 0;  // of half the sum of squares
      for (std::size_t i = 0; i < matrix.rows.size(); ++i) {
        const SparseRow& row = matrix.rows[i];
        for (std::size_t e = 0; e < row.columns.size(); ++e) {
          if (row.columns[e] == k / 2) slope += row.values[e] * r[2 * i + k % 2];
        }
      }
      EXPECT_NEAR(slope, 0, 1e-10 * size);
    }
  }
}

TEST(System, SpectrumTellsTheRank) {
  RowMatrix matrix;
  matrix.unknowns = 3;
  SparseRow row;
  row.columns = {0, 1, 2};
  for (const std::vector<double>& values :
       std::vector<std::vector<double>>{{1, 1, 2}, {0, 2, 2}, {3, 0, 3}, {1, 0, 1}}) {
    row.values = values;
    matrix.add(row);
  }
  EXPECT_EQ(spectrumOf(matrix)->rank, 2u);  // the third column is the sum of the others
  EXPECT_GT(spectrumOf(matrix)->condition, 1e15);
  row.values = {0, 0, 4};
  matrix.add(row);
  EXPECT_EQ(spectrumOf(matrix)->rank, 3u);
  EXPECT_LT(spectrumOf(matrix)->condition, 10);
}

TEST(System, SizesAreRefusedBeforeTheyFill) {
  EXPECT_NO_THROW(checkSize(65535, 10, Method::kHouseholder, {}));
  EXPECT_THROW(checkSize(65536, 10, Method::kHouseholder, {}), Fault);
  EXPECT_NO_THROW(checkSize(65536, 10, Method::kQr, {}));
  EXPECT_NO_THROW(checkSize(1000, 1000, Method::kQr, 24e6 / 0.9 + 1));  // 24 bytes an entry
  EXPECT_THROW(checkSize(1000, 1000, Method::kQr, 24e6), Fault);
  EXPECT_THROW(checkSize(10, 10, Method::kQr, 0.0), Fault);
  EXPECT_THROW(checkSize(70000, 70000, Method::kQr, {}), Fault);
}

}  // namespace
}  // namespace knotfit::test
