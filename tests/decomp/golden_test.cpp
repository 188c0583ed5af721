// SPDX-License-Identifier: MIT
// The decompositions against the golden cases: every result equal as a number, on every BLAS.
#include "support/golden.h"

#include <gtest/gtest.h>

#include <cmath>

#include "knotwork/decomp/double_gen_fact.h"
#include "knotwork/decomp/double_least_sq_ch.h"
#include "knotwork/decomp/double_least_sq_inc.h"
#include "knotwork/decomp/double_least_sq_qr.h"
#include "knotwork/decomp/double_sv_decomp.h"
#include "support/recorded_errors.h"
#include "support/values.h"

namespace {

using knotwork::test::GoldenItem;
using knotwork::test::GoldenStep;

DoubleGenMat matrixOf(const GoldenItem& item) {
  return DoubleGenMat(item.values.data(), static_cast<unsigned>(item.rows),
                      static_cast<unsigned>(item.cols));
}

Values valuesOf(double value) { return {value}; }
Values valuesOf(const Values& values) { return values; }
Values valuesOf(const DoubleGenMat& m) { return valuesOf(m.dataVec()); }
Values valuesOf(const IntVec& v) {
  Values values;
  for (int i = 0; i < static_cast<int>(v.length()); ++i) values.push_back(v(i));
  return values;
}

bool sameNumbers(const Values& a, const Values& b) {
  const auto same = [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}

/// A case under test: inputs by name, results compared as they come and counted.
class Case {
 public:
  explicit Case(const GoldenStep& step) : step_(step) {}

  const GoldenItem& in(const std::string& name) const { return step_.in(name); }
  DoubleGenMat matrix(const std::string& name) const { return matrixOf(in(name)); }
  bool has(const std::string& name) const { return step_.hasOut(name); }

  template <class T>
  void is(const std::string& name, const T& got) {
    const Values values = valuesOf(got);
    EXPECT_TRUE(sameNumbers(values, step_.out(name).values))
        << name << " is " << testing::PrintToString(values) << "\nnot "
        << testing::PrintToString(step_.out(name).values);
    ++compared_;
  }
  /// For results that a case has or leaves out.
  template <class T>
  void isIfAny(const std::string& name, const T& got) {
    if (has(name)) is(name, got);
  }

  int compared() const { return compared_; }
  int results() const {
    return static_cast<int>(std::count_if(step_.items.begin(), step_.items.end(),
                                          [](const GoldenItem& item) { return item.isResult; }));
  }

 private:
  const GoldenStep& step_;
  int compared_ = 0;
};

/// f of every column of B, side by side.
template <class F>
Values forColumns(const DoubleGenMat& B, F f) {
  Values all;
  for (int j = 0; j < static_cast<int>(B.cols()); ++j) {
    const Values one = valuesOf(f(B.col(j)));
    all.insert(all.end(), one.begin(), one.end());
  }
  return all;
}

struct OpenGenFact : DoubleGenFact {
  using DoubleGenFact::condition_;
  using DoubleGenFact::DoubleGenFact;
  Values determinantParts() const {
    double det[2] = {};
    calldi(factors_, 10, det, nullptr);
    return {det[0], det[1]};
  }
};

void runGenFact(Case& c) {
  const OpenGenFact plain(c.matrix("A"), 0), estimated(c.matrix("A"), 1);
  c.is("factors", estimated.factors());
  c.is("ipvt", estimated.pivots());
  EXPECT_TRUE(plain.factors() == estimated.factors());
  c.is("rcond_noest", plain.condition_);
  c.is("rcond_est", estimated.condition_);
  c.is("singular_noest", plain.isSingular());
  c.is("singular_est", estimated.isSingular());
  c.is("det_parts", estimated.determinantParts());
  c.isIfAny("det", estimated.determinant());
  c.isIfAny("inverse", estimated.inverse());
  const auto solve = [&](const DoubleVec& b) { return estimated.solve(b); };
  if (c.has("X")) c.is("X", forColumns(c.matrix("B"), solve));
}

struct OpenQR : DoubleQRDecomp {
  using DoubleQRDecomp::qraux_;
};

/// 0, or the k-1-st zero on the diagonal of R from the front, from 1: what a solution reports.
int lastZeroBefore(const DoubleGenMat& R, int k) {
  for (; k > 0; --k)
    if (R(k - 1, k - 1) == 0.0) return k;
  return 0;
}

template <class Qr>
void compareInfo(Case& c, const std::string& name, const Qr& qr, int k, const DoubleGenMat& B) {
  Values info;
  for (unsigned j = 0; j < B.cols(); ++j) info.push_back(lastZeroBefore(qr.factors(), k));
  c.is(name, info);
}

void runQR(Case& c) {
  OpenQR qr;
  const std::vector<int> flags = c.in("pivoting").ints();
  const bool sequence = flags.size() > 1;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    const std::string suffix = sequence ? "_" + std::to_string(i) : "";
    qr.doPivoting(flags[i]);
    qr.factor(c.matrix("A" + suffix));
    c.is("QR" + suffix, qr.factors());
    c.is("pivots" + suffix, qr.pivots());
  }
  c.is("qraux", qr.qraux_);
  c.is("rank", qr.rank());
  c.is("singular", qr.isSingular());
  RecordedErrors errors;
  const DoubleGenMat B = c.matrix("B");
  const int most = static_cast<int>(std::min(qr.rows(), qr.cols()));
  compareInfo(c, "info", qr, most, B);
  c.is("X", forColumns(B, [&](const DoubleVec& b) { return qr.solve(b); }));
  for (const int k : c.in("ks").ints()) {
    const std::string suffix = "_" + std::to_string(k);
    const int count = k < 0 || k > most ? most : k;
    errors.clear();
    c.is("Xpart" + suffix,
         forColumns(B, [&](const DoubleVec& b) { return qr.partialSolve(b, k); }));
    const bool zero = lastZeroBefore(qr.factors(), count) != 0;
    EXPECT_EQ(errors.take().size(), zero ? B.cols() : 0);
    compareInfo(c, "info" + suffix, qr, count, B);
    c.is("Qy" + suffix, forColumns(B, [&](const DoubleVec& b) { return qr.computeQy(b, k); }));
    c.is("QTy" + suffix, forColumns(B, [&](const DoubleVec& b) { return qr.computeQTy(b, k); }));
    c.is("rsd" + suffix,
         forColumns(B, [&](const DoubleVec& b) { return qr.computeResidualVec(b, k); }));
    c.is("Xb" + suffix, forColumns(B, [&](const DoubleVec& b) { return qr.computeXb(b, k); }));
  }
}

void runSV(Case& c) {
  for (const int job : c.in("jobs").ints()) {
    const std::string suffix = "_" + std::to_string(job);
    DoubleSVDecomp sv;
    sv.computeLeftVecs(job / 10);
    if (job / 10 == 2) sv.computeAllLeftVecs(0);
    sv.computeRightVecs(job % 10);
    sv.factor(c.matrix("A"));
    c.is("status" + suffix, static_cast<int>(sv.singularValues().length()) - sv.numSVsFound());
    c.is("s" + suffix, sv.singularValues());
    c.is("e" + suffix, sv.eValues());
    if (job >= 10) c.is("U" + suffix, sv.leftVecs());
    if (job % 10) c.is("V" + suffix, sv.rightVecs());
  }
}

void compareState(Case& c, const std::string& suffix, const DoubleChDecomp& ch) {
  c.is("R" + suffix, ch.factors());
  c.is("k" + suffix, ch.lastPosFactor() + 1);
  c.is("pivots" + suffix, ch.pivots());
  c.is("isPD" + suffix, ch.isPD());
  c.is("lastPosFactor" + suffix, ch.lastPosFactor());
  c.is("fail" + suffix, ch.fail());
  c.is("condition" + suffix, ch.condition());
}

void runShifts(Case& c, DoubleChDecomp& ch) {
  DoubleGenMat Z = c.matrix("Z");
  const DoubleGenMat shifts = c.matrix("shifts");
  for (int i = 0; i < static_cast<int>(shifts.rows()); ++i) {
    const std::string suffix = "_" + std::to_string(i);
    const int l = static_cast<int>(shifts(i, 0)), k = static_cast<int>(shifts(i, 1));
    DoubleVec cosines(static_cast<unsigned>(k - l)), sines(static_cast<unsigned>(k - l));
    ch.shift(l, k, static_cast<int>(shifts(i, 2)), Z.cols() ? &Z : nullptr, &cosines, &sines);
    c.is("R" + suffix, ch.factors());
    c.isIfAny("Z" + suffix, Z);
    c.is("c" + suffix, cosines);
    c.is("s" + suffix, sines);
  }
}

void runRowChanges(Case& c, DoubleChDecomp& ch) {
  DoubleGenMat Z = c.matrix("Z");
  const DoubleGenMat X = c.matrix("X"), Y = c.matrix("Y");
  DoubleVec rho = vectorOf(c.in("rho").values);
  Values info;
  for (const int op : c.in("ops").ints()) {
    const int i = static_cast<int>(info.size());
    const std::string suffix = "_" + std::to_string(i);
    const DoubleVec x = X.row(i).copy(), y = Y.row(i).copy();
    DoubleVec cosines(ch.cols(), 0.0), sines(ch.cols(), 0.0);
    info.push_back(0);
    if (op > 0)
      ch.update(x, &Z, &y, &rho, &cosines, &sines);
    else
      info.back() = ch.downdate(x, &Z, &y, &rho, &cosines, &sines);
    c.is("R" + suffix, ch.factors());
    c.isIfAny("Z" + suffix, Z);
    c.isIfAny("rho" + suffix, rho);
    c.isIfAny("c" + suffix, cosines);
    c.isIfAny("s" + suffix, sines);
  }
  c.is("info", info);
}

void runCh(Case& c, const GoldenStep& step) {
  DoubleChDecomp ch;
  if (step.hasIn("shifts") || step.hasIn("ops")) {
    ch.doPivoting(c.in("pivoting").toInt());
    ch.factor(c.matrix("A"));
    c.is("R", ch.factors());
    return step.hasIn("shifts") ? runShifts(c, ch) : runRowChanges(c, ch);
  }
  if (step.hasIn("constraints")) {
    const DoubleGenMat constraints = c.matrix("constraints");
    for (int i = 0; i < static_cast<int>(constraints.rows()); ++i)
      ch.setPivoting(static_cast<int>(constraints(i, 0)), static_cast<int>(constraints(i, 1)));
  }
  const std::vector<int> flags = c.in("pivoting").ints();
  const bool sequence = flags.size() > 1;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    const std::string suffix = sequence ? "_" + std::to_string(i) : "";
    ch.doPivoting(flags[i]);
    ch.factor(c.matrix("A" + suffix));
    compareState(c, suffix, ch);
  }
  const DoubleVec b = vectorOf(c.in("b").values);
  if (c.has("x")) c.is("x", ch.solve(b));
  if (!step.hasIn("ns")) return;
  for (const int n : c.in("ns").ints())
    c.is("xpart_" + std::to_string(n), ch.partialSolve(b.slice(0, static_cast<unsigned>(n), 1), n));
}

