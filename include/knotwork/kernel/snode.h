// SPDX-License-Identifier: MIT
// AP_SNODE: a surface's control points as a list.
#pragma once

/// Node of the list of a surface's control points, in storage order: row after row.
struct AP_SNODE {
  AP_SNODE* next;  ///< null in the last node
  AP_SNODE* prev;  ///< null in the first node
  double* cv;      ///< address of the control point; writes through
};
