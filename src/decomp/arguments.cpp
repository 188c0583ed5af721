// SPDX-License-Identifier: MIT
// Arguments of the decompositions as contiguous arrays, and the order of columns.
#include "decomp/arguments.h"

namespace knotwork::detail {

DoubleVec ofLength(const DoubleVec& v, unsigned n) {
  if (v.length() == n && v.stride() == 1) return v;
  if (v.length() == n) return v.deepCopy();
  DoubleVec fitted(v);
  fitted.resize(n);
  return fitted;
}

namespace {

/// Calls move(w, i, pivots[i]) for the pivots that are an index of v; w is new, all 0.
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

void Places::store(unsigned n) const {
  if (target_ == nullptr || target_->data() == places_.data()) return;
  const int count = static_cast<int>(std::min(n, target_->length()));
  for (int i = 0; i < count; ++i) (*target_)(i) = places_(i);
}

}  // namespace knotwork::detail
