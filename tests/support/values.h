// SPDX-License-Identifier: MIT
// Between the library's vectors and matrices and plain vectors.
#pragma once

#include <vector>

#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/int_vec.h"

using Values = std::vector<double>;

inline Values valuesOf(const DoubleVec& v) {
  Values values;
  for (int i = 0; i < static_cast<int>(v.length()); ++i) values.push_back(v(i));
  return values;
}
inline Values valuesOf(const IntVec& v) { return valuesOf(DoubleVec(v)); }
inline Values valuesOf(const DoubleGenMat& m) { return valuesOf(m.dataVec()); }

inline DoubleVec vectorOf(const Values& values) {
  return DoubleVec(values.data(), static_cast<unsigned>(values.size()));
}

inline IntVec indices(const std::vector<int>& which) {
  return IntVec(which.data(), static_cast<unsigned>(which.size()));
}
