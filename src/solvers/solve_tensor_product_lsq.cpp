// SPDX-License-Identifier: MIT
// Least squares on grids: one direction after the other.
#include "knotwork/solvers/solve_tensor_product_lsq.h"

#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/solve_codes.h"
#include "knotwork/solvers/solve_constrained_lsq.h"
#include "knotwork/vector/double_vec_pick.h"

using knotwork::kBadArgument;
using knotwork::kNotSolvable;
using knotwork::kSolved;

namespace {

// Row i of x becomes the solution for row i of the sides. Stored by columns, a matrix of n rows is
// a list of points of dimension n, so all rows are solved for together.
int solveRows(const TsolveConstrainedLsq& solver, const DoubleGenMat& sides, DoubleGenMat& x) {
  if (sides.rows() == 0) return kSolved;
  const int dimension = static_cast<int>(sides.rows());
  DoubleVec flat = sides.dataVec();
  const TtupleVector rhs(dimension, flat);
  TtupleVector solved(dimension, static_cast<int>(x.cols()), 0.0);
  const int code = solver.solve(rhs, &solved, false);
  if (code == kSolved) x.dataVec() = solved;
  return code;
}

// The same for columns.
int solveColumns(const TsolveConstrainedLsq& solver, const DoubleGenMat& sides, DoubleGenMat& x) {
  DoubleGenMat rows(x.cols(), x.rows(), 0.0);
  const int code = solveRows(solver, transpose(sides), rows);
  if (code == kSolved) x = transpose(rows);
  return code;
}

// A solver that can solve answers for unknowns of another number than the result has; one that
// cannot answers for itself.
bool fits(const TsolveConstrainedLsq& solver, unsigned unknowns) {
  return !solver.isSolvable() || solver.totalCols() == static_cast<int>(unknowns);
}

template <class A, class B>
bool haveSameShape(const A& a, const B& b) {
  return a.rows() == b.rows() && a.cols() == b.cols();
}

bool areShapesRight(const DoubleGenMat& u, const DoubleGenMat& v, unsigned dataRows,
                    unsigned dataCols, unsigned rows, unsigned cols) {
  return u.cols() == rows && v.cols() == cols && u.rows() == dataRows && v.rows() == dataCols;
}

DoubleGenMat pickColumns(const DoubleGenMat& a, const IntVec& which) {
  DoubleGenMat picked(a.rows(), which.length());
  for (int j = 0; j < static_cast<int>(picked.cols()); ++j) {
    DoubleVec column = picked.col(j);
    column = a.col(which(j));
  }
  return picked;
}

// x(i, j) = value(i, j) where the mask says `isFixed`
template <class Value>
void setWhere(const IntGenMat& fixed, bool isFixed, DoubleGenMat& x, Value value) {
  for (int j = 0; j < static_cast<int>(x.cols()); ++j) {
    for (int i = 0; i < static_cast<int>(x.rows()); ++i) {
      if ((fixed(i, j) == 1) == isFixed) x(i, j) = value(i, j);
    }
  }
}

// Whether any of the indices, both lists ascending, is in use.
bool isAnyUsed(const IntVec& indices, const IntVec& used) {
  for (int i = 0, k = 0; i < static_cast<int>(indices.length()); ++i) {
    while (k < static_cast<int>(used.length()) && used(k) < indices(i)) ++k;
    if (k < static_cast<int>(used.length()) && used(k) == indices(i)) return true;
  }
  return false;
}

// Sets the system in the first direction without the fixed unknowns. Only cleaning leaves them out,
// and not where the tolerance does not allow it: then the matrix of the free columns is handed
// over instead.
int setFreeColumns(TsolveConstrainedLsq& solver, const DoubleGenMat& u, const IntVec& fixedRows,
                   const IntVec& freeRows, bool& isReduced) {
  if (fixedRows.length() == 0) return solver.setMatrix(u, 0, false, false, false);
  const int code = solver.setMatrix(u, fixedRows, 0, false, true, false);
  isReduced = isAnyUsed(fixedRows, solver.usedColIndex());
  if (!isReduced) return code;
  return solver.setMatrix(pickColumns(u, freeRows), 0, false, false, false);
}

// The free unknowns of one column of the result.
int solveColumn(TsolveConstrainedLsq& solver, const DoubleGenMat& u, const IntVec& mask,
                const DoubleVec& data, DoubleVec& x) {
  const IntVec fixedRows = mask.valueIndex(1);
  const IntVec freeRows = mask.nonValueIndex(1);
  if (freeRows.length() == 0 && fixedRows.length() > 0) return kSolved;
  bool isReduced = false;
  int code = setFreeColumns(solver, u, fixedRows, freeRows, isReduced);
  if (code != kSolved) return code;
  if (!isReduced) return solver.solve(data, &x, false);
  DoubleVec freeUnknowns(freeRows.length(), 0.0);
  code = solver.solve(data, &freeUnknowns, false);
  if (code == kSolved) x.vecPick(freeRows) = freeUnknowns;
  return code;
}

}  // namespace

