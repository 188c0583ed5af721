// SPDX-License-Identifier: MIT
// The solvers against golden cases.
#include "support/golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <type_traits>

#include "knotwork/decomp/double_sv_decomp.h"
#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/solve_constrained_lsq_qr.h"
#include "knotwork/solvers/solve_tensor_product_lsq.h"
#include "solvers/open_solver.h"
#include "support/values.h"

namespace knotwork::test {
namespace {

using Item = GoldenItem;
using Step = GoldenStep;

// ---- Between items and the library's classes ----------------------------------------------------

DoubleVec vectorIn(const Item& item) { return vectorOf(item.values); }

IntVec indicesIn(const Item& item) { return indices(item.ints()); }

DoubleGenMat matrixIn(const Item& item) {
  return DoubleGenMat(item.values.data(), unsigned(item.rows), unsigned(item.cols));
}

TtupleVector pointsIn(const Item& item) {
  return TtupleVector(item.rows, item.cols, item.values.data());
}

bool flag(const Step& step, const char* name) { return step.in(name).toInt() != 0; }

int compared = 0;

// The result of that name, where the case has it.
template <class Result>
void expectOut(const Step& step, const char* name, const Result& result) {
  if (!step.hasOut(name)) return;
  ++compared;
  SCOPED_TRACE(name);
  Values got;
  if constexpr (std::is_arithmetic_v<Result>) {
    got = {double(result)};
  } else if constexpr (std::is_same_v<Result, DoubleGenMat>) {
    got = valuesOf(result.dataVec());
  } else {
    got = valuesOf(result);
  }
  const Item& want = step.out(name);
  ASSERT_EQ(want.values.size(), got.size());
  double scale = 0;
  for (double value : want.values) scale = std::max(scale, std::abs(value));
  const double tolerance =
      want.tolerance == "exact" ? 0 : std::stod(want.tolerance) * (scale == 0 ? 1 : scale);
  for (std::size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want.values[i], tolerance) << i;
}

void expectCode(const Step& step, int code, const DoubleVec& x) {
  expectOut(step, "code", code);
  if (code == 0) expectOut(step, "x", x);
}

// ---- Operations ---------------------------------------------------------------------------------

class Case {
 public:
  Case() {
    // Sets the threshold that all objects share.
    EXPECT_EQ(Thouseholder(1e-12, 0, false).setMatrix(DoubleGenMat(), 0, 0, 0, 0), 0);
  }

  void run(const Step& step) {
    SCOPED_TRACE(step.operation);
    static const std::map<std::string, void (Case::*)(const Step&)> operations = {
        {"new", &Case::make},
        {"setTolerance", &Case::setTolerance},
        {"setMatrix", &Case::setMatrix},
        {"solve", &Case::solve},
        {"valueSolve", &Case::valueSolve},
        {"solveInPlace", &Case::solveInPlace},
        {"altMatrix", &Case::altMatrix},
        {"findZero", &Case::findZero},
        {"trySVD", &Case::trySVD},
        {"tensorSetMatrix", &Case::tensorSetMatrix},
        {"tensorSolve", &Case::tensorSolve},
        {"tensorSolveFixed", &Case::tensorSolveFixed}};
    const auto operation = operations.find(step.operation);
    ASSERT_NE(operation, operations.end());
    compared = 0;
    (this->*operation->second)(step);
    EXPECT_EQ(compared, std::count_if(step.items.begin(), step.items.end(), [](const Item& item) {
                return item.isResult && item.name != "report";
              }));
  }

 private:
  TsolveConstrainedLsq& solver(const Step& step) { return *solvers_.at(step.object); }
  TsolveTensorProductLsq& tensor(const Step& step) { return *tensors_.at(step.object); }

