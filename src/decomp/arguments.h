// SPDX-License-Identifier: MIT
// Between vectors, of any stride and length, and the plain arrays that the routines work on.
#pragma once

#include <algorithm>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/int_vec.h"
#include "knotwork/vector/math_codes.h"
#include "vector/math_report.h"

namespace knotwork::detail {

/// The first n elements of v one after the other, missing ones 0: a view on v where it is like that
/// already, else a new vector. A length other than n means that there was no memory.
DoubleVec ofLength(const DoubleVec& v, unsigned n);

/// Reports 0x5002 unless b has length n.
inline void checkRhs(const DoubleVec& b, unsigned n) {
  if (b.length() != n) raiseMathErrorCode(kRhsLengthWrong, b.length(), n);
}

/// w[i] = v[pivots[i]], in a new vector as long as v, or v itself with pivoting off. Reports 0x5004
/// if v is not as long as the pivots; pivots that are no index of v leave w[i] = 0.
DoubleVec permute(const DoubleVec& v, const IntVec& pivots, int pivoting);

/// w[pivots[i]] = v[i], likewise.
DoubleVec unpermute(const DoubleVec& v, const IntVec& pivots, int pivoting);

/// Places in a row for a routine to read and write: those of the caller's vector where it has as
/// many side by side, else a copy, to be stored. Without a vector they are scratch.
class Places {
 public:
  Places(DoubleVec* target, unsigned n)
      : target_(target), places_(target ? ofLength(*target, n) : DoubleVec(n, 0.0)), wanted_(n) {}

  /// @return whether there was memory.
  bool ready() const { return places_.length() == wanted_; }
  double* data() { return places_.data(); }
  /// Brings the first `n` places to the caller's vector, as far as that goes.
  void store(unsigned n) const;
  void store() const { store(wanted_); }

 private:
  DoubleVec* target_;
  DoubleVec places_;
  unsigned wanted_;
};

}  // namespace knotwork::detail
