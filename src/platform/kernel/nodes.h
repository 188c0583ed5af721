// SPDX-License-Identifier: MIT
// Kernel stand-in: lists and grids of nodes, the parts of which records are built.
#pragma once

#include <cstdlib>

#include "knotwork/platform/kernel/records.h"

namespace knotwork::detail {

/// @return a new T, all its fields 0, or null.
template <class T>
T* newRecord() {
  return static_cast<T*>(std::calloc(1, sizeof(T)));
}

/// Appends `count` points of `size` doubles to `*link`, copied from `points` unless that is null.
/// @return false when memory ran out; the list made so far stands.
bool buildPoints(ag_cnode** link, int count, int size, const double* points);

/// The same for a grid, row after row.
bool buildGrid(ag_snode** link, int rows, int cols, int size, const double* points);

/// Sets a knot's value: the cell of an equal predecessor, or a new one. @return false without
/// memory.
bool setKnot(double** cell, double* predecessor, double value);

void releasePoints(ag_cnode* first);
void releaseGrid(ag_snode* first);

}  // namespace knotwork::detail
