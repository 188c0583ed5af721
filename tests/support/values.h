// SPDX-License-Identifier: MIT
// Between the library's vectors and plain ones.
#pragma once

#include <vector>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/int_vec.h"

using Values = std::vector<double>;

inline Values valuesOf(const DoubleVec& v) {
  Values values;
  for (int i = 0; i < static_cast<int>(v.length()); ++i) values.push_back(v(i));
  return values;
}

inline Values valuesOf(const IntVec& v) {
  Values values;
  for (int i = 0; i < static_cast<int>(v.length()); ++i) values.push_back(v(i));
  return values;
}

inline DoubleVec vectorOf(const Values& values) {
  return DoubleVec(values.data(), static_cast<unsigned>(values.size()));
}

inline IntVec indices(const std::vector<int>& which) {
  return IntVec(which.data(), static_cast<unsigned>(which.size()));
}
