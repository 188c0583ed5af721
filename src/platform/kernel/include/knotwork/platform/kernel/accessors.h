// SPDX-License-Identifier: MIT
// Kernel stand-in: reading records, and runs of doubles.
#pragma once

#include "knotwork/platform/kernel/export.h"
#include "knotwork/platform/kernel/records.h"

extern "C" {

/// @return the first knot node of a curve; null for a null curve or one without knots.
[[nodiscard]] KNOTWORK_KERNEL_API ag_knode* AGI_getFirstNode(const ag_spline* curve);

/// @return the first knot node of a surface, start of both chains; null as for a curve.
[[nodiscard]] KNOTWORK_KERNEL_API ag_sknode* AGI_getFirstSurfaceNode(const ag_surface* surface);

/// @return the form of a curve: 0 open, 1 closed, 2 periodic; 0 for a null curve.
[[nodiscard]] KNOTWORK_KERNEL_API int ag_get_form_bs(const ag_spline* curve);

/// Copies n doubles, to[k] = from[k]; nothing if n < 1.
KNOTWORK_KERNEL_API void ag_V_copy(const double* from, double* to, int n);

/// Sets n doubles to 0; nothing if n < 1.
KNOTWORK_KERNEL_API void ag_V_zero(double* to, int n);

}  // extern "C"
