// SPDX-License-Identifier: MIT
// Points go to the solver in batches, so that nothing but their parameters and distances grows with
// them. Heights are brought to a size near 1 by a power of two; x and y need no solver: the net
// that holds a linear function has it at the Greville abscissae.
#include "fit/scattered_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <numbers>
#include <optional>

#include <knotwork/knotwork.h>

#include "base/fault.h"
#include "base/text.h"
#include "fit/nearest.h"
#include "fit/search.h"
#include "fit/system.h"
#include "model/convert.h"
#include "model/frame.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

constexpr std::size_t kBatch = 4096;     // points
constexpr double kPointsPerControl = 8;  // of a fit whose size was not asked for

// The points as heights over the unit square.
struct Heights {
  const PointSet& points;
  Frame frame;
  Vec3 low, size;    // of the box in the frame
  int exponent = 0;  // of the power of two that brings heights to a size near 1

  double parameter(std::size_t direction, const Vec3& local) const {
    return std::clamp((local[direction] - low[direction]) / size[direction], 0.0, 1.0);
  }
  double scaled(double height) const { return std::ldexp(height, -exponent); }
};

Heights heightsOf(const PointSet& points, const FitOptions& options) {
  Heights h{points, options.bestPlane ? bestPlane(points) : Frame(), {}, {}, 0};
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  Vec3 low = {kInfinite, kInfinite, kInfinite}, high = {-kInfinite, -kInfinite, -kInfinite};
  for (std::size_t i = 0; i < points.count(); ++i) {
    const Vec3 at = h.frame.local(points[i]);
    for (std::size_t c = 0; c < 3; ++c) {
      low[c] = std::min(low[c], at[c]);
      high[c] = std::max(high[c], at[c]);
    }
  }
  h.low = low;
  h.size = minus(high, low);
  constexpr double kLine = 1e-12;  // a rectangle this thin is the rounding of a line
  const double most = std::max(h.size[0], h.size[1]);
  for (const std::size_t d : {0, 1}) {
    if (h.size[d] > kLine * most) continue;
    throw Fault(kNoSolution, options.bestPlane
                                 ? std::string("the points lie on a line: they span no surface")
                                 : cat("all points have the same ", d == 0 ? "x" : "y",
                                       ": they are no heights over x and y; use --plane fit"));
  }
  const double height = std::max(std::abs(low[2]), std::abs(high[2]));
  if (height > 0) h.exponent = std::ilogb(height);
  return h;
}

// The rows of some points: their basis values in both directions and their heights.
class Batch {
 public:
  Batch(const knotwork::BsplineBasis& u, const knotwork::BsplineBasis& v) : bases_{&u, &v} {
    for (const std::size_t d : {0, 1}) values_[d].resize(kBatch * order(d));
  }

  // Calls visit(first point, number of them) for batch after batch.
  template <class Visit>
  void each(const Heights& h, const std::vector<double>& parameters, Visit visit) {
    for (std::size_t begin = 0; begin < h.points.count(); begin += kBatch) {
      const std::size_t count = std::min(kBatch, h.points.count() - begin);
      for (std::size_t i = 0; i < count; ++i) take(h, begin + i, &parameters[2 * (begin + i)], i);
      visit(begin, count);
    }
  }

  std::size_t order(std::size_t d) const {
    return static_cast<std::size_t>(bases_[d]->degree()) + 1;
  }
  const int* first(std::size_t d) const { return first_[d]; }
  double* values(std::size_t d) { return values_[d].data(); }
  double* heights() { return heights_; }

 private:
  void take(const Heights& h, std::size_t point, const double* parameters, std::size_t i) {
    for (const std::size_t d : {0, 1}) {
      first_[d][i] = bases_[d]->row(parameters[d], 0, values_[d].data() + i * order(d));
    }
    heights_[i] = h.scaled(h.frame.local(h.points[point])[2]);
  }

  const knotwork::BsplineBasis* bases_[2];
  int first_[2][kBatch] = {};
  std::vector<double> values_[2];
  double heights_[kBatch] = {};
};

