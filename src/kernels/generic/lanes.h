// SPDX-License-Identifier: MIT
// Registers of the instruction set that the including source is compiled for: load, store,
// broadcast and transpose. Arithmetic on them is that of the compiler's vector types, element by
// element.
//
// All in an unnamed namespace, as everything in this folder: no copy built for one processor is
// ever linked into another set.
#pragma once

#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace {

#if defined(__AVX2__)
constexpr std::size_t kRegisterBytes = 32;
#else
constexpr std::size_t kRegisterBytes = 16;
#endif

/// Elements in one register.
template <class T>
constexpr std::size_t kLanes = kRegisterBytes / sizeof(T);

// Integers wrap, so their lanes are unsigned.
template <class T, std::size_t count>
struct LanesOf {
  using Element = std::conditional_t<std::is_integral_v<T>, unsigned, T>;
  typedef Element Type __attribute__((vector_size(count * sizeof(T))));
};

/// A register, or the lower part of one.
template <class T, std::size_t count = kLanes<T>>
using Lanes = typename LanesOf<T, count>::Type;

template <std::size_t count, class T>
Lanes<T, count> loadSome(const T* p) {
  Lanes<T, count> lanes;
  std::memcpy(&lanes, p, sizeof lanes);
  return lanes;
}

template <class T>
Lanes<T> load(const T* p) {
  return loadSome<kLanes<T>>(p);
}

/// Stores as many elements as there are lanes.
template <class T, class Register>
void store(T* p, Register lanes) {
  std::memcpy(p, &lanes, sizeof lanes);
}

template <std::size_t count, class T>
Lanes<T, count> broadcastSome(T x) {
  using Element = typename LanesOf<T, count>::Element;
  return static_cast<Element>(x) - Lanes<T, count>{};  // x - 0 is x, also for -0
}

template <class T>
Lanes<T> broadcast(T x) {
  return broadcastSome<kLanes<T>>(x);
}

inline double magnitude(double x) { return __builtin_fabs(x); }

/// |x|, the sign of a NaN included.
inline Lanes<double> magnitude(Lanes<double> x) {
  typedef long long Bits __attribute__((vector_size(kRegisterBytes)));
  return (Lanes<double>)((Bits)x & std::numeric_limits<long long>::max());
}

// Exchanges the blocks of `width` lanes beside the diagonal: the upper right one of a with the
// lower left one of b, in every 2 width x 2 width square of the rows.
template <std::size_t width, class Register, std::size_t... l>
void exchangeBlocks(Register& a, Register& b, std::index_sequence<l...>) {
  constexpr std::size_t n = sizeof...(l);
  const Register upper = __builtin_shufflevector(a, b, ((l & width) ? n + l - width : l)...);
  b = __builtin_shufflevector(a, b, ((l & width) ? n + l : l + width)...);
  a = upper;
}

/// Row l of a square becomes its column l, by blocks of 1, 2, 4, ... lanes.
template <std::size_t n, std::size_t width = 1, class Register>
void transpose(Register (&rows)[n]) {
  if constexpr (width < n) {
    for (std::size_t i = 0; i < n; ++i) {
      if ((i & width) == 0) {
        exchangeBlocks<width>(rows[i], rows[i + width], std::make_index_sequence<n>{});
      }
    }
    transpose<n, 2 * width>(rows);
  }
}

}  // namespace
