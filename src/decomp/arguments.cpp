// SPDX-License-Identifier: MIT
// Arguments of the decompositions as contiguous arrays, and the order of columns.
#include "decomp/arguments.h"

namespace knotwork::detail {

DoubleVec firstOf(const DoubleVec& v, unsigned n) {
  DoubleVec first(n, 0.0);
  const unsigned count = std::min(first.length(), v.length());
  first.slice(0, count, 1) = v.slice(0, count, 1);
  return first;
}

DoubleVec ofLength(const DoubleVec& v, unsigned n) {
  return v.length() == n && v.stride() == 1 ? v : firstOf(v, n);
}

namespace {

// Calls move(w, i, pivots[i]) for the pivots that are an index of v; w is new, all 0.
template <class Move>
DoubleVec reorder(const DoubleVec& v, const IntVec& pivots, int pivoting, Move move) {
  if (!pivoting) return v;
  if (v.length() != pivots.length())
    raiseMathErrorCode(kPermuteLengthWrong, v.length(), pivots.length());
  DoubleVec w(v.length(), 0.0);
  const unsigned length = w.length();
  for (unsigned i = 0; i < std::min(length, pivots.length()); ++i) {
    const int place = pivots(static_cast<int>(i));
    if (static_cast<unsigned>(place) < length) move(w, static_cast<int>(i), place);
  }
  return w;
}

}  // namespace

DoubleVec permute(const DoubleVec& v, const IntVec& pivots, int pivoting) {
  return reorder(v, pivots, pivoting, [&](DoubleVec& w, int i, int place) { w(i) = v(place); });
}

DoubleVec unpermute(const DoubleVec& v, const IntVec& pivots, int pivoting) {
  return reorder(v, pivots, pivoting, [&](DoubleVec& w, int i, int place) { w(place) = v(i); });
}

DoubleVec basicSolution(DoubleVec x, unsigned k, unsigned n, const IntVec& pivots, int pivoting) {
  if (x.length() != k) return DoubleVec();
  x.resize(n);
  return x.length() == n ? unpermute(x, pivots, pivoting) : DoubleVec();
}

void Places::store(unsigned n) {
  if (target_.data() == places_.data()) return;
  const unsigned count = std::min(n, target_.length());
  target_.slice(0, count, 1) = places_.slice(0, count, 1);
}

}  // namespace knotwork::detail
