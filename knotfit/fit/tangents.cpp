// SPDX-License-Identifier: MIT
// Tangents of given direction: the lengths that fit best.
//
// With all lengths zero the constrained solution is x; with tangent t alone of length 1 and no data
// it is y(t), the same for every coordinate but for the direction d(t). So the curve with lengths l
// has the control points x + sum l(t) y(t) d(t), and l follows from the normal equations of
// min |r - sum l(t) (N y(t)) d(t)|^2, where r is what x leaves of the data. There are as many
// unknowns as tangents: few, and not badly conditioned, so that normal equations do.
#include <cmath>

#include "base/fault.h"
#include "base/text.h"
#include "fit/curve_system.h"
#include "model/scale.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

class TangentLengths {
 public:
  TangentLengths(const CurveSystem& c, const FitOptions& options, const CurveSolution& solution)
      : system_(c),
        options_(options),
        dim_(static_cast<std::size_t>(c.dim)),
        x_(solution.controls),
        shapes_(solution.shapes) {
    for (const Tangent& t : options.tangents) {
      directions_.push_back(times(1.0 / norm(t.direction), t.direction));
    }
  }

  void addTo(std::vector<double>& x) {
    const std::size_t k = directions_.size();
    const DoubleVec lengths = solveLengths();
    for (std::size_t t = 0; t < k; ++t) {
      const double length = lengths(static_cast<int>(t));
      if (!(length > 0)) {
        throw Fault(kNoSolution, cat("the tangent at point ", options_.tangents[t].point + 1,
                                     " points against the data; reverse its sign"));
      }
      for (std::size_t j = 0; j < system_.matrix.unknowns; ++j) {
        for (std::size_t c = 0; c < dim_; ++c) {
          x[j * dim_ + c] += length * shapes_[j * k + t] * directions_[t][c];
        }
      }
    }
  }

 private:
  // The normal equations, row by row.
  struct Sums {
    DoubleGenMat normal;
    DoubleVec right;
    std::vector<double> residual, images;  // of one row
  };

  // Adds what a row and its datum, null standing for zeros, contribute.
  void addRow(const SparseRow& row, const double* datum, double factor, Sums& sums) const {
    const std::size_t k = directions_.size();
    sums.residual.assign(dim_, 0.0);
    for (std::size_t c = 0; datum && c < dim_; ++c) sums.residual[c] = factor * datum[c];
    sums.images.assign(k, 0.0);
    for (std::size_t e = 0; e < row.columns.size(); ++e) {
      const double value = factor * row.values[e];
      const double* point = x_.data() + dim_ * row.columns[e];
      const double* shape = shapes_.data() + k * row.columns[e];
      for (std::size_t c = 0; c < dim_; ++c) sums.residual[c] -= value * point[c];
      for (std::size_t t = 0; t < k; ++t) sums.images[t] += value * shape[t];
    }
    for (std::size_t s = 0; s < k; ++s) {
      const double image = sums.images[s];
      if (image == 0) continue;
      for (std::size_t c = 0; c < dim_; ++c) {
        sums.right(static_cast<int>(s)) += image * directions_[s][c] * sums.residual[c];
      }
      for (std::size_t t = 0; t < k; ++t) {
        const double cosine = dot(directions_[s], directions_[t]);
        sums.normal(static_cast<int>(s), static_cast<int>(t)) += image * sums.images[t] * cosine;
      }
    }
  }

  DoubleVec solveLengths() const {
    const auto size = static_cast<unsigned>(directions_.size());
    Sums sums{DoubleGenMat(size, size, 0.0), DoubleVec(size, 0.0), {}, {}};
    if (system_.data) {
      system_.data->visit([&](const SparseRow& row, const double* point, double factor) {
        addRow(row, point, factor, sums);
      });
    }
    for (std::size_t i = 0; i < system_.freeRows(); ++i) {
      addRow(system_.matrix.rows[i], &system_.rhs[i * dim_], 1.0, sums);
    }
    // Lengths that tangents of one place share are not unique: the solver finds that out.
    TsolveConstrainedLsqQR solver(1e-14, false);
    DoubleVec lengths(size, 0.0);
    const double scale = solverScale(sums.right.data(), size);
    if (solver.setMatrix(sums.normal, 0, false, false, false) != 0 ||
        solver.solve(sums.right * scale, &lengths, false) != 0) {
      throw Fault(kNoSolution, "the tangents have no unique lengths; ask for fewer of them");
    }
    return lengths * (1.0 / scale);
  }

  const CurveSystem& system_;
  const FitOptions& options_;
  std::size_t dim_;
  const std::vector<double>&x_, &shapes_;
  std::vector<Vec3> directions_;  // of length 1
};

}  // namespace

void addTangents(const CurveSystem& curve, const FitOptions& options, CurveSolution& solution) {
  if (!options.tangents.empty()) TangentLengths(curve, options, solution).addTo(solution.controls);
}

}  // namespace knotfit
