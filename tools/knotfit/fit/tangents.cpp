// SPDX-License-Identifier: MIT
// Tangents of given direction: the lengths that fit best.
#include <cmath>

#include "base/fault.h"
#include "base/text.h"
#include "fit/curve_system.h"

namespace knotfit {
namespace {

class TangentLengths {
 public:
  TangentLengths(const CurveSystem& c, const FactoredSystem& factored, const FitOptions& options)
      : system_(c.system), options_(options), dim_(static_cast<std::size_t>(c.system.dim)) {
    const std::size_t k = c.tangentRows.size();
    std::vector<double> unit(system_.rows.size() * k, 0.0);
    for (std::size_t t = 0; t < k; ++t) unit[c.tangentRows[t] * k + t] = 1.0;
    shapes_ = factored.solve(unit, static_cast<int>(k));
    images_ = system_.residual(std::vector<double>(unit.size(), 0.0), shapes_, static_cast<int>(k));
    for (double& v : images_) v = -v;
    for (const Tangent& t : options.tangents) directions_.push_back(unitDirection(t));
  }

  void addTo(std::vector<double>& x) const {
    const std::size_t k = directions_.size();
    const DoubleVec lengths = solveLengths(system_.residual(system_.rhs, x, system_.dim));
    for (std::size_t t = 0; t < k; ++t) {
      const double length = lengths(static_cast<int>(t));
      if (!(length > 0)) {
        throw Fault(kNoSolution, cat("the tangent at point ", options_.tangents[t].point + 1,
                                     " points against the data; reverse its sign"));
      }
      for (std::size_t j = 0; j < system_.unknowns; ++j) {
        for (std::size_t c = 0; c < dim_; ++c) {
          x[j * dim_ + c] += length * shapes_[j * k + t] * directions_[t][c];
        }
      }
    }
  }

 private:
  std::array<double, 3> unitDirection(const Tangent& t) const {
    std::array<double, 3> d = t.direction;
    double sum = 0;
    for (std::size_t c = 0; c < dim_; ++c) sum += d[c] * d[c];
    for (double& v : d) v /= std::sqrt(sum);
    return d;
  }

  DoubleVec solveLengths(const std::vector<double>& residual) const {
    const std::size_t k = directions_.size(), free = system_.rows.size() - system_.constraints;
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
          double cosine = 0;
          for (std::size_t c = 0; c < dim_; ++c) cosine += directions_[s][c] * directions_[t][c];
          normal(static_cast<int>(s), static_cast<int>(t)) += image * images_[i * k + t] * cosine;
        }
      }
    }
    TsolveConstrainedLsqQR solver(1e-14, false);
    DoubleVec lengths(size, 0.0);
    if (solver.setMatrix(normal, 0, false, false, false) != 0 ||
        solver.solve(right, &lengths, false) != 0) {
      throw Fault(kNoSolution, "the tangents have no unique lengths; ask for fewer of them");
    }
    return lengths;
  }

  const FitSystem& system_;
  const FitOptions& options_;
  std::size_t dim_;
  std::vector<double> shapes_, images_;
  std::vector<std::array<double, 3>> directions_;
};

}  // namespace

void addTangents(const CurveSystem& curve, const FactoredSystem& factored,
                 const FitOptions& options, std::vector<double>& controls) {
  if (!options.tangents.empty()) TangentLengths(curve, factored, options).addTo(controls);
}

}  // namespace knotfit
