// SPDX-License-Identifier: MIT
// AP_CNODE: a curve's control points as a list.
#pragma once

/// Node of the list of a curve's control points, in storage order.
struct AP_CNODE {
  AP_CNODE* next;  ///< null in the last node
  AP_CNODE* prev;  ///< null in the first node
  double* cv;      ///< address of the control point; writes through
};