template <class LeastSq>
void compareTolerances(Case& c, LeastSq& lsq, bool withInfo) {
  const DoubleGenMat B = c.matrix("B");
  const Values& tolerances = c.in("tolerances").values;
  for (std::size_t i = 0; i < tolerances.size(); ++i) {
    const std::string suffix = "_" + std::to_string(i);
    lsq.setTolerance(tolerances[i]);
    const int used = static_cast<int>(lsq.cols() - lsq.numFreeCols());
    c.is("free" + suffix, lsq.numFreeCols());
    if (withInfo) compareInfo(c, "info" + suffix, lsq, used, B);
    c.is("X" + suffix, forColumns(B, [&](const DoubleVec& b) { return lsq.solve(b); }));
    c.is("rsd" + suffix, forColumns(B, [&](const DoubleVec& b) { return lsq.residual(b); }));
  }
}

void runLeastSqQR(Case& c) {
  DoubleLeastSqQR lsq(c.matrix("A"));
  c.is("QR", lsq.factors());
  c.is("pivots", lsq.pivots());
  compareTolerances(c, lsq, true);
}

void runLeastSqCh(Case& c) {
  DoubleLeastSqCh lsq(c.matrix("A"));
  compareState(c, "", lsq);
  compareTolerances(c, lsq, false);
}

