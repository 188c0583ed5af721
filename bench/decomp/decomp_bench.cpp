// SPDX-License-Identifier: MIT
// Factorisations beside Eigen and two LAPACKs, single-threaded, each with a copy of its input: a
// curve's basis (50), a dense curve or one direction of a surface (200), a surface (500). All but
// the library take any order of a sum and fuse where they can.
//
// KNOTWORK_OPENBLAS names OpenBLAS's library, if it is not the default; "reference" is the system's
// liblapack.so.3, so leave OpenBLAS out of the system's alternatives.
#include <benchmark/benchmark.h>

#include <Eigen/Dense>
#include <cstdlib>
#include <random>
#include <string>

#include "knotwork/decomp/double_ch_decomp.h"
#include "knotwork/decomp/double_gen_fact.h"
#include "knotwork/decomp/double_qr_decomp.h"
#include "knotwork/decomp/double_sv_decomp.h"
#include "lapack_peer.h"

namespace {

constexpr unsigned kSeed = 2024;

DoubleGenMat randomMatrix(int n) {
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  DoubleGenMat a(static_cast<unsigned>(n), static_cast<unsigned>(n));
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) a(i, j) = element(random);
  return a;
}

DoubleGenMat definiteMatrix(int n) {
  const DoubleGenMat a = randomMatrix(n);
  return transposeProduct(a, a);
}

void luOfLibrary(const DoubleGenMat& a) { benchmark::DoNotOptimize(DoubleGenFact(a, 0).factors()); }
void svdOfLibrary(const DoubleGenMat& a) { benchmark::DoNotOptimize(DoubleSVDecomp(a).fail()); }

// Fresh objects, since pivots carry over to the next factorisation.
template <class Decomposition, int pivoting>
void ofLibrary(const DoubleGenMat& a) {
  Decomposition decomposition;
  decomposition.doPivoting(pivoting);
  decomposition.factor(a);
  benchmark::DoNotOptimize(decomposition.factors().data());
}

template <class Decomposition>
void ofEigen(const DoubleGenMat& a) {
  const Eigen::Map<const Eigen::MatrixXd> input(a.data(), a.rows(), a.cols());
  const Decomposition decomposition(input);
  benchmark::DoNotOptimize(&decomposition);
}

void svdOfEigen(const DoubleGenMat& a) {
  const Eigen::Map<const Eigen::MatrixXd> input(a.data(), a.rows(), a.cols());
  const Eigen::BDCSVD<Eigen::MatrixXd> svd(input, Eigen::ComputeFullU | Eigen::ComputeFullV);
  benchmark::DoNotOptimize(&svd);
}

using Input = DoubleGenMat (*)(int);

template <class Run>
void add(const std::string& operation, const std::string& who, Input input, Run run) {
  const auto measure = [=](benchmark::State& state) {
    const DoubleGenMat a = input(static_cast<int>(state.range(0)));
    for (auto _ : state) run(a);
  };
  benchmark::RegisterBenchmark((operation + "/" + who).c_str(), measure)
      ->ArgName("n")
      ->Arg(50)
      ->Arg(200)
      ->Arg(500)
      ->Unit(benchmark::kMicrosecond);
}

void addPeer(const char* name, bench::LapackPeer& peer) {
  if (!peer.loaded()) return;
  const auto addOne = [&](const char* operation, Input input,
                          void (bench::LapackPeer::*routine)(double*, int)) {
    add(operation, name, input, [&peer, routine](const DoubleGenMat& a) {
      DoubleGenMat copy = a.copy();
      (peer.*routine)(copy.data(), static_cast<int>(copy.rows()));
      benchmark::DoNotOptimize(copy.data());
    });
  };
  using bench::LapackPeer;
  addOne("Lu", randomMatrix, &LapackPeer::lu);
  addOne("Qr", randomMatrix, &LapackPeer::qr);
  addOne("QrPivoted", randomMatrix, &LapackPeer::pivotedQr);
  addOne("Cholesky", definiteMatrix, &LapackPeer::cholesky);
  addOne("CholeskyPivoted", definiteMatrix, &LapackPeer::pivotedCholesky);
  addOne("Svd", randomMatrix, &LapackPeer::svd);
  addOne("SvdDivideAndConquer", randomMatrix, &LapackPeer::divideAndConquerSvd);
}

void addLibrary() {
  add("Lu", "knotwork", randomMatrix, luOfLibrary);
  add("Qr", "knotwork", randomMatrix, ofLibrary<DoubleQRDecomp, 0>);
  add("QrPivoted", "knotwork", randomMatrix, ofLibrary<DoubleQRDecomp, 1>);
  add("Cholesky", "knotwork", definiteMatrix, ofLibrary<DoubleChDecomp, 0>);
  add("CholeskyPivoted", "knotwork", definiteMatrix, ofLibrary<DoubleChDecomp, 1>);
  add("Svd", "knotwork", randomMatrix, svdOfLibrary);
}

void addEigen() {
  using Eigen::MatrixXd;
  add("Lu", "eigen", randomMatrix, ofEigen<Eigen::PartialPivLU<MatrixXd>>);
  add("Qr", "eigen", randomMatrix, ofEigen<Eigen::HouseholderQR<MatrixXd>>);
  add("QrPivoted", "eigen", randomMatrix, ofEigen<Eigen::ColPivHouseholderQR<MatrixXd>>);
  add("Cholesky", "eigen", definiteMatrix, ofEigen<Eigen::LLT<MatrixXd, Eigen::Upper>>);
  add("CholeskyPivoted", "eigen", definiteMatrix, ofEigen<Eigen::LDLT<MatrixXd, Eigen::Upper>>);
  add("SvdDivideAndConquer", "eigen", randomMatrix, svdOfEigen);
}

}  // namespace

int main(int argc, char** argv) {
  setenv("OPENBLAS_NUM_THREADS", "1", 0);
  // It falls back to its slowest routines on processors that it does not know: AVX2 as for others.
  setenv("OPENBLAS_CORETYPE", "Haswell", 0);
  const char* openblas = std::getenv("KNOTWORK_OPENBLAS");
  static bench::LapackPeer reference("liblapack.so.3");
  static bench::LapackPeer optimised(openblas ? openblas : "libopenblas.so.0");
  benchmark::AddCustomContext("peers", std::string("eigen") +
                                           (reference.loaded() ? ", reference" : "") +
                                           (optimised.loaded() ? ", openblas" : ""));
  addLibrary();
  addEigen();
  addPeer("reference", reference);
  addPeer("openblas", optimised);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
