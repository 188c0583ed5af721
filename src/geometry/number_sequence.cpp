// SPDX-License-Identifier: MIT
// Knot vectors. Walks are linear and the sort is quadratic: knots are few, and what they are not is
// regular. A search by halves would need them ascending, which nobody has to keep; a walk gives the
// answer that its comparisons define, also for a NaN.
#include "knotwork/geometry/number_sequence.h"

#include <cmath>
#include <utility>

#include "geometry/flat_points.h"
#include "knotwork/vector/int_vec.h"

namespace detail = knotwork::detail;

namespace {

// Exchange of neighbours, from the end: equal values keep their order, so that -0 and 0 do.
template <class Vec>
void sortInPlace(Vec& v) {
  const int n = static_cast<int>(v.length());
  for (int p = 0; p < n - 1; ++p) {
    for (int j = n - 1; j > p; --j) {
      if (v(j) < v(j - 1)) std::swap(v(j), v(j - 1));
    }
  }
}

}  // namespace

// ---- Construction -------------------------------------------------------------------------------

TnumberSequence::TnumberSequence() = default;
TnumberSequence::TnumberSequence(const TnumberSequence& other) : DoubleVec(other.deepCopy()) {}
TnumberSequence::TnumberSequence(double start, double increment, int n)
    : DoubleVec(detail::countOrReport(n), start, increment) {}
TnumberSequence::TnumberSequence(const DoubleVec& values) : DoubleVec(values.deepCopy()) {
  sortDoubleVecInPlace(*this);
}

TnumberSequence& TnumberSequence::operator=(const TnumberSequence& other) {
  DoubleVec::operator=(other);
  return *this;
}

TnumberSequence& TnumberSequence::reference(TnumberSequence& other) {
  DoubleVec::reference(other);
  return *this;
}

double TnumberSequence::operator()(int i) const { return DoubleVec::operator()(i); }
DoubleVec TnumberSequence::data() { return *this; }
int TnumberSequence::length() const { return static_cast<int>(DoubleVec::length()); }

// ---- Intervals and breakpoints ------------------------------------------------------------------

// The last knot r that x is not below, counted up to the first that x is below; from the left, the
// last one that differs from knot r instead, or 0.
int TnumberSequence::findInterval(double x, bool fromLeft) const {
  const DoubleVec& t = *this;
  const int n = length();
  int r = 0;
  while (r < n && !(x < t(r))) ++r;
  --r;
  if (!fromLeft) return r;
  for (bool rose = false; r > 0 && !rose; --r) rose = t(r - 1) < t(r);
  return r;
}

int TnumberSequence::whichBreakpoint(int i) const {
  if (i >= length()) return -1;
  const DoubleVec& t = *this;
  int number = 0;
  for (int k = 0; k < i; ++k) number += t(k) != t(k + 1);
  return number;
}

DoubleVec TnumberSequence::breakpoints() const {
  const DoubleVec& t = *this;
  DoubleVec result(t.length());
  unsigned count = 0;
  for (int i = 0; i < static_cast<int>(result.length()); ++i) {
    if (i == 0 || t(i) != t(i - 1)) result.sub(static_cast<int>(count++)) = t(i);
  }
  result.resize(count);
  return result;
}

IntVec TnumberSequence::multiplicities() const {
  const DoubleVec& t = *this;
  IntVec result(t.length(), 0);
  unsigned count = 0;
  for (int i = 0; i < static_cast<int>(result.length()); ++i) {
    if (i == 0 || t(i) != t(i - 1)) ++count;
    ++result.sub(static_cast<int>(count - 1));
  }
  result.resize(count);
  return result;
}

// ---- Insertion, removal, comparison -------------------------------------------------------------

void TnumberSequence::add(double x, int multiplicity) {
  if (multiplicity < 1) return;
  DoubleVec& t = *this;
  const int oldEnd = length();
  const int first = findInterval(x, false) + 1;
  const unsigned grown = detail::countOrReport(static_cast<long long>(oldEnd) + multiplicity);
  if (grown == 0) return;
  resize(grown);
  if (t.length() != grown) return;
  // From the end, for the places overlap.
  for (int i = oldEnd - 1; i >= first; --i) t(i + multiplicity) = t(i);
  for (int i = first; i < first + multiplicity; ++i) t(i) = x;
}

void TnumberSequence::add(const DoubleVec& values) {
  const unsigned n = values.length();
  if (n == 0) return;
  if (n == 1) return add(values(0), 1);
  if (length() == 0) {
    DoubleVec::reference(values.deepCopy());
    return;
  }
  const DoubleVec& t = *this;
  // A merge of two ascending lists; of equal values those of this sequence come first.
  DoubleVec merged(t.length() + n);
  const int inValues = static_cast<int>(n);
  for (int i = 0, j = 0; i + j < static_cast<int>(merged.length());) {
    const bool fromValues = j < inValues && (i == length() || values(j) < t(i));
    const double next = fromValues ? values(j) : t(i);
    merged(i + j) = next;
    ++(fromValues ? j : i);
  }
  if (merged.length() > 0) DoubleVec::reference(merged);
}

bool TnumberSequence::remove(int i) {
  if (i < 0 || i >= length()) return false;
  const DoubleVec& t = *this;
  DoubleVec kept(t.length() - 1);
  for (int k = 0; k < static_cast<int>(kept.length()); ++k) kept(k) = t(k < i ? k : k + 1);
  if (kept.length() == t.length() - 1) DoubleVec::reference(kept);
  return true;
}

DoubleVec TnumberSequence::extra(const TnumberSequence& a, const TnumberSequence& b,
                                 double tolerance) {
  DoubleVec found(static_cast<unsigned>(b.length()));
  unsigned count = 0;
  const int wanted = static_cast<int>(found.length());
  // Both ascend, so that one walk pairs them; each value of a serves for one of b.
  for (int i = 0, j = 0; j < wanted;) {
    if (i < a.length() && std::abs(b(j) - a(i)) <= tolerance) {
      ++i;
      ++j;
    } else if (i == a.length() || b(j) < a(i)) {
      found(static_cast<int>(count++)) = b(j++);
    } else {
      ++i;
    }
  }
  return found.slice(0, count, 1);
}

// ---- Sorting and text ---------------------------------------------------------------------------

void TnumberSequence::sortDoubleVecInPlace(DoubleVec& v) { sortInPlace(v); }
void TnumberSequence::sortIntVecInPlace(IntVec& v) { sortInPlace(v); }

void TnumberSequence::printOn(std::ostream&) const {}
void TnumberSequence::printRaw(std::ostream&) const {}
bool TnumberSequence::readRaw(std::istream&) { return false; }
