// SPDX-License-Identifier: MIT
// Lower triangular matrices of double: what hosts find by name. Element-wise operations are those
// of the packed vectors, where the zeros that are not stored have no part.
#include "knotwork/matrix/double_lower_tri_mat.h"

#include "knotwork/matrix/double_upper_tri_mat.h"
#include "matrix/packed_mat_impl.h"

namespace detail = knotwork::detail;

template class knotwork::PackedMat<DoubleLowerTriMat, knotwork::LowerPacking>;

const char DoubleLowerTriMat::className[] = "DoubleLowerTriMat";

DoubleLowerTriMat::DoubleLowerTriMat() = default;
DoubleLowerTriMat::DoubleLowerTriMat(unsigned rows, unsigned cols) : PackedMat(rows, cols) {}
DoubleLowerTriMat::DoubleLowerTriMat(const DoubleVec& v, unsigned rows, unsigned cols)
    : PackedMat(v, rows, cols) {}
DoubleLowerTriMat::DoubleLowerTriMat(const DoubleLowerTriMat& m) = default;
DoubleLowerTriMat::DoubleLowerTriMat(const DoubleGenMat& m) : PackedMat(m) {}
DoubleGenMat::DoubleGenMat(const DoubleLowerTriMat& m) : DoubleGenMat(detail::expanded(m)) {}

DoubleLowerTriMat& DoubleLowerTriMat::operator=(const DoubleLowerTriMat& m) { return assign(m); }

DoubleLowerTriMat operator+(const DoubleLowerTriMat& a, const DoubleLowerTriMat& b) {
  return detail::combinePacked(a, b, detail::add<DoubleVec>);
}
DoubleLowerTriMat operator-(const DoubleLowerTriMat& a, const DoubleLowerTriMat& b) {
  return detail::combinePacked(a, b, detail::subtract<DoubleVec>);
}
DoubleLowerTriMat operator*(const DoubleLowerTriMat& a, const DoubleLowerTriMat& b) {
  return detail::combinePacked(a, b, detail::multiply<DoubleVec>);
}
DoubleLowerTriMat operator/(const DoubleLowerTriMat& a, const DoubleLowerTriMat& b) {
  return detail::combinePacked(a, b, detail::divide<DoubleVec>);
}

DoubleLowerTriMat operator*(const DoubleLowerTriMat& m, double x) {
  return detail::packedLike(m, m.dataVec() * x);
}
DoubleLowerTriMat operator*(double x, const DoubleLowerTriMat& m) { return m * x; }
DoubleLowerTriMat operator/(const DoubleLowerTriMat& m, double x) {
  return detail::packedLike(m, m.dataVec() / x);
}
DoubleLowerTriMat operator-(const DoubleLowerTriMat& m) {
  return detail::packedLike(m, -m.dataVec());
}
DoubleLowerTriMat abs(const DoubleLowerTriMat& m) {
  return detail::packedLike(m, abs(m.dataVec()));
}
DoubleUpperTriMat transpose(const DoubleLowerTriMat& m) {
  return detail::packedAs<DoubleUpperTriMat>(m);
}

DoubleVec product(const DoubleLowerTriMat& m, const DoubleVec& v) {
  detail::checkProduct(m, v);
  return detail::timesLower(m, v);
}

DoubleVec product(const DoubleVec& v, const DoubleLowerTriMat& m) {
  detail::checkProduct(v, m);
  return detail::lowerTimes(v, m);
}

std::ostream& operator<<(std::ostream& out, const DoubleLowerTriMat& m) {
  m.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, DoubleLowerTriMat& m) {
  m.scanFrom(in);
  return in;
}
