// SPDX-License-Identifier: MIT
// General matrices of double: what hosts find by name. The work is done by the templates for both
// element types (mat_functions.h) and by the vectors underneath.
#include "knotwork/matrix/double_gen_mat.h"

#include "knotwork/matrix/int_gen_mat.h"
#include "matrix/gen_mat_impl.h"

namespace detail = knotwork::detail;

template class knotwork::GenMatBase<DoubleGenMat, DoubleVec, double>;

const char DoubleGenMat::className[] = "DoubleGenMat";

DoubleGenMat::DoubleGenMat() = default;
DoubleGenMat::DoubleGenMat(unsigned rows, unsigned cols) : GenMatBase(rows, cols) {}
DoubleGenMat::DoubleGenMat(unsigned rows, unsigned cols, double x) : GenMatBase(rows, cols, x) {}
DoubleGenMat::DoubleGenMat(const DoubleVec& v, unsigned rows, unsigned cols)
    : GenMatBase(v, rows, cols) {}
DoubleGenMat::DoubleGenMat(const double* p, unsigned rows, unsigned cols)
    : GenMatBase(p, rows, cols) {}
DoubleGenMat::DoubleGenMat(const DoubleGenMat& m) = default;

DoubleGenMat& DoubleGenMat::operator=(const DoubleGenMat& m) { return assign(m); }
DoubleGenMat& DoubleGenMat::operator=(double x) { return fill(x); }

DoubleGenMat::DoubleGenMat(const IntGenMat& m)
    : DoubleGenMat(detail::wrap<DoubleGenMat>(m.dataVec(), m.rows(), m.cols())) {}

DoubleGenMat DoubleGenMat::apply(double (*f)(double)) const {
  return detail::shapedLike(*this, dataVec().apply(f));
}

DoubleGenMat atan2(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::combineMatrices(
      a, b, [](const DoubleVec& x, const DoubleVec& y) { return atan2(x, y); });
}

DoubleGenMat operator+(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::combineMatrices(a, b, detail::add<DoubleVec>);
}
DoubleGenMat operator-(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::combineMatrices(a, b, detail::subtract<DoubleVec>);
}
DoubleGenMat operator*(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::combineMatrices(a, b, detail::multiply<DoubleVec>);
}
DoubleGenMat operator/(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::combineMatrices(a, b, detail::divide<DoubleVec>);
}

DoubleGenMat operator+(const DoubleGenMat& m, double x) {
  return detail::shapedLike(m, detail::addScalar(m.dataVec(), x));
}
DoubleGenMat operator-(const DoubleGenMat& m, double x) {
  return m + detail::ElementRules<double>::negate(x);
}
DoubleGenMat operator*(const DoubleGenMat& m, double x) {
  return detail::shapedLike(m, detail::multiplyScalar(m.dataVec(), x));
}
DoubleGenMat operator/(const DoubleGenMat& m, double x) {
  return detail::shapedLike(m, detail::divideByScalar(m.dataVec(), x));
}
DoubleGenMat operator+(double x, const DoubleGenMat& m) { return m + x; }
DoubleGenMat operator-(double x, const DoubleGenMat& m) {
  return detail::shapedLike(m, detail::subtractFrom(x, m.dataVec()));
}
DoubleGenMat operator*(double x, const DoubleGenMat& m) { return m * x; }
DoubleGenMat operator/(double x, const DoubleGenMat& m) {
  return detail::shapedLike(m, detail::divideInto(x, m.dataVec()));
}
DoubleGenMat operator-(const DoubleGenMat& m) {
  return detail::shapedLike(m, detail::negate(m.dataVec()));
}
DoubleGenMat abs(const DoubleGenMat& m) {
  return detail::shapedLike(m, detail::absolute(m.dataVec()));
}

DoubleGenMat product(const DoubleGenMat& a, const DoubleGenMat& b) { return detail::product(a, b); }
DoubleGenMat transposeProduct(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::transposeProduct(a, b);
}
DoubleGenMat transProduct(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::transProduct(a, b);
}
DoubleVec product(const DoubleGenMat& m, const DoubleVec& v) { return detail::product(m, v); }
DoubleVec product(const DoubleVec& v, const DoubleGenMat& m) { return detail::product(v, m); }
DoubleGenMat transpose(const DoubleGenMat& m) { return detail::transpose(m); }
DoubleGenMat kronecker(const DoubleGenMat& a, const DoubleGenMat& b) {
  return detail::kronecker(a, b);
}

std::ostream& operator<<(std::ostream& out, const DoubleGenMat& m) {
  m.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, DoubleGenMat& m) {
  m.scanFrom(in);
  return in;
}
