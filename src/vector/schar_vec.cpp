// SPDX-License-Identifier: MIT
// Vectors of signed char.
#include "knotwork/vector/schar_vec.h"

#include "knotwork/vector/int_vec.h"
#include "knotwork/vector/schar_vec_pick.h"
#include "vector/strided_vec_impl.h"

namespace detail = knotwork::detail;

template class knotwork::StridedVec<SCharVec, signed char>;

const char SCharVec::className[] = "SCharVec";
const unsigned short SCharVec::origin = 0x9024;
int SCharVec::numberPerLine = detail::kDefaultPerLine;

SCharVec::SCharVec() = default;
SCharVec::SCharVec(unsigned n) : StridedVec(n) {}
SCharVec::SCharVec(unsigned n, signed char value) : StridedVec(n, value) {}
SCharVec::SCharVec(unsigned n, signed char first, signed char increment)
    : StridedVec(n, first, increment) {}
SCharVec::SCharVec(const signed char* p, unsigned n) : StridedVec(p, n) {}
SCharVec::SCharVec(const SCharVec& v) : StridedVec(v) {}
SCharVec::~SCharVec() = default;
SCharVec::SCharVec(const SCharVec& v, int first, unsigned n, int stride)
    : StridedVec(v, first, n, stride) {}

SCharVec& SCharVec::operator=(const SCharVec& v) { return assign(v); }
SCharVec& SCharVec::operator=(signed char x) { return fill(x); }

SCharVec::SCharVec(const IntVec& v)
    : SCharVec(detail::convert<SCharVec>(v, [](int x) { return static_cast<signed char>(x); })) {}

SCharVec::operator IntVec() const {
  return detail::convert<IntVec>(*this, [](signed char x) { return int{x}; });
}

SCharVec operator+(const SCharVec& a, const SCharVec& b) { return detail::add(a, b); }
SCharVec operator-(const SCharVec& a, const SCharVec& b) { return detail::subtract(a, b); }
SCharVec operator*(const SCharVec& a, const SCharVec& b) { return detail::multiply(a, b); }
SCharVec operator+(const SCharVec& v, signed char s) { return detail::addScalar(v, s); }
SCharVec operator*(const SCharVec& v, signed char s) { return detail::multiplyScalar(v, s); }
SCharVec operator-(const SCharVec& v) { return detail::negate(v); }

signed char dot(const SCharVec& a, const SCharVec& b) { return detail::dot(a, b); }
signed char sum(const SCharVec& v) { return detail::sum(v); }
signed char prod(const SCharVec& v) { return detail::prod(v); }
int maxIndex(const SCharVec& v) { return detail::maxIndex(v); }
int minIndex(const SCharVec& v) { return detail::minIndex(v); }
signed char maxValue(const SCharVec& v) { return detail::valueAt(v, detail::maxIndex(v)); }
signed char minValue(const SCharVec& v) { return detail::valueAt(v, detail::minIndex(v)); }
SCharVec abs(const SCharVec& v) { return detail::absolute(v); }
SCharVec cumsum(const SCharVec& v) { return detail::cumsum(v); }
SCharVec delta(const SCharVec& v) { return detail::delta(v); }
SCharVec reverse(const SCharVec& v) { return detail::reverse(v); }

std::ostream& operator<<(std::ostream& out, const SCharVec& v) {
  v.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, SCharVec& v) {
  v.scanFrom(in);
  return in;
}
