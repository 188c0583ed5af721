// SPDX-License-Identifier: MIT
// Vectors beside what a user would write instead: plain loops, Eigen arrays and std::valarray, all
// compiled at -O3 for one instruction set. Sizes are those of fits: from the control points of a
// curve (1e3) to the observation matrix of a surface (1e6).
#include <benchmark/benchmark.h>

#include <Eigen/Core>
#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <valarray>
#include <vector>

#include "knotwork/vector/double_vec.h"

namespace {

// An array and plain loops over it. As with the other classes, an operator's result is fresh.
struct PlainArray {
  explicit PlainArray(std::size_t length) : n(length), p(new double[length]) {}
  PlainArray(const double* x, std::size_t length) : PlainArray(length) {
    std::copy_n(x, n, p.get());
  }
  double& operator[](std::size_t i) { return p[i]; }

  std::size_t n;
  std::unique_ptr<double[]> p;
};

[[gnu::noinline]] void addLoop(std::size_t n, double* r, const double* a, const double* b) {
  for (std::size_t i = 0; i < n; ++i) r[i] = a[i] + b[i];
}

[[gnu::noinline]] void divideLoop(std::size_t n, double* r, const double* a, const double* b) {
  for (std::size_t i = 0; i < n; ++i) r[i] = a[i] / b[i];
}

[[gnu::noinline]] void addToLoop(std::size_t n, double* a, const double* b) {
  for (std::size_t i = 0; i < n; ++i) a[i] += b[i];
}

[[gnu::noinline]] void scaleLoop(std::size_t n, double* a, double s) {
  for (std::size_t i = 0; i < n; ++i) a[i] *= s;
}

[[gnu::noinline]] double dotLoop(std::size_t n, const double* a, const double* b) {
  double total = 0.0;
  for (std::size_t i = 0; i < n; ++i) total += a[i] * b[i];
  return total;
}

[[gnu::noinline]] double sumLoop(std::size_t n, const double* a) {
  double total = 0.0;
  for (std::size_t i = 0; i < n; ++i) total += a[i];
  return total;
}

PlainArray operator+(const PlainArray& a, const PlainArray& b) {
  PlainArray r(b.n);
  addLoop(r.n, r.p.get(), a.p.get(), b.p.get());
  return r;
}

PlainArray operator/(const PlainArray& a, const PlainArray& b) {
  PlainArray r(b.n);
  divideLoop(r.n, r.p.get(), a.p.get(), b.p.get());
  return r;
}

void operator+=(PlainArray& a, const PlainArray& b) { addToLoop(b.n, a.p.get(), b.p.get()); }
void operator*=(PlainArray& a, double s) { scaleLoop(a.n, a.p.get(), s); }

// The peers' own sums are free to take any order.
double sumOf(const PlainArray& a) { return sumLoop(a.n, a.p.get()); }
double sumOf(const DoubleVec& a) { return sum(a); }
double sumOf(const Eigen::ArrayXd& a) { return a.sum(); }
double sumOf(const std::valarray<double>& a) { return a.sum(); }

double dotOf(const PlainArray& a, const PlainArray& b) {
  return dotLoop(a.n, a.p.get(), b.p.get());
}
double dotOf(const DoubleVec& a, const DoubleVec& b) { return dot(a, b); }
double dotOf(const Eigen::ArrayXd& a, const Eigen::ArrayXd& b) {
  return a.matrix().dot(b.matrix());
}
double dotOf(const std::valarray<double>& a, const std::valarray<double>& b) {
  return (a * b).sum();
}

template <class Array>
Array operand(const benchmark::State& state, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> element(0.5, 1.5);
  std::vector<double> x(static_cast<std::size_t>(state.range(0)));
  for (double& each : x) each = element(random);
  if constexpr (std::is_same_v<Array, Eigen::ArrayXd>) {
    return Eigen::Map<const Eigen::ArrayXd>(x.data(), state.range(0));
  } else if constexpr (std::is_same_v<Array, DoubleVec>) {
    return DoubleVec(x.data(), static_cast<unsigned>(x.size()));
  } else {
    return Array(x.data(), x.size());
  }
}

// Runs `operation` on two operands; `streams` arrays go through the processor each time.
template <class Array, class F>
void run(benchmark::State& state, int streams, F operation) {
  Array a = operand<Array>(state, 1);
  const Array b = operand<Array>(state, 2);
  for (auto _ : state) {
    operation(a, b);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0) * streams *
                          static_cast<std::int64_t>(sizeof(double)));
}

template <class Array>
void AddNew(benchmark::State& state) {
  run<Array>(state, 3, [](Array& a, const Array& b) {
    Array r = a + b;
    benchmark::DoNotOptimize(&r[0]);
  });
}

template <class Array>
void DivideNew(benchmark::State& state) {
  run<Array>(state, 3, [](Array& a, const Array& b) {
    Array r = a / b;
    benchmark::DoNotOptimize(&r[0]);
  });
}

template <class Array>
void AddInPlace(benchmark::State& state) {
  run<Array>(state, 3, [](Array& a, const Array& b) { a += b; });
}

template <class Array>
void ScaleInPlace(benchmark::State& state) {
  run<Array>(state, 2, [](Array& a, const Array&) { a *= -1.0; });
}

template <class Array>
void Sum(benchmark::State& state) {
  run<Array>(state, 1, [](Array& a, const Array&) { benchmark::DoNotOptimize(sumOf(a)); });
}

template <class Array>
void Dot(benchmark::State& state) {
  run<Array>(state, 2, [](Array& a, const Array& b) { benchmark::DoNotOptimize(dotOf(a, b)); });
}

template <class Array>
void CreateAndDestroy(benchmark::State& state) {
  using Length = std::conditional_t<std::is_same_v<Array, Eigen::ArrayXd>, Eigen::Index, unsigned>;
  for (auto _ : state) {
    Array r(static_cast<Length>(state.range(0)));
    benchmark::DoNotOptimize(&r[0]);
  }
}

template <class Array>
void registerAll(const std::string& name) {
  constexpr std::pair<const char*, void (*)(benchmark::State&)> sized[] = {
      {"AddNew", AddNew<Array>},
      {"DivideNew", DivideNew<Array>},
      {"AddInPlace", AddInPlace<Array>},
      {"ScaleInPlace", ScaleInPlace<Array>},
      {"Sum", Sum<Array>},
      {"Dot", Dot<Array>}};
  for (const auto& [operation, function] : sized) {
    benchmark::RegisterBenchmark((operation + ("/" + name)).c_str(), function)
        ->RangeMultiplier(10)
        ->Range(1000, 1000000)
        ->ArgName("n");
  }
  benchmark::RegisterBenchmark(("CreateAndDestroy/" + name).c_str(), CreateAndDestroy<Array>)
      ->Arg(10)
      ->ArgName("n");
}

}  // namespace

int main(int argc, char** argv) {
  registerAll<DoubleVec>("knotwork");
  registerAll<PlainArray>("plain");
  registerAll<Eigen::ArrayXd>("eigen");
  registerAll<std::valarray<double>>("valarray");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
