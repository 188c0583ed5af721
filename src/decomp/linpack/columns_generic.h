// SPDX-License-Identifier: MIT
// The loops behind each set of column kernels; vectors of elements of one column.
#include <cstring>

#include "decomp/linpack/column_kernels.h"

namespace {

using knotwork::linpack::ColumnKernels;
using knotwork::linpack::kGroup;

// As many doubles as one register of the instruction set holds.
#if defined(__AVX2__)
constexpr int kLanes = 4;
#else
constexpr int kLanes = 2;
#endif
typedef double Lanes __attribute__((vector_size(kLanes * sizeof(double))));

Lanes load(const double* p) {
  Lanes lanes;
  std::memcpy(&lanes, p, sizeof lanes);
  return lanes;
}
void store(double* p, Lanes lanes) { std::memcpy(p, &lanes, sizeof lanes); }

/// kLanes x kLanes numbers: rows become columns.
void transpose(Lanes* m) {
#if defined(__AVX2__)
  const Lanes a = __builtin_shufflevector(m[0], m[1], 0, 4, 2, 6);
  const Lanes b = __builtin_shufflevector(m[0], m[1], 1, 5, 3, 7);
  const Lanes c = __builtin_shufflevector(m[2], m[3], 0, 4, 2, 6);
  const Lanes d = __builtin_shufflevector(m[2], m[3], 1, 5, 3, 7);
  m[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
  m[1] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
  m[2] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
  m[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
#else
  const Lanes a = __builtin_shufflevector(m[0], m[1], 0, 2);
  m[1] = __builtin_shufflevector(m[0], m[1], 1, 3);
  m[0] = a;
#endif
}

/// A lane for each column: products are formed down the columns, turned, and added row by row.
void dotGroup(int q, const double* v, const double* y, std::ptrdiff_t ld, double* sums) {
  Lanes sum[kGroup / kLanes] = {};
  int i = 0;
  for (; i + kLanes <= q; i += kLanes) {
    const Lanes factors = load(v + i);
    for (int group = 0; group < kGroup / kLanes; ++group) {
      Lanes products[kLanes];
      for (int j = 0; j < kLanes; ++j)
        products[j] = factors * load(y + (group * kLanes + j) * ld + i);
      transpose(products);
      for (const Lanes& row : products) sum[group] += row;
    }
  }
  std::memcpy(sums, sum, sizeof sum);
  for (; i < q; ++i)
    for (int j = 0; j < kGroup; ++j) sums[j] += v[i] * y[j * ld + i];
}

void addToColumn(int q, double t, const double* __restrict v, double* __restrict y) {
  for (int i = 0; i < q; ++i) y[i] += t * v[i];
}

void addGroup(int q, const double* t, const double* x, std::ptrdiff_t ld, double* __restrict y) {
  const double t0 = t[0], t1 = t[1], t2 = t[2], t3 = t[3];
  const double t4 = t[4], t5 = t[5], t6 = t[6], t7 = t[7];
  for (int i = 0; i < q; ++i) {
    const double* const xi = x + i;
    double sum = y[i] + t0 * xi[0];
    sum += t1 * xi[ld];
    sum += t2 * xi[2 * ld];
    sum += t3 * xi[3 * ld];
    sum += t4 * xi[4 * ld];
    sum += t5 * xi[5 * ld];
    sum += t6 * xi[6 * ld];
    sum += t7 * xi[7 * ld];
    y[i] = sum;
  }
}

/// All rotations on registers * kLanes rows: the column that two of them share is kept from one to
/// the next.
template <int registers>
void rotateRows(int count, const double* c, const double* s, double* x, std::ptrdiff_t ld) {
  Lanes shared[registers];
  for (std::ptrdiff_t r = 0; r < registers; ++r) shared[r] = load(x + r * kLanes);
  for (int k = 0; k < count; ++k, x += ld) {
    for (std::ptrdiff_t r = 0; r < registers; ++r) {
      const Lanes right = load(x + ld + r * kLanes);
      store(x + r * kLanes, c[k] * shared[r] + s[k] * right);
      shared[r] = c[k] * right - s[k] * shared[r];
    }
  }
  for (std::ptrdiff_t r = 0; r < registers; ++r) store(x + r * kLanes, shared[r]);
}

void rotateSweep(int q, int count, const double* c, const double* s, double* x, std::ptrdiff_t ld) {
  constexpr int kRegisters = 4;
  int i = 0;
  for (; i + kRegisters * kLanes <= q; i += kRegisters * kLanes)
    rotateRows<kRegisters>(count, c, s, x + i, ld);
  for (; i + kLanes <= q; i += kLanes) rotateRows<1>(count, c, s, x + i, ld);
  for (; i < q; ++i) {
    double* row = x + i;
    for (int k = 0; k < count; ++k, row += ld) {
      const double turned = c[k] * row[0] + s[k] * row[ld];
      row[ld] = c[k] * row[ld] - s[k] * row[0];
      row[0] = turned;
    }
  }
}

constexpr ColumnKernels kThisSet = {dotGroup, addToColumn, addGroup, rotateSweep};

}  // namespace
