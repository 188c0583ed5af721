// SPDX-License-Identifier: MIT
// The level-1 BLAS routines as one table, see blas1.h.
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

}  // namespace knotwork::blas1
