// SPDX-License-Identifier: MIT
// Bodies of GenMatPick's members, for the sources of the two classes that instantiate it.
//
// A copy or a filling first notes where the elements of either side lie, then goes over them with
// plain addresses: asking a matrix anew for each element would make and drop a view on its storage.
// Elements are tested one by one only where some do not exist, or where the lists of integers lie
// in the very storage that is written.
#pragma once

#include <algorithm>
#include <functional>
#include <type_traits>
#include <utility>

#include "knotwork/matrix/gen_mat_pick.h"
#include "matrix/mat_functions.h"

namespace knotwork::detail {

/// Whether two runs may have elements in common.
template <class A, class B>
bool meet(Run<A> a, unsigned countA, Run<B> b, unsigned countB) {
  if (countA == 0 || countB == 0) return false;
  const auto ends = [](auto run, unsigned count) {
    const void *first = run.start, *last = &run[static_cast<std::ptrdiff_t>(count) - 1];
    return std::minmax({first, last}, std::less<const void*>());
  };
  const auto [firstA, lastA] = ends(a, countA);
  const auto [firstB, lastB] = ends(b, countB);
  return !std::less<const void*>()(lastA, firstB) && !std::less<const void*>()(lastB, firstA);
}

/// Where the elements of a matrix lie. Lists that were reported, and vectors that are too short,
/// may name elements that do not exist.
template <class T>
struct MatrixPlaces {
  T* start;
  std::ptrdiff_t stride;
  unsigned stored;  // elements of the vector
  unsigned rows;

  const MatrixPlaces& whole() const { return *this; }
  /// Address of element (i, j), which must exist.
  T* at(std::ptrdiff_t i, std::ptrdiff_t j) const {
    return start + (j * static_cast<std::ptrdiff_t>(rows) + i) * stride;
  }
  /// Address of element (i, j) by its number in the vector; null outside the vector.
  T* find(long long i, long long j) const {
    const long long k = j * rows + i;
    return 0 <= k && k < stored ? start + static_cast<std::ptrdiff_t>(k) * stride : nullptr;
  }
  bool hasAll(unsigned firstRows, unsigned firstCols) const {
    return firstRows <= rows && static_cast<unsigned long long>(rows) * firstCols <= stored;
  }
  Run<T> elements() const { return {start, stride}; }
  /// Whether what says where the elements are changes with those of `written`.
  template <class U>
  bool dependsOn(const MatrixPlaces<U>&) const {
    return false;
  }
};

/// The same of the elements that two lists pick.
template <class T>
struct PickedPlaces {
  MatrixPlaces<T> all;
  Run<const int> rowList, colList;
  unsigned rows, cols;

