// SPDX-License-Identifier: MIT
// Known bit patterns, which decide whether a level-1 routine may stand in for the built-in one.
//
// Each routine runs on fixed data of every length from 0 to 70 and a few above, so that unrolled
// and vector main loops and their tails all take part. A 64-bit digest of every number that it
// returns, writes or must leave alone stands for the bits of the reference BLAS. Sums with several
// accumulators, fused or wider arithmetic, and older forms of dnrm2 and drotg give other digests.
#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/blas1.h"

namespace knotwork::blas1 {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A hash of the bits of doubles; all NaNs count as one.
class Digest {
 public:
  void add(double value) {
    const std::uint64_t bits = std::isnan(value) ? 1 : std::bit_cast<std::uint64_t>(value);
    value_ = (value_ ^ bits) * 0x9e3779b97f4a7c15u;
    value_ ^= value_ >> 32;
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0;
};

constexpr std::size_t kBehind = 4;  // places behind each vector, which must not change
constexpr std::size_t kLongest = 515;
constexpr std::size_t kPlaces = kLongest + kBehind;

// Numbers with full mantissas, of both signs and sizes between 2^-4 and 2^4.
constexpr auto kNumbers = [] {
  std::array<double, 2 * kPlaces + 2> numbers{};
  std::uint64_t state = 1;
  for (double& number : numbers) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    const std::uint64_t exponent = 1019 + (state >> 59) % 8;
    const std::uint64_t mantissa = (state ^ state >> 29) & 0x000fffffffffffffu;
    number = std::bit_cast<double>((state & 0x8000000000000000u) ^ (exponent << 52 | mantissa));
  }
  return numbers;
}();

// What a routine works on: two vectors and two factors.
struct Data {
  std::array<double, kPlaces> x, y;
  double a = kNumbers[2 * kPlaces], b = kNumbers[2 * kPlaces + 1];

