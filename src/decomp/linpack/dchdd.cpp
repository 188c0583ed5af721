// SPDX-License-Identifier: MIT
// DCHDD: a Cholesky factor with a row removed from its data.
// Source of the method: Stewart (1979), The Effects of Rounding Error on an Algorithm for
// Downdating a Cholesky Factorization.
#include <cmath>

#include "decomp/linpack/columns.h"
#include "decomp/linpack/linpack.h"
#include "kernels/square_root.h"

namespace knotwork::linpack {

using detail::squareRoot;

namespace {

// R' s = x
void solveTransposed(const Columns<double>& R, int p, const double* x, double* s) {
  s[0] = x[0] / R(0, 0);
  for (int j = 1; j < p; ++j) {
    s[j] = x[j] - blas1::ddot(j, R.at(0, j), s);
    s[j] = s[j] / R(j, j);
  }
}

// Rotations that turn (s, alpha) into (0, 1), from the last element of s to the first.
void findRotations(int p, double alpha, double* c, double* s) {
  for (int i = p - 1; i >= 0; --i) {
    // single precision: the published text leaves this variable undeclared
    const double scale = static_cast<float>(alpha + std::abs(s[i]));
    const double a = alpha / scale;
    const double b = s[i] / scale;
    const double norm = squareRoot(a * a + b * b);
    c[i] = a / norm;
    s[i] = b / norm;
    alpha = scale * norm;
  }
}

void rotateColumn(double* column, int j, const double* c, const double* s) {
  double above = 0.0;
  for (int i = j; i >= 0; --i) {
    const double turned = c[i] * above + s[i] * column[i];
    column[i] = c[i] * column[i] - s[i] * above;
    above = turned;
  }
}

// Takes zeta out of a data column; returns what is left of zeta.
double removeFrom(double* column, double zeta, int p, const double* c, const double* s) {
  for (int i = 0; i < p; ++i) {
    column[i] = (column[i] - s[i] * zeta) / c[i];
    zeta = c[i] * zeta - s[i] * column[i];
  }
  return zeta;
}

// rho = sqrt(rho^2 - azeta^2), or -1 and false where that is no number. Zero less zero is zero.
bool lowerResidual(double& rho, double azeta) {
  if (rho == 0.0 && azeta == 0.0) return true;
  if (!(azeta <= rho)) {
    rho = -1.0;
    return false;
  }
  const double ratio = azeta / rho;
  rho = rho * squareRoot(1.0 - ratio * ratio);
  return true;
}

}  // namespace

int dchdd(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
          double* rho, double* c, double* s) {
  if (p < 1) return 0;
  const Columns R(r, ldr);
  const Columns Z(z, ldz);
  solveTransposed(R, p, x, s);
  const double norm = blas1::dnrm2(p, s);
  if (!(norm < 1.0)) return -1;

  findRotations(p, squareRoot(1.0 - norm * norm), c, s);
  for (int j = 0; j < p; ++j) rotateColumn(R.at(0, j), j, c, s);
  int info = 0;
  for (int j = 0; j < nz; ++j)
    if (!lowerResidual(rho[j], std::abs(removeFrom(Z.at(0, j), y[j], p, c, s)))) info = 1;
  return info;
}

}  // namespace knotwork::linpack
