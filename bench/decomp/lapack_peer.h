// SPDX-License-Identifier: MIT
// LAPACK from a shared library of choice, so that several can be measured in one run.
#pragma once

#include <vector>

namespace bench {

/// The factorisations of one LAPACK. Matrices are n x n, column by column, and overwritten.
class LapackPeer {
 public:
  /// Loads `library` with symbols of its own; without one, `loaded` is false.
  explicit LapackPeer(const char* library);

  bool loaded() const { return dpotrf_ != nullptr; }
  void lu(double* a, int n);
  void qr(double* a, int n);
  void pivotedQr(double* a, int n);
  void cholesky(double* a, int n);
  void pivotedCholesky(double* a, int n);
  /// All singular vectors, by QR iteration, as DSVDC; or by divide and conquer.
  void svd(double* a, int n);
  void divideAndConquerSvd(double* a, int n);

 private:
  using Int = const int*;
  void reserve(int n);

  void (*dgetrf_)(Int, Int, double*, Int, int*, int*) = nullptr;
  void (*dgeqrf_)(Int, Int, double*, Int, double*, double*, Int, int*) = nullptr;
  void (*dgeqp3_)(Int, Int, double*, Int, int*, double*, double*, Int, int*) = nullptr;
  void (*dgesvd_)(const char*, const char*, Int, Int, double*, Int, double*, double*, Int, double*,
                  Int, double*, Int, int*) = nullptr;
  void (*dgesdd_)(const char*, Int, Int, double*, Int, double*, double*, Int, double*, Int, double*,
                  Int, int*, int*) = nullptr;
  void (*dpstrf_)(const char*, Int, double*, Int, int*, int*, const double*, double*,
                  int*) = nullptr;
  void (*dpotrf_)(const char*, Int, double*, Int, int*) = nullptr;
  std::vector<double> work_, tau_, u_, v_;
  std::vector<int> pivots_;
  int lwork_ = 0, info_ = 0;
};

}  // namespace bench
