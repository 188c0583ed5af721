// SPDX-License-Identifier: MIT
// The ten level-1 BLAS routines behind the factorisations, unit strides, double precision.
//
// Two implementations may stand behind the table: the system's BLAS and the built-in one. A system
// routine is taken only if it gives the bits of the reference BLAS (3.10 and later: that is where
// dnrm2 and drotg changed), so results do not depend on which package is installed.
#pragma once

namespace knotwork::blas1 {

/// One implementation of each routine. Every length may be zero or negative, which means "nothing".
struct Table {
  double (*ddot)(int n, const double* x, const double* y);
  void (*daxpy)(int n, double a, const double* x, double* y);
  void (*dscal)(int n, double a, double* x);
  void (*dcopy)(int n, const double* x, double* y);
  void (*dswap)(int n, double* x, double* y);
  double (*dasum)(int n, const double* x);
  double (*dnrm2)(int n, const double* x);
  void (*drot)(int n, double* x, double* y, double c, double s);
  void (*drotg)(double* a, double* b, double* c, double* s);
  int (*idamax)(int n, const double* x);
};

namespace builtin {
double ddot(int n, const double* x, const double* y);
void daxpy(int n, double a, const double* x, double* y);
void dscal(int n, double a, double* x);
void dcopy(int n, const double* x, double* y);
void dswap(int n, double* x, double* y);
double dasum(int n, const double* x);
double dnrm2(int n, const double* x);
void drot(int n, double* x, double* y, double c, double s);
void drotg(double* a, double* b, double* c, double* s);
int idamax(int n, const double* x);
}  // namespace builtin

inline constexpr Table kBuiltin{builtin::ddot,  builtin::daxpy, builtin::dscal, builtin::dcopy,
                                builtin::dswap, builtin::dasum, builtin::dnrm2, builtin::drot,
                                builtin::drotg, builtin::idamax};

/// The system's routines, or null when the library was built without them.
const Table* systemTable();

/// Takes from `candidate` the routines that give the reference bits, the others from kBuiltin.
Table withReferenceBits(const Table& candidate);

/// The table in use: built-in until the library is loaded, checked system routines from then on.
extern Table active;

/// Sum of x_i y_i in index order, from 0.0.
inline double ddot(int n, const double* x, const double* y) { return active.ddot(n, x, y); }
/// y += a x; nothing at all when a is 0.
inline void daxpy(int n, double a, const double* x, double* y) { active.daxpy(n, a, x, y); }
/// x *= a.
inline void dscal(int n, double a, double* x) { active.dscal(n, a, x); }
/// y = x.
inline void dcopy(int n, const double* x, double* y) { active.dcopy(n, x, y); }
/// Exchanges x and y.
inline void dswap(int n, double* x, double* y) { active.dswap(n, x, y); }
/// Sum of |x_i| in index order.
inline double dasum(int n, const double* x) { return active.dasum(n, x); }
/// Euclidean length; scaled only where squares of the data would leave the range.
inline double dnrm2(int n, const double* x) { return active.dnrm2(n, x); }
/// (x_i, y_i) becomes (c x_i + s y_i, c y_i - s x_i).
inline void drot(int n, double* x, double* y, double c, double s) { active.drot(n, x, y, c, s); }
/// c, s with c a + s b = r and c b - s a = 0; r replaces a, b is lost.
inline void drotg(double* a, double* b, double* c, double* s) { active.drotg(a, b, c, s); }
/// 1-based place of the first of the largest |x_i|; 0 for an empty x.
inline int idamax(int n, const double* x) { return active.idamax(n, x); }

}  // namespace knotwork::blas1
