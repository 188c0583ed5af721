// SPDX-License-Identifier: MIT
// The solvers against golden cases.
#include "support/golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>

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

DoubleGenMat matrixIn(const Item& item, int rows, int cols) {
  return DoubleGenMat(item.values.data(), static_cast<unsigned>(rows), static_cast<unsigned>(cols));
}

DoubleGenMat matrixIn(const Item& item) { return matrixIn(item, item.rows, item.cols); }

TtupleVector pointsIn(const Item& item) {
  return TtupleVector(item.rows, item.cols, item.values.data());
}

TtupleMatrix gridIn(const Item* values, int dimension, const Item& shape) {
  const std::vector<int> size = shape.ints();
  TtupleMatrix grid(dimension, size[0], size[1], 0.0);
  DoubleVec flat = grid.data();
  if (values != nullptr) flat = vectorIn(*values);
  return grid;
}

bool flag(const Step& step, const char* name) { return step.in(name).toInt() != 0; }

void expectItem(const Item& want, const Values& got) {
  SCOPED_TRACE(want.name);
  ASSERT_EQ(want.values.size(), got.size());
  double scale = 0;
  for (double value : want.values) scale = std::max(scale, std::abs(value));
  const double tolerance =
      want.tolerance == "exact" ? 0 : std::stod(want.tolerance) * (scale == 0 ? 1 : scale);
  for (std::size_t i = 0; i < got.size(); ++i) {
    EXPECT_LE(std::abs(got[i] - want.values[i]), tolerance)
        << "element " << i << ": " << got[i] << " for " << want.values[i];
  }
}

int compared = 0;

// The result of that name, where the case has it.
void expectOut(const Step& step, const char* name, const Values& got) {
  if (!step.hasOut(name)) return;
  expectItem(step.out(name), got);
  ++compared;
}

void expectOut(const Step& step, const char* name, double got) {
  expectOut(step, name, Values{got});
}

void expectOut(const Step& step, const char* name, const DoubleVec& got) {
  expectOut(step, name, valuesOf(got));
}

void expectOut(const Step& step, const char* name, const IntVec& got) {
  expectOut(step, name, DoubleVec(got));
}

void expectCode(const Step& step, int code, const DoubleVec& x) {
  expectOut(step, "code", code);
  if (code == 0) expectOut(step, "x", x);
}

// ---- Operations ---------------------------------------------------------------------------------

