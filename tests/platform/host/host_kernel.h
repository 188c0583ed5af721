// SPDX-License-Identifier: MIT
// A host's spline kernel: what the library asks of one, with records that begin with other fields
// than the stand-in's, in another order and of other sizes.
#pragma once

#include "host_export.h"

#define KNOTWORK_KERNEL_API HOST_API

struct ag_entity {
  void* owner;
  char name[20];
};

struct ag_cnode {
  double* p;
  long long tag;
  ag_cnode* next;
};

struct ag_knode {
  double* t;
  ag_knode* previous;
  ag_knode* next;
};

struct ag_snode : ag_entity {
  double* p;
  ag_snode* nextV;
  ag_snode* nextU;
};

struct ag_sknode {
  double *v, *u;
  char mark;
  ag_sknode *nextV, *nextU;
};

struct ag_spline : ag_entity {
  ag_knode* knots;
  ag_cnode* first;
  short colour;
  int type, form;
  int rational, spans, degree, dim;
};

struct ag_surface : ag_entity {
  int type;
  int vForm, uForm, vRational, uRational;
  ag_sknode* knots;
  ag_snode* first;
  double tolerance;
  int vSpans, uSpans, vDegree, uDegree, dim;
};

struct ag_cp_list : ag_entity {
  ag_cnode* first;
  int count, dim;
};

struct ag_sp_array : ag_entity {
  ag_snode* first;
  int cols, rows, dim;
};

using ag_tick_function = int (*)(int step, int maximum);

extern "C" {
HOST_API ag_knode* AGI_getFirstNode(const ag_spline* curve);
HOST_API ag_sknode* AGI_getFirstSurfaceNode(const ag_surface* surface);
HOST_API int ag_get_form_bs(const ag_spline* curve);
HOST_API void ag_V_copy(const double* from, double* to, int n);
HOST_API void ag_V_zero(double* to, int n);
HOST_API ag_spline* ag_bld_bs(int dim, const double* points, const double* knots, int type,
                              int degree, int spans, int rational, int form);
HOST_API ag_surface* ag_bld_srf(int dim, const double* points, const double* knots, int type,
                                int uDegree, int vDegree, int uSpans, int vSpans, int uRational,
                                int vRational, int uForm, int vForm);
HOST_API void ag_rel_bs(ag_spline* curve);
HOST_API void ag_rel_srf(ag_surface* surface);
HOST_API double* ag_al_dbl(int n);
HOST_API void ag_register_tick_function(ag_tick_function function);
}
