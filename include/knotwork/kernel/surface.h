// SPDX-License-Identifier: MIT
// AP_SURFACE: a tensor-product B-spline surface that owns its control points and knots.
#pragma once

#include <cstdio>
#include <memory>

#include "knotwork/export.h"
#include "knotwork/kernel/geometric.h"
#include "knotwork/kernel/knot_record.h"
#include "knotwork/kernel/snode.h"
#include "knotwork/platform/kernel/records.h"

/// Tensor-product B-spline surface, polynomial or rational.
///
/// Control points lie in vCount() rows, one per v index, of uCount() points each. Nothing here
/// reports: as with curves, what makes no surface gives the empty one, and what lacks memory throws
/// std::bad_alloc, which is normal() as well, at poles and in high degrees.
class KNOTWORK_API AP_SURFACE : public AP_GEOMETRIC {
 public:
  /// Clamped uniform knots over [0, uSpans] x [0, vSpans]; control points not initialised.
  /// @param uRationality, vRationality  the surface is rational if either is not 0.
  AP_SURFACE(int dim, int uDegree, int vDegree, int uSpans, int vSpans, AP_RATIONALITY uRationality,
             AP_RATIONALITY vRationality);

  /// Deep copy, its capacity its own point count, its box not computed.
  AP_SURFACE(const AP_SURFACE& other);

  /// Copy of a surface of the host's spline kernel: numbers, forms, type and rational flags. The
  /// record stays as it is.
  /// @param unused  has no meaning.
  AP_SURFACE(const ag_surface* record, int unused);

  AP_SURFACE& operator=(const AP_SURFACE&) = delete;
  ~AP_SURFACE() override;

  /// @return the degree in u.
  int uDegree() const;
  /// @return the degree in v.
  int vDegree() const;
  /// @return the number of spans in u.
  int uSpans() const;
  /// @return the number of spans in v.
  int vSpans() const;
  /// @return control points per row: uSpans() + uDegree().
  int uCount() const;
  /// @return rows of control points: vSpans() + vDegree().
  int vCount() const;
  /// @return doubles per control point: Dim(), and one more if either direction is rational.
  int Coords() const;
  /// @return the rational flag of u, as given.
  AP_RATIONALITY uRationality() const;
  /// @return the rational flag of v, as given.
  AP_RATIONALITY vRationality() const;
  /// @return the form in u set last.
  AP_FORM uForm() const;
  /// @return the form in v set last.
  AP_FORM vForm() const;
  /// @return the type set last.
  AP_TYPE Type() const;

  /// @return the doubles that eval() needs for partials up to order k in each direction:
  ///         ((max(uDegree, k) + 1) (k + 1) + (max(vDegree, k) + 1) (uDegree + 1)) Coords(), a
  ///         negative k counting as larger than any degree.
  [[nodiscard]] int WorkspaceSize(int k) const;

  /// @return the u knots, writable by KnotRecord::assign().
  knotwork::KnotRecord& uKnots();
  /// @return the u knots.
  const knotwork::KnotRecord& uKnots() const;
  /// @return the v knots, writable by KnotRecord::assign().
  knotwork::KnotRecord& vKnots();
  /// @return the v knots.
  const knotwork::KnotRecord& vKnots() const;

  /// @param i  row, a v index, in [0, vCount() - 1], not checked.
  /// @param j  place in the row, a u index, in [0, uCount() - 1], not checked.
  /// @return   control point (i, j), writable, until a knot is inserted.
  double* index(int i, int j);
  /// @return control point (i, j), until a knot is inserted; arguments as above.
  const double* index(int i, int j) const;

  /// @return the first node of the list of control points; null if there are none. Nodes are good
  ///         until a knot is inserted.
  AP_SNODE* node0();
  /// @return the last node of the list of control points; null if there are none.
  AP_SNODE* noden();

  /// Bounding box of the control points, of a rational surface after division by the weights.
  /// @param force  0 returns the box computed last, if there is one.
  /// @return       this object's box.
  AP_MMBOX& Box(int force);

  /// Point and partials at (u, v), up to order nderiv in each direction; allocates nothing.
  ///
  /// Knots, ends of the domain and orders above the degree are treated as for curves.
  /// @param[out] out  WorkspaceSize(nderiv) doubles. The partial of order i in u and j in v stands
  ///                  at ((nderiv + 1) j + i) Coords(), its first Dim() doubles meaningful; what
  ///                  lies behind the results is scratch.
  /// @param u, v      in knot units.
  /// @param nderiv    highest order; nothing is written if it is negative.
  void eval(double* out, double u, double v, int nderiv) const;

  /// Point and partials of the surface whose member eval() ran last.
  /// @return  an area of the library, laid out as by the member, until the next call; null if no
  ///          surface was evaluated, that one is gone or nderiv is negative.
  [[nodiscard]] static double* eval(double u, double v, int nderiv);

  /// Point and unit normal Su x Sv at (u, v), for surfaces in space.
  ///
  /// Where one partial vanishes on a border of the domain (a pole), and within 2^-26 spans of it,
  /// the normal is the limit from inside; at a corner, across the border that shrinks to a point.
  /// Where both vanish or they are parallel, it is the zero vector. A partial vanishes if it is no
  /// more than the rounding of the terms that make it up.
  /// @param[out] point   Dim() doubles; may be null.
  /// @param[out] normal  Dim() doubles; all 0 unless Dim() is 3.
  void normal(double u, double v, double* point, double* normal) const;

  /// @return the doubles that eval() needs for orders up to k >= 0, in a type that holds it.
  long long workspace(int k) const;

  /// Inserts a knot in u; the surface stays the same to rounding. As AP_SPLINE::insert().
  int uinsert(double t, int mult);
  /// Inserts a knot in v; the surface stays the same to rounding. As AP_SPLINE::insert().
  int vinsert(double t, int mult);

  /// Writes n doubles from the first control point on; those beyond the last one are left out.
  void set(const double* values, int n);
  /// Writes n doubles from control point (i, j) on; those beyond the last one are left out.
  void set(int i, int j, const double* values, int n);

  /// Stores the forms of both directions.
  void SetForm(AP_FORM u, AP_FORM v);
  /// Stores the type.
  void SetForm(AP_TYPE type);

  /// Writes the u and the v knots ("*" after one that repeats its predecessor), then for each row
  /// of control points a line per coordinate and an empty line, then an empty line. Nothing if
  /// `file` is null.
  void print(std::FILE* file) const;

  /// @return a new record of the host's spline kernel of this surface, owned by the caller, in
  ///         which repeated knots share one value; null for the empty surface, and where that
  ///         kernel has no memory.
  [[nodiscard]] ag_surface* AGLIB() const;

  /// @return this.
  AP_SURFACE* operator->();

 private:
  void make_snodes();
  bool reserveInsertion(knotwork::KnotRecord& knots, double t, int mult, long long perKnot);
  void uinsertOnce(double t);
  void vinsertOnce(double t);
  long long points() const;
  bool isEmpty() const;

  AP_TYPE type_;
  AP_RATIONALITY uRationality_;
  AP_RATIONALITY vRationality_;
  AP_FORM uForm_;
  AP_FORM vForm_;
  std::unique_ptr<AP_SNODE[]> nodes_;  // null until asked for
  knotwork::KnotRecord uKnots_;
  knotwork::KnotRecord vKnots_;
  int growBy_;
};
