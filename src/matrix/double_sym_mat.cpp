// SPDX-License-Identifier: MIT
// Symmetric matrices of double.
#include "knotwork/matrix/double_sym_mat.h"

#include "matrix/packed_mat_impl.h"

namespace detail = knotwork::detail;

template class knotwork::PackedMat<DoubleSymMat, knotwork::SymmetricPacking>;

const char DoubleSymMat::className[] = "DoubleSymMat";

DoubleSymMat::DoubleSymMat() = default;
DoubleSymMat::DoubleSymMat(unsigned rows, unsigned cols) : PackedMat(rows, cols) {}
DoubleSymMat::DoubleSymMat(unsigned rows, unsigned cols, double x) : PackedMat(rows, cols, x) {}
DoubleSymMat::DoubleSymMat(const DoubleVec& v, unsigned rows, unsigned cols)
    : PackedMat(v, rows, cols) {}
DoubleSymMat::DoubleSymMat(const DoubleSymMat& m) = default;
DoubleSymMat::DoubleSymMat(const DoubleGenMat& m) : PackedMat(m) {}
DoubleGenMat::DoubleGenMat(const DoubleSymMat& m) : DoubleGenMat(detail::expanded(m)) {}

DoubleSymMat& DoubleSymMat::operator=(const DoubleSymMat& m) { return assign(m); }

DoubleSymMat& DoubleSymMat::operator=(double x) {
  vec_ = x;
  return *this;
}

DoubleSymMat& DoubleSymMat::operator+=(double x) {
  vec_ += x;
  return *this;
}

DoubleSymMat& DoubleSymMat::operator-=(double x) {
  vec_ -= x;
  return *this;
}

DoubleSymMat& DoubleSymMat::operator++() { return *this += 1.0; }
DoubleSymMat& DoubleSymMat::operator--() { return *this -= 1.0; }

DoubleSymMat DoubleSymMat::apply(double (*f)(double)) const {
  return detail::packedLike(*this, vec_.apply(f));
}

DoubleSymMat operator+(const DoubleSymMat& a, const DoubleSymMat& b) {
  return detail::combinePacked(a, b, detail::add<DoubleVec>);
}
DoubleSymMat operator-(const DoubleSymMat& a, const DoubleSymMat& b) {
  return detail::combinePacked(a, b, detail::subtract<DoubleVec>);
}
DoubleSymMat operator*(const DoubleSymMat& a, const DoubleSymMat& b) {
  return detail::combinePacked(a, b, detail::multiply<DoubleVec>);
}
DoubleSymMat operator/(const DoubleSymMat& a, const DoubleSymMat& b) {
  return detail::combinePacked(a, b, detail::divide<DoubleVec>);
}

DoubleSymMat operator*(const DoubleSymMat& m, double x) {
  return detail::packedLike(m, m.dataVec() * x);
}
DoubleSymMat operator*(double x, const DoubleSymMat& m) { return m * x; }
DoubleSymMat operator/(const DoubleSymMat& m, double x) {
  return detail::packedLike(m, m.dataVec() / x);
}
DoubleSymMat operator+(const DoubleSymMat& m, double x) {
  return detail::packedLike(m, m.dataVec() + x);
}
DoubleSymMat operator+(double x, const DoubleSymMat& m) { return m + x; }
DoubleSymMat operator-(const DoubleSymMat& m, double x) { return m + -x; }
DoubleSymMat operator-(double x, const DoubleSymMat& m) {
  return detail::packedLike(m, x - m.dataVec());
}
DoubleSymMat operator/(double x, const DoubleSymMat& m) {
  return detail::packedLike(m, x / m.dataVec());
}

DoubleSymMat atan2(const DoubleSymMat& a, const DoubleSymMat& b) {
  return detail::combinePacked(a, b,
                               [](const DoubleVec& x, const DoubleVec& y) { return atan2(x, y); });
}

DoubleSymMat operator-(const DoubleSymMat& m) { return detail::packedLike(m, -m.dataVec()); }
DoubleSymMat abs(const DoubleSymMat& m) { return detail::packedLike(m, abs(m.dataVec())); }
DoubleSymMat transpose(const DoubleSymMat& m) { return m; }

DoubleVec product(const DoubleSymMat& m, const DoubleVec& v) {
  detail::checkProduct(m, v);
  return detail::timesSymmetric(m, v);
}

DoubleVec product(const DoubleVec& v, const DoubleSymMat& m) {
  detail::checkProduct(v, m);
  return detail::timesSymmetric(m, v);
}

std::ostream& operator<<(std::ostream& out, const DoubleSymMat& m) {
  m.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, DoubleSymMat& m) {
  m.scanFrom(in);
  return in;
}