  void make(const Step& step) {
    const std::string kind = step.in("kind").text;
    if (kind == "TsolveTensorProductLsq") {
      tensors_[step.object] = std::make_unique<TsolveTensorProductLsq>(
          *solvers_.at(step.in("u").toInt()), *solvers_.at(step.in("v").toInt()));
      return;
    }
    reporters_.push_back(std::make_unique<TsolverReporter>(!flag(step, "verbose")));
    TsolverReporter& reporter = *reporters_.back();
    const double tolerance = step.in("tolerance").values[0];
    const bool keep = flag(step, "keepOriginal");
    auto& made = solvers_[step.object];
    if (kind == "Thouseholder") {
      const int maxNonZeros = step.in("maxNonZeros").toInt();
      made = std::make_unique<Thouseholder>(reporter, tolerance, maxNonZeros, keep);
    } else {
      made = std::make_unique<TsolveConstrainedLsqQR>(reporter, tolerance, keep);
    }
  }

  void setTolerance(const Step& step) { solver(step).tolerance() = step.in("value").values[0]; }

  void setMatrix(const Step& step) {
    TsolveConstrainedLsq& s = solver(step);
    const DoubleGenMat a = matrixIn(step.in("A"));
    const IntVec fixed = step.hasIn("fixedCols") ? indicesIn(step.in("fixedCols")) : IntVec();
    const bool cleans = flag(step, "cleanZeros");
    expectOut(step, "code",
              s.setMatrix(a, fixed, step.in("constraintRows").toInt(), flag(step, "normalise"),
                          cleans, flag(step, "findCutoff")));
    DoubleGenMat clamped = a.copy();
    if (cleans) clamped.dataVec().clampZero(0.001);
    expectOut(step, "estimate", Open::estimate(clamped));
    expectOut(step, "tolerance", std::as_const(s).tolerance());
    expectOut(step, "totalRows", s.totalRows());
    expectOut(step, "totalCols", s.totalCols());
    expectOut(step, "usedRowIndex", s.*Open::usedRowIndex);
    expectOut(step, "usedColIndex", s.usedColIndex());
    expectOut(step, "constraintRows", s.*Open::constraintRows);
    expectOut(step, "isNormalised", s.isNormalised());
    expectOut(step, "rhsMult", s.rhsMult());
    expectOut(step, "prepared", s.*Open::matrix);
    if (auto* householder = dynamic_cast<Thouseholder*>(&s)) expectFactor(step, *householder);
  }

  static void expectFactor(const Step& step, const Thouseholder& s) {
    const DoubleGenMat& f = s.*Open::factorMatrix;
    const int rows = static_cast<int>(f.rows()), first = std::max(0, rows - int(f.cols()));
    const auto pivots = [&](const DoubleVec& v) {
      return v.slice(first, unsigned(rows - first), 1);
    };
    expectOut(step, "sigma", pivots(s.*Open::sigma));
    expectOut(step, "beta", pivots(s.*Open::beta));
    expectOut(step, "rowPerm", s.*Open::rowPerm);
    expectOut(step, "colPerm", s.*Open::colPerm);
    expectOut(step, "factor", f);
  }

  void solve(const Step& step) {
    const Item& rhs = step.in("rhs");
    const bool isGiven = step.hasIn("x");
    const int cols = solver(step).totalCols();
    if (step.in("form").text == "vector") {
      solveFor(step, vectorIn(rhs),
               isGiven ? vectorIn(step.in("x")) : DoubleVec(unsigned(cols), 0.0));
    } else {
      solveFor(step, pointsIn(rhs),
               isGiven ? pointsIn(step.in("x")) : TtupleVector(rhs.rows, cols, 0.0));
    }
  }

  template <class Side>
  void solveFor(const Step& step, const Side& rhs, Side x) {
    Side* const result = step.hasIn("nullX") ? nullptr : &x;
    const int code = solver(step).solve(rhs, result, flag(step, "keepValues"));
    expectCode(step, code, x);
  }

  void valueSolve(const Step& step) {
    const Item& rhs = step.in("rhs");
    const DoubleVec x = rhs.rows == 1 ? solver(step).solve(vectorIn(rhs))
                                      : solver(step).solve(pointsIn(rhs)).data();
    expectOut(step, "points", static_cast<int>(x.length()) / rhs.rows);
    expectOut(step, "x", x);
  }

