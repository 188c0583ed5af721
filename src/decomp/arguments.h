// SPDX-License-Identifier: MIT
// Between vectors, of any stride and length, and the plain arrays that the routines work on.
#pragma once

#include <algorithm>

#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/int_vec.h"
#include "knotwork/vector/math_codes.h"
#include "vector/math_report.h"

namespace knotwork::detail {

/// @return order of a triangular factor: what is square at the matrix's beginning.
inline unsigned orderOf(const DoubleGenMat& factor) {
  return std::min(factor.rows(), factor.cols());
}

/// @return new vector: the first n elements of v, missing ones 0. A length other than n means that
/// there was no memory.
DoubleVec firstOf(const DoubleVec& v, unsigned n);

/// The same elements one after the other: v itself where it is like that already.
DoubleVec ofLength(const DoubleVec& v, unsigned n);

/// Reports 0x5002 unless b has length n.
inline void checkRhs(const DoubleVec& b, unsigned n) {
  if (b.length() != n) raiseMathErrorCode(kRhsLengthWrong, b.length(), n);
}

/// w[i] = v[pivots[i]], in a new vector as long as v, or v itself with pivoting off. Reports 0x5004
/// if v is not as long as the pivots; pivots that are no index of v leave w[i] = 0. Empty where
/// there was no memory.
DoubleVec permute(const DoubleVec& v, const IntVec& pivots, int pivoting);

/// w[pivots[i]] = v[i], likewise.
DoubleVec unpermute(const DoubleVec& v, const IntVec& pivots, int pivoting);

/// The solution of n unknowns of which those in the first k places are x, and the others free and
/// so 0, back in the order of A. Empty where x is not of length k: there was no memory for it.
DoubleVec basicSolution(DoubleVec x, unsigned k, unsigned n, const IntVec& pivots, int pivoting);

/// The first n places of a vector, in a row for a routine to read and write: the vector's own where
/// it has just as many side by side, else a copy, to be stored; missing ones are scratch.
class Places {
 public:
  Places(const DoubleVec& target, unsigned n)
      : target_(target), places_(ofLength(target, n)), wanted_(n) {}
  /// Those of the vector, or of none.
  Places(const DoubleVec* target, unsigned n) : Places(target ? *target : DoubleVec(), n) {}

  /// @return whether there was memory.
  bool ready() const { return places_.length() == wanted_; }
  double* data() { return places_.data(); }
  /// Brings the first `n` places to the vector, as far as that goes.
  void store(unsigned n);
  void store() { store(wanted_); }

 private:
  DoubleVec target_;  // a view
  DoubleVec places_;
  unsigned wanted_;
};

}  // namespace knotwork::detail
