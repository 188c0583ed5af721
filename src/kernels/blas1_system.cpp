// SPDX-License-Identifier: MIT
// The system's level-1 BLAS, called by its Fortran names.
#include "kernels/blas1.h"

#ifdef KNOTWORK_SYSTEM_BLAS

extern "C" {
double ddot_(const int*, const double*, const int*, const double*, const int*);
void daxpy_(const int*, const double*, const double*, const int*, double*, const int*);
void dscal_(const int*, const double*, double*, const int*);
void dcopy_(const int*, const double*, const int*, double*, const int*);
void dswap_(const int*, double*, const int*, double*, const int*);
double dasum_(const int*, const double*, const int*);
double dnrm2_(const int*, const double*, const int*);
void drot_(const int*, double*, const int*, double*, const int*, const double*, const double*);
void drotg_(double*, double*, double*, double*);
int idamax_(const int*, const double*, const int*);
}

namespace knotwork::blas1 {
namespace {

constexpr int kUnit = 1;

constexpr Table kSystem{
    [](int n, const double* x, const double* y) { return ddot_(&n, x, &kUnit, y, &kUnit); },
    [](int n, double a, const double* x, double* y) { daxpy_(&n, &a, x, &kUnit, y, &kUnit); },
    [](int n, double a, double* x) { dscal_(&n, &a, x, &kUnit); },
    [](int n, const double* x, double* y) { dcopy_(&n, x, &kUnit, y, &kUnit); },
    [](int n, double* x, double* y) { dswap_(&n, x, &kUnit, y, &kUnit); },
    [](int n, const double* x) { return dasum_(&n, x, &kUnit); },
    [](int n, const double* x) { return dnrm2_(&n, x, &kUnit); },
    [](int n, double* x, double* y, double c, double s) {
      drot_(&n, x, &kUnit, y, &kUnit, &c, &s);
    },
    [](double* a, double* b, double* c, double* s) { drotg_(a, b, c, s); },
    [](int n, const double* x) { return idamax_(&n, x, &kUnit); }};

}  // namespace

const Table* systemTable() { return &kSystem; }

}  // namespace knotwork::blas1

#else

const knotwork::blas1::Table* knotwork::blas1::systemTable() { return nullptr; }

#endif
