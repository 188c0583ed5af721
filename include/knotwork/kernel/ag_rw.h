// SPDX-License-Identifier: MIT
// Conversions between the library's containers and the records of the host's spline kernel.
#pragma once

#include "knotwork/export.h"
#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/kernel/surface_direction.h"
#include "knotwork/vector/double_vec.h"

class T4dDblPoint;
struct ag_cp_list;
struct ag_sp_array;
struct ag_spline;
struct ag_surface;

/// Static conversions, named source-to-target. Records are never created or freed here: the caller
/// passes records of the right sizes, of which only numbers are read or overwritten.
///
/// Numbers are copied as they stand, without multiplying or dividing by a weight: a point that
/// carries a weight must already be as that kernel keeps it. Row i of a grid is the i-th u row of a
/// control net, columns run along v.
///
/// Nothing is thrown; only memory that cannot be had is reported, with 0x3008. A null record,
/// counts that do not agree, and a list that ends (or a point whose coordinates are missing) before
/// its count give false or an empty container; the numbers written till then stay written.
class KNOTWORK_API TagRw {
 public:
  /// v[k] = p[k] for k < count, as far as v goes; a negative count means all of v.
  static void vToDv(const double* p, DoubleVec& v, int count);
  /// p[k] = v[k] for k < count, as far as v goes; a negative count means all of v.
  static void dvToV(const DoubleVec& v, double* p, int count);
  /// p = (v[0], v[1], v[2], v[3]), where a missing v[3] is 1 and other missing elements are 0.
  static void dvToP4(const DoubleVec& v, T4dDblPoint& p);
  /// v[0], ..., v[3] = (x, y, z, w), as far as v goes.
  static void p4ToDv(const T4dDblPoint& p, DoubleVec& v);
  /// x, y, z from the first dim (at most 3) coordinates, the others 0; w = a[dim] if `rational` is
  /// not 0, else 1. A negative dim counts as 0; a null array changes nothing.
  static void agToT4dDblPoint(double* a, T4dDblPoint& p, int dim, int rational);
  /// The first dim (at most 4) coordinates from x, y, z, w, and then a[dim] = w if `rational` is
  /// not 0. A negative dim counts as 0; a null array takes nothing.
  static void T4dDblPointToAg(const T4dDblPoint& p, double* a, int dim, int rational);

  /// @param dim  coordinates to take from each point, in [1, dimension of the list].
  /// @return new list of the points; empty and of dimension 1 on a fault, which here includes a
  /// list of dimension below 2.
  [[nodiscard]] static TtupleVector cpListToTv(int dim, const ag_cp_list* list);
  /// @return new vector of the first coordinate of every point; empty on the faults of cpListToTv.
  [[nodiscard]] static DoubleVec cpListToDv(const ag_cp_list* list);
  /// Writes v[k] as coordinate c of point k.
  /// @return false on a fault: also if v.length() is not the list's count or c is no coordinate.
  [[nodiscard]] static bool dvToCpList(int c, const DoubleVec& v, ag_cp_list* list);
  /// Writes all components of tv's points as the first coordinates of the list's.
  /// @return false on a fault: also if the counts differ or the list's dimension is below tv's.
  [[nodiscard]] static bool tvToCpList(const TtupleVector& tv, ag_cp_list* list);
  /// @param dim  coordinates to take from each point, in [1, dimension of the array].
  /// @return new grid of the points, with the array's rows and columns; 0 x 0 and of dimension 1 on
  /// a fault.
  [[nodiscard]] static TtupleMatrix spArrayToTm(int dim, const ag_sp_array* array);

  /// Reads the control points into tv, which must have as many points already (degree + spans).
  /// Each takes as many coordinates as both sides have; further components stay as they are. A
  /// rational curve's points have their extra coordinates behind the spatial ones.
  /// @return false on a fault.
  [[nodiscard]] static bool cvsToTv(const ag_spline* s, TtupleVector& tv);
  /// Writes the points of tv over the control points, of which there must be as many. Coordinates
  /// that tv has no component for become 1 if `fillMissing` is set (the weights of a rational
  /// curve, and likewise spatial ones), else stay as they are.
  /// @return false on a fault.
  [[nodiscard]] static bool tvToCvs(const TtupleVector& tv, ag_spline* s, bool fillMissing);
  /// As cvsToTv, for a grid of (u degree + u spans) rows and (v degree + v spans) columns. The
  /// points of a surface that is rational in either direction have one extra coordinate.
  [[nodiscard]] static bool cvsToTm(const ag_surface* s, TtupleMatrix& tm);
  /// As tvToCvs, for a grid of that shape.
  [[nodiscard]] static bool tmToCvs(const TtupleMatrix& tm, ag_surface* s, bool fillMissing);

  /// Reads the whole knot vector: the record's knots with one more at either end, which repeats the
  /// end knot or, for a periodic curve, lies 1 beyond it.
  /// @param knots  at least spans + 2 degree + 1 elements, of which so many are written.
  /// @return false on a fault: also if `knots` is shorter or the curve has no knots.
  [[nodiscard]] static bool knotsToDv(const ag_spline* s, DoubleVec& knots);
  /// Writes a whole knot vector without its first and its last entry.
  /// @param knots  exactly spans + 2 degree + 1 elements.
  /// @return false on a fault: also if the length differs.
  [[nodiscard]] static bool dvToKnots(const DoubleVec& knots, ag_spline* s);
  /// As knotsToDv and dvToKnots of a curve, for one direction of a surface.
  [[nodiscard]] static bool knotsToDvOne(const ag_surface* s, TsurfaceDirection dir,
                                         DoubleVec& knots);
  [[nodiscard]] static bool dvToKnotsOne(const DoubleVec& knots, TsurfaceDirection dir,
                                         ag_surface* s);
  /// Both directions of a surface: first u; where that fails, v is left alone.
  [[nodiscard]] static bool knotsToDv(const ag_surface* s, DoubleVec& uKnots, DoubleVec& vKnots);
  [[nodiscard]] static bool dvToKnots(const DoubleVec& uKnots, const DoubleVec& vKnots,
                                      ag_surface* s);

  /// Adds the product of two polynomials to c, all by ascending powers: c[i + j] += a[i] b[j], in
  /// order of i, then j. What c holds before is kept: pass zeros for the product alone.
  /// @param c  resized (with zeros) unless its length is a.length() + b.length() - 1, or 0 where
  ///           both are empty.
  /// @return whether c was resized.
  static bool polyMultiply(const DoubleVec& a, const DoubleVec& b, DoubleVec& c);

 private:
  TagRw() = default;
  ~TagRw() = default;
};