  const MatrixPlaces<T>& whole() const { return all; }
  T* at(unsigned i, unsigned j) const { return all.at(rowList[i], colList[j]); }
  T* find(unsigned i, unsigned j) const {
    return i < rows && j < cols ? all.find(rowList[i], colList[j]) : nullptr;
  }
  bool hasAll(unsigned firstRows, unsigned firstCols) const {
    if (firstRows > rows || firstCols > cols) return false;
    bool inside = true;
    for (unsigned i = 0; i < firstRows; ++i) {
      inside &= static_cast<unsigned>(rowList[i]) < all.rows;
    }
    for (unsigned j = 0; j < firstCols; ++j) {
      inside &= colList[j] >= 0 && all.hasAll(0, static_cast<unsigned>(colList[j]) + 1);
    }
    return inside;
  }
  template <class U>
  bool dependsOn(const MatrixPlaces<U>& written) const {
    return std::is_same_v<U, int> && (meet(rowList, rows, written.elements(), written.stored) ||
                                      meet(colList, cols, written.elements(), written.stored));
  }
};

template <class Mat>
auto placesOf(Mat& m) {
  const auto& vec = std::as_const(m).dataVec();  // not the counted view that a variable one gives
  return MatrixPlaces<std::remove_pointer_t<decltype(m.data())>>{m.data(), vec.stride(),
                                                                 vec.length(), m.rows()};
}

template <class Mat>
auto placesOf(Mat& m, const IntVec& rows, const IntVec& cols) {
  const auto all = placesOf(m);
  return PickedPlaces<std::remove_pointer_t<decltype(all.start)>>{all, runOf(rows), runOf(cols),
                                                                  rows.length(), cols.length()};
}

/// visit(i, j), column by column.
template <class Visit>
void forEachPlace(unsigned rows, unsigned cols, Visit visit) {
  for (unsigned j = 0; j < cols; ++j) {
    for (unsigned i = 0; i < rows; ++i) visit(i, j);
  }
}

/// target(i, j) = source(i, j), column by column, where both exist.
template <class Target, class Source>
void copyPlaces(unsigned rows, unsigned cols, const Target& target, const Source& source) {
  const auto& written = target.whole();
  if (target.hasAll(rows, cols) && source.hasAll(rows, cols) && !target.dependsOn(written) &&
      !source.dependsOn(written)) {
    forEachPlace(rows, cols, [&](unsigned i, unsigned j) { *target.at(i, j) = *source.at(i, j); });
    return;
  }
  forEachPlace(rows, cols, [&](unsigned i, unsigned j) {
    auto* const to = target.find(i, j);
    const auto* const from = source.find(i, j);
    if (to != nullptr && from != nullptr) *to = *from;
  });
}

/// target(i, j) = x, where it exists.
template <class Target, class T>
void fillPlaces(unsigned rows, unsigned cols, const Target& target, T x) {
  if (target.hasAll(rows, cols) && !target.dependsOn(target.whole())) {
    forEachPlace(rows, cols, [&](unsigned i, unsigned j) { *target.at(i, j) = x; });
    return;
  }
  forEachPlace(rows, cols, [&](unsigned i, unsigned j) {
    if (auto* const to = target.find(i, j)) *to = x;
  });
}

/// Reports 0x4001 for every index that is not in [0, bound), from the last one back.
inline void checkPicked(const IntVec& indices, unsigned bound) {
  for (int k = static_cast<int>(indices.length()) - 1; k >= 0; --k) {
    const int index = indices(k);
    if (static_cast<unsigned>(index) >= bound)
      raiseMathErrorCode(kPickOutOfRange, index, bound - 1);
  }
}

}  // namespace knotwork::detail

namespace knotwork {

using namespace detail;  // the bodies' helpers

template <class Pick, class Mat>
GenMatPick<Pick, Mat>::GenMatPick(const Mat& m, const IntVec& rows, const IntVec& cols)
    : mat_(m), rowList_(rows), colList_(cols) {
  checkPicked(rowList_, mat_.rows());
  checkPicked(colList_, mat_.cols());
}

template <class Pick, class Mat>
Pick& GenMatPick<Pick, Mat>::fill(value_type x) {
  fillPlaces(rows(), cols(), placesOf(mat_, rowList_, colList_), x);
  return static_cast<Pick&>(*this);
}

template <class Pick, class Mat>
Pick& GenMatPick<Pick, Mat>::assign(const Mat& m) {
  shapeCheck(m, *this);
  copyPlaces(rows(), cols(), placesOf(mat_, rowList_, colList_), placesOf(m));
  return static_cast<Pick&>(*this);
}

template <class Pick, class Mat>
Pick& GenMatPick<Pick, Mat>::assign(const GenMatPick& pick) {
  shapeCheck(pick, *this);
  copyPlaces(rows(), cols(), placesOf(mat_, rowList_, colList_),
             placesOf(pick.mat_, pick.rowList_, pick.colList_));
  return static_cast<Pick&>(*this);
}

template <class Pick, class Mat>
void GenMatPick<Pick, Mat>::copyTo(Mat& target) const {
  shapeCheck(*this, target);
  copyPlaces(target.rows(), target.cols(), placesOf(target), placesOf(mat_, rowList_, colList_));
}

}  // namespace knotwork
