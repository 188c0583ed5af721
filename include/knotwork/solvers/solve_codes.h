// SPDX-License-Identifier: MIT
// What the solvers return.
#pragma once

namespace knotwork {

/// Return codes of the solvers.
enum SolveCode : int {
  kNotSolvable = -1,  ///< `setMatrix`: the factored system does not determine the unknowns
  kSolved = 0,
  kBadArgument = 4,  ///< null result, or lengths, shapes or settings that do not fit
  kDependent = 5,    ///< `solve` on a system that does not determine the unknowns
};

}  // namespace knotwork