struct OpenInc : DoubleLeastSqInc {
  using DoubleLeastSqInc::data_;
  using DoubleLeastSqInc::DoubleLeastSqInc;
};

void runLeastSqInc(Case& c) {
  const DoubleGenMat X = c.matrix("X"), Y = c.matrix("Y");
  const std::vector<int> ops = c.in("ops").ints();
  OpenInc lsq(X.cols(), Y.cols());
  Values info, underdetermined;
  DoubleGenMat history(X.rows(), Y.cols());
  for (int i = 0; i < static_cast<int>(X.rows()); ++i) {
    DoubleVec x = X.row(i).copy();
    const DoubleVec y = Y.row(i).copy();
    info.push_back(0);
    if (ops[static_cast<std::size_t>(i)] > 0)
      lsq.addEquation(x, y);
    else
      info.back() = lsq.deleteEquation(x, y);
    underdetermined.push_back(lsq.isUnderDetermined());
    for (int j = 0; j < static_cast<int>(Y.cols()); ++j) history(i, j) = lsq.residualNorm(j);
  }
  c.is("info", info);
  c.is("underdetermined", underdetermined);
  c.is("rho_history", history);
  c.is("R", lsq.factors());
  c.is("Z", lsq.data_);
  Values solutions;
  for (int j = 0; j < static_cast<int>(Y.cols()); ++j)
    for (const double value : valuesOf(lsq.solve(j))) solutions.push_back(value);
  c.is("solutions", solutions);
}

void run(const std::string& className, Case& c, const GoldenStep& step) {
  if (className == "DoubleGenFact") runGenFact(c);
  if (className == "DoubleQRDecomp") runQR(c);
  if (className == "DoubleSVDecomp") runSV(c);
  if (className == "DoubleChDecomp") runCh(c, step);
  if (className == "DoubleLeastSqQR") runLeastSqQR(c);
  if (className == "DoubleLeastSqCh") runLeastSqCh(c);
  if (className == "DoubleLeastSqInc") runLeastSqInc(c);
}

TEST(LinpackGolden, EveryResultIsEqualAsANumber) {
  const RecordedErrors errors;
  const std::vector<std::string> files = knotwork::test::goldenFiles("linpack");
  int compared = 0;
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    const auto golden = knotwork::test::readGolden(file);
    Case c(golden.steps.at(0));
    run(golden.className, c, golden.steps[0]);
    EXPECT_EQ(c.compared(), c.results());
    compared += c.compared();
  }
  EXPECT_EQ(files.size(), 48u);
  EXPECT_EQ(compared, 596);
}

}  // namespace
