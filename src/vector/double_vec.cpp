// SPDX-License-Identifier: MIT
// Vectors of double, their mathematics and their tolerance predicates.
#include "knotwork/vector/double_vec.h"

#include <cmath>

#include "kernels/square_root.h"
#include "knotwork/vector/double_vec_pick.h"
#include "vector/strided_vec_impl.h"

namespace detail = knotwork::detail;
using detail::squareRoot;

template class knotwork::StridedVec<DoubleVec, double>;

const char DoubleVec::className[] = "DoubleVec";
const unsigned short DoubleVec::origin = 0x900E;
int DoubleVec::numberPerLine = detail::kDefaultPerLine;

DoubleVec::DoubleVec() = default;
DoubleVec::DoubleVec(unsigned n) : StridedVec(n) {}
DoubleVec::DoubleVec(unsigned n, double value) : StridedVec(n, value) {}
DoubleVec::DoubleVec(unsigned n, double first, double increment)
    : StridedVec(n, first, increment) {}
DoubleVec::DoubleVec(const double* p, unsigned n) : StridedVec(p, n) {}
DoubleVec::DoubleVec(const DoubleVec& v) : StridedVec(v) {}
DoubleVec::~DoubleVec() = default;
DoubleVec::DoubleVec(const DoubleVec& v, int first, unsigned n, int stride)
    : StridedVec(v, first, n, stride) {}

DoubleVec& DoubleVec::operator=(const DoubleVec& v) { return assign(v); }
DoubleVec& DoubleVec::operator=(double x) { return fill(x); }
DoubleVec::DoubleVec(RWBlock* block, double* start, unsigned n, int stride)
    : StridedVec(block, start, n, stride) {}

DoubleVec DoubleVec::apply(double (*f)(double)) const {
  return detail::convert<DoubleVec>(*this, f);
}

// ---- Length -------------------------------------------------------------------------------------

namespace {

// Sums squares in four phases: zeros, small, mid-range and large elements. Small and large ones are
// scaled by the largest so far; only the mid-range sum is plain.
// Source: C. L. Lawson et al., Basic Linear Algebra Subprograms for Fortran Usage (1979), DNRM2.
class ScaledSquares {
 public:
  // The length is rounded to single precision, as it was published: bits hang on it.
  explicit ScaledSquares(unsigned n) : midLimit_(kCutHigh / static_cast<float>(n)) {}

  void add(double x) {
    const double size = std::abs(x);
    if ((phase_ == kZeros || phase_ == kSmall) && size > kCutLow) enterMid();
    if (phase_ == kZeros && x == 0.0) return;
    if (phase_ == kZeros) {
      phase_ = kSmall;
      largest_ = size;
    }
    if (phase_ == kMid && size >= midLimit_) {
      phase_ = kLarge;
      sum_ = (sum_ / x) / x;
      largest_ = size;
    }
    if (phase_ == kMid) {
      sum_ += x * x;
    } else {
      addScaled(x, size);
    }
  }

  double root() const { return phase_ == kMid ? squareRoot(sum_) : largest_ * squareRoot(sum_); }

 private:
  // The published limits, safe on every machine of their time: squares of what is above the low one
  // lose no digits to underflow, and n squares of what is below the high one divided by n do not
  // overflow.
  static constexpr double kCutLow = 8.232e-11;
  static constexpr double kCutHigh = 1.304e19;
  enum Phase { kZeros, kSmall, kMid, kLarge };

  void enterMid() {
    if (phase_ == kSmall) sum_ = (sum_ * largest_) * largest_;
    phase_ = kMid;
  }

  void addScaled(double x, double size) {
    if (size <= largest_) {
      const double ratio = x / largest_;
      sum_ += ratio * ratio;
    } else {
      const double ratio = largest_ / x;
      sum_ = 1.0 + sum_ * (ratio * ratio);
      largest_ = size;
    }
  }

  double midLimit_;
  Phase phase_ = kZeros;
  double sum_ = 0.0;
  double largest_ = 0.0;
};

}  // namespace

double DoubleVec::vecLen() const {
  ScaledSquares squares(len_);
  const auto x = detail::runOf(*this);
  for (std::ptrdiff_t i = 0; i < detail::sizeOf(*this); ++i) squares.add(x[i]);
  return squares.root();
}

int DoubleVec::normalise() {
  const double length = vecLen();
  if (!(length > 0.0)) return 0;
  *this *= 1.0 / length;
  return 1;
}

// ---- Tolerance predicates -----------------------------------------------------------------------

namespace {

// By the sign, so that it is no library call.
double distance(double x, double c) {
  const double d = x - c;
  return d < 0.0 ? -d : d;
}

auto within(double value, double tol) {
  return [=](double x) { return distance(x, value) <= tol; };
}

auto beyond(double value, double tol) {
  return [=](double x) { return distance(x, value) > tol; };
}

}  // namespace

int DoubleVec::isZero(double tol) const { return isEqual(0.0, tol); }
int DoubleVec::isEqual(double value, double tol) const {
  return detail::allOf(*this, within(value, tol));
}
int DoubleVec::countZero(double tol) const { return countValue(0.0, tol); }
int DoubleVec::countValue(double value, double tol) const {
  return detail::countWhere(*this, within(value, tol));
}

void DoubleVec::clampZero(double tol) {
  const auto isSmall = within(0.0, tol);
  const auto x = detail::runOf(*this);
  for (std::ptrdiff_t i = 0; i < detail::sizeOf(*this); ++i) {
    if (isSmall(x[i])) x[i] = 0.0;
  }
}

