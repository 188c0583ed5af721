// SPDX-License-Identifier: MIT
// Singular value decomposition.
#include "knotwork/decomp/double_sv_decomp.h"

#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"

namespace linpack = knotwork::linpack;

namespace {

// @return whether m could be resized.
bool resized(DoubleGenMat& m, unsigned rows, unsigned cols) {
  m.resize(rows, cols);
  return m.rows() == rows && m.cols() == cols;
}

bool resized(DoubleVec& v, unsigned n) {
  v.resize(n);
  return v.length() == n;
}

}  // namespace

DoubleSVDecomp::DoubleSVDecomp() = default;
DoubleSVDecomp::DoubleSVDecomp(const DoubleGenMat& A) { factor(A); }
DoubleSVDecomp::DoubleSVDecomp(const DoubleSVDecomp& other) = default;
DoubleSVDecomp& DoubleSVDecomp::operator=(const DoubleSVDecomp& other) = default;

DoubleVec DoubleSVDecomp::singularValues() const { return values_; }
DoubleVec DoubleSVDecomp::eValues() const { return superdiagonal_; }
DoubleGenMat DoubleSVDecomp::leftVecs() const { return left_; }
DoubleGenMat DoubleSVDecomp::rightVecs() const { return right_; }
int DoubleSVDecomp::numSVsFound() const { return static_cast<int>(values_.length()) - status_; }
bool DoubleSVDecomp::fail() const { return values_.length() == 0 || status_ != 0; }
bool DoubleSVDecomp::good() const { return !fail(); }

void DoubleSVDecomp::factor(const DoubleGenMat& A) {
  const unsigned rows = A.rows();
  const unsigned cols = A.cols();
  const unsigned count = std::min(rows, cols);
  const int left = job_ / 10;
  bool ready = left == 0 || resized(left_, rows, left == 1 ? rows : count);
  ready = (job_ % 10 == 0 || resized(right_, cols, cols)) && ready;
  // the bidiagonal matrix of a wide A has one column more than A has rows
  ready = resized(values_, rows < cols ? rows + 1 : cols) && ready;
  ready = resized(superdiagonal_, cols) && ready;
  if (count > 0) {
    DoubleGenMat copy = A.deepCopy();
    DoubleVec work(rows);
    ready = ready && copy.rows() == rows && copy.cols() == cols && work.length() == rows;
    if (ready) {
      status_ = linpack::dsvdc(copy.data(), static_cast<int>(rows), static_cast<int>(rows),
                               static_cast<int>(cols), values_.data(), superdiagonal_.data(),
                               left_.data(), static_cast<int>(left_.rows()), right_.data(),
                               static_cast<int>(right_.rows()), work.data(),
                               static_cast<linpack::SvdcJob>(job_));
    }
  }
  if (resized(values_, count) && ready) return;
  values_.reference(DoubleVec());
  status_ = 0;
}

// job_ is the routine's own word. Its tens tell the left vectors: 0 none, 1 all, 2 as many as there
// are singular values. Its ones tell the right vectors.
int DoubleSVDecomp::computeLeftVecs(int on) {
  const int before = job_ / 10;
  const int wanted = before != 0 ? before : 1;
  job_ = 10 * (on ? wanted : 0) + job_ % 10;
  return before != 0;
}

int DoubleSVDecomp::computeAllLeftVecs(int on) {
  const int before = job_ / 10;
  if (before != 0) job_ = 10 * (on ? 1 : 2) + job_ % 10;
  return before == 1;
}

int DoubleSVDecomp::computeRightVecs(int on) {
  const int before = job_ % 10;
  job_ = job_ - before + (on ? 1 : 0);
  return before != 0;
}
