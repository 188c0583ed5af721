// SPDX-License-Identifier: MIT
// DCHUD: a Cholesky factor with a row added to its data.
#include <cmath>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"
#include "kernels/square_root.h"

namespace knotwork::linpack {

using detail::squareRoot;

namespace {

// (column(i), below) turned by (c(i), s(i)) for i < count; returns what `below` has become.
double rotateInto(double* column, double below, int count, const double* c, const double* s) {
  for (int i = 0; i < count; ++i) {
    const double turned = c[i] * column[i] + s[i] * below;
    below = c[i] * below - s[i] * column[i];
    column[i] = turned;
  }
  return below;
}

}  // namespace

void dchud(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
           double* rho, double* c, double* s) {
  const Columns R(r, ldr);
  const Columns Z(z, ldz);
  for (int j = 0; j < p; ++j) {
    double below = rotateInto(R.at(0, j), x[j], j, c, s);
    blas1::drotg(R.at(j, j), &below, &c[j], &s[j]);
  }
  // rho = hypot(rho, zeta); a negative rho marks a failed downdate and stays
  for (int j = 0; j < nz; ++j) {
    const double azeta = std::abs(rotateInto(Z.at(0, j), y[j], p, c, s));
    if (azeta == 0.0 || rho[j] < 0.0) continue;
    const double scale = azeta + rho[j];
    const double a = azeta / scale;
    const double b = rho[j] / scale;
    rho[j] = scale * squareRoot(a * a + b * b);
  }
}

}  // namespace knotwork::linpack
