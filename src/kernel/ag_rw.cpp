// SPDX-License-Identifier: MIT
// Conversions between vectors, single points and arrays of the kernel; products of polynomials.
#include "knotwork/kernel/ag_rw.h"

#include <algorithm>

#include "knotwork/platform/foundation/4d_dbl_point.h"
#include "knotwork/platform/kernel/accessors.h"

namespace {

// How many elements to copy when `count` are asked for; all of v for a negative count.
int copied(int count, const DoubleVec& v) {
  const int length = static_cast<int>(v.length());
  return count < 0 ? length : std::min(count, length);
}

}  // namespace

void TagRw::vToDv(const double* p, DoubleVec& v, int count) {
  if (p == nullptr) return;
  for (int k = 0; k < copied(count, v); ++k) v(k) = p[k];
}

void TagRw::dvToV(const DoubleVec& v, double* p, int count) {
  if (p == nullptr) return;
  for (int k = 0; k < copied(count, v); ++k) p[k] = v(k);
}

void TagRw::dvToP4(const DoubleVec& v, T4dDblPoint& p) {
  double xyzw[] = {0.0, 0.0, 0.0, 1.0};
  dvToV(v, xyzw, 4);
  p.x = xyzw[0], p.y = xyzw[1], p.z = xyzw[2], p.w = xyzw[3];
}

void TagRw::p4ToDv(const T4dDblPoint& p, DoubleVec& v) {
  const double xyzw[] = {p.x, p.y, p.z, p.w};
  vToDv(xyzw, v, 4);
}

void TagRw::agToT4dDblPoint(double* a, T4dDblPoint& p, int dim, int rational) {
  if (a == nullptr) return;
  const int spatial = std::clamp(dim, 0, 3);
  double xyz[3];
  ag_V_copy(a, xyz, spatial);
  ag_V_zero(xyz + spatial, 3 - spatial);
  p.x = xyz[0], p.y = xyz[1], p.z = xyz[2];
  p.w = rational != 0 ? a[std::max(dim, 0)] : 1.0;
}

void TagRw::T4dDblPointToAg(const T4dDblPoint& p, double* a, int dim, int rational) {
  if (a == nullptr) return;
  const double xyzw[] = {p.x, p.y, p.z, p.w};
  ag_V_copy(xyzw, a, std::clamp(dim, 0, 4));
  if (rational != 0) a[std::max(dim, 0)] = p.w;
}

bool TagRw::polyMultiply(const DoubleVec& a, const DoubleVec& b, DoubleVec& c) {
  // Views: c may be one of the two, and is about to get other storage.
  const DoubleVec p = a.slice(0, a.length(), 1);
  const DoubleVec q = b.slice(0, b.length(), 1);
  const unsigned terms = p.length() + q.length();
  const unsigned needed = terms > 0 ? terms - 1 : 0;
  const bool resized = c.length() != needed;
  if (resized) c.resize(needed);
  if (c.length() != needed) return resized;
  // c_(i+j) += p_i q_j, on top of what c holds.
  for (int i = 0; i < static_cast<int>(p.length()); ++i) {
    for (int j = 0; j < static_cast<int>(q.length()); ++j) c(i + j) += p(i) * q(j);
  }
  return resized;
}
