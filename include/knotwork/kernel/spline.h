// SPDX-License-Identifier: MIT
// AP_SPLINE: a B-spline curve that owns its control points and knots.
#pragma once

#include <cstdio>
#include <memory>

#include "knotwork/export.h"
#include "knotwork/kernel/cnode.h"
#include "knotwork/kernel/geometric.h"
#include "knotwork/kernel/knot_record.h"
#include "knotwork/platform/kernel/records.h"

/// B-spline curve, polynomial or rational, of degree m and n spans: n + m control points.
///
/// Nothing here reports. Sizes that make no curve, and a record that does not hold what it counts,
/// give the empty curve, of no spans and no control points, on which every operation is safe.
///
/// When memory runs out, what needs more of it throws std::bad_alloc, and the curve is as it was:
/// constructors, node0(), noden(), the static eval() and insert(). The member eval() and all else
/// allocate nothing, but for AGLIB(), where the host's spline kernel does: it answers null, or
/// throws.
class KNOTWORK_API AP_SPLINE : public AP_GEOMETRIC {
 public:
  /// Clamped uniform knots over [0, spans]; control points not initialised.
  /// @param rationality  0 for a polynomial curve, anything else for a rational one.
  AP_SPLINE(int dim, int degree, int spans, AP_RATIONALITY rationality);

  /// Deep copy, its capacity its own point count, its box not computed.
  AP_SPLINE(const AP_SPLINE& other);

  /// Copy of a curve of the host's spline kernel: numbers, form, type and rational flag. The record
  /// is left as it is.
  explicit AP_SPLINE(const ag_spline* record);

  AP_SPLINE& operator=(const AP_SPLINE&) = delete;
  ~AP_SPLINE() override;

  /// @return the degree m.
  int Degree() const;
  /// @return the number of spans n.
  int Spans() const;
  /// @return the number of control points, n + m.
  int Count() const;
  /// @return doubles per control point: Dim(), and one more for a rational curve.
  int Coords() const;
  /// @return whether the curve is rational: the flag as given.
  AP_RATIONALITY Rationality() const;
  /// @return the form set last.
  AP_FORM Form() const;
  /// @return the type set last.
  AP_TYPE Type() const;

  /// @return the doubles that eval() needs for derivatives up to k: (max(m, k) + 1) * Coords(). A
  ///         negative k counts as larger than any degree, so that k = -1 yields 0.
  [[nodiscard]] int WorkspaceSize(int k) const;

  /// @return the knots, writable by KnotRecord::assign().
  knotwork::KnotRecord& Knots();
  /// @return the knots.
  const knotwork::KnotRecord& Knots() const;

  /// @param i  in [0, Count() - 1], not checked.
  /// @return   control point i, writable, until a knot is inserted.
  double* operator[](int i);
  /// @param i  in [0, Count() - 1], not checked.
  /// @return   control point i, until a knot is inserted.
  const double* operator[](int i) const;

  /// @return the first node of the list of control points; null if there are none. Nodes are good
  ///         until a knot is inserted.
  AP_CNODE* node0();
  /// @return the last node of the list of control points; null if there are none.
  AP_CNODE* noden();

  /// Bounding box of the control points, of a rational curve after division by the weights; it
  /// holds the curve if all weights are positive.
  /// @param force  0 returns the box computed last, if there is one.
  /// @return       this object's box.
  AP_MMBOX& Box(int force);

  /// Point and derivatives at parameter t; allocates nothing.
  ///
  /// At a knot the span to its right is evaluated, outside the domain the polynomial of that end. A
  /// clamped end gives its control point to the bit. Derivatives of a polynomial curve of orders
  /// above the degree are exactly 0.
  /// @param[out] out  WorkspaceSize(nderiv) doubles. Derivative k stands at k * Coords(), its first
  ///                  Dim() doubles meaningful; what lies behind the results is scratch.
  /// @param t         in knot units.
  /// @param nderiv    highest order; nothing is written if it is negative.
  /// Source  C. de Boor, A Practical Guide to Splines, ch. X, run from the nearer end of the span.
  void eval(double* out, double t, int nderiv) const;

  /// Point and derivatives of the curve whose member eval() ran last.
  /// @return  an area of the library, laid out as by the member, until the next call; null if no
  ///          curve was evaluated, that one is gone or nderiv is negative.
  [[nodiscard]] static double* eval(double t, int nderiv);

  /// Inserts a knot; the curve stays the same to rounding.
  /// @param t     a parameter in the domain, its ends included.
  /// @param mult  how many times; below 1 changes nothing.
  /// @return      the number of the first new knot; -1, and nothing changed, if t is outside.
  /// Source  W. Boehm, Inserting new knots into B-spline curves, CAD 12 (1980).
  int insert(double t, int mult);

  /// Writes n doubles from the first control point on; those beyond the last one are left out.
  void set(const double* values, int n);
  /// Writes n doubles from control point i on; those beyond the last one are left out.
  void set(int i, const double* values, int n);

  /// Curves are not compared. @return 0 for every argument, this curve included.
  int EqualTo(const AP_SPLINE& other) const;

  /// Stores the form.
  void SetForm(AP_FORM form);
  /// Stores the type.
  void SetForm(AP_TYPE type);

  /// Writes the knots on one line ("=" after one that repeats its predecessor), then a line per
  /// control point, then an empty line. Nothing if `file` is null.
  void print(std::FILE* file) const;

  /// @return a new record of the host's spline kernel of this curve, owned by the caller, in which
  ///         repeated knots share one value; null for the empty curve, and where that kernel has no
  ///         memory.
  [[nodiscard]] ag_spline* AGLIB() const;

  /// @return this.
  AP_SPLINE* operator->();

 private:
  void make_cnodes();
  void insertOnce(double t);

  AP_RATIONALITY rationality_;
  AP_FORM form_;
  AP_TYPE type_;
  std::unique_ptr<AP_CNODE[]> nodes_;  // null until asked for
  knotwork::KnotRecord knots_;
  int growBy_;
};
