// SPDX-License-Identifier: MIT
// What the solvers keep to themselves and their subclasses, opened for tests.
#pragma once

#include <tuple>
#include <vector>

#include "knotwork/solvers/householder.h"
#include "knotwork/solvers/solve_constrained_lsq_qr.h"

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
  static constexpr auto norms = &Open::norms_;
  static constexpr auto rowPerm = &Open::rowPerm_;
  static constexpr auto colPerm = &Open::colPerm_;
  static constexpr auto factorMatrix = &Open::factorMatrix_;
  static constexpr auto estimate = &Open::trySVD;

  static auto scalars(const Thouseholder& s) {
    const auto values = [&s](auto... member) { return std::tuple(s.*member...); };
    return values(&Open::reporter_, &Open::totalRows_, &Open::totalCols_, &Open::tolerance_,
                  &Open::isNormalised_, &Open::keepOriginal_, copyRhs, &Open::maxNonZeros_,
                  constraintRows, &Open::dependent_);
  }
  /// Where the elements of each member stand; those of the prepared matrices come first.
  static std::vector<const void*> places(const Thouseholder& s) {
    const auto of = [&s](auto... member) {
      return std::vector<const void*>{(s.*member).data()...};
    };
    return of(matrix, keptMatrix, usedRowIndex, &Open::usedColIndex_, &Open::rhsMult_, beta, sigma,
              norms, rowPerm, colPerm, factorMatrix);
  }
};

/// A solver of each kind.
struct BothSolvers {
  TsolveConstrainedLsqQR qr{1e-10, true};
  Thouseholder householder{1e-10, 0, true};
  TsolveConstrainedLsq* all[2] = {&qr, &householder};
};

}  // namespace knotwork::test