  void solveInPlace(const Step& step) {
    DoubleVec rhs = vectorIn(step.in("rhs"));
    DoubleVec x(unsigned(step.in("length").toInt()), 0.0);
    const int code = solver(step).solveInPlace(rhs, &x);
    expectCode(step, code, x);
  }

  void altMatrix(const Step& step) { expectOut(step, "alt", solver(step).altMatrix()); }

  void findZero(const Step& step) {
    IntVec rows, cols;
    const IntVec fixed = indicesIn(step.in("fixedCols"));
    const double tolerance = step.in("tolerance").values[0];
    expectOut(step, "found",
              TsolveSystems::findZero(matrixIn(step.in("A")), fixed, rows, cols, tolerance));
    expectOut(step, "usedRowIndex", rows);
    expectOut(step, "usedColIndex", cols);
  }

  void trySVD(const Step& step) {
    const DoubleGenMat a = matrixIn(step.in("A"));
    expectOut(step, "singularValues", DoubleSVDecomp(a).singularValues());
    expectOut(step, "estimate", Open::estimate(a));
  }

  void tensorSetMatrix(const Step& step) {
    const std::vector<int> k = step.in("constraintRows").ints(), f = step.in("flags").ints();
    TsolveTensorProductLsq& t = tensor(step);
    expectOut(step, "code",
              t.setMatrix(matrixIn(step.in("U")), matrixIn(step.in("V")), k[0], k[1], f[0], f[1],
                          f[2], f[3], f[4], f[5]));
    expectOut(step, "dependentU", t.solverInU().isDependent());
    expectOut(step, "dependentV", t.solverInV().isDependent());
  }

  // Calls a form of the tensor-product solver with (data, result): grids of numbers or of points.
  template <class Call>
  static void callTensor(const Step& step, Call call) {
    const int dimension = step.in("bDim").toInt();
    const auto gridIn = [&](const char* name, const char* shape) {
      const std::vector<int> size = step.in(shape).ints();
      TtupleMatrix grid(dimension, size[0], size[1], 0.0);
      if (step.hasIn(name)) grid.data() = vectorIn(step.in(name));
      return grid;
    };
    TtupleMatrix b = gridIn("b", "bShape"), x = gridIn("x", "xShape");
    int code;
    if (dimension == 1) {
      DoubleGenMat unknowns = x.component(0);
      code = call(b.component(0), &unknowns);
    } else {
      code = call(b, &x);
    }
    expectCode(step, code, x.data());
  }

  void tensorSolve(const Step& step) {
    callTensor(step, [&](const auto& b, auto* x) { return tensor(step).solve(b, x); });
  }

  void tensorSolveFixed(const Step& step) {
    const Item& mask = step.in("mask");
    const IntGenMat fixed(indicesIn(mask), unsigned(mask.rows), unsigned(mask.cols));
    callTensor(step, [&](const auto& b, auto* x) {
      return tensor(step).solveFixed(matrixIn(step.in("U")), matrixIn(step.in("V")), fixed, b, x);
    });
  }

  std::vector<std::unique_ptr<TsolverReporter>> reporters_;
  std::map<int, std::unique_ptr<TsolveConstrainedLsq>> solvers_;
  std::map<int, std::unique_ptr<TsolveTensorProductLsq>> tensors_;
};

TEST(SolversGolden, EveryCaseAgrees) {
  int cases = 0;
  for (const std::string& path : goldenFiles("solvers")) {
    const GoldenCase golden = readGolden(path);
    if (golden.className == "TnumberSequence") continue;
    SCOPED_TRACE(golden.name + ": " + golden.about);
    Case state;
    for (const Step& step : golden.steps) {
      std::string reports;
      for (const Item& item : step.items) {
        if (item.isResult && item.name == "report") reports += item.text + "\n";
      }
      testing::internal::CaptureStderr();
      state.run(step);
      EXPECT_EQ(testing::internal::GetCapturedStderr(), reports);
    }
    ++cases;
  }
  EXPECT_EQ(cases, 36);
}

}  // namespace
}  // namespace knotwork::test
