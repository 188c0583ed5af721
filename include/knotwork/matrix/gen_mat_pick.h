// SPDX-License-Identifier: MIT
// What the two matrix picks share: a matrix seen through a list of rows and a list of columns.
#pragma once

#include "knotwork/vector/int_vec.h"

namespace knotwork {

/// Element (i, j) of a pick is element (row list[i], column list[j]) of the matrix; `Pick` is the
/// final class, `Mat` the picked one.
///
/// A pick shares the storage of its matrix and of both lists, so assignments write through to every
/// view on the matrix. Indices may repeat and come in any order. Copies run column by column over
/// the target's shape without a temporary: overlapping picks see earlier writes. Where a report was
/// survived, an element that lies outside the storage of either side is left out.
template <class Pick, class Mat>
class KNOTWORK_API GenMatPick {
 public:
  using value_type = typename Mat::value_type;

  /// Another pick of the same matrix through the same lists.
  GenMatPick(const GenMatPick&) = default;

  /// @return length of the row list.
  KNOTWORK_TEMPLATE_API unsigned rows() const { return rowList_.length(); }
  /// @return length of the column list.
  KNOTWORK_TEMPLATE_API unsigned cols() const { return colList_.length(); }
  /// Copies the picked elements into `target`. Reports 0x4004 if the shapes differ.
  void copyTo(Mat& target) const;
  /// Sets every picked element to 0.
  KNOTWORK_TEMPLATE_API Pick& zero() { return fill({}); }

 protected:
  GenMatPick(const Mat& m, const IntVec& rows, const IntVec& cols);
  ~GenMatPick() = default;
  GenMatPick& operator=(const GenMatPick&) = delete;

  Pick& fill(value_type x);
  Pick& assign(const Mat& m);
  Pick& assign(const GenMatPick& pick);

 private:
  Mat mat_;
  IntVec rowList_;
  IntVec colList_;
};

}  // namespace knotwork
