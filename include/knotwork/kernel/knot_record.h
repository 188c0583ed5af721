// SPDX-License-Identifier: MIT
// KnotRecord: the knots of a curve, or of one direction of a surface.
#pragma once

#include <memory>

#include "knotwork/export.h"

namespace knotwork {

/// Knots of a B-spline of degree m and n spans, numbered from 1 - m to n + m - 1.
///
/// The domain is [knot 0, knot n]; span j is [knot j, knot j + 1] and belongs to the control points
/// j to j + m. Each knot has a repeat mark, set when it equals its predecessor. (The full knot
/// vector of the textbooks has one more knot at each end, which no evaluation ever reads.)
class KNOTWORK_API KnotRecord {
 public:
  /// Knots k held within [0, spans]: clamped and uniform.
  /// @param degree, spans  at least 0, and no more knots than an int counts; if not, the record is
  ///                       that of (0, 0). Throws std::bad_alloc.
  KnotRecord(int degree, int spans);

  /// Deep copy. Throws std::bad_alloc.
  KnotRecord(const KnotRecord& other);
  KnotRecord& operator=(const KnotRecord&) = delete;
  ~KnotRecord();

  /// @return the degree m.
  KNOTWORK_INLINE_API int degree() const { return degree_; }
  /// @return the number of spans n.
  KNOTWORK_INLINE_API int spans() const { return spans_; }
  /// @return the number of the first knot, 1 - m.
  int first() const;
  /// @return the number of the last knot, n + m - 1; below first() if there are no knots.
  int last() const;

  /// @param k  in [first(), last()], not checked. @return the knot's value.
  double operator()(int k) const;

  /// @param k  in [first(), last()], not checked. @return whether the knot equals its predecessor.
  bool repeats(int k) const;

  /// Sets knots from first() on, and the repeat marks.
  /// @param values  n knots, non-decreasing; those beyond last() are left out.
  void assign(const double* values, int n);

  /// @return the span that holds t: at a knot the one to its right, at and beyond an end of the
  ///         domain the nearest one that is not empty; always in [0, max(spans - 1, 0)].
  int span(double t) const;

  /// @return whether t lies in the domain, ends included. Degree 0 has no ends.
  bool contains(double t) const;

  /// Makes room for `more` further knots. Throws std::bad_alloc, and then nothing has changed.
  void reserve(int more);

  /// Inserts t, held by the domain, after the knots that equal it; call reserve() first.
  /// @return the new knot's number: span(t) + 1 before the insertion.
  int insert(double t);

  /// @param k  in [first(), last()], not checked.
  /// @return   the address of knot k; knots lie one after the other.
  KNOTWORK_INLINE_API const double* at(int k) const { return values_.get() + (k + degree_ - 1); }

  /// Becomes the record of (0, 0), which has no knots.
  void clear();

 private:
  KNOTWORK_LOCAL void mark(int from, int to);

  int degree_;
  int spans_;
  int capacity_;
  std::unique_ptr<double[]> values_;
  std::unique_ptr<signed char[]> repeats_;
};

}  // namespace knotwork
