// SPDX-License-Identifier: MIT
// What the solvers keep to themselves and their subclasses, opened for tests.
#pragma once

#include "knotwork/solvers/householder.h"

namespace knotwork::test {

/// Members of any solver: `solver.*Open::matrix`.
struct Open : Thouseholder {
  static constexpr auto matrix = &Open::matrix_;
  static constexpr auto keptMatrix = &Open::keptMatrix_;
  static constexpr auto usedRowIndex = &Open::usedRowIndex_;
  static constexpr auto copyRhs = &Open::copyRhs_;
  static constexpr auto constraintRows = &Open::constraintRows_;
  static constexpr auto beta = &Open::beta_;
  static constexpr auto sigma = &Open::sigma_;
  static constexpr auto rowPerm = &Open::rowPerm_;
  static constexpr auto colPerm = &Open::colPerm_;
  static constexpr auto factorMatrix = &Open::factorMatrix_;
  static constexpr auto estimate = &Open::trySVD;
};

}  // namespace knotwork::test
