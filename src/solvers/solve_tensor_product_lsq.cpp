// SPDX-License-Identifier: MIT
// Least squares on grids: one direction after the other.
#include "knotwork/solvers/solve_tensor_product_lsq.h"

#include <typeinfo>
#include <utility>

#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/solvers/householder.h"
#include "knotwork/solvers/solve_codes.h"
#include "knotwork/vector/double_vec_pick.h"
#include "solvers/whole_matrix.h"
#include "vector/memory_watch.h"

using knotwork::kBadArgument;
using knotwork::kNotSolvable;
using knotwork::kSolved;
using knotwork::detail::MemoryWatch;
namespace detail = knotwork::detail;

namespace {

// ---- One direction ------------------------------------------------------------------------------

// Whether the solver is the library's own and solves for many right-hand sides at once with the
// bits that it gives each of them alone. A class that a host derives may redefine any of it, and is
// asked for one side after the other.
bool solvesJointly(const TsolveConstrainedLsq& solver) {
  return typeid(solver) == typeid(Thouseholder);
}

// Row i of x becomes the solution for row i of the sides, for all rows together: stored by columns,
// a matrix of n rows is a list of points of dimension n. @return false, with x as it was, if any of
// them cannot be had.
bool solveRowsJointly(const TsolveConstrainedLsq& solver, const DoubleGenMat& sides,
                      DoubleGenMat& x) {
  if (!solvesJointly(solver) || sides.rows() == 0) return false;
  const int dimension = static_cast<int>(sides.rows());
  DoubleVec flat = sides.dataVec();
  const TtupleVector rhs(dimension, flat);
  TtupleVector solved(dimension, static_cast<int>(x.cols()), 0.0);
  if (solver.solve(rhs, &solved, false) != kSolved) return false;
  if (solved.length() != x.dataVec().length()) return false;
  x.dataVec() = solved;
  return true;
}

// The same for columns.
bool solveColumnsJointly(const TsolveConstrainedLsq& solver, const DoubleGenMat& sides,
                         DoubleGenMat& x) {
  if (!solvesJointly(solver)) return false;
  const MemoryWatch memory;
  DoubleGenMat rows(x.cols(), x.rows(), 0.0);
  const DoubleGenMat rowsOfSides = transpose(sides);
  if (memory.ranOut() || !solveRowsJointly(solver, rowsOfSides, rows)) return false;
  const DoubleGenMat solved = transpose(rows);
  if (memory.ranOut()) return false;
  x = solved;
  return true;
}

// Row after row, or column after column, until one cannot be had. @return its code; `code` if there
// is none to solve for.
int solveRows(const TsolveConstrainedLsq& solver, const DoubleGenMat& sides, DoubleGenMat& x,
              int code) {
  if (solveRowsJointly(solver, sides, x)) return kSolved;
  for (int i = 0; i < static_cast<int>(sides.rows()); ++i) {
    DoubleVec row = x.row(i);
    code = solver.solve(sides.row(i), &row, false);
    if (code != kSolved) return code;
  }
  return code;
}

int solveColumns(const TsolveConstrainedLsq& solver, const DoubleGenMat& sides, DoubleGenMat& x,
                 int code) {
  if (solveColumnsJointly(solver, sides, x)) return kSolved;
  for (int j = 0; j < static_cast<int>(x.cols()); ++j) {
    DoubleVec column = x.col(j);
    code = solver.solve(sides.col(j), &column, false);
    if (code != kSolved) return code;
  }
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

// Whether the matrices and the mask hold all their elements and belong to unknowns of the shape.
bool areWholeAndFit(const DoubleGenMat& u, const DoubleGenMat& v, const IntGenMat& fixed,
                    unsigned rows, unsigned cols) {
  return detail::isWhole(u) && detail::isWhole(v) && detail::isWhole(fixed) && u.cols() == rows &&
         v.cols() == cols && fixed.rows() == rows && fixed.cols() == cols;
}

DoubleGenMat pickColumns(const DoubleGenMat& a, const IntVec& which) {
  DoubleGenMat picked(a.rows(), which.length());
  for (int j = 0; j < static_cast<int>(picked.cols()); ++j) {
    DoubleVec column = picked.col(j);
    column = a.col(which(j));
  }
  return picked;
}

// x(i, j) = values(i, j) where the mask says `isFixed`
void setWhere(const IntGenMat& fixed, bool isFixed, DoubleGenMat& x, const DoubleGenMat& values) {
  for (int j = 0; j < static_cast<int>(x.cols()); ++j) {
    for (int i = 0; i < static_cast<int>(x.rows()); ++i) {
      if ((fixed(i, j) == 1) == isFixed) x(i, j) = values(i, j);
    }
  }
}

// Whether any of the unknowns that the mask fixes is in use.
bool isAnyUsed(const IntVec& mask, const IntVec& used) {
  for (int k = 0; k < static_cast<int>(used.length()); ++k) {
    // Where nothing was usable the list is that of an earlier system.
    if (used(k) < static_cast<int>(mask.length()) && mask(used(k)) == 1) return true;
  }
  return false;
}

// Sets the system in the first direction without the fixed unknowns. Only cleaning leaves them out,
// and not where the tolerance does not allow it: then the matrix of the free columns is handed
// over instead.
int setFreeColumns(TsolveConstrainedLsq& solver, const DoubleGenMat& u, const IntVec& mask,
                   const IntVec& freeRows, bool& isReduced) {
  const IntVec fixedRows = mask.valueIndex(1);
  if (fixedRows.length() == 0) return solver.setMatrix(u, 0, false, false, false);
  const int code = solver.setMatrix(u, fixedRows, 0, false, true, false);
  isReduced = isAnyUsed(mask, solver.usedColIndex());
  if (!isReduced) return code;
  return solver.setMatrix(pickColumns(u, freeRows), 0, false, false, false);
}

// The components of a grid, side by side in one matrix.
class Components {
 public:
  Components(const DoubleGenMat& all, int count)
      : all_(all), count_(count), cols_(all.cols() / static_cast<unsigned>(count)) {}

  int count() const { return count_; }
  bool haveShape(unsigned rows, unsigned cols) const {
    return all_.rows() == rows && cols_ == cols && detail::isWhole(all_);
  }
  // View on component c.
  DoubleGenMat operator[](int c) {
    const unsigned size = all_.rows() * cols_;
    const DoubleVec part = all_.dataVec().slice(c * static_cast<int>(size), size, 1);
    return DoubleGenMat(part, all_.rows(), cols_);
  }
  Components zeros() const { return {DoubleGenMat(all_.rows(), all_.cols(), 0.0), count_}; }

 private:
  DoubleGenMat all_;
  int count_;
  unsigned cols_;
};

int solveAllFree(TsolveTensorProductLsq& solver, const DoubleGenMat& u, const DoubleGenMat& v,
                 Components& b, Components& x) {
  int code = solver.setMatrix(u, v, 0, 0, false, false, false, false, false, false);
  for (int c = 0; c < x.count() && code == kSolved; ++c) {
    DoubleGenMat component = x[c];
    code = solver.solve(b[c], &component);
  }
  return code;
}

// What the prescribed unknowns leave of the data, solved for in the second direction.
int solveSecondDirection(TsolveConstrainedLsq& solver, const DoubleGenMat& u, const DoubleGenMat& v,
                         const IntGenMat& fixed, Components& b, Components& x,
                         Components& between) {
  int code = solver.setMatrix(v, 0, false, false, false);
  for (int c = 0; c < b.count() && code == kSolved; ++c) {
    const DoubleGenMat values = x[c];
    DoubleGenMat prescribed(values.rows(), values.cols(), 0.0);
    if (!haveSameShape(prescribed, values)) return kBadArgument;
    setWhere(fixed, true, prescribed, values);
    DoubleGenMat solved = between[c];
    code = solveRows(solver, b[c] - transProduct(product(u, prescribed), v), solved, kSolved);
  }
  return code;
}

// Column j of the free unknowns of all components: their matrix is the same.
int solveColumn(TsolveConstrainedLsq& solver, const DoubleGenMat& u, const IntVec& mask, int j,
                Components& between, Components& solved) {
  const IntVec freeRows = mask.nonValueIndex(1);
  if (freeRows.length() == 0 && mask.length() > 0) return kSolved;
  bool isReduced = false;
  int code = setFreeColumns(solver, u, mask, freeRows, isReduced);
  for (int c = 0; c < solved.count() && code == kSolved; ++c) {
    DoubleVec x = solved[c].col(j);
    DoubleVec unknowns = isReduced ? DoubleVec(freeRows.length(), 0.0) : x;
    code = solver.solve(between[c].col(j), &unknowns, false);
    if (isReduced && code == kSolved) x.vecPick(freeRows) = unknowns;
  }
  return code;
}

// Leaves x as it is unless the code is 0.
int solvePrescribed(TsolveTensorProductLsq& solver, TsolveConstrainedLsq& solverInU,
                    TsolveConstrainedLsq& solverInV, const DoubleGenMat& u, const DoubleGenMat& v,
                    const IntGenMat& fixed, Components& b, Components& x) {
  const MemoryWatch memory;
  Components solved = x.zeros();
  const unsigned all = fixed.cols() * static_cast<unsigned>(x.count());
  Components between(DoubleGenMat(u.rows(), all), x.count());
  if (!b.haveShape(u.rows(), v.rows()) || !between.haveShape(u.rows(), v.cols()) ||
      !x.haveShape(u.cols(), v.cols()) || !solved.haveShape(u.cols(), v.cols())) {
    return kBadArgument;
  }
  int code;
  if (fixed.dataVec().countValue(1) == 0) {
    code = solveAllFree(solver, u, v, b, solved);
  } else {
    code = solveSecondDirection(solverInV, u, v, fixed, b, x, between);
    for (int j = 0; j < static_cast<int>(fixed.cols()) && code == kSolved; ++j) {
      code = solveColumn(solverInU, u, fixed.col(j), j, between, solved);
    }
  }
  if (code != kSolved) return code;
  if (memory.ranOut()) return kBadArgument;
  for (int c = 0; c < x.count(); ++c) {
    DoubleGenMat result = x[c];
    setWhere(fixed, false, result, solved[c]);
  }
  return kSolved;
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
  if (!detail::isWhole(b) || !detail::isWhole(*x)) return kBadArgument;
  const MemoryWatch memory;
  DoubleGenMat between(b.rows(), x->cols(), 0.0);
  DoubleGenMat found = x->copy();
  if (memory.ranOut() || found.dataVec().length() != x->dataVec().length()) return kBadArgument;
  int code = solveRows(*v_, b, between, kNotSolvable);
  if (code != kSolved && b.rows() > 0) return code;
  code = solveColumns(*u_, between, found, code);
  if (memory.ranOut()) return kBadArgument;
  *x = found;  // and with it the columns before one that failed
  return code;
}

int TsolveTensorProductLsq::solve(const TtupleMatrix& b, TtupleMatrix* x) const {
  if (x == nullptr || b.size() != x->size()) return kBadArgument;
  const MemoryWatch memory;
  DoubleGenMat work(static_cast<unsigned>(x->rows()), static_cast<unsigned>(x->cols()), 0.0);
  TtupleMatrix found = x->copy();
  int code = kSolved;
  for (int c = 0; c < x->size() && code == kSolved; ++c) {
    code = solve(b.component(c), &work);
    if (code == kSolved) found.setComponent(c, work);
  }
  if (memory.ranOut()) return kBadArgument;
  *x = found;  // and with it the components before one that failed
  return code;
}

// ---- Prescribed unknowns ------------------------------------------------------------------------

int TsolveTensorProductLsq::solveFixed(const DoubleGenMat& u, const DoubleGenMat& v,
                                       const IntGenMat& fixed, const DoubleGenMat& b,
                                       DoubleGenMat* x) {
  if (x == nullptr || !areWholeAndFit(u, v, fixed, x->rows(), x->cols())) return kBadArgument;
  Components data(b, 1), unknowns(*x, 1);
  return solvePrescribed(*this, *u_, *v_, u, v, fixed, data, unknowns);
}

int TsolveTensorProductLsq::solveFixed(const DoubleGenMat& u, const DoubleGenMat& v,
                                       const IntGenMat& fixed, const TtupleMatrix& b,
                                       TtupleMatrix* x) {
  if (x == nullptr || b.size() != x->size()) return kBadArgument;
  const MemoryWatch memory;
  const auto count = static_cast<unsigned>(b.size());
  const auto rows = static_cast<unsigned>(x->rows()), cols = static_cast<unsigned>(x->cols());
  const auto dataRows = static_cast<unsigned>(b.rows()), dataCols = static_cast<unsigned>(b.cols());
  if (!areWholeAndFit(u, v, fixed, rows, cols)) return kBadArgument;
  Components data(DoubleGenMat(dataRows, dataCols * count), b.size());
  Components unknowns(DoubleGenMat(rows, cols * count), b.size());
  if (!data.haveShape(dataRows, dataCols) || !unknowns.haveShape(rows, cols)) return kBadArgument;
  for (int c = 0; c < b.size(); ++c) {
    data[c] = b.component(c);
    unknowns[c] = std::as_const(*x).component(c);
  }
  const int code = solvePrescribed(*this, *u_, *v_, u, v, fixed, data, unknowns);
  if (code != kSolved) return code;
  if (memory.ranOut()) return kBadArgument;
  for (int c = 0; c < b.size(); ++c) x->setComponent(c, unknowns[c]);
  return kSolved;
}
