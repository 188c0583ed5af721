// SPDX-License-Identifier: MIT
// Upper triangular matrices of double: what hosts find by name. Element-wise operations are those
// of the packed vectors, where the zeros that are not stored have no part.
#include "knotwork/matrix/double_upper_tri_mat.h"

#include "knotwork/matrix/double_lower_tri_mat.h"
#include "matrix/packed_mat_impl.h"

namespace detail = knotwork::detail;

template class knotwork::PackedMat<DoubleUpperTriMat, knotwork::UpperPacking>;

const char DoubleUpperTriMat::className[] = "DoubleUpperTriMat";

DoubleUpperTriMat::DoubleUpperTriMat() = default;
DoubleUpperTriMat::DoubleUpperTriMat(unsigned rows, unsigned cols) : PackedMat(rows, cols) {}
DoubleUpperTriMat::DoubleUpperTriMat(const DoubleVec& v, unsigned rows, unsigned cols)
    : PackedMat(v, rows, cols) {}
DoubleUpperTriMat::DoubleUpperTriMat(const DoubleUpperTriMat& m) = default;
DoubleUpperTriMat::DoubleUpperTriMat(const DoubleGenMat& m) : PackedMat(m) {}
DoubleGenMat::DoubleGenMat(const DoubleUpperTriMat& m) : DoubleGenMat(detail::expanded(m)) {}

DoubleUpperTriMat& DoubleUpperTriMat::operator=(const DoubleUpperTriMat& m) { return assign(m); }

DoubleUpperTriMat operator+(const DoubleUpperTriMat& a, const DoubleUpperTriMat& b) {
  return detail::combinePacked(a, b, detail::add<DoubleVec>);
}
DoubleUpperTriMat operator-(const DoubleUpperTriMat& a, const DoubleUpperTriMat& b) {
  return detail::combinePacked(a, b, detail::subtract<DoubleVec>);
}
DoubleUpperTriMat operator*(const DoubleUpperTriMat& a, const DoubleUpperTriMat& b) {
  return detail::combinePacked(a, b, detail::multiply<DoubleVec>);
}
DoubleUpperTriMat operator/(const DoubleUpperTriMat& a, const DoubleUpperTriMat& b) {
  return detail::combinePacked(a, b, detail::divide<DoubleVec>);
}

DoubleUpperTriMat operator*(const DoubleUpperTriMat& m, double x) {
  return detail::packedLike(m, m.dataVec() * x);
}
DoubleUpperTriMat operator*(double x, const DoubleUpperTriMat& m) { return m * x; }
DoubleUpperTriMat operator/(const DoubleUpperTriMat& m, double x) {
  return detail::packedLike(m, m.dataVec() / x);
}
DoubleUpperTriMat operator-(const DoubleUpperTriMat& m) {
  return detail::packedLike(m, -m.dataVec());
}
DoubleUpperTriMat abs(const DoubleUpperTriMat& m) {
  return detail::packedLike(m, abs(m.dataVec()));
}
DoubleLowerTriMat transpose(const DoubleUpperTriMat& m) {
  return detail::packedAs<DoubleLowerTriMat>(m);
}

DoubleVec product(const DoubleUpperTriMat& m, const DoubleVec& v) {
  detail::checkProduct(m, v);
  return detail::lowerTimes(v, m);
}

DoubleVec product(const DoubleVec& v, const DoubleUpperTriMat& m) {
  detail::checkProduct(v, m);
  return detail::timesLower(m, v);
}

std::ostream& operator<<(std::ostream& out, const DoubleUpperTriMat& m) {
  m.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, DoubleUpperTriMat& m) {
  m.scanFrom(in);
  return in;
}
