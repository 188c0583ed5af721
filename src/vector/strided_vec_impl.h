// SPDX-License-Identifier: MIT
// Bodies of StridedVec's members, for the sources of the three classes that instantiate it.
//
// Nothing throws, and a handler may return from a report that memory is lacking. So every new block
// is asked for its length before it takes a vector's place, and a vector that could not get its
// elements has none.
#pragma once

#include <algorithm>
#include <cctype>
#include <istream>
#include <ostream>

#include "kernels/element_rules.h"
#include "kernels/kernels.h"
#include "knotwork/vector/int_vec.h"
#include "knotwork/vector/math_codes.h"
#include "knotwork/vector/strided_vec.h"
#include "vector/math_report.h"
#include "vector/shared_block.h"
#include "vector/vec_functions.h"

namespace knotwork::detail {

inline constexpr int kDefaultPerLine = 5;
inline constexpr unsigned kScanGrowth = 128;  // elements, when a text does not tell how many

}  // namespace knotwork::detail

namespace knotwork {

using namespace detail;  // the bodies' helpers

// ---- Construction -------------------------------------------------------------------------------

template <class Vec, class T>
StridedVec<Vec, T>::StridedVec() : StridedVec(0u) {}

// A block that could not get its storage holds no elements.
template <class Vec, class T>
StridedVec<Vec, T>::StridedVec(unsigned n)
    : block_(newBlock(n, sizeof(T))),
      start_(static_cast<T*>(block_->storage)),
      len_(start_ != nullptr ? n : 0),
      elementStride_(1) {}

template <class Vec, class T>
StridedVec<Vec, T>::StridedVec(unsigned n, T value) : StridedVec(n) {
  fill(value);
}

template <class Vec, class T>
StridedVec<Vec, T>::StridedVec(unsigned n, T first, T increment) : StridedVec(n) {
  // A running sum, rounded at every step.
  T value = first;
  for (unsigned i = 0; i < len_; ++i) {
    start_[i] = value;
    value = ElementRules<T>::add(value, increment);
  }
}

template <class Vec, class T>
StridedVec<Vec, T>::StridedVec(const T* p, unsigned n) : StridedVec(n) {
  std::copy_n(p, len_, start_);
}

template <class Vec, class T>
StridedVec<Vec, T>::StridedVec(const StridedVec& v) : StridedVec(v, 0, v.len_, 1) {}

template <class Vec, class T>
StridedVec<Vec, T>::StridedVec(const StridedVec& v, int first, unsigned n, int stride)
    : StridedVec(v.block_, v.start_, n, ElementRules<int>::multiply(v.elementStride_, stride)) {
  // A vector without storage has only empty slices.
  if (start_ != nullptr) start_ += static_cast<std::ptrdiff_t>(v.elementStride_) * first;
}

template <class Vec, class T>
StridedVec<Vec, T>::StridedVec(RWBlock* block, T* start, unsigned n, int stride)
    : block_(shareBlock(block)), start_(start), len_(n), elementStride_(stride) {}

template <class Vec, class T>
StridedVec<Vec, T>::~StridedVec() {
  releaseBlock(block_);
}

// ---- Sharing and copying ------------------------------------------------------------------------

template <class Vec, class T>
Vec& StridedVec<Vec, T>::reference(const Vec& v) {
  shareBlock(v.block_);  // first, as it may be this vector's own
  releaseBlock(block_);
  block_ = v.block_;
  start_ = v.start_;
  len_ = v.len_;
  elementStride_ = v.elementStride_;
  return self();
}

template <class Vec, class T>
void StridedVec<Vec, T>::deepenShallowCopy() {
  // Alone on a block, in order and from its start: it is deep already.
  if (block_->refCount < 2 && elementStride_ == 1 && start_ == block_->storage) return;
  const Vec own = deepCopy();
  if (own.len_ == len_) reference(own);
}

template <class Vec, class T>
Vec StridedVec<Vec, T>::deepCopy() const {
  Vec result(len_);
  kernels<T>().copy(result.len_, runOf(result), runOf(self()));
  return result;
}

template <class Vec, class T>
Vec StridedVec<Vec, T>::copy() const {
  return deepCopy();
}

template <class Vec, class T>
void StridedVec<Vec, T>::resize(unsigned n) {
  if (n == len_) return;
  Vec resized(n);
  if (resized.len_ != n) return;
  const unsigned kept = std::min(len_, n);
  kernels<T>().copy(kept, runOf(resized), runOf(self()));
  std::fill(resized.start_ + kept, resized.start_ + n, T{});
  reference(resized);
}

template <class Vec, class T>
void StridedVec<Vec, T>::reshape(unsigned n) {
  if (n == len_) return;
  const Vec reshaped(n);
  if (reshaped.len_ == n) reference(reshaped);
}

template <class Vec, class T>
Vec StridedVec<Vec, T>::slice(int first, unsigned n, int stride) const {
  return Vec(self(), first, n, stride);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::assign(const Vec& v) {
  lengthCheck(v.len_);
  // Within one block the elements may overlap.
  const Vec source = block_ == v.block_ ? v.deepCopy() : v;
  kernels<T>().copy(std::min(len_, source.len_), runOf(self()), runOf(source));
  return self();
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::fill(T x) {
  kernels<T>().fill(len_, runOf(self()), x);
  return self();
}

// ---- Checks -------------------------------------------------------------------------------------

template <class Vec, class T>
void StridedVec<Vec, T>::reportIndex(int i) const {
  raiseMathError(recordOf<Vec>(kIndexOutOfRange), Vec::className, i, len_ - 1);
}

template <class Vec, class T>
void StridedVec<Vec, T>::reportLength(unsigned n) const {
  raiseMathError(recordOf<Vec>(kLengthMismatch), Vec::className, len_, n);
}

template <class Vec, class T>
void StridedVec<Vec, T>::sliceCheck(int first, unsigned n, int stride) const {
  const auto inside = [this](long long i) { return i >= 0 && i < static_cast<long long>(len_); };
  if (n == 0) return;
  const long long last = first + (static_cast<long long>(n) - 1) * stride;
  if (inside(first) && inside(last)) return;
  raiseMathError(recordOf<Vec>(kBadSlice), Vec::className, first, n, stride, len_);
}

template <class Vec, class T>
void StridedVec<Vec, T>::strideCheck() const {
  if (elementStride_ != 1) raiseMathError(recordOf<Vec>(kStrideNotOne), Vec::className);
}

template <class Vec, class T>
void StridedVec<Vec, T>::emptyErr(const char* fname) const {
  raiseMathError(recordOf<Vec>(kEmptyVector), Vec::className, fname);
}

// ---- Arithmetic in place ------------------------------------------------------------------------

template <class Vec, class T>
Vec& updateInPlace(Vec& v, const Vec& by, typename ElementKernels<T>::Binary kernel) {
  v.lengthCheck(by.length());
  kernel(std::min(v.length(), by.length()), runOf(v), runOf(v), runOf(by));
  return v;
}

template <class Vec, class T>
Vec& updateInPlace(Vec& v, T by, typename ElementKernels<T>::WithScalar kernel) {
  kernel(v.length(), runOf(v), runOf(v), by);
  return v;
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator+=(const Vec& v) {
  return updateInPlace<Vec, T>(self(), v, kernels<T>().add);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator-=(const Vec& v) {
  return updateInPlace<Vec, T>(self(), v, kernels<T>().subtract);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator*=(const Vec& v) {
  return updateInPlace<Vec, T>(self(), v, kernels<T>().multiply);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator/=(const Vec& v) {
  return updateInPlace<Vec, T>(self(), v, kernels<T>().divide);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator+=(T x) {
  return updateInPlace<Vec, T>(self(), x, kernels<T>().addScalar);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator-=(T x) {
  return *this += ElementRules<T>::negate(x);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator*=(T x) {
  return updateInPlace<Vec, T>(self(), x, kernels<T>().multiplyScalar);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator/=(T x) {
  if constexpr (ElementRules<T>::kDividesByReciprocal) {
    return *this *= T(1) / x;
  } else {
    return updateInPlace<Vec, T>(self(), x, kernels<T>().divideByScalar);
  }
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator++() {
  return *this += T(1);
}

template <class Vec, class T>
Vec& StridedVec<Vec, T>::operator--() {
  return *this += T(-1);
}

// ---- Comparison and search ----------------------------------------------------------------------

template <class Vec, class T>
int StridedVec<Vec, T>::operator==(const StridedVec& v) const {
  return equal(self(), v.self());
}

template <class Vec, class T>
int StridedVec<Vec, T>::isEqual(T value) const requires std::integral<T> {
  return allOf(self(), [=](T x) { return x == value; });
}

template <class Vec, class T>
int StridedVec<Vec, T>::countValue(T value) const requires std::integral<T> {
  return countWhere(self(), [=](T x) { return x == value; });
}

template <class Vec, class T>
IntVec StridedVec<Vec, T>::valueIndex(T value) const requires std::integral<T> {
  return indicesWhere(self(), [=](T x) { return x == value; });
}

template <class Vec, class T>
IntVec StridedVec<Vec, T>::nonValueIndex(T value) const requires std::integral<T> {
  return indicesWhere(self(), [=](T x) { return x != value; });
}

template <class Vec, class T>
IntVec StridedVec<Vec, T>::lessIndex(T value) const {
  return indicesWhere(self(), [=](T x) { return x < value; });
}

// ---- Text ---------------------------------------------------------------------------------------

template <class Vec, class T>
int StridedVec<Vec, T>::setFormatting(int n) {
  return std::exchange(Vec::numberPerLine, n);
}

template <class Vec, class T>
void StridedVec<Vec, T>::printOn(std::ostream& out) const {
  int& perLine = Vec::numberPerLine;  // a host may have set anything
  if (perLine < 1) perLine = kDefaultPerLine;
  const int count = static_cast<int>(len_);
  const bool oneLine = perLine >= count;
  out << (oneLine ? "[ " : "[\n");
  for (int i = 0; i < count; ++i) {
    if (i > 0) out << (i % perLine != 0 ? " " : "\n");
    out << static_cast<typename ElementRules<T>::Text>((*this)(i));
  }
  out << (oneLine ? " ]" : "\n]");
}

// The next character that is not white space; end of file once the stream has failed.
inline std::istream::int_type nextVisible(std::istream& in) {
  std::istream::int_type c;
  do {
    c = in.get();
  } while (c != std::istream::traits_type::eof() && std::isspace(c));
  return c;
}

template <class Vec, class T>
bool StridedVec<Vec, T>::storeScanned(unsigned count, T value) {
  if (count >= len_) resize(len_ + kScanGrowth);
  if (count >= len_) return false;
  (*this)(static_cast<int>(count)) = value;
  return true;
}

template <class Vec, class T>
void StridedVec<Vec, T>::scanFrom(std::istream& in) {
  unsigned count = 0;
  const auto readOne = [&] {
    typename ElementRules<T>::Text text;
    if (!(in >> text)) return false;
    if (!storeScanned(count, ElementRules<T>::fromText(text))) return false;
    ++count;
    return true;
  };
  auto c = nextVisible(in);
  if (c == '[') {
    for (c = nextVisible(in); in && c != ']'; c = nextVisible(in)) {
      in.unget();
      if (!readOne()) break;
    }
  } else {
    if (in) in.unget();
    while (readOne()) {
    }
  }
  if (count != len_) resize(count);
}

}  // namespace knotwork
