// SPDX-License-Identifier: MIT
// What the three vector picks share: a vector seen through a list of indices.
#pragma once

#include "knotwork/vector/int_vec.h"

namespace knotwork {

/// Element k of a pick is vec(index(k)); `Pick` is the final class, `Vec` the picked one.
///
/// A pick shares the storage of its vector and of its index list, so assignments write through to
/// every view on the vector. Indices may repeat, come in any order, and are never checked. Loops
/// run in increasing k without a temporary: overlapping picks see earlier writes.
template <class Pick, class Vec>
class KNOTWORK_API VecPick {
 public:
  using value_type = typename Vec::value_type;

  /// Another pick of the same vector through the same list.
  VecPick(const VecPick&) = default;

  /// @return number of picked elements.
  KNOTWORK_TEMPLATE_API unsigned length() const { return index_.length(); }
  /// Picked element k; neither k nor its index is checked.
  KNOTWORK_TEMPLATE_API value_type& operator()(int k) { return vec_(index_(k)); }
  KNOTWORK_TEMPLATE_API value_type operator()(int k) const { return vec_(index_(k)); }

 protected:
  KNOTWORK_TEMPLATE_API VecPick(const Vec& v, const IntVec& indices) : vec_(v), index_(indices) {}
  ~VecPick() = default;
  VecPick& operator=(const VecPick&) = delete;

  /// Reports 0x3005 for every index outside the vector, in order.
  void assertElements() const;
  /// Reports 0x300F unless length() is n.
  void lengthCheck(unsigned n) const;

  Pick& fill(value_type x);
  template <class Source>
  Pick& assign(const Source& source);

  Vec vec_;
  IntVec index_;
};

}  // namespace knotwork
