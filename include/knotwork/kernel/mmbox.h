// SPDX-License-Identifier: MIT
// AP_MMBOX: the smallest axis-parallel box around points.
#pragma once

#include "knotwork/export.h"

/// Bounding box: one lower and one upper bound per coordinate.
class KNOTWORK_API AP_MMBOX {
 public:
  /// A box of zeros. Throws std::bad_alloc.
  /// @param size  number of coordinates; below 1 the box has none.
  explicit AP_MMBOX(int size);

  AP_MMBOX(const AP_MMBOX&) = delete;
  AP_MMBOX& operator=(const AP_MMBOX&) = delete;
  ~AP_MMBOX();

  /// Shrinks the box to one point.
  /// @param point     dim coordinates, followed by the weight if `rational`.
  /// @param rational  whether the coordinates are to be divided by the weight.
  void init(const double* point, int rational);

  /// Extends the box by one point; arguments as for init().
  void extend(const double* point, int rational);

  int dim;      ///< number of coordinates
  double* min;  ///< lower bounds, dim of them
  double* max;  ///< upper bounds, dim of them, in the same array
};
