// SPDX-License-Identifier: MIT
// Kernel stand-in: building and releasing records.
//
// Builders return null for sizes that make no record (a negative dimension, degree or count, no
// control point) and when memory runs out; what was built till then is freed.
#pragma once

#include "knotwork/platform/kernel/export.h"
#include "knotwork/platform/kernel/records.h"

extern "C" {

/// New curve record, owned by the caller, released with ag_rel_bs().
/// @param points  (spans + degree) * (dim + |rational|) doubles, copied; null leaves the points 0.
/// @param knots   spans + 2 degree - 1 doubles, copied; equal neighbours share one value. Null
///                leaves the values of the knot nodes to the caller, who sets each from
///                ag_al_dbl().
[[nodiscard]] KNOTWORK_KERNEL_API ag_spline* ag_bld_bs(int dim, const double* points,
                                                       const double* knots, int type, int degree,
                                                       int spans, int rational, int form);

/// New surface record, owned by the caller, released with ag_rel_srf().
/// @param points  the control points, u row after u row, copied; null leaves them 0.
/// @param knots   the u knots, then the v knots, as for a curve, copied; null as for a curve.
[[nodiscard]] KNOTWORK_KERNEL_API ag_surface* ag_bld_srf(int dim, const double* points,
                                                         const double* knots, int type, int uDegree,
                                                         int vDegree, int uSpans, int vSpans,
                                                         int uRational, int vRational, int uForm,
                                                         int vForm);

/// New list of `count` points, owned by the caller, released with ag_rel_cp_list().
/// @param points  count * dim doubles, copied; null leaves them 0.
[[nodiscard]] KNOTWORK_KERNEL_API ag_cp_list* ag_bld_cp_list(int dim, int count,
                                                             const double* points);

/// New array of points, owned by the caller, released with ag_rel_sp_array().
/// @param points  rows * cols * dim doubles, row after row, copied; null leaves them 0.
[[nodiscard]] KNOTWORK_KERNEL_API ag_sp_array* ag_bld_sp_array(int dim, int rows, int cols,
                                                               const double* points);

/// Releases a curve with all it owns, a value shared by neighbouring knots once; null is allowed.
KNOTWORK_KERNEL_API void ag_rel_bs(ag_spline* curve);

/// Releases a surface with all it owns, a value shared by neighbouring knots once; null is allowed.
KNOTWORK_KERNEL_API void ag_rel_srf(ag_surface* surface);

/// Releases a list with its points; null is allowed.
KNOTWORK_KERNEL_API void ag_rel_cp_list(ag_cp_list* list);

/// Releases an array with its points; null is allowed.
KNOTWORK_KERNEL_API void ag_rel_sp_array(ag_sp_array* array);

/// @return n new doubles, all 0, that become part of a record; null if n < 1 or memory runs out.
[[nodiscard]] KNOTWORK_KERNEL_API double* ag_al_dbl(int n);

}  // extern "C"