class Case {
 public:
  Case() { Thouseholder(1e-12, 0, false).setMatrix(DoubleGenMat(), 0, false, false, false); }

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
    const int k = step.in("constraintRows").toInt();
    const bool n = flag(step, "normalise"), z = flag(step, "cleanZeros"),
               f = flag(step, "findCutoff");
    const int code = step.hasIn("fixedCols")
                         ? s.setMatrix(a, indicesIn(step.in("fixedCols")), k, n, z, f)
                         : s.setMatrix(a, k, n, z, f);
    expectOut(step, "code", code);
    if (step.hasOut("estimate")) {
      DoubleGenMat clamped = a.copy();
      if (z) clamped.dataVec().clampZero(0.001);
      expectOut(step, "estimate", Open::estimate(clamped));
    }
    expectOut(step, "tolerance", std::as_const(s).tolerance());
    expectOut(step, "totalRows", s.totalRows());
    expectOut(step, "totalCols", s.totalCols());
    expectOut(step, "usedRowIndex", s.*Open::usedRowIndex);
    expectOut(step, "usedColIndex", s.usedColIndex());
    expectOut(step, "constraintRows", s.*Open::constraintRows);
    expectOut(step, "isNormalised", s.isNormalised());
    expectOut(step, "rhsMult", s.rhsMult());
    expectOut(step, "prepared", (s.*Open::matrix).dataVec());
    if (auto* householder = dynamic_cast<Thouseholder*>(&s)) expectFactor(step, *householder);
  }

  static void expectFactor(const Step& step, Thouseholder& s) {
    const int rows = static_cast<int>((s.*Open::factorMatrix).rows());
    const int first = std::max(0, rows - static_cast<int>((s.*Open::factorMatrix).cols()));
    const auto pivots = [&](const DoubleVec& v) {
      return v.slice(first, static_cast<unsigned>(rows - first), 1);
    };
    expectOut(step, "sigma", pivots(s.*Open::sigma));
    expectOut(step, "beta", pivots(s.*Open::beta));
    expectOut(step, "rowPerm", s.*Open::rowPerm);
    expectOut(step, "colPerm", s.*Open::colPerm);
    expectOut(step, "factor", (s.*Open::factorMatrix).dataVec());
  }

  void solve(const Step& step) {
    const TsolveConstrainedLsq& s = solver(step);
    const bool keep = flag(step, "keepValues");
    const bool isNull = step.hasIn("nullX");
    const Item& rhs = step.in("rhs");
    if (step.in("form").text == "vector") {
      DoubleVec x = step.hasIn("x") ? vectorIn(step.in("x"))
                                    : DoubleVec(static_cast<unsigned>(s.totalCols()), 0.0);
      const int code = s.solve(vectorIn(rhs), isNull ? nullptr : &x, keep);
      expectCode(step, code, x);
    } else {
      TtupleVector x =
          step.hasIn("x") ? pointsIn(step.in("x")) : TtupleVector(rhs.rows, s.totalCols(), 0.0);
      const int code = s.solve(pointsIn(rhs), isNull ? nullptr : &x, keep);
      expectCode(step, code, x);
    }
  }

  void valueSolve(const Step& step) {
    const Item& rhs = step.in("rhs");
    if (rhs.rows == 1) {
      const DoubleVec x = solver(step).solve(vectorIn(rhs));
      expectOut(step, "points", x.length());
      expectOut(step, "x", x);
    } else {
      const TtupleVector x = solver(step).solve(pointsIn(rhs));
      expectOut(step, "points", x.points());
      expectOut(step, "x", static_cast<const DoubleVec&>(x));
    }
  }

  void solveInPlace(const Step& step) {
    DoubleVec rhs = vectorIn(step.in("rhs"));
    DoubleVec x(static_cast<unsigned>(step.in("length").toInt()), 0.0);
    const int code = solver(step).solveInPlace(rhs, &x);
    expectCode(step, code, x);
  }

  void altMatrix(const Step& step) { expectOut(step, "alt", solver(step).altMatrix().dataVec()); }

  void findZero(const Step& step) {
    IntVec rows, cols;
    const bool found =
        TsolveSystems::findZero(matrixIn(step.in("A")), indicesIn(step.in("fixedCols")), rows, cols,
                                step.in("tolerance").values[0]);
    expectOut(step, "found", found);
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
    const int code = t.setMatrix(matrixIn(step.in("U")), matrixIn(step.in("V")), k[0], k[1], f[0],
                                 f[1], f[2], f[3], f[4], f[5]);
    expectOut(step, "code", code);
    expectOut(step, "dependentU", t.solverInU().isDependent());
    expectOut(step, "dependentV", t.solverInV().isDependent());
  }

  // Calls a form of the tensor-product solver with (data, result): grids of numbers or of points.
  template <class Call>
  static void callTensor(const Step& step, Call call) {
    const int dimension = step.in("bDim").toInt();
    TtupleMatrix b = gridIn(&step.in("b"), dimension, step.in("bShape"));
    TtupleMatrix x =
        gridIn(step.hasIn("x") ? &step.in("x") : nullptr, dimension, step.in("xShape"));
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
    const IntGenMat fixed(indicesIn(mask), static_cast<unsigned>(mask.rows),
                          static_cast<unsigned>(mask.cols));
    callTensor(step, [&](const auto& b, auto* x) {
      return tensor(step).solveFixed(matrixIn(step.in("U")), matrixIn(step.in("V")), fixed, b, x);
    });
  }

  std::vector<std::unique_ptr<TsolverReporter>> reporters_;
  std::map<int, std::unique_ptr<TsolveConstrainedLsq>> solvers_;
  std::map<int, std::unique_ptr<TsolveTensorProductLsq>> tensors_;
};

std::string reportsOf(const Step& step) {
  std::string lines;
  for (const Item& item : step.items) {
    if (item.isResult && item.name == "report") lines += item.text + "\n";
  }
  return lines;
}

TEST(SolversGolden, EveryCaseAgrees) {
  int cases = 0;
  for (const std::string& path : goldenFiles("solvers")) {
    const GoldenCase golden = readGolden(path);
    if (golden.className == "TnumberSequence") continue;
    SCOPED_TRACE(golden.name + ": " + golden.about);
    Case state;
    for (const Step& step : golden.steps) {
      testing::internal::CaptureStderr();
      state.run(step);
      EXPECT_EQ(testing::internal::GetCapturedStderr(), reportsOf(step));
    }
    ++cases;
  }
  EXPECT_EQ(cases, 36);
}

}  // namespace
}  // namespace knotwork::test
