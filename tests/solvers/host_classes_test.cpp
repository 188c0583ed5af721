// SPDX-License-Identifier: MIT
// Classes that a host derives from the solvers and redefines in part.
#include <gtest/gtest.h>

#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/solve_constrained_lsq_qr.h"
#include "knotwork/solvers/solve_tensor_product_lsq.h"
#include "solvers/open_solver.h"
#include "solvers/systems.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

// Normalises always or never, whatever it is asked for.
template <class Base>
struct Fixed : Base {
  template <class... Arguments>
  explicit Fixed(bool mode, Arguments... arguments) : Base(arguments...), mode_(mode) {}

  void preSetMatrix(const IntVec& columns, double cutoff, bool, bool cleanZeros) override {
    Base::preSetMatrix(columns, cutoff, mode_, cleanZeros);
  }
  bool factor() override {
    ++factored;
    return Base::factor();
  }

  bool mode_;
  int factored = 0;
};

template <class Solver, class... Arguments>
void expectNormalisationOfItsOwn(Arguments... arguments) {
  Random random(60);
  const DoubleGenMat a = random.matrix(9, 4);
  const DoubleVec rhs = random.vector(9);
  for (const int flags : {0, 1, 2, 3}) {
    const bool mode = flags & 1, asked = flags & 2;
    Fixed<Solver> solver(mode, arguments...);
    Solver plain(arguments...);
    EXPECT_EQ(solver.setMatrix(a, 2, asked, true, false), 0);
    EXPECT_EQ(plain.setMatrix(a, 2, mode, true, false), 0);
    EXPECT_TRUE(solver.isNormalised() == mode && solver.factored == 1);
    EXPECT_TRUE(solver.solve(rhs) == plain.solve(rhs));
  }
}

TEST(HostClasses, MayNormaliseAlwaysOrNever) {
  expectNormalisationOfItsOwn<Thouseholder>(1e-12, 0, false);
  expectNormalisationOfItsOwn<TsolveConstrainedLsqQR>(1e-12, false);
}

// Redefines the solution for single right-hand sides alone: twice the solution, and after so many
// of them a code.
struct Doubling : Thouseholder {
  Doubling() : Thouseholder(1e-13, 0, false) {}
  int solveInPlace(DoubleVec& rhs, DoubleVec* x) const override {
    if (granted == 0) return 77;
    --granted;
    sides.push_back(valuesOf(rhs));
    const int code = Thouseholder::solveInPlace(rhs, x);
    *x *= 2;
    return code;
  }
  int solveInPlace(TtupleVector&, TtupleVector*) const override {
    ADD_FAILURE() << "asked for points";
    return 78;
  }
  mutable int granted = -1;
  mutable std::vector<Values> sides;
};

class HostGrids : public testing::Test {
 protected:
  Random random_{61};
  const DoubleGenMat u_ = random_.matrix(6, 3), v_ = random_.matrix(5, 2),
                     b_ = random_.matrix(6, 5);
  Thouseholder plainU_{1e-13, 0, false}, plainV_{1e-13, 0, false};
  Doubling hostU_, hostV_;
  TsolveTensorProductLsq plain_{plainU_, plainV_}, grid_{hostU_, hostV_};
  DoubleGenMat expected_{3, 2}, x_{3, 2, 7.0};

  void SetUp() override {
    ASSERT_EQ(plain_.setMatrix(u_, v_, 1, 0, 0, 0, 0, 0, 0, 0), 0);
    ASSERT_EQ(plain_.solve(b_, &expected_), 0);
    ASSERT_EQ(grid_.setMatrix(u_, v_, 1, 0, 0, 0, 0, 0, 0, 0), 0);
  }
};

TEST_F(HostGrids, AreAskedForEveryRowAndThenEveryColumn) {
  ASSERT_EQ(grid_.solve(b_, &x_), 0);
  EXPECT_TRUE(x_ == expected_ * 4.0);
  ASSERT_EQ(hostV_.sides.size(), 6u);
  ASSERT_EQ(hostU_.sides.size(), 2u);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(hostV_.sides[std::size_t(i)], valuesOf(b_.row(i)));
  // One direction of the host, the other of the library.
  TsolveTensorProductLsq mixed(plainU_, hostV_);
  ASSERT_EQ(mixed.solve(b_, &x_), 0);
  EXPECT_TRUE(x_ == expected_ * 2.0);
}

TEST_F(HostGrids, StopAtTheirFirstFailure) {
  hostV_.granted = 4;
  EXPECT_EQ(grid_.solve(b_, &x_), 77);
  EXPECT_TRUE(hostU_.sides.empty());
  EXPECT_EQ(valuesOf(x_.dataVec()), Values(6, 7.0));
  hostV_.granted = -1;
  hostU_.granted = 1;  // the first column is stored
  EXPECT_EQ(grid_.solve(b_, &x_), 77);
  EXPECT_EQ(valuesOf(x_.col(0)), valuesOf(expected_.col(0) * 4.0));
  EXPECT_EQ(valuesOf(x_.col(1)), Values(3, 7.0));
  IntGenMat mask(3, 2, 0);
  for (const int fixed : {0, 1}) {
    mask(1, 0) = fixed;
    x_ = 7.0;
    for (const auto& [ofU, ofV] : {std::pair(1, -1), {-1, 5}}) {
      hostU_.granted = ofU;
      hostV_.granted = ofV;
      EXPECT_EQ(grid_.solveFixed(u_, v_, mask, b_, &x_), 77);
      EXPECT_EQ(valuesOf(x_.dataVec()), Values(6, 7.0));
    }
    hostV_.granted = -1;
    hostV_.sides.clear();
    EXPECT_EQ(grid_.solveFixed(u_, v_, mask, b_, &x_), 0);
    EXPECT_EQ(hostV_.sides.size(), 6u);
  }
}

TEST(HostClasses, ThatDoNotFactorHaveNoSolution) {
  struct Claiming : Thouseholder {
    Claiming() : Thouseholder(1e-13, 0, false) {}
    bool factor() override {
      dependent_ = false;
      return true;
    }
  } solver;
  ASSERT_EQ(solver.setMatrix(DoubleGenMat(6, 3, 1.0), 0, false, false, false), 0);
  DoubleVec x(3, 7.0);
  EXPECT_EQ(solver.solve(DoubleVec(6, 1.0), &x, false), 5);
  EXPECT_EQ(valuesOf(x), Values(3, 7.0));
}

TEST(HostClasses, ThatMakeAResultOfAnotherSizeGetACode) {
  struct Growing : Thouseholder {
    Growing() : Thouseholder(1e-13, 0, false) {}
    int solveInPlace(DoubleVec&, DoubleVec* x) const override {
      x->reference(DoubleVec(50, 1.0));
      return 0;
    }
  } solver;
  Random random(63);
  ASSERT_EQ(solver.setMatrix(random.matrix(6, 3), 0, false, false, false), 0);
  DoubleVec x(3, 7.0);
  EXPECT_EQ(solver.solve(DoubleVec(6, 1.0), &x, false), 4);
  EXPECT_EQ(valuesOf(x), Values(3, 7.0));
}

}  // namespace
}  // namespace knotwork::test