using Solver = knotwork::ScatteredLeastSquares;

void require(int code) {
  if (code != 0) throw std::bad_alloc();
}

void addPoints(Solver& solver, Batch& batch, const Heights& h,
               const std::vector<double>& parameters) {
  batch.each(h, parameters, [&](std::size_t begin, std::size_t count) {
    for (std::size_t i = 0; i < count && !h.points.weights.empty(); ++i) {
      const double factor = std::sqrt(h.points.weights[begin + i]);
      for (std::size_t a = 0; a < batch.order(0); ++a) {
        batch.values(0)[i * batch.order(0) + a] *= factor;
      }
      batch.heights()[i] *= factor;
    }
    require(solver.addRows(count, batch.first(0), batch.first(1), batch.values(0), batch.values(1),
                           batch.heights()));
  });
}

// One row sqrt(weight) (second difference of control heights), 2 h_uv^2 counting twice, for each
// place of the net where it fits; it belongs to the first cell that sees all of it.
void addSmoothing(Solver& solver, const std::array<std::size_t, 2>& n, const FitOptions& options) {
  if (options.smooth <= 0) return;
  const int order[] = {options.degree[0] + 1, options.degree[1] + 1};
  struct Term {
    int i, j;
    double value;
  };
  constexpr double kRoot2 = std::numbers::sqrt2;
  const std::vector<Term> kinds[] = {
      {{0, 0, 1}, {1, 0, -2}, {2, 0, 1}},
      {{0, 0, 1}, {0, 1, -2}, {0, 2, 1}},
      {{0, 0, kRoot2}, {1, 1, kRoot2}, {0, 1, -kRoot2}, {1, 0, -kRoot2}}};
  const double factor = std::sqrt(options.smooth), zero = 0;
  std::vector<double> row(static_cast<std::size_t>(order[0]) * static_cast<std::size_t>(order[1]));
  for (int i = 0; i < static_cast<int>(n[0]); ++i) {
    for (int j = 0; j < static_cast<int>(n[1]); ++j) {
      const int u = std::min(i, static_cast<int>(n[0]) - order[0]);
      const int v = std::min(j, static_cast<int>(n[1]) - order[1]);
      for (const std::vector<Term>& terms : kinds) {
        std::fill(row.begin(), row.end(), 0.0);
        const bool fits = std::all_of(terms.begin(), terms.end(), [&](const Term& t) {
          const int a = i + t.i - u, b = j + t.j - v;
          if (a >= order[0] || b >= order[1]) return false;
          row[static_cast<std::size_t>(std::ptrdiff_t{a} * order[1] + b)] = factor * t.value;
          return true;
        });
        if (fits) require(solver.addCellRows(u, v, 1, row.data(), &zero));
      }
    }
  }
}

// The net: x and y linear in u and v, the heights as solved.
void setControls(Spline& s, const Heights& h, const TtupleVector& heights,
                 const std::array<std::vector<double>, 2>& greville) {
  const std::vector<double> z = stdOf(heights);
  s.controls.clear();
  for (std::size_t i = 0; i < s.size[0]; ++i) {
    for (std::size_t j = 0; j < s.size[1]; ++j) {
      const Vec3 local = {h.low[0] + greville[0][i] * h.size[0],
                          h.low[1] + greville[1][j] * h.size[1],
                          std::ldexp(z[i * s.size[1] + j], h.exponent)};
      const Vec3 point = h.frame.global(local);
      s.controls.insert(s.controls.end(), point.begin(), point.end());
    }
  }
}

