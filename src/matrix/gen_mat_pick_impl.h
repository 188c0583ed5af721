// SPDX-License-Identifier: MIT
// Bodies of GenMatPick's members, for the sources of the two classes that instantiate it.
#pragma once

#include "knotwork/matrix/gen_mat_pick.h"
#include "matrix/mat_functions.h"

namespace knotwork::detail {

// Address of element (i, j) by its number in the element vector; null outside the vector.
template <class Mat>
auto findElement(Mat& m, long long i, long long j) {
  const long long k = j * m.rows() + i;
  const bool stored = k >= 0 && k < static_cast<long long>(m.dataVec().length());
  return stored ? m.data() + static_cast<std::ptrdiff_t>(k) * m.dataVec().stride() : nullptr;
}

// Address of element (i, j) of a matrix or a pick; null where there is none.
template <class M>
auto addressOf(M& m, unsigned i, unsigned j) {
  if constexpr (requires { m.find(i, j); }) {
    return m.find(i, j);
  } else {
    return findElement(m, i, j);
  }
}

// target(i, j) = source(i, j) over the target's shape, column by column, where both exist. Reports
// 0x4004 if the shapes differ.
template <class Target, class Source>
void copyShape(Target& target, const Source& source) {
  shapeCheck(source, target);
  for (unsigned j = 0; j < target.cols(); ++j) {
    for (unsigned i = 0; i < target.rows(); ++i) {
      const auto* from = addressOf(source, i, j);
      auto* to = addressOf(target, i, j);
      if (from != nullptr && to != nullptr) *to = *from;
    }
  }
}

// Reports 0x4001 for every index that is not in [0, bound), from the last one back.
inline void checkPicked(const IntVec& indices, unsigned bound) {
  for (int k = static_cast<int>(indices.length()) - 1; k >= 0; --k) {
    const int index = indices(k);
    if (static_cast<unsigned>(index) >= bound)
      raiseMathErrorCode(kPickOutOfRange, index, bound - 1);
  }
}

template <class Pick, class Mat>
GenMatPick<Pick, Mat>::GenMatPick(const Mat& m, const IntVec& rows, const IntVec& cols)
    : mat_(m), rowList_(rows), colList_(cols) {
  checkPicked(rowList_, mat_.rows());
  checkPicked(colList_, mat_.cols());
}

template <class Pick, class Mat>
auto GenMatPick<Pick, Mat>::find(unsigned i, unsigned j) const -> const value_type* {
  if (i >= rows() || j >= cols()) return nullptr;
  return findElement(mat_, rowList_(static_cast<int>(i)), colList_(static_cast<int>(j)));
}

template <class Pick, class Mat>
auto GenMatPick<Pick, Mat>::find(unsigned i, unsigned j) -> value_type* {
  if (i >= rows() || j >= cols()) return nullptr;
  return findElement(mat_, rowList_(static_cast<int>(i)), colList_(static_cast<int>(j)));
}

template <class Pick, class Mat>
Pick& GenMatPick<Pick, Mat>::fill(value_type x) {
  for (unsigned j = 0; j < cols(); ++j) {
    for (unsigned i = 0; i < rows(); ++i) {
      if (value_type* element = find(i, j)) *element = x;
    }
  }
  return static_cast<Pick&>(*this);
}

template <class Pick, class Mat>
template <class Source>
Pick& GenMatPick<Pick, Mat>::assign(const Source& source) {
  copyShape(*this, source);
  return static_cast<Pick&>(*this);
}

}  // namespace knotwork::detail
