// SPDX-License-Identifier: MIT
// Kernel stand-in: the records of the host's spline kernel, plain structs with null-terminated
// lists.
#pragma once

/// Control point of a curve or of a point list; `p` is its array of coordinates.
struct ag_cnode {
  ag_cnode* next;
  double* p;
};

/// Knot of a curve. Nodes of equal, neighbouring knots may share one value.
struct ag_knode {
  ag_knode* next;
  double* t;
};

/// Control point of a surface or point of an array: `nextU` is the first node of the next u row,
/// `nextV` the next node along the row.
struct ag_snode {
  ag_snode* nextU;
  ag_snode* nextV;
  double* p;
};

/// Knot of a surface: two chains, along nextU for the values `u` and along nextV for the values
/// `v`, that share their first node. A node of one chain alone has null in the other's fields.
struct ag_sknode {
  ag_sknode* nextU;
  ag_sknode* nextV;
  double* u;
  double* v;
};

/// B-spline curve of degree m and n spans: n + m control points of dim + |rational| doubles each,
/// and n + 2m - 1 knots (the knot vector without its first and its last entry).
struct ag_spline {
  int dim;
  int degree;
  int spans;
  int rational;  ///< 0 polynomial; else its absolute value is the number of extra coordinates
  ag_cnode* first;
  ag_knode* knots;
  int form;  ///< 0 open, 1 closed, 2 periodic
  int type;
};

/// Tensor-product surface: (uSpans + uDegree) rows of (vSpans + vDegree) control points, each of
/// dim doubles, or dim + 1 where a rational flag is set.
struct ag_surface {
  int dim;
  int uDegree, vDegree;
  int uSpans, vSpans;
  int uRational, vRational;
  int uForm, vForm;
  ag_snode* first;
  ag_sknode* knots;
  int type;
};

/// List of points.
struct ag_cp_list {
  int dim;
  int count;
  ag_cnode* first;
};

/// Rectangular array of points.
struct ag_sp_array {
  int dim;
  int rows;
  int cols;
  ag_snode* first;
};