TsolveTensorProductLsq::TsolveTensorProductLsq(TsolveConstrainedLsq& u, TsolveConstrainedLsq& v)
    : u_(&u), v_(&v) {}
TsolveTensorProductLsq::TsolveTensorProductLsq(const TsolveTensorProductLsq&) = default;
TsolveTensorProductLsq& TsolveTensorProductLsq::operator=(const TsolveTensorProductLsq&) = default;
TsolveTensorProductLsq::~TsolveTensorProductLsq() = default;

const TsolveConstrainedLsq& TsolveTensorProductLsq::solverInU() const { return *u_; }
const TsolveConstrainedLsq& TsolveTensorProductLsq::solverInV() const { return *v_; }

int TsolveTensorProductLsq::setMatrix(const DoubleGenMat& u, const DoubleGenMat& v,
                                      int constraintRowsU, int constraintRowsV, bool normaliseU,
                                      bool normaliseV, bool cleanZerosU, bool cleanZerosV,
                                      bool findCutoffU, bool findCutoffV) {
  const int code = u_->setMatrix(u, constraintRowsU, normaliseU, cleanZerosU, findCutoffU);
  if (code != kSolved) return code;
  return v_->setMatrix(v, constraintRowsV, normaliseV, cleanZerosV, findCutoffV);
}

int TsolveTensorProductLsq::solve(const DoubleGenMat& b, DoubleGenMat* x) const {
  if (x == nullptr) return kBadArgument;
  if (b.rows() == 0 && x->cols() == 0) return kNotSolvable;
  if (!fits(*u_, x->rows()) || !fits(*v_, x->cols())) return kBadArgument;
  DoubleGenMat between(b.rows(), x->cols(), 0.0);
  const int code = solveRows(*v_, b, between);
  return code == kSolved ? solveColumns(*u_, between, *x) : code;
}

int TsolveTensorProductLsq::solve(const TtupleMatrix& b, TtupleMatrix* x) const {
  if (x == nullptr || b.size() != x->size()) return kBadArgument;
  DoubleGenMat work(static_cast<unsigned>(x->rows()), static_cast<unsigned>(x->cols()), 0.0);
  for (int c = 0; c < x->size(); ++c) {
    const int code = solve(b.component(c), &work);
    if (code != kSolved) return code;
    x->setComponent(c, work);
  }
  return kSolved;
}

// ---- Prescribed unknowns ------------------------------------------------------------------------

int TsolveTensorProductLsq::solveFixed(const DoubleGenMat& u, const DoubleGenMat& v,
                                       const IntGenMat& fixed, const DoubleGenMat& b,
                                       DoubleGenMat* x) {
  if (x == nullptr || !haveSameShape(fixed, *x)) return kBadArgument;
  if (!areShapesRight(u, v, b.rows(), b.cols(), x->rows(), x->cols())) return kBadArgument;
  DoubleGenMat solved(x->rows(), x->cols(), 0.0);
  if (fixed.dataVec().countValue(1) == 0) {
    int code = setMatrix(u, v, 0, 0, false, false, false, false, false, false);
    if (code == kSolved) code = solve(b, &solved);
    if (code == kSolved) *x = solved;
    return code;
  }
  DoubleGenMat prescribed(x->rows(), x->cols(), 0.0);
  setWhere(fixed, true, prescribed, [x](int i, int j) { return x->val(i, j); });
  const DoubleGenMat remainder = b - transProduct(product(u, prescribed), v);
  DoubleGenMat between(b.rows(), x->cols(), 0.0);
  int code = v_->setMatrix(v, 0, false, false, false);
  if (code == kSolved) code = solveRows(*v_, remainder, between);
  for (int j = 0; j < static_cast<int>(x->cols()) && code == kSolved; ++j) {
    DoubleVec unknowns = solved.col(j);
    code = solveColumn(*u_, u, fixed.col(j), between.col(j), unknowns);
  }
  if (code != kSolved) return code;
  setWhere(fixed, false, *x, [&solved](int i, int j) { return solved.val(i, j); });
  return kSolved;
}

int TsolveTensorProductLsq::solveFixed(const DoubleGenMat& u, const DoubleGenMat& v,
                                       const IntGenMat& fixed, const TtupleMatrix& b,
                                       TtupleMatrix* x) {
  if (x == nullptr || b.size() != x->size()) return kBadArgument;
  TtupleMatrix solved = x->copy();
  for (int c = 0; c < x->size(); ++c) {
    DoubleGenMat values = x->component(c).copy();
    const int code = solveFixed(u, v, fixed, b.component(c), &values);
    if (code != kSolved) return code;
    solved.setComponent(c, values);
  }
  *x = solved;
  return kSolved;
}
