// SPDX-License-Identifier: MIT
// References to the elements of triangular matrices, those outside the triangle included.
#pragma once

#include "knotwork/export.h"

/// An element of a triangular matrix: a stored one, or a constant 0 outside the stored triangle.
///
/// Copying a reference makes another one to the same element; assignment writes the element.
/// Reports 0x4002 when a constant would change its value (it keeps it).
class KNOTWORK_API RODoubleRef {
 public:
  /// Refers to a stored element.
  explicit RODoubleRef(double& element);
  /// Refers to the constant 0.
  RODoubleRef();
  RODoubleRef(const RODoubleRef&) = default;

  /// @return the element's value.
  KNOTWORK_INLINE_API operator double() const { return *element_; }

  RODoubleRef& operator=(double x);
  RODoubleRef& operator=(const RODoubleRef& x);
  RODoubleRef& operator+=(double x);
  RODoubleRef& operator-=(double x);
  RODoubleRef& operator*=(double x);
  RODoubleRef& operator/=(double x);

 private:
  double* element_;
  int readOnly_;
};
