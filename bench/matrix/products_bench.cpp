// SPDX-License-Identifier: MIT
// Products beside the plain loops that define their bits and beside Eigen, which takes any order of
// a sum and fuses where it can. Orders are those of fits: a curve's basis (50), a dense curve or
// one direction of a surface (200), a surface (500).
#include <benchmark/benchmark.h>

#include <Eigen/Core>
#include <cstdlib>
#include <random>

#include "knotwork/matrix/double_gen_mat.h"

namespace {

constexpr unsigned kSeed = 2024;

DoubleVec randomVector(unsigned n) {
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  DoubleVec v(n);
  for (int i = 0; i < static_cast<int>(n); ++i) v(i) = element(random);
  return v;
}

DoubleGenMat randomMatrix(unsigned n) { return DoubleGenMat(randomVector(n * n), n, n); }

using EigenMatrix = Eigen::Map<const Eigen::MatrixXd>;
using EigenVector = Eigen::Map<const Eigen::VectorXd>;
EigenMatrix eigen(const DoubleGenMat& m) { return EigenMatrix(m.data(), m.rows(), m.cols()); }
EigenVector eigen(const DoubleVec& v) { return EigenVector(v.data(), v.length()); }

// ---- The plain loops ----------------------------------------------------------------------------

// c(i, j) = sum over p of a(i, p) b(p, j), where a(i, p) is a[i * rowStep + p * colStep].
[[gnu::noinline]] void plainProduct(int n, int cols, const double* a, int rowStep, int colStep,
                                    const double* b, double* c) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < cols; ++j) {
      double total = 0.0;
      for (int p = 0; p < n; ++p) total += a[i * rowStep + p * colStep] * b[j * n + p];
      c[j * n + i] = total;
    }
  }
}

DoubleGenMat plain(const DoubleGenMat& a, const DoubleGenMat& b, bool transposed) {
  DoubleGenMat c(a.rows(), b.cols());
  const int n = static_cast<int>(a.rows());
  plainProduct(n, n, a.data(), transposed ? n : 1, transposed ? 1 : n, b.data(), c.data());
  return c;
}

DoubleVec plain(const DoubleGenMat& a, const DoubleVec& v, bool transposed) {
  DoubleVec y(a.rows());
  const int n = static_cast<int>(a.rows());
  plainProduct(n, 1, a.data(), transposed ? n : 1, transposed ? 1 : n, v.data(), y.data());
  return y;
}

// ---- The operations -----------------------------------------------------------------------------

struct Product {
  static auto operand(unsigned n) { return randomMatrix(n); }
  static auto ours(const DoubleGenMat& a, const DoubleGenMat& b) { return product(a, b); }
  static auto loop(const DoubleGenMat& a, const DoubleGenMat& b) { return plain(a, b, false); }
  static Eigen::MatrixXd peer(EigenMatrix a, EigenMatrix b) { return a * b; }
};

struct TransposeProduct : Product {
  static auto ours(const DoubleGenMat& a, const DoubleGenMat& b) { return transposeProduct(a, b); }
  static auto loop(const DoubleGenMat& a, const DoubleGenMat& b) { return plain(a, b, true); }
  static Eigen::MatrixXd peer(EigenMatrix a, EigenMatrix b) { return a.transpose() * b; }
};

struct MatrixVector {
  static auto operand(unsigned n) { return randomVector(n); }
  static auto ours(const DoubleGenMat& a, const DoubleVec& v) { return product(a, v); }
  static auto loop(const DoubleGenMat& a, const DoubleVec& v) { return plain(a, v, false); }
  static Eigen::VectorXd peer(EigenMatrix a, EigenVector v) { return a * v; }
};

struct VectorMatrix : MatrixVector {
  static auto ours(const DoubleGenMat& a, const DoubleVec& v) { return product(v, a); }
  static auto loop(const DoubleGenMat& a, const DoubleVec& v) { return plain(a, v, true); }
  static Eigen::VectorXd peer(EigenMatrix a, EigenVector v) { return a.transpose() * v; }
};

template <class Operation>
void knotwork(benchmark::State& state) {
  const auto n = static_cast<unsigned>(state.range(0));
  const DoubleGenMat a = randomMatrix(n);
  const auto b = Operation::operand(n);
  if (Operation::ours(a, b) != Operation::loop(a, b)) std::abort();
  for (auto _ : state) benchmark::DoNotOptimize(Operation::ours(a, b).data());
}

template <class Operation>
void plainLoop(benchmark::State& state) {
  const auto n = static_cast<unsigned>(state.range(0));
  const DoubleGenMat a = randomMatrix(n);
  const auto b = Operation::operand(n);
  for (auto _ : state) benchmark::DoNotOptimize(Operation::loop(a, b).data());
}

template <class Operation>
void eigenPeer(benchmark::State& state) {
  const auto n = static_cast<unsigned>(state.range(0));
  const DoubleGenMat a = randomMatrix(n);
  const auto b = Operation::operand(n);
  for (auto _ : state) benchmark::DoNotOptimize(Operation::peer(eigen(a), eigen(b)).eval());
}

template <class Operation>
void registerAll(const std::string& name) {
  for (auto [who, run] :
       {std::pair{"knotwork", &knotwork<Operation>}, std::pair{"plain_loop", &plainLoop<Operation>},
        std::pair{"eigen", &eigenPeer<Operation>}}) {
    benchmark::RegisterBenchmark((name + "/" + who).c_str(), run)
        ->ArgName("order")
        ->Arg(50)
        ->Arg(200)
        ->Arg(500)
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  registerAll<Product>("Product");
  registerAll<TransposeProduct>("TransposeProduct");
  registerAll<MatrixVector>("MatrixVector");
  registerAll<VectorMatrix>("VectorMatrix");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
