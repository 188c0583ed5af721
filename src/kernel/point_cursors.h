// SPDX-License-Identifier: MIT
// Walking the points of kernel records.
#pragma once

#include "knotwork/platform/kernel/records.h"

namespace knotwork::detail {

/// Hands out the coordinates of a list's points in order; null where a node or its array is
/// missing.
class ListCursor {
 public:
  explicit ListCursor(ag_cnode* first) : node_(first) {}

  double* next() {
    if (node_ == nullptr) return nullptr;
    double* const p = node_->p;
    node_ = node_->next;
    return p;
  }

 private:
  ag_cnode* node_;
};

/// Hands out the coordinates of a grid's points in order, u row after u row of `cols` points; null
/// where a node or its array is missing, which ends the walk.
class GridCursor {
 public:
  GridCursor(ag_snode* first, int cols) : row_(first), node_(first), cols_(cols), left_(cols) {}

  double* next() {
    if (left_ == 0) startNextRow();
    if (node_ == nullptr) return nullptr;
    --left_;
    double* const p = node_->p;
    node_ = node_->nextV;
    return p;
  }

 private:
  void startNextRow() {
    row_ = row_->nextU;
    node_ = row_;
    left_ = cols_;
  }

  ag_snode* row_;  // first node of the current row
  ag_snode* node_;
  int cols_;
  int left_;  // points still to come in the current row
};

}  // namespace knotwork::detail