IntVec DoubleVec::zeroIndex(double tol) const { return valueIndex(0.0, tol); }
IntVec DoubleVec::nonZeroIndex(double tol) const { return nonValueIndex(0.0, tol); }
IntVec DoubleVec::valueIndex(double value, double tol) const {
  return detail::indicesWhere(*this, within(value, tol));
}
IntVec DoubleVec::nonValueIndex(double value, double tol) const {
  return detail::indicesWhere(*this, beyond(value, tol));
}

// ---- Arithmetic and reductions ------------------------------------------------------------------

DoubleVec operator+(const DoubleVec& a, const DoubleVec& b) { return detail::add(a, b); }
DoubleVec operator-(const DoubleVec& a, const DoubleVec& b) { return detail::subtract(a, b); }
DoubleVec operator*(const DoubleVec& a, const DoubleVec& b) { return detail::multiply(a, b); }
DoubleVec operator+(const DoubleVec& v, double s) { return detail::addScalar(v, s); }
DoubleVec operator*(const DoubleVec& v, double s) { return detail::multiplyScalar(v, s); }
DoubleVec operator-(const DoubleVec& v) { return detail::negate(v); }

double dot(const DoubleVec& a, const DoubleVec& b) { return detail::dot(a, b); }
double sum(const DoubleVec& v) { return detail::sum(v); }
double prod(const DoubleVec& v) { return detail::prod(v); }
int maxIndex(const DoubleVec& v) { return detail::maxIndex(v); }
int minIndex(const DoubleVec& v) { return detail::minIndex(v); }
double maxValue(const DoubleVec& v) { return detail::valueAt(v, detail::maxIndex(v)); }
double minValue(const DoubleVec& v) { return detail::valueAt(v, detail::minIndex(v)); }
DoubleVec abs(const DoubleVec& v) { return detail::absolute(v); }
DoubleVec cumsum(const DoubleVec& v) { return detail::cumsum(v); }
DoubleVec delta(const DoubleVec& v) { return detail::delta(v); }
DoubleVec reverse(const DoubleVec& v) { return detail::reverse(v); }

std::ostream& operator<<(std::ostream& out, const DoubleVec& v) {
  v.printOn(out);
  return out;
}

std::istream& operator>>(std::istream& in, DoubleVec& v) {
  v.scanFrom(in);
  return in;
}

DoubleVec operator/(const DoubleVec& a, const DoubleVec& b) { return detail::divide(a, b); }
DoubleVec operator/(const DoubleVec& v, double s) { return detail::divideByScalar(v, s); }
DoubleVec operator-(double s, const DoubleVec& v) { return detail::subtractFrom(s, v); }
DoubleVec operator/(double s, const DoubleVec& v) { return detail::divideInto(s, v); }

double mean(const DoubleVec& v) { return sum(v) / v.length(); }

double variance(const DoubleVec& v) {
  if (v.length() < 2) {
    raiseMathErrorCode(knotwork::kTooFewPoints, DoubleVec::className, v.length(),
                       "Variance needs minimum of", 2);
  }
  // Two passes: the sum of squares less the square of the sum would cancel.
  const double m = mean(v);
  return detail::reduce(v, 0.0, [m](double s, double x) { return s + (x - m) * (x - m); }) /
         v.length();
}

// ---- The C library's functions ------------------------------------------------------------------

namespace {

DoubleVec applyToPairs(const DoubleVec& a, const DoubleVec& b, double (*f)(double, double)) {
  a.lengthCheck(b.length());
  DoubleVec r(b.length(), 0.0);
  const int paired = static_cast<int>(std::min(a.length(), r.length()));
  for (int i = 0; i < paired; ++i) r(i) = f(a(i), b(i));
  return r;
}

}  // namespace

DoubleVec acos(const DoubleVec& v) { return v.apply(std::acos); }
DoubleVec asin(const DoubleVec& v) { return v.apply(std::asin); }
DoubleVec atan(const DoubleVec& v) { return v.apply(std::atan); }
DoubleVec ceil(const DoubleVec& v) { return v.apply(std::ceil); }
DoubleVec cos(const DoubleVec& v) { return v.apply(std::cos); }
DoubleVec cosh(const DoubleVec& v) { return v.apply(std::cosh); }
DoubleVec exp(const DoubleVec& v) { return v.apply(std::exp); }
DoubleVec floorinline(const DoubleVec& v) { return v.apply(std::floor); }
DoubleVec log(const DoubleVec& v) { return v.apply(std::log); }
DoubleVec log10(const DoubleVec& v) { return v.apply(std::log10); }
DoubleVec sin(const DoubleVec& v) { return v.apply(std::sin); }
DoubleVec sinh(const DoubleVec& v) { return v.apply(std::sinh); }
// The processor's root, which is correctly rounded everywhere.
DoubleVec sqrt(const DoubleVec& v) {
  return v.apply([](double x) { return squareRoot(x); });
}
DoubleVec tan(const DoubleVec& v) { return v.apply(std::tan); }
DoubleVec tanh(const DoubleVec& v) { return v.apply(std::tanh); }

DoubleVec atan2(const DoubleVec& a, const DoubleVec& b) { return applyToPairs(a, b, std::atan2); }
DoubleVec pow(const DoubleVec& a, const DoubleVec& b) { return applyToPairs(a, b, std::pow); }
