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

struct Check : GoldenCheck {
  explicit Check(const GoldenStep& step) : GoldenCheck(step, false), object(step.object) {}
  bool flag(std::string_view name) const { return integer(name) != 0; }
  IntVec list(std::string_view name) const { return indices(ints(name)); }
  void isCode(int code, const auto& x) {
    is("code", code);
    if (code == 0) is("x", x);
  }
  int object;
};

class Case {
 public:
  Case() {
    // Sets the threshold that all objects share.
    EXPECT_EQ(Thouseholder(1e-12, 0, false).setMatrix(DoubleGenMat(), 0, 0, 0, 0), 0);
  }

  void run(const GoldenStep& step) {
    SCOPED_TRACE(step.operation);
    static const std::map<std::string, void (Case::*)(Check&)> operations = {
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
    Check check(step);
    (this->*operation->second)(check);
    check.finish();
  }

 private:
  TsolveConstrainedLsq& solver(Check& c) { return *solvers_.at(c.object); }
  TsolveTensorProductLsq& tensor(Check& c) { return *tensors_.at(c.object); }

  void make(Check& c) {
    const std::string kind = c.item("kind").text;
    if (kind == "TsolveTensorProductLsq") {
      tensors_[c.object] = std::make_unique<TsolveTensorProductLsq>(*solvers_.at(c.integer("u")),
                                                                    *solvers_.at(c.integer("v")));
      return;
    }
    reporters_.push_back(std::make_unique<TsolverReporter>(!c.flag("verbose")));
    TsolverReporter& reporter = *reporters_.back();
    const double tolerance = c.number("tolerance");
    const bool keep = c.flag("keepOriginal");
    auto& made = solvers_[c.object];
    if (kind == "Thouseholder") {
      const int maxNonZeros = c.integer("maxNonZeros");
      made = std::make_unique<Thouseholder>(reporter, tolerance, maxNonZeros, keep);
    } else {
      made = std::make_unique<TsolveConstrainedLsqQR>(reporter, tolerance, keep);
    }
  }

  void setTolerance(Check& c) { solver(c).tolerance() = c.number("value"); }

  void setMatrix(Check& c) {
    TsolveConstrainedLsq& s = solver(c);
    const DoubleGenMat a = c.matrix("A");
    const IntVec fixed = c.has("fixedCols") ? c.list("fixedCols") : IntVec();
    const bool cleans = c.flag("cleanZeros");
    c.is("code", s.setMatrix(a, fixed, c.integer("constraintRows"), c.flag("normalise"), cleans,
                             c.flag("findCutoff")));
    DoubleGenMat clamped = a.copy();
    if (cleans) clamped.dataVec().clampZero(0.001);
    c.is("estimate", Open::estimate(clamped));
    c.is("tolerance", std::as_const(s).tolerance());
    c.is("totalRows", s.totalRows());
    c.is("totalCols", s.totalCols());
    c.is("usedRowIndex", s.*Open::usedRowIndex);
    c.is("usedColIndex", s.usedColIndex());
    c.is("constraintRows", s.*Open::constraintRows);
    c.is("isNormalised", s.isNormalised());
    c.is("rhsMult", s.rhsMult());
    c.is("prepared", s.*Open::matrix);
    if (auto* householder = dynamic_cast<Thouseholder*>(&s)) expectFactor(c, *householder);
  }

  static void expectFactor(Check& c, const Thouseholder& s) {
    const DoubleGenMat& f = s.*Open::factorMatrix;
    const int rows = static_cast<int>(f.rows()), first = std::max(0, rows - int(f.cols()));
    const auto pivots = [&](const DoubleVec& v) {
      return v.slice(first, unsigned(rows - first), 1);
    };
    c.is("sigma", pivots(s.*Open::sigma));
    c.is("beta", pivots(s.*Open::beta));
    c.is("rowPerm", s.*Open::rowPerm);
    c.is("colPerm", s.*Open::colPerm);
    c.is("factor", f);
  }

  void solve(Check& c) {
    const GoldenItem& rhs = c.item("rhs");
    const bool isGiven = c.has("x");
    const int cols = solver(c).totalCols();
    if (c.item("form").text == "vector") {
      solveFor(c, c.vector("rhs"), isGiven ? c.vector("x") : DoubleVec(unsigned(cols), 0.0));
    } else {
      solveFor(c, c.points("rhs"), isGiven ? c.points("x") : TtupleVector(rhs.rows, cols, 0.0));
    }
  }

  template <class Side>
  void solveFor(Check& c, const Side& rhs, Side x) {
    Side* const result = c.has("nullX") ? nullptr : &x;
    const int code = solver(c).solve(rhs, result, c.flag("keepValues"));
    c.isCode(code, x);
  }

  void valueSolve(Check& c) {
    const GoldenItem& rhs = c.item("rhs");
    const DoubleVec x =
        rhs.rows == 1 ? solver(c).solve(c.vector("rhs")) : solver(c).solve(c.points("rhs")).data();
    c.is("points", static_cast<int>(x.length()) / rhs.rows);
    c.is("x", x);
  }

  void solveInPlace(Check& c) {
    DoubleVec rhs = c.vector("rhs");
    DoubleVec x(unsigned(c.integer("length")), 0.0);
    const int code = solver(c).solveInPlace(rhs, &x);
    c.isCode(code, x);
  }

  void altMatrix(Check& c) { c.is("alt", solver(c).altMatrix()); }

  void findZero(Check& c) {
    IntVec rows, cols;
    const IntVec fixed = c.list("fixedCols");
    const double tolerance = c.number("tolerance");
    c.is("found", TsolveSystems::findZero(c.matrix("A"), fixed, rows, cols, tolerance));
    c.is("usedRowIndex", rows);
    c.is("usedColIndex", cols);
  }

  void trySVD(Check& c) {
    const DoubleGenMat a = c.matrix("A");
    c.is("singularValues", DoubleSVDecomp(a).singularValues());
    c.is("estimate", Open::estimate(a));
  }

  void tensorSetMatrix(Check& c) {
    const std::vector<int> k = c.ints("constraintRows"), f = c.ints("flags");
    TsolveTensorProductLsq& t = tensor(c);
    c.is("code",
         t.setMatrix(c.matrix("U"), c.matrix("V"), k[0], k[1], f[0], f[1], f[2], f[3], f[4], f[5]));
    c.is("dependentU", t.solverInU().isDependent());
    c.is("dependentV", t.solverInV().isDependent());
  }

  // Calls a form of the tensor-product solver with (data, result): grids of numbers or of points.
  template <class Call>
  static void callTensor(Check& c, Call call) {
    const int dimension = c.integer("bDim");
    const auto gridIn = [&](const char* name, const char* shape) {
      const std::vector<int> size = c.ints(shape);
      TtupleMatrix grid(dimension, size[0], size[1], 0.0);
      if (c.has(name)) grid.data() = c.vector(name);
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
    c.isCode(code, x.data());
  }

  void tensorSolve(Check& c) {
    callTensor(c, [&](const auto& b, auto* x) { return tensor(c).solve(b, x); });
  }

  void tensorSolveFixed(Check& c) {
    const GoldenItem& mask = c.item("mask");
    const IntGenMat fixed(c.list("mask"), unsigned(mask.rows), unsigned(mask.cols));
    callTensor(c, [&](const auto& b, auto* x) {
      return tensor(c).solveFixed(c.matrix("U"), c.matrix("V"), fixed, b, x);
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
    for (const GoldenStep& step : golden.steps) {
      std::string reports;
      for (const GoldenItem& item : step.items) {
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
