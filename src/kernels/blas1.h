// SPDX-License-Identifier: MIT
// The ten level-1 BLAS routines behind the factorisations, unit strides, double precision.
//
// Two implementations may stand behind the table: the system's BLAS and the built-in one, which is
// part of every kernel set. A system routine is taken only if it gives the bits of the reference
// BLAS (3.10 and later: that is where dnrm2 and drotg changed), so results do not depend on which
// package is installed.
#pragma once

#include <atomic>
#include <string>

#include "kernels/level1_kernels.h"

namespace knotwork::blas1 {

/// The system's routines, or null when the library was built without them.
const Table* systemTable();

/// Takes from `candidate` the routines that give the reference bits, the others from `builtin`.
/// Trying them leaves the floating-point environment as it was.
Table withReferenceBits(const Table& candidate, const Table& builtin);

/// The table in use, once it has been asked for.
extern std::atomic<const Table*> chosen;

/// Which routines a word asks for, and a line for the standard error stream where it asks for
/// nothing that there is; empty where it was followed.
struct SourceChoice {
  bool system;
  std::string complaint;
};

/// @param wanted  "system" or "builtin"; null and "" mean the system's where there are any.
SourceChoice chooseSource(const char* wanted);

/// Chooses the table: routines of the system whose bits are right and, for the others, those of the
/// kernel set in use. Any number of threads may come here at once.
const Table& choose();

/// The table in use. The system's routines are tried when a first one is called, not at load, so
/// that a host that never factors pays nothing for it.
inline const Table& active() {
  const Table* table = chosen.load(std::memory_order_acquire);
  return table != nullptr ? *table : choose();
}

/// Sum of x_i y_i in index order, from 0.0.
inline double ddot(int n, const double* x, const double* y) { return active().ddot(n, x, y); }
/// y += a x; nothing at all when a is 0.
inline void daxpy(int n, double a, const double* x, double* y) { active().daxpy(n, a, x, y); }
/// x *= a.
inline void dscal(int n, double a, double* x) { active().dscal(n, a, x); }
/// y = x.
inline void dcopy(int n, const double* x, double* y) { active().dcopy(n, x, y); }
/// Exchanges x and y.
inline void dswap(int n, double* x, double* y) { active().dswap(n, x, y); }
/// Sum of |x_i| in index order.
inline double dasum(int n, const double* x) { return active().dasum(n, x); }
/// Euclidean length; scaled only where squares of the data would leave the range.
inline double dnrm2(int n, const double* x) { return active().dnrm2(n, x); }
/// (x_i, y_i) becomes (c x_i + s y_i, c y_i - s x_i).
inline void drot(int n, double* x, double* y, double c, double s) { active().drot(n, x, y, c, s); }
/// c, s with c a + s b = r and c b - s a = 0; r replaces a, b is lost.
inline void drotg(double* a, double* b, double* c, double* s) { active().drotg(a, b, c, s); }
/// 1-based place of the first of the largest |x_i|; 0 for an empty x.
inline int idamax(int n, const double* x) { return active().idamax(n, x); }

}  // namespace knotwork::blas1
