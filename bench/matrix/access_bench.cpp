// SPDX-License-Identifier: MIT
// Picks and products of packed matrices beside the plain loops that define them, on contiguous and
// on strided storage. Orders are those of fits: a curve's basis (50), one direction of a surface
// (200), a surface (500).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>
#include <string>

#include "knotwork/knotwork.h"

namespace {

// Every `stride`-th element of a new vector.
DoubleVec randomVector(unsigned n, int stride) {
  std::mt19937 random(2024);
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  DoubleVec all(n * static_cast<unsigned>(stride), 0.0);
  DoubleVec v = all.slice(0, n, stride);
  for (int i = 0; i < static_cast<int>(n); ++i) v(i) = element(random);
  return v;
}

// Every second row and column of a matrix, in no order.
struct PickRead {
  DoubleGenMat m;
  IntVec list;
  DoubleGenMat out;

  PickRead(unsigned n, int stride)
      : m(randomVector(n * n, stride), n, n), list(n / 2, 0, 2), out(n / 2, n / 2, 0.0) {
    for (int i = 0; i + 3 < static_cast<int>(list.length()); i += 4) {
      std::swap(list.sub(i), list.sub(i + 3));
    }
  }
  void ours() { out = m(list, list); }
  void loop() {
    const int n = static_cast<int>(list.length());
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < n; ++i) out(i, j) = m(list(i), list(j));
    }
  }
  const double* result() const { return out.data(); }
};

struct PickWrite : PickRead {
  using PickRead::PickRead;
  void ours() { m(list, list) = out; }
  void loop() {
    const int n = static_cast<int>(list.length());
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < n; ++i) m(list(i), list(j)) = out(i, j);
    }
  }
  const double* result() const { return m.data(); }
};

struct PickFill : PickWrite {
  using PickWrite::PickWrite;
  void ours() { m(list, list) = 0.5; }
  void loop() {
    const int n = static_cast<int>(list.length());
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < n; ++i) m(list(i), list(j)) = 0.5;
    }
  }
};

// The elements that are stored, row by row, are `packed`.
template <class Mat>
struct Packed {
  DoubleVec packed, v, y;
  int n;
  Mat m;

  Packed(unsigned order, int stride)
      : packed(randomVector(order * (order + 1) / 2, stride)),
        v(randomVector(order, stride)),
        y(order, 0.0),
        n(static_cast<int>(order)),
        m(packed, order, order) {}
  double at(int i, int j) const { return packed(i * (i + 1) / 2 + j); }
  double storedRowTimesV(int i) const {
    double total = 0.0;
    for (int j = 0; j <= i; ++j) total += at(i, j) * v(j);
    return total;
  }
  const double* result() const { return y.data(); }
};

struct LowerVector : Packed<DoubleLowerTriMat> {
  using Packed::Packed;
  void ours() { y.reference(product(m, v)); }
  void loop() {
    for (int i = 0; i < n; ++i) y(i) = storedRowTimesV(i);
  }
};

struct VectorLower : Packed<DoubleLowerTriMat> {
  using Packed::Packed;
  void ours() { y.reference(product(v, m)); }
  void loop() {
    y = 0.0;
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j <= i; ++j) y(j) += at(i, j) * v(i);
    }
  }
};

struct SymmetricVector : Packed<DoubleSymMat> {
  using Packed::Packed;
  void ours() { y.reference(product(m, v)); }
  void loop() {
    for (int i = 0; i < n; ++i) {
      y(i) = storedRowTimesV(i);
      for (int j = 0; j < i; ++j) y(j) += at(i, j) * v(i);
    }
  }
};

template <class Operation, bool kOurs>
void run(benchmark::State& state) {
  Operation operation(static_cast<unsigned>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    if constexpr (kOurs) {
      operation.ours();
    } else {
      operation.loop();
    }
    benchmark::DoNotOptimize(operation.result());
    benchmark::ClobberMemory();
  }
}

template <class Operation>
void registerBoth(const std::string& name) {
  for (auto [who, function] : {std::pair{"/knotwork", &run<Operation, true>},
                               std::pair{"/plain_loop", &run<Operation, false>}}) {
    benchmark::RegisterBenchmark((name + who).c_str(), function)
        ->ArgNames({"order", "stride"})
        ->ArgsProduct({{50, 200, 500}, {1, 3}})
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  registerBoth<PickRead>("PickRead");
  registerBoth<PickWrite>("PickWrite");
  registerBoth<PickFill>("PickFill");
  registerBoth<LowerVector>("LowerVector");
  registerBoth<VectorLower>("VectorLower");
  registerBoth<SymmetricVector>("SymmetricVector");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
