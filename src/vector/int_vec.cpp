// SPDX-License-Identifier: MIT
// Vectors of int: what hosts find by name, and the conversions; the work is done by the templates
// for all element types (strided_vec_impl.h, vec_functions.h).
#include "knotwork/vector/int_vec.h"

#include <limits>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/int_vec_pick.h"
#include "vector/strided_vec_impl.h"

namespace detail = knotwork::detail;

template class knotwork::StridedVec<IntVec, int>;

const char IntVec::className[] = "IntVec";
const unsigned short IntVec::origin = 0x9018;
int IntVec::numberPerLine = detail::kDefaultPerLine;

IntVec::IntVec() = default;
IntVec::IntVec(unsigned n) : StridedVec(n) {}
IntVec::IntVec(unsigned n, int value) : StridedVec(n, value) {}
IntVec::IntVec(unsigned n, int first, int increment) : StridedVec(n, first, increment) {}
IntVec::IntVec(const int* p, unsigned n) : StridedVec(p, n) {}
IntVec::IntVec(const IntVec& v) : StridedVec(v) {}
IntVec::~IntVec() = default;
IntVec::IntVec(const IntVec& v, int first, unsigned n, int stride)
    : StridedVec(v, first, n, stride) {}

IntVec& IntVec::operator=(const IntVec& v) { return assign(v); }
IntVec& IntVec::operator=(int x) { return fill(x); }

// Toward zero; what int cannot hold becomes its least value, as the processor's own conversion
// gives.
static int towardZero(double x) {
  constexpr double kBeyond = 2147483648.0;
  return x > -kBeyond - 1 && x < kBeyond ? static_cast<int>(x) : std::numeric_limits<int>::min();
}

IntVec::IntVec(const DoubleVec& v) : IntVec(detail::convert<IntVec>(v, towardZero)) {}

IntVec::operator DoubleVec() const {
  return detail::convert<DoubleVec>(*this, [](int x) { return static_cast<double>(x); });
}

IntVec operator+(const IntVec& a, const IntVec& b) { return detail::add(a, b); }
IntVec operator-(const IntVec& a, const IntVec& b) { return detail::subtract(a, b); }
IntVec operator*(const IntVec& a, const IntVec& b) { return detail::multiply(a, b); }
IntVec operator+(const IntVec& v, int s) { return detail::addScalar(v, s); }
IntVec operator*(const IntVec& v, int s) { return detail::multiplyScalar(v, s); }
IntVec operator-(const IntVec& v) { return detail::negate(v); }

int dot(const IntVec& a, const IntVec& b) { return detail::dot(a, b); }
int sum(const IntVec& v) { return detail::sum(v); }
int prod(const IntVec& v) { return detail::prod(v); }
int maxIndex(const IntVec& v) { return detail::maxIndex(v); }
int minIndex(const IntVec& v) { return detail::minIndex(v); }
int maxValue(const IntVec& v) { return detail::valueAt(v, detail::maxIndex(v)); }
int minValue(const IntVec& v) { return detail::valueAt(v, detail::minIndex(v)); }
IntVec abs(const IntVec& v) { return detail::absolute(v); }
IntVec cumsum(const IntVec& v) { return detail::cumsum(v); }
IntVec delta(const IntVec& v) { return detail::delta(v); }
IntVec reverse(const IntVec& v) { return detail::reverse(v); }

std::ostream& operator<<(std::ostream& out, const IntVec& v) {
  v.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, IntVec& v) {
  v.scanFrom(in);
  return in;
}
