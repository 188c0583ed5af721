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
  TangentLengths(const CurveSystem& c, const FactoredSystem& factored, const FitOptions& options)
      : system_(c), options_(options), dim_(static_cast<std::size_t>(c.dim)) {
    const std::size_t k = c.tangentRows.size();
    std::vector<double> unit(c.matrix.rows.size() * k, 0.0);
    for (std::size_t t = 0; t < k; ++t) unit[c.tangentRows[t] * k + t] = 1.0;
    shapes_ = factored.solve(unit, static_cast<int>(k));
    images_ =
        c.matrix.residual(std::vector<double>(unit.size(), 0.0), shapes_, static_cast<int>(k));
    for (double& v : images_) v = -v;
    for (const Tangent& t : options.tangents) {
      directions_.push_back(times(1.0 / norm(t.direction), t.direction));
    }
  }

  void addTo(std::vector<double>& x) const {
    const std::size_t k = directions_.size();
    const DoubleVec lengths = solveLengths(system_.matrix.residual(system_.rhs, x, system_.dim));
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
  DoubleVec solveLengths(const std::vector<double>& residual) const {
    const std::size_t k = directions_.size(),
                      free = system_.matrix.rows.size() - system_.matrix.constraints;
    const auto size = static_cast<unsigned>(k);
    DoubleGenMat normal(size, size, 0.0);
    DoubleVec right(size, 0.0);
    for (std::size_t s = 0; s < k; ++s) {
      for (std::size_t i = 0; i < free; ++i) {
        const double image = images_[i * k + s];
        for (std::size_t c = 0; c < dim_; ++c) {
          right(static_cast<int>(s)) += image * directions_[s][c] * residual[i * dim_ + c];
        }
        for (std::size_t t = 0; t < k; ++t) {
          const double cosine = dot(directions_[s], directions_[t]);
          normal(static_cast<int>(s), static_cast<int>(t)) += image * images_[i * k + t] * cosine;
        }
      }
    }
    // Lengths that tangents of one place share are not unique: the solver finds that out.
    TsolveConstrainedLsqQR solver(1e-14, false);
    DoubleVec lengths(size, 0.0);
    const double scale = solverScale(right.data(), k);
    if (solver.setMatrix(normal, 0, false, false, false) != 0 ||
        solver.solve(right * scale, &lengths, false) != 0) {
      throw Fault(kNoSolution, "the tangents have no unique lengths; ask for fewer of them");
    }
    return lengths * (1.0 / scale);
  }

  const CurveSystem& system_;
  const FitOptions& options_;
  std::size_t dim_;
  std::vector<double> shapes_, images_;
  std::vector<Vec3> directions_;  // of length 1
};

}  // namespace

void addTangents(const CurveSystem& curve, const FactoredSystem& factored,
                 const FitOptions& options, std::vector<double>& controls) {
  if (!options.tangents.empty()) TangentLengths(curve, factored, options).addTo(controls);
}

}  // namespace knotfit
