// SPDX-License-Identifier: MIT
// Fits of points with exact constraints, beside LAPACK's pivoted QR decomposition of the same
// matrix and the solution from it, which know no constraints. Sizes are those of curves: ten data
// points per control point, and one long one of 5000 points, 500 control points and 20 constraints.
// All of it on one thread.
#include <benchmark/benchmark.h>

#include "knotwork/solvers/householder.h"
#include "knotwork/solvers/solve_constrained_lsq_qr.h"
#include "knotwork/solvers/solve_tensor_product_lsq.h"
#include "solvers/slow_householder.h"
#include "solvers/systems.h"

namespace {

using knotwork::test::Random;

constexpr unsigned kSeed = 2024;
constexpr int kCoordinates = 3;
constexpr double kTolerance = 1e-10;

struct Fit {
  explicit Fit(const benchmark::State& state)
      : rows(static_cast<int>(state.range(0))),
        cols(static_cast<int>(state.range(1))),
        constraints(static_cast<int>(state.range(2))) {
    Random random(kSeed);
    a.reference(knotwork::test::splineSystem(random, rows - constraints, constraints, cols));
    points.reference(random.vector(kCoordinates * rows));
  }

  int rows, cols, constraints;
  DoubleGenMat a;
  DoubleVec points;  // as the points lie in memory
};

template <class Solver>
void fit(benchmark::State& state, Solver solver, bool normalise, bool cleanZeros) {
  Fit f(state);
  const TtupleVector rhs(kCoordinates, f.points);
  for (auto _ : state) {
    if (solver.setMatrix(f.a, f.constraints, normalise, cleanZeros, false) != 0) {
      state.SkipWithError("not solvable");
    }
    const TtupleVector x = solver.solve(rhs);
    benchmark::DoNotOptimize(x.points());
  }
}

void Householder(benchmark::State& state) {
  fit(state, Thouseholder(kTolerance, 0, false), false, false);
}

void HouseholderNormalisedAndCleaned(benchmark::State& state) {
  fit(state, Thouseholder(kTolerance, 0, false), true, true);
}

void Qr(benchmark::State& state) {
  fit(state, TsolveConstrainedLsqQR(kTolerance, false), false, false);
}

void SolveAlone(benchmark::State& state) {
  Fit f(state);
  const TtupleVector rhs(kCoordinates, f.points);
  Thouseholder solver(kTolerance, 0, false);
  if (solver.setMatrix(f.a, f.constraints, false, false, false) != 0)
    state.SkipWithError("refused");
  for (auto _ : state) benchmark::DoNotOptimize(solver.solve(rhs).points());
}

// A square grid of samples, as many control points each way; set once, solved for many surfaces.
void Grid(benchmark::State& state) {
  const int samples = static_cast<int>(state.range(0)), control = static_cast<int>(state.range(1));
  Random random(kSeed);
  const DoubleGenMat basis = knotwork::test::splineSystem(random, samples, 0, control);
  const DoubleGenMat data = random.matrix(samples, samples);
  Thouseholder u(kTolerance, 0, false), v(kTolerance, 0, false);
  TsolveTensorProductLsq grid(u, v);
  if (grid.setMatrix(basis, basis, 0, 0, false, false, false, false, false, false) != 0) {
    state.SkipWithError("refused");
  }
  DoubleGenMat x(basis.cols(), basis.cols());
  for (auto _ : state) {
    if (grid.solve(data, &x) != 0) state.SkipWithError("not solvable");
  }
}

// The definition, element by element, for one coordinate.
void Definition(benchmark::State& state) {
  Fit f(state);
  for (auto _ : state) {
    const knotwork::test::SlowHouseholder slow(f.a, f.constraints, kTolerance);
    benchmark::DoNotOptimize(slow.solve(std::vector<double>(static_cast<std::size_t>(f.rows), 1)));
  }
}

#if defined(KNOTWORK_HAVE_OPENBLAS)

extern "C" {
void openblas_set_num_threads(int);
void dgeqp3_(const int* m, const int* n, double* a, const int* lda, int* pivots, double* tau,
             double* work, const int* lwork, int* info);
void dormqr_(const char* side, const char* trans, const int* m, const int* n, const int* k,
             const double* a, const int* lda, const double* tau, double* c, const int* ldc,
             double* work, const int* lwork, int* info, std::size_t, std::size_t);
void dtrtrs_(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
             const double* a, const int* lda, double* b, const int* ldb, int* info, std::size_t,
             std::size_t, std::size_t);
}

void LapackPivotedQr(benchmark::State& state) {
  openblas_set_num_threads(1);
  const Fit f(state);
  const auto size = [](int n) { return static_cast<std::size_t>(n); };
  const int workSize = 64 * (f.cols + 1) + 64 * 64;
  std::vector<double> tau(size(f.cols)), work(size(workSize));
  int info = 0;
  for (auto _ : state) {
    DoubleGenMat a = f.a.copy();
    DoubleGenMat b(static_cast<unsigned>(f.rows), kCoordinates);
    for (int c = 0; c < kCoordinates; ++c) b.col(c) = f.points.slice(c, b.rows(), kCoordinates);
    std::vector<int> pivots(size(f.cols), 0);
    dgeqp3_(&f.rows, &f.cols, a.data(), &f.rows, pivots.data(), tau.data(), work.data(), &workSize,
            &info);
    dormqr_("L", "T", &f.rows, &kCoordinates, &f.cols, a.data(), &f.rows, tau.data(), b.data(),
            &f.rows, work.data(), &workSize, &info, 1, 1);
    dtrtrs_("U", "N", "N", &f.cols, &kCoordinates, a.data(), &f.rows, b.data(), &f.rows, &info, 1,
            1, 1);
    benchmark::DoNotOptimize(b.data());
    if (info != 0) state.SkipWithError("not solvable");
  }
}

#endif

void sizes(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"rows", "cols", "constraints"})
      ->Args({200, 20, 2})
      ->Args({1000, 100, 4})
      ->Args({5000, 500, 20})
      ->Unit(benchmark::kMillisecond);
}

BENCHMARK(Householder)->Apply(sizes);
BENCHMARK(HouseholderNormalisedAndCleaned)->Apply(sizes);
BENCHMARK(SolveAlone)->Apply(sizes);
BENCHMARK(Qr)->Apply(sizes);
BENCHMARK(Grid)
    ->ArgNames({"samples", "control"})
    ->Args({100, 20})
    ->Args({600, 100})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Definition)->Apply(sizes);
#if defined(KNOTWORK_HAVE_OPENBLAS)
BENCHMARK(LapackPivotedQr)->Apply(sizes);
#endif

}  // namespace

BENCHMARK_MAIN();
