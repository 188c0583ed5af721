// SPDX-License-Identifier: MIT
// All kernels as one set. Each source in sets/ compiles them for its own instruction set, in an
// unnamed namespace, so that no copy built for one processor is ever linked into another set.
#pragma once

#include "kernels/generic/blas1_loops.h"
#include "kernels/generic/column_loops.h"
#include "kernels/generic/element_loops.h"
#include "kernels/generic/product_loops.h"
#include "kernels/generic/reflection_loops.h"
#include "kernels/generic/side_loops.h"
#include "kernels/kernels.h"

namespace {

constexpr knotwork::detail::KernelSet thisSet(const char* name) {
  return {name,
          ElementLoops<double>::kTable,
          ElementLoops<int>::kTable,
          ElementLoops<signed char>::kTable,
          ProductLoops<double>::kTable,
          ProductLoops<int>::kTable,
          ColumnLoops<double>::kTable,
          ColumnLoops<int>::kTable,
          RotationLoops::rotateSweep,
          ReflectionLoops::kTable,
          kSideTable,
          Blas1Loops::kTable};
}

}  // namespace
