// SPDX-License-Identifier: MIT
// LAPACK from a shared library of choice.
#include "lapack_peer.h"

#include <dlfcn.h>

#include <algorithm>

namespace bench {

LapackPeer::LapackPeer(const char* library) {
  void* const handle = dlopen(library, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  if (handle == nullptr) return;
  const auto find = [handle](auto& routine, const char* name) {
    routine = reinterpret_cast<std::remove_reference_t<decltype(routine)>>(dlsym(handle, name));
  };
  find(dgetrf_, "dgetrf_");
  find(dgeqrf_, "dgeqrf_");
  find(dgeqp3_, "dgeqp3_");
  find(dgesvd_, "dgesvd_");
  find(dgesdd_, "dgesdd_");
  find(dpstrf_, "dpstrf_");
  find(dpotrf_, "dpotrf_");
}

// Work space beyond what any of the routines takes best.
void LapackPeer::reserve(int n) {
  const auto order = static_cast<std::size_t>(n);
  lwork_ = 8 * n * n + 128 * n + 64;
  work_.resize(static_cast<std::size_t>(lwork_));
  tau_.resize(order);
  u_.resize(order * order);
  v_.resize(order * order);
  pivots_.resize(8 * order);
  std::fill(pivots_.begin(), pivots_.end(), 0);
}

void LapackPeer::lu(double* a, int n) {
  reserve(n);
  dgetrf_(&n, &n, a, &n, pivots_.data(), &info_);
}
void LapackPeer::qr(double* a, int n) {
  reserve(n);
  dgeqrf_(&n, &n, a, &n, tau_.data(), work_.data(), &lwork_, &info_);
}
void LapackPeer::pivotedQr(double* a, int n) {
  reserve(n);
  dgeqp3_(&n, &n, a, &n, pivots_.data(), tau_.data(), work_.data(), &lwork_, &info_);
}
void LapackPeer::cholesky(double* a, int n) { dpotrf_("U", &n, a, &n, &info_); }
void LapackPeer::pivotedCholesky(double* a, int n) {
  reserve(n);
  const double tolerance = -1.0;
  int rank = 0;
  dpstrf_("U", &n, a, &n, pivots_.data(), &rank, &tolerance, work_.data(), &info_);
}
void LapackPeer::svd(double* a, int n) {
  reserve(n);
  dgesvd_("A", "A", &n, &n, a, &n, tau_.data(), u_.data(), &n, v_.data(), &n, work_.data(), &lwork_,
          &info_);
}
void LapackPeer::divideAndConquerSvd(double* a, int n) {
  reserve(n);
  dgesdd_("A", &n, &n, a, &n, tau_.data(), u_.data(), &n, v_.data(), &n, work_.data(), &lwork_,
          pivots_.data(), &info_);
}

}  // namespace bench