void measure(ScatteredFit& fit, Batch& batch, const Heights& h, const TtupleVector& heights) {
  const std::vector<double> z = stdOf(heights);
  batch.each(h, fit.parameters, [&](std::size_t, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      double sum = 0;
      const auto u = static_cast<std::size_t>(batch.first(0)[i]);
      const auto v = static_cast<std::size_t>(batch.first(1)[i]);
      for (std::size_t a = 0; a < batch.order(0); ++a) {
        double along = 0;
        for (std::size_t b = 0; b < batch.order(1); ++b) {
          along +=
              z[(u + a) * fit.spline.size[1] + v + b] * batch.values(1)[i * batch.order(1) + b];
        }
        sum += batch.values(0)[i * batch.order(0) + a] * along;
      }
      fit.distances.push_back(std::ldexp(std::abs(sum - batch.heights()[i]), h.exponent));
      ++fit.points[u * fit.cells[1] + v];
    }
  });
}

[[noreturn]] void throwUndetermined(const IntVec& open, const Spline& s) {
  const auto j = static_cast<std::size_t>(open(0));
  const std::size_t count = open.length();
  throw Fault(kNoSolution,
              cat(count, count == 1 ? " control point of " : " control points of ", s.count(),
                  count == 1 ? " is" : " are", " undetermined, the first in row ",
                  j / s.size[1] + 1, ", column ", j % s.size[1] + 1,
                  " of the net: no data near; add --smooth 1e-6, or take fewer --controls"));
}

// @return nothing where the data leave control points undetermined, which is a fault unless it may
// be.
std::optional<ScatteredFit> fitWith(const Heights& h, const FitOptions& options,
                                    const std::array<std::size_t, 2>& controls, bool mayFail) {
  ScatteredFit fit;
  Spline& s = fit.spline;
  s.directions = 2;
  s.degree = options.degree;
  s.size = controls;
  s.units = options.units;
  std::array<std::vector<double>, 2> greville;
  for (const std::size_t d : {0, 1}) {
    s.knots[d] = uniformKnots(options.degree[d], controls[d]);
    fit.cells[d] = controls[d] - static_cast<std::size_t>(options.degree[d]);
    greville[d] = stdOf(basisOf(s.knots[d], options.degree[d]).greville());
  }
  fit.points.resize(fit.cells[0] * fit.cells[1]);
  fit.parameters.reserve(2 * h.points.count());
  fit.distances.reserve(h.points.count());
  for (std::size_t i = 0; i < h.points.count(); ++i) {
    const Vec3 local = h.frame.local(h.points[i]);
    for (const std::size_t d : {0, 1}) fit.parameters.push_back(h.parameter(d, local));
  }
  const knotwork::BsplineBasis u = basisOf(s.knots[0], s.degree[0]),
                               v = basisOf(s.knots[1], s.degree[1]);
  const auto direction = [](const knotwork::BsplineBasis& b) {
    return knotwork::TensorDirection{b.count(), b.degree() + 1, false};
  };
  TsolverReporter silent(true);
  Solver solver(options.solver.reporter ? *options.solver.reporter : silent, direction(u),
                direction(v), 1);
  const auto batch = std::make_unique<Batch>(u, v);
  addPoints(solver, *batch, h, fit.parameters);
  addSmoothing(solver, controls, options);
  TtupleVector heights;
  const int code = solver.solve(&heights);
  if (code == knotwork::kDependent && solver.undetermined().length() > 0) {
    if (mayFail) return std::nullopt;
    throwUndetermined(solver.undetermined(), s);
  }
  require(code);
  setControls(s, h, heights, greville);
  measure(fit, *batch, h, heights);
  return fit;
}

// About so many control points as asked for, in the proportions of the rectangle.
std::array<std::size_t, 2> sizeFor(double count, const Heights& h,
                                   const std::array<std::size_t, 2>& least) {
  const double inU = std::sqrt(count * (h.size[0] / h.size[1]));
  const auto rounded = [](double n) {
    return static_cast<std::size_t>(std::lround(std::min(n, 1e6)));
  };
  const std::size_t n0 = std::max(least[0], rounded(inU));
  return {n0, std::max(least[1], rounded(count / static_cast<double>(n0)))};
}

