// SPDX-License-Identifier: MIT
// B-spline basis functions, the matrices of fits and interpolation on them, and knots for both.
#pragma once

#include "knotwork/export.h"
#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/int_vec.h"

namespace knotwork {

/// The B-splines of one degree p on one knot vector, normalised to a sum of 1 over the domain.
///
/// Knots are in the long form: n basis functions have n + p + 1 knots t(0) <= ... <= t(n + p), and
/// function j lives on [t(j), t(j + p + 1)]. The domain is [t(p), t(n)]. A knot that stands r times
/// leaves p - r continuous derivatives; at a jump the value and every derivative are those from the
/// right, at the end of the domain those from the left. Outside the domain each function goes on as
/// the polynomial of the first or last span.
///
/// An object never changes, and copies share the knots. Requests that cannot be met give -1 or an
/// empty result. Only the vectors and matrices underneath report: 0x3008 when memory cannot be had,
/// and then the result is empty too.
///
/// Source: C. de Boor, A Practical Guide to Splines (1978), chs. IX, X, XIII; L. Piegl, W. Tiller,
/// The NURBS Book (1997), chs. 2 and 9.
class KNOTWORK_API BsplineBasis {
 public:
  /// No functions, no domain.
  BsplineBasis();
  /// @param degree  p, 0 or above.
  /// @param knots   long form, copied. The basis is empty unless there are 2 (p + 1) of them at
  ///                least, all finite, none below the one before, and t(p) < t(n).
  BsplineBasis(int degree, const DoubleVec& knots);
  BsplineBasis(const BsplineBasis& other);
  BsplineBasis& operator=(const BsplineBasis& other);
  ~BsplineBasis();

  /// @return p; 0 for an empty basis.
  [[nodiscard]] int degree() const;
  /// @return n, the number of functions and of control points; 0 for an empty basis.
  [[nodiscard]] int count() const;
  /// @return new vector of the knots, long form.
  [[nodiscard]] DoubleVec knots() const;

  /// @return the index i of the span that u belongs to: t(i) <= u < t(i + 1), at the end of the
  /// domain the last span that is not empty, outside the domain the nearest one that is not empty;
  /// -1 for an empty basis.
  [[nodiscard]] int span(double u) const;
  /// Writes what does not vanish at u: derivative number `derivative` (0: the value) of functions
  /// span(u) - p, ..., span(u), as p + 1 numbers to `values`. Above the degree they are 0.
  /// @return span(u) - p; -1, with nothing written, for an empty basis or a negative derivative.
  int row(double u, int derivative, double* values) const;

  /// @return new u.length() x count() matrix: row i holds that derivative of every function at
  /// u(i). 0 x 0 for an empty basis or a negative derivative.
  [[nodiscard]] DoubleGenMat collocation(const DoubleVec& u, int derivative = 0) const;
  /// @return as above, with derivative number derivatives(i) in row i; 0 x 0 also where the lengths
  /// differ.
  [[nodiscard]] DoubleGenMat collocation(const DoubleVec& u, const IntVec& derivatives) const;
  /// For closed curves on knots that repeat with the length of the domain (`periodicKnots`): there
  /// function j + count() - p is function j, one period on, and both have one control point.
  /// @return new u.length() x (count() - p) matrix, the two in one column; 0 x 0 as above, and
  /// where fewer than p + 1 columns would be left.
  [[nodiscard]] DoubleGenMat periodicCollocation(const DoubleVec& u, int derivative = 0) const;

  /// @return new vector of the Greville abscissae: number j is the mean of t(j + 1), ..., t(j + p),
  /// for degree 0 the middle of span j. A curve with the control points g(j) is the identity.
  [[nodiscard]] DoubleVec greville() const;

  /// Whether data at u determine every control point, by the conditions of Schoenberg and Whitney:
  /// function 0 takes the first datum at which it does not vanish, function 1 the first of the
  /// remaining ones, and so on. The matrix `collocation(u)` of distinct parameters has full column
  /// rank exactly if that finds a datum for all. Data outside the domain do not count.
  ///
  /// @param u  ascending. A parameter that stands r times stands for the value and the r - 1 lowest
  ///           derivatives there; where one of them jumps, the answer may be too strict.
  /// @return the first function, so the first control point, that finds no datum; count() if all
  /// do; -1 for an empty basis or where u does not ascend.
  [[nodiscard]] int firstUndetermined(const DoubleVec& u) const;

 private:
  int degree_ = 0;
  int count_ = 0;
  DoubleVec knots_;
};

/// Clamped knots: `from`, then the inner knots as they are, then `to`, the ends degree + 1 times.
/// @return new vector of inner.length() + 2 (degree + 1) knots; empty for a negative degree.
[[nodiscard]] KNOTWORK_API DoubleVec clampedKnots(int degree, const DoubleVec& inner,
                                                  double from = 0, double to = 1);

/// @return new vector of the clamped knots of `count` functions that divide [from, to] evenly;
/// empty unless 0 <= degree < count.
[[nodiscard]] KNOTWORK_API DoubleVec uniformKnots(int degree, int count, double from = 0,
                                                  double to = 1);

/// @return new vector of spans + 2 degree + 1 knots, evenly apart, so that knots degree and degree
/// + spans are `from` and `to`: those of a closed curve (`BsplineBasis::periodicCollocation`);
/// empty for a negative degree or where spans <= degree.
[[nodiscard]] KNOTWORK_API DoubleVec periodicKnots(int degree, int spans, double from = 0,
                                                   double to = 1);

/// Clamped knots for data at u that put about as many data into each span, so that a fit or an
/// interpolation with `count` control points is well determined.
///
/// As many control points as data: inner knot j is the mean of u(j), ..., u(j + degree - 1) (Piegl
/// and Tiller, 9.8). Fewer: with d = data / (count - degree), i = floor(j d) and a = j d - i, inner
/// knot j is (1 - a) u(i - 1) + a u(i) (9.68 and 9.69).
///
/// @param u        parameters of the data, ascending.
/// @param corners  indices into u, ascending and not its ends: these parameters become knots that
///                 stand `degree` times, where a curve may bend. The other knots are shared out
///                 between the corners in proportion to the data there, and placed by the second
///                 rule.
/// @return new vector of count + degree + 1 knots; empty unless degree >= 1, the data do ascend,
/// the corners are as said, and degree + 1 + degree * corners <= count <= u.length().
[[nodiscard]] KNOTWORK_API DoubleVec averagedKnots(const DoubleVec& u, int degree, int count,
                                                   const IntVec& corners = IntVec());

}  // namespace knotwork
