// SPDX-License-Identifier: MIT
// General matrices of int: what hosts find by name. The work is done by the templates for both
// element types (mat_functions.h) and by the vectors underneath.
#include "knotwork/matrix/int_gen_mat.h"

#include "matrix/gen_mat_impl.h"

namespace detail = knotwork::detail;

template class knotwork::GenMatBase<IntGenMat, IntVec, int>;

const char IntGenMat::className[] = "IntGenMat";

IntGenMat::IntGenMat() = default;
IntGenMat::IntGenMat(unsigned rows, unsigned cols) : GenMatBase(rows, cols) {}
IntGenMat::IntGenMat(unsigned rows, unsigned cols, int x) : GenMatBase(rows, cols, x) {}
IntGenMat::IntGenMat(const IntVec& v, unsigned rows, unsigned cols) : GenMatBase(v, rows, cols) {}
IntGenMat::IntGenMat(const int* p, unsigned rows, unsigned cols) : GenMatBase(p, rows, cols) {}
IntGenMat::IntGenMat(const IntGenMat& m) = default;

IntGenMat& IntGenMat::operator=(const IntGenMat& m) { return assign(m); }
IntGenMat& IntGenMat::operator=(int x) { return fill(x); }

IntGenMat operator+(const IntGenMat& a, const IntGenMat& b) {
  return detail::combineMatrices(a, b, detail::add<IntVec>);
}
IntGenMat operator-(const IntGenMat& a, const IntGenMat& b) {
  return detail::combineMatrices(a, b, detail::subtract<IntVec>);
}
IntGenMat operator*(const IntGenMat& a, const IntGenMat& b) {
  return detail::combineMatrices(a, b, detail::multiply<IntVec>);
}
IntGenMat operator/(const IntGenMat& a, const IntGenMat& b) {
  return detail::combineMatrices(a, b, detail::divide<IntVec>);
}

IntGenMat operator+(const IntGenMat& m, int x) {
  return detail::shapedLike(m, detail::addScalar(m.dataVec(), x));
}
IntGenMat operator-(const IntGenMat& m, int x) { return m + detail::ElementRules<int>::negate(x); }
IntGenMat operator*(const IntGenMat& m, int x) {
  return detail::shapedLike(m, detail::multiplyScalar(m.dataVec(), x));
}
IntGenMat operator/(const IntGenMat& m, int x) {
  return detail::shapedLike(m, detail::divideByScalar(m.dataVec(), x));
}
IntGenMat operator+(int x, const IntGenMat& m) { return m + x; }
IntGenMat operator-(int x, const IntGenMat& m) {
  return detail::shapedLike(m, detail::subtractFrom(x, m.dataVec()));
}
IntGenMat operator*(int x, const IntGenMat& m) { return m * x; }
IntGenMat operator/(int x, const IntGenMat& m) {
  return detail::shapedLike(m, detail::divideInto(x, m.dataVec()));
}
IntGenMat operator-(const IntGenMat& m) {
  return detail::shapedLike(m, detail::negate(m.dataVec()));
}
IntGenMat abs(const IntGenMat& m) { return detail::shapedLike(m, detail::absolute(m.dataVec())); }

IntGenMat product(const IntGenMat& a, const IntGenMat& b) { return detail::product(a, b); }
IntGenMat transposeProduct(const IntGenMat& a, const IntGenMat& b) {
  return detail::transposeProduct(a, b);
}
IntGenMat transProduct(const IntGenMat& a, const IntGenMat& b) {
  return detail::transProduct(a, b);
}
IntVec product(const IntGenMat& m, const IntVec& v) { return detail::product(m, v); }
IntVec product(const IntVec& v, const IntGenMat& m) { return detail::product(v, m); }
IntGenMat transpose(const IntGenMat& m) { return detail::transpose(m); }
IntGenMat kronecker(const IntGenMat& a, const IntGenMat& b) { return detail::kronecker(a, b); }

std::ostream& operator<<(std::ostream& out, const IntGenMat& m) {
  m.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, IntGenMat& m) {
  m.scanFrom(in);
  return in;
}