// A distance along the heights is never below the nearest one, which is dear.
bool within(const ScatteredFit& fit, const PointSet& points, double tolerance) {
  if (*std::max_element(fit.distances.begin(), fit.distances.end()) <= tolerance) return true;
  const SurfaceProjector projector(fit.spline);
  for (std::size_t i = 0; i < fit.distances.size(); ++i) {
    if (fit.distances[i] <= tolerance) continue;
    const SurfaceProjector::Place guess{fit.parameters[2 * i], fit.parameters[2 * i + 1]};
    if (projector.nearest(points[i], guess).distance > tolerance) return false;
  }
  return true;
}

// What the fronts of the solver take, as measured on square nets.
double bytesFor(const std::array<std::size_t, 2>& n, const FitOptions& options) {
  constexpr double kBytesPerEntry = 450;
  return kBytesPerEntry * static_cast<double>(n[0]) * static_cast<double>(n[1]) *
         ((options.degree[0] + 1) * (options.degree[1] + 1));
}

bool fitsMemory(const std::array<std::size_t, 2>& n, const FitOptions& options) {
  constexpr double kShare = 0.9, kMostUnknowns = 2147483647.0;  // the library counts them by int
  const std::optional<double> room = freeMemory();
  return static_cast<double>(n[0]) * static_cast<double>(n[1]) <= kMostUnknowns &&
         (!room || bytesFor(n, options) <= kShare * *room);
}

ScatteredFit fitWithin(const Heights& h, const FitOptions& options,
                       const std::array<std::size_t, 2>& least) {
  const auto largest = sizeFor(static_cast<double>(h.points.count()), h, least);
  const std::array<std::size_t, 2> room = {largest[0] - least[0], largest[1] - least[1]};
  const std::size_t most = std::max(room[0], room[1]);
  const auto make = [&](std::size_t step) -> std::optional<ScatteredFit> {
    std::array<std::size_t, 2> n = least;
    for (const std::size_t d : {0, 1}) n[d] += most ? room[d] * step / most : 0;
    if (step > 0 && !fitsMemory(n, options)) return std::nullopt;
    return fitWith(h, options, n, step > 0);
  };
  return *smallestFit<ScatteredFit>(most, make, [&](const ScatteredFit& fit) {
    return within(fit, h.points, options.tolerance);
  });
}

}  // namespace

ScatteredFit fitScattered(const PointSet& points, const FitOptions& options) {
  const std::array<std::size_t, 2> least = {static_cast<std::size_t>(options.degree[0]) + 1,
                                            static_cast<std::size_t>(options.degree[1]) + 1};
  const Heights h = heightsOf(points, options);
  ScatteredFit fit;
  if (options.tolerance > 0) {
    fit = fitWithin(h, options, least);
  } else {
    const double usual = static_cast<double>(points.count()) / kPointsPerControl;
    std::array<std::size_t, 2> n = sizeFor(usual, h, least);
    for (const std::size_t d : {0, 1}) {
      if (options.controls[d]) n[d] = options.controls[d];
      if (n[d] < least[d]) {
        throw Fault(kUsage, cat("degree ", options.degree[d], " takes at least ", least[d],
                                " control points; use --controls ", least[0], ",", least[1],
                                " or a lower --degree"));
      }
    }
    if (!fitsMemory(n, options)) {  // before any work
      throw Fault(kUsage,
                  cat("a net of ", n[0], " x ", n[1], " control points takes some ",
                      significant(bytesFor(n, options) / 1e9, 2), " GB; use fewer --controls"));
    }
    fit = *fitWith(h, options, n, false);
  }
  checkRange(fit.spline, fit.distances);
  return fit;
}

std::vector<double> nearestDistances(const ScatteredFit& fit, const PointSet& points) {
  const SurfaceProjector projector(fit.spline);
  std::vector<double> out;
  out.reserve(points.count());
  for (std::size_t i = 0; i < points.count(); ++i) {
    const SurfaceProjector::Place guess{fit.parameters[2 * i], fit.parameters[2 * i + 1]};
    out.push_back(projector.nearest(points[i], guess).distance);
  }
  return out;
}

}  // namespace knotfit
