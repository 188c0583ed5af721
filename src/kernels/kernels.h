// SPDX-License-Identifier: MIT
// The room of the loops that are compiled once for each instruction set: what the layers above
// call.
//
// A set is one table of functions, compiled from the sources in generic/ for one kind of processor.
// All sets give equal bits: each element of a result is computed by the same operations in the same
// order, and only which elements share a register differs. One set is in use, chosen at load.
//
// To add an instruction set: a file sets/NAME.cpp like its neighbours, a line for it in
// CMakeLists.txt, with the compiler's flags, and one in dispatch.cpp, with the test of the
// processor. Where its registers are of a new width, generic/lanes.h learns it.
#pragma once

#include "kernels/column_kernels.h"
#include "kernels/element_kernels.h"
#include "kernels/level1_kernels.h"
#include "kernels/product_kernels.h"
#include "kernels/reflection_kernels.h"
#include "kernels/side_kernels.h"

namespace knotwork::detail {

/// Every kernel of one instruction set.
struct KernelSet {
  const char* name;
  ElementKernels<double> forDouble;
  ElementKernels<int> forInt;
  ElementKernels<signed char> forSChar;
  ProductKernels<double> productsOfDouble;
  ProductKernels<int> productsOfInt;
  ColumnKernels<double> columnsOfDouble;
  ColumnKernels<int> columnsOfInt;
  RotateSweep rotateSweep;
  ReflectionKernels reflections;
  SideKernels sides;
  blas1::Table level1;
};

/// The set for every processor of the target; dispatch.cpp knows the others.
extern const KernelSet baselineKernels;

/// The set in use: `baseline` until the library is loaded, from then on the fastest that this
/// processor runs, unless the environment variable KNOTWORK_KERNELS names another.
extern const KernelSet* activeKernels;

template <class T>
const ElementKernels<T>& kernels();
template <>
inline const ElementKernels<double>& kernels() {
  return activeKernels->forDouble;
}
template <>
inline const ElementKernels<int>& kernels() {
  return activeKernels->forInt;
}
template <>
inline const ElementKernels<signed char>& kernels() {
  return activeKernels->forSChar;
}

template <class T>
const ProductKernels<T>& productKernels();
template <>
inline const ProductKernels<double>& productKernels() {
  return activeKernels->productsOfDouble;
}
template <>
inline const ProductKernels<int>& productKernels() {
  return activeKernels->productsOfInt;
}

template <class T>
const ColumnKernels<T>& columnKernels();
template <>
inline const ColumnKernels<double>& columnKernels() {
  return activeKernels->columnsOfDouble;
}
template <>
inline const ColumnKernels<int>& columnKernels() {
  return activeKernels->columnsOfInt;
}

inline const ReflectionKernels& reflectionKernels() { return activeKernels->reflections; }
inline const SideKernels& sideKernels() { return activeKernels->sides; }

}  // namespace knotwork::detail
