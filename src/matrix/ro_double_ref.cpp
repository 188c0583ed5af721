// SPDX-License-Identifier: MIT
// References to the elements of triangular matrices.
#include "knotwork/matrix/ro_double_ref.h"

#include "knotwork/vector/math_codes.h"
#include "vector/math_report.h"

namespace {

// What every reference outside a stored triangle refers to; never written.
double zeroElement = 0.0;

}  // namespace

RODoubleRef::RODoubleRef(double& element) : element_(&element), readOnly_(0) {}
RODoubleRef::RODoubleRef() : element_(&zeroElement), readOnly_(1) {}

RODoubleRef& RODoubleRef::operator=(double x) {
  if (readOnly_ == 0) {
    *element_ = x;
  } else if (x != *element_) {
    raiseMathErrorCode(knotwork::kConstantChanged, *element_, x);
  }
  return *this;
}

// It is the element that is assigned, not the reference.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
RODoubleRef& RODoubleRef::operator=(const RODoubleRef& x) { return *this = static_cast<double>(x); }
RODoubleRef& RODoubleRef::operator+=(double x) { return *this = *element_ + x; }
RODoubleRef& RODoubleRef::operator-=(double x) { return *this = *element_ - x; }
RODoubleRef& RODoubleRef::operator*=(double x) { return *this = *element_ * x; }
RODoubleRef& RODoubleRef::operator/=(double x) { return *this = *element_ / x; }
