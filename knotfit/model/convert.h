// SPDX-License-Identifier: MIT
// Between the vectors of the standard library and those of knotwork.
#pragma once

#include <vector>

#include <knotwork/knotwork.h>

namespace knotfit {

inline DoubleVec vecOf(const std::vector<double>& v) {
  return DoubleVec(v.data(), static_cast<unsigned>(v.size()));
}

inline std::vector<double> stdOf(const DoubleVec& v) {
  std::vector<double> out(v.length());
  TagRw::dvToV(v, out.data(), -1);
  return out;
}

}  // namespace knotfit