  // Fills the first `places` places.
  void fill(std::size_t places) {
    for (std::size_t i = 0; i < places; ++i) {
      x[i] = kNumbers[places + i];
      y[i] = kNumbers[2 * kPlaces - 1 - i];
    }
  }
};

// Digest of what `run(n, data, digest)` adds and of what it leaves in the data, over all lengths.
template <class Run>
std::uint64_t overLengths(Run run) {
  Digest digest;
  Data data;
  const auto once = [&](int n) {
    const std::size_t places = static_cast<std::size_t>(n) + kBehind;
    data.fill(places);
    run(n, data, digest);
    for (std::size_t i = 0; i < places; ++i) digest.add(data.x[i]);
    for (std::size_t i = 0; i < places; ++i) digest.add(data.y[i]);
  };
  for (int n = -1; n <= 70; ++n) once(n);
  for (const int n : {128, 255, static_cast<int>(kLongest)}) once(n);
  return digest.value();
}

std::uint64_t digestOf(double (*ddot)(int, const double*, const double*)) {
  return overLengths(
      [=](int n, Data& d, Digest& out) { out.add(ddot(n, d.x.data(), d.y.data())); });
}

// daxpy: a factor of 0 keeps what is not finite away.
std::uint64_t digestOf(void (*daxpy)(int, double, const double*, double*)) {
  return overLengths([=](int n, Data& d, Digest&) {
    daxpy(n, d.a, d.x.data(), d.y.data());
    d.x[0] = kNaN;
    daxpy(n, 0.0, d.x.data(), d.y.data());
  });
}

// dscal: 0 times infinity is no 0.
std::uint64_t digestOf(void (*dscal)(int, double, double*)) {
  return overLengths([=](int n, Data& d, Digest&) {
    dscal(n, d.a, d.x.data());
    d.y[1] = kInfinity;
    dscal(n, 0.0, d.y.data());
  });
}

std::uint64_t digestOf(void (*dcopy)(int, const double*, double*)) {
  return overLengths([=](int n, Data& d, Digest&) { dcopy(n, d.x.data(), d.y.data()); });
}

std::uint64_t digestOf(void (*dswap)(int, double*, double*)) {
  return overLengths([=](int n, Data& d, Digest&) { dswap(n, d.x.data(), d.y.data()); });
}

std::uint64_t digestOf(void (*drot)(int, double*, double*, double, double)) {
  return overLengths([=](int n, Data& d, Digest&) { drot(n, d.x.data(), d.y.data(), d.a, d.b); });
}

// dasum and dnrm2: ordinary data; data that begin small; tiny, huge and mixed ones; a NaN.
std::uint64_t digestOf(double (*norm)(int, const double*)) {
  return overLengths([=](int n, Data& d, Digest& out) {
    const auto scaled = [&](std::size_t first, std::size_t end, double scale) {
      for (std::size_t i = first; i < end; ++i) d.x[i] *= scale;
      out.add(norm(n, d.x.data()));
    };
    const auto places = static_cast<std::size_t>(n) + kBehind;
    scaled(0, places, 1.0);
    scaled(0, 3, 1e-12);
    scaled(0, 2, 1e-150);
    scaled(0, places, 1e-160);
    scaled(0, places, 1e300);
    scaled(1, 2, 1e160);
    scaled(0, places, 1e20);
    d.x[2] = kNaN;
    scaled(0, 0, 1.0);
  });
}

// idamax: the first of equals; a NaN in the first place stays, elsewhere it is passed over.
std::uint64_t digestOf(int (*idamax)(int, const double*)) {
  return overLengths([=](int n, Data& d, Digest& out) {
    out.add(idamax(n, d.x.data()));
    d.x[static_cast<std::size_t>(n + 1) / 2] = -100.0;
    d.x[static_cast<std::size_t>(n + 1) / 3] = 100.0;
    out.add(idamax(n, d.x.data()));
    d.x[static_cast<std::size_t>(n + 1) / 4] = kNaN;
    out.add(idamax(n, d.x.data()));
  });
}

// drotg: zeros, equal sizes, all signs, the ends of the range. What it leaves in b is nobody's.
std::uint64_t digestOf(void (*drotg)(double*, double*, double*, double*)) {
  Digest digest;
  const auto once = [&](double a, double b) {
    double c = 0.0, s = 0.0;
    drotg(&a, &b, &c, &s);
    for (const double value : {a, c, s}) digest.add(value);
  };
  for (std::size_t i = 0; i < kPlaces; ++i) once(kNumbers[i], kNumbers[i + kPlaces]);
  for (const double a : {0.0, 1.5, -1.5, 1e-310, 1e300, 1.7e308})
    for (const double b : {0.0, 1.5, -1.5, -1e-310, 1e300, 1.7e308}) once(a, b);
  return digest.value();
}

// While the routines are tried, nothing traps, results are rounded to nearest, and the flags that
// they raise (infinities and NaNs are among their data) are nobody's. The host's own state, which
// may unmask exceptions, comes back in the end.
class DefaultEnvironment {
 public:
  DefaultEnvironment() {
    std::fegetenv(&host_);
    std::fesetenv(FE_DFL_ENV);
  }
  ~DefaultEnvironment() { std::fesetenv(&host_); }
  DefaultEnvironment(const DefaultEnvironment&) = delete;
  DefaultEnvironment& operator=(const DefaultEnvironment&) = delete;

 private:
  std::fenv_t host_;
};

}  // namespace

Table withReferenceBits(const Table& candidate, const Table& builtin) {
  const DefaultEnvironment whileTrying;
  Table table = builtin;
  const auto take = [&](auto Table::*routine, std::uint64_t referenceDigest) {
    if (digestOf(candidate.*routine) == referenceDigest) table.*routine = candidate.*routine;
  };
  take(&Table::ddot, 0x959a51682cbbce7du);
  take(&Table::daxpy, 0xf7dcd12d623a29ecu);
  take(&Table::dscal, 0xff48abfac3031ae6u);
  take(&Table::dcopy, 0xcda1eab692167c93u);
  take(&Table::dswap, 0x68878e457bb82504u);
  take(&Table::dasum, 0x1330d3720e005655u);
  take(&Table::dnrm2, 0x5d79c23efdd33885u);
  take(&Table::drot, 0xde207cd9e8b2e562u);
  take(&Table::drotg, 0xac0570d501478295u);
  take(&Table::idamax, 0xfd078a2f30391760u);
  return table;
}

}  // namespace knotwork::blas1
