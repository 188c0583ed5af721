// SPDX-License-Identifier: MIT
// Kernel stand-in: reading records, and runs of doubles.
#include "knotwork/platform/kernel/accessors.h"

ag_knode* AGI_getFirstNode(const ag_spline* curve) { return curve ? curve->knots : nullptr; }

ag_sknode* AGI_getFirstSurfaceNode(const ag_surface* surface) {
  return surface ? surface->knots : nullptr;
}

int ag_get_form_bs(const ag_spline* curve) { return curve ? curve->form : 0; }

void ag_V_copy(const double* from, double* to, int n) {
  for (int k = 0; k < n; ++k) to[k] = from[k];
}

void ag_V_zero(double* to, int n) {
  for (int k = 0; k < n; ++k) to[k] = 0.0;
}
