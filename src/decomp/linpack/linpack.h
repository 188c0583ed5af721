// SPDX-License-Identifier: MIT
// The LINPACK routines behind the decompositions, on plain arrays.
//
// These are the primary routines, which the classes call; columns.h lists the secondary ones.
// Names, arguments and operations are those of the published texts, down to the order of the
// floating-point operations: the results are the published routines' to the last bit. Matrices are
// column-major, `ld...` doubles from column to column; pivot vectors count from 1. Any order may be
// 0. Numbers that are not finite end no loop later than finite ones.
//
// Source: Dongarra, Bunch, Moler, Stewart (1979), LINPACK Users' Guide, with the corrections of
// 1984.
#pragma once

namespace knotwork::linpack {

// ---- LU (ch. 1) -------------------------------------------------------------------------------

/// Factors the n x n matrix a by Gaussian elimination with partial pivoting. Leaves U in and above
/// the diagonal and the negated multipliers below, each in the row where it was made.
/// @return 0, or the last k with U(k, k) = 0.
int dgefa(double* a, int lda, int n, int* ipvt);

/// dgefa and an estimate of the reciprocal condition in the 1-norm, which is returned.
/// @param z  scratch, n places.
double dgeco(double* a, int lda, int n, int* ipvt, double* z);

/// Solves A x = b with the factors of dgefa or dgeco (job 0); x replaces b. Divides by any zero.
void dgesl(const double* a, int lda, int n, const int* ipvt, double* b);

enum class GediJob : int { kInverse = 1, kDeterminant = 10, kBoth = 11 };

/// Inverse (in place of a) and determinant det[0] 10^det[1], 1 <= |det[0]| < 10 or det[0] = 0, from
/// the factors. A mantissa that is not finite stays as it is.
/// @param work  scratch, n places; unused for kDeterminant, which leaves a as it is.
void dgedi(double* a, int lda, int n, const int* ipvt, double* det, double* work, GediJob job);

// ---- Cholesky (ch. 8, 10) ---------------------------------------------------------------------

enum class Pivoting : int { kOff = 0, kOn = 1 };

/// Places of scratch that dchdc takes for each column: 32 rows, the one that is made, the diagonal.
inline constexpr int kChdcWork = 34;

/// Factors P'AP = R'R for the p x p symmetric a, of which only the upper triangle is read and
/// written. Stops at the first diagonal element that is not positive.
/// @param jpvt  with pivoting: on entry > 0 for initial, 0 for free, < 0 for final columns; on
///              return the column of A in each place.
/// @param work  scratch, kChdcWork p places.
/// @return the number of positive pivots; from there on a holds the Schur complement.
int dchdc(double* a, int lda, int p, double* work, int* jpvt, Pivoting job);

/// Solves R'R x = b; x replaces b. Divides by any zero.
void dposl(const double* a, int lda, int n, double* b);

enum class ChexJob : int { kRightShift = 1, kLeftShift = 2 };

/// Moves a column of the p x p factor r, 1 <= k < l <= p: l to place k (right circular shift) or k
/// to place l (left); rotations from the left make r triangular again and act on the rows of z too.
/// @param c  l - k cosines.   @param s  l - k sines; l places, the rest is scratch.
void dchex(double* r, int ldr, int p, int k, int l, double* z, int ldz, int nz, double* c,
           double* s, ChexJob job);

/// Adds the row x, with the nz right-hand sides y, to the factor r, to z and to the residual norms.
/// @param c,s  p places each: cosines and sines.
void dchud(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
           double* rho, double* c, double* s);

/// Removes the row x again.
/// @return 0; -1 if r cannot be downdated (nothing but s has changed); 1 if some residual norm
///         cannot be: those are set to -1.
int dchdd(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
          double* rho, double* c, double* s);

// ---- QR and triangular systems (ch. 6, 9) -----------------------------------------------------

/// Householder QR of the n x p matrix x. R comes in and above the diagonal, the Householder vectors
/// below it, their first elements in qraux (p places).
/// @param jpvt,work  p places each, used with pivoting only; jpvt as for dchdc.
void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, Pivoting job);

enum class QrslJob : int { kQy = 10000, kQty = 1000, kSolve = 100, kResidual = 10, kFit = 1 };

/// Applies the factors of dqrdc to y (n places), using the first k columns, 1 <= k <= min(n, p).
/// What `job` asks for takes the place of y: Qy, Q'y, the residual or the fit; or the coefficients
/// in the first k places. The published routine has an array for each.
/// @return 0, or the largest j with R(j, j) = 0; y then holds what was found below it and, before
/// that, what is left of Q'y.
int dqrsl(const double* x, int ldx, int n, int k, const double* qraux, double* y, QrslJob job);

/// Solves T x = b for an upper triangular t (job 01); x replaces b.
/// @return 0, or the first i with T(i, i) = 0; b is then left as it was.
int dtrsl(const double* t, int ldt, int n, double* b);

// ---- Singular values (ch. 11) -----------------------------------------------------------------

/// Decimal digits ab: a = 0 no left vectors, 1 all of them, 2 or more the first min(n, p); b = 0 no
/// right vectors, else all. Any such number converts.
enum class SvdcJob : int { kNoVectors = 0, kAllVectors = 11 };

/// Singular values s (min(n + 1, p) places) of the n x p matrix x, which is destroyed, in
/// decreasing order, with the superdiagonal e (p places) and the vectors u and v that `job` asks
/// for.
/// @param work  scratch, n places.
/// @return 0, or m: s(m+1).. are right, s(1)..s(m) did not converge.
int dsvdc(double* x, int ldx, int n, int p, double* s, double* e, double* u, int ldu, double* v,
          int ldv, double* work, SvdcJob job);

}  // namespace knotwork::linpack
