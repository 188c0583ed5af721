// SPDX-License-Identifier: MIT
// Bodies of VecPick's members, for the sources of the three classes that instantiate it.
#pragma once

#include <algorithm>

#include "knotwork/vector/math_codes.h"
#include "knotwork/vector/vec_pick.h"
#include "vector/math_report.h"

namespace knotwork::detail {

/// target(k) = source(k) in increasing k, as far as both go.
template <class Target, class Source>
void copyElements(Target& target, const Source& source) {
  const int n = static_cast<int>(std::min(target.length(), source.length()));
  for (int k = 0; k < n; ++k) target(k) = source(k);
}

}  // namespace knotwork::detail

namespace knotwork {

using namespace detail;  // the bodies' helpers

template <class Pick, class Vec>
void VecPick<Pick, Vec>::assertElements() const {
  for (int k = 0; k < static_cast<int>(length()); ++k) {
    const int i = index_(k);
    if (i >= 0 && i < static_cast<int>(vec_.length())) continue;
    raiseMathError(recordOf<Pick>(kIndexOutOfRange), Pick::className, i, vec_.length() - 1);
  }
}

template <class Pick, class Vec>
void VecPick<Pick, Vec>::lengthCheck(unsigned n) const {
  if (length() == n) return;
  raiseMathError(recordOf<Pick>(kLengthMismatch), Pick::className, length(), n);
}

template <class Pick, class Vec>
Pick& VecPick<Pick, Vec>::fill(value_type x) {
  for (int k = 0; k < static_cast<int>(length()); ++k) (*this)(k) = x;
  return static_cast<Pick&>(*this);
}

template <class Pick, class Vec>
template <class Source>
Pick& VecPick<Pick, Vec>::assign(const Source& source) {
  lengthCheck(source.length());
  copyElements(*this, source);
  return static_cast<Pick&>(*this);
}

}  // namespace knotwork
