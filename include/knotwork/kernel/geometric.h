// SPDX-License-Identifier: MIT
// AP_GEOMETRIC: what the curve and the surface objects share.
#pragma once

#include <cstddef>

#include "knotwork/export.h"
#include "knotwork/kernel/forms.h"
#include "knotwork/kernel/knot_record.h"
#include "knotwork/kernel/mmbox.h"

/// Base of the curve and surface objects: the control points, their number and their bounding box.
///
/// Control points lie one after the other, Coords() doubles each; those of a rational object are
/// homogeneous: coordinates multiplied by the weight, then the weight.
///
/// When memory runs out, constructors and all that may need more storage throw std::bad_alloc; the
/// object is then as it was before.
class KNOTWORK_API AP_GEOMETRIC {
 public:
  /// No control points yet. @param dim  spatial dimension; a negative one counts as 0.
  explicit AP_GEOMETRIC(int dim);

  AP_GEOMETRIC(const AP_GEOMETRIC&) = delete;
  AP_GEOMETRIC& operator=(const AP_GEOMETRIC&) = delete;
  virtual ~AP_GEOMETRIC();

  /// @return the control points, writable, until a knot is inserted; null if there are none.
  double* CV();
  /// @return the control points, until a knot is inserted; null if there are none.
  const double* CV() const;

  /// @return how many control points the storage holds before it must grow.
  int Capacity() const;

  /// @return the spatial dimension.
  int Dim() const;

 protected:
  /// Makes room for `points` control points, which keeps those that there are, and for `spare`
  /// doubles behind them. Throws std::bad_alloc, and then nothing has changed.
  void allocate(long long points, int coords, long long spare);

  /// Raises the capacity to at least `points`, in steps of `step`; likewise.
  void reserve(long long points, int coords, int step, long long spare);

  /// @return the doubles behind the control points.
  double* spare() const;

  /// Writes n doubles from double `at` on, as far as `doubles` of storage go.
  void write(std::ptrdiff_t at, std::ptrdiff_t doubles, const double* values, int n);

  /// The box of the first `points` control points, computed unless it is there and `force` is 0.
  AP_MMBOX& bound(std::ptrdiff_t points, int coords, int force);

  double* cv_;            ///< control points, owned
  std::ptrdiff_t spare_;  ///< place of the spare doubles in cv_
  int count_;             ///< capacity of cv_ in control points
  int dim_;               ///< spatial dimension
  AP_MMBOX box_;          ///< box of the control points
  int boxValid_;          ///< whether box_ has been computed
};
