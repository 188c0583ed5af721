// SPDX-License-Identifier: MIT
// Surfaces of 20 x 20 spans: point and partial derivatives at scattered parameters.
#include "knotwork/kernel/surface.h"
#include "samples.h"
#if defined(KNOTWORK_HAVE_SISL)
#include <sisl.h>
#endif
#if defined(KNOTWORK_HAVE_OCCT)
#include <BSplCLib.hxx>
#include <BSplSLib.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>
#endif

using namespace knotwork::bench;

namespace {

constexpr int kSpans = 20;

struct Case {
  explicit Case(const benchmark::State& state)
      : degree(static_cast<int>(state.range(0))),
        nderiv(static_cast<int>(state.range(1))),
        rational(state.range(2) != 0),
        count(kSpans + degree),
        knots(clampedKnots(degree, kSpans, state.range(3) != 0)),
        points(controlPoints(count * count, rational)),
        u(parameters(kSpans)),
        v(u.rbegin(), u.rend()) {}

  AP_SURFACE surface() const {
    AP_SURFACE s(3, degree, degree, kSpans, kSpans, rational, rational);
    setKnots(s.uKnots(), knots);
    setKnots(s.vKnots(), knots);
    s.set(points.data(), static_cast<int>(points.size()));
    return s;
  }

  int degree, nderiv;
  bool rational;
  int count;
  Doubles knots, points, u, v;
};

void SurfaceKnotwork(benchmark::State& state) {
  const Case c(state);
  const AP_SURFACE s = c.surface();
  Doubles out(static_cast<std::size_t>(s.WorkspaceSize(c.nderiv)));
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t k = i++ % kParameters;
    s.eval(out.data(), c.u[k], c.v[k], c.nderiv);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  countEvaluations(state);
}
BENCHMARK(SurfaceKnotwork)->Apply(cases);

// Point and unit normal, which is the point with its first partials and the test that they are none
// of a pole's.
void SurfaceNormal(benchmark::State& state) {
  const Case c(state);
  const AP_SURFACE s = c.surface();
  double point[3], normal[3];
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t k = i++ % kParameters;
    s.normal(c.u[k], c.v[k], point, normal);
    benchmark::DoNotOptimize(normal);
    benchmark::ClobberMemory();
  }
  countEvaluations(state);
}
BENCHMARK(SurfaceNormal)
    ->ArgNames({"degree", "nderiv", "rational", "uneven"})
    ->ArgsProduct({{3, 5}, {1}, {0, 1}, {0}});

#if defined(KNOTWORK_HAVE_SISL)
// s1424 gives the same set of partials: every order up to nderiv in each direction.
void SurfaceSisl(benchmark::State& state) {
  Case c(state);
  SISLSurf* const s = newSurf(c.count, c.count, c.degree + 1, c.degree + 1, c.knots.data(),
                              c.knots.data(), c.points.data(), c.rational ? 2 : 1, 3, 1);
  double out[27], check[1024], at[2] = {c.u[0], c.v[0]};
  int leftU = 0, leftV = 0, status = 0;
  s1424(s, c.nderiv, c.nderiv, at, &leftU, &leftV, out, &status);
  c.surface().eval(check, c.u[0], c.v[0], c.nderiv);
  if (!agree(out, check)) state.SkipWithError("the libraries disagree");
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t k = i++ % kParameters;
    at[0] = c.u[k];
    at[1] = c.v[k];
    s1424(s, c.nderiv, c.nderiv, at, &leftU, &leftV, out, &status);
    benchmark::DoNotOptimize(out);
    benchmark::ClobberMemory();
  }
  freeSurf(s);
  countEvaluations(state);
}
BENCHMARK(SurfaceSisl)->Apply(cases);
#endif

#if defined(KNOTWORK_HAVE_OCCT)
struct OcctSurface {
  explicit OcctSurface(const Case& c)
      : degree(c.degree),
        poles(1, c.count, 1, c.count),
        weights(1, c.count, 1, c.count),
        knots(1, kSpans + 2 * c.degree + 1),
        rational(c.rational) {
    const int coords = rational ? 4 : 3;
    for (int j = 1; j <= c.count; ++j) {
      for (int i = 1; i <= c.count; ++i) {
        const double* const pole =
            &c.points[static_cast<std::size_t>(((j - 1) * c.count + i - 1) * coords)];
        const double w = rational ? pole[3] : 1.0;
        poles(i, j) = gp_Pnt(pole[0] / w, pole[1] / w, pole[2] / w);
        weights(i, j) = w;
      }
    }
    int i = 1;
    for (const double k : c.knots) knots(i++) = k;
  }

  // Up to total order nderiv only: fewer partials than the others give.
  void eval(double u, double v, int nderiv) {
    const TColStd_Array2OfReal* const w = rational ? &weights : BSplSLib::NoWeights();
    const TColStd_Array1OfInteger* const flat = BSplCLib::NoMults();
    const int n = degree;
    const bool r = rational;
    if (nderiv == 0) {
      BSplSLib::D0(u, v, 0, 0, poles, w, knots, knots, flat, flat, n, n, r, r, false, false, p);
    } else if (nderiv == 1) {
      BSplSLib::D1(u, v, 0, 0, poles, w, knots, knots, flat, flat, n, n, r, r, false, false, p, du,
                   dv);
    } else {
      BSplSLib::D2(u, v, 0, 0, poles, w, knots, knots, flat, flat, n, n, r, r, false, false, p, du,
                   dv, duu, dvv, duv);
    }
  }

  int degree;
  TColgp_Array2OfPnt poles;
  TColStd_Array2OfReal weights;
  TColStd_Array1OfReal knots;
  bool rational;
  gp_Pnt p;
  gp_Vec du, dv, duu, dvv, duv;
};

void SurfaceOcct(benchmark::State& state) {
  const Case c(state);
  OcctSurface s(c);
  double check[1024];
  c.surface().eval(check, c.u[0], c.v[0], c.nderiv);
  s.eval(c.u[0], c.v[0], c.nderiv);
  const double out[3] = {s.p.X(), s.p.Y(), s.p.Z()};
  if (!agree(out, check)) state.SkipWithError("the libraries disagree");
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t k = i++ % kParameters;
    s.eval(c.u[k], c.v[k], c.nderiv);
    benchmark::DoNotOptimize(s.p);
    benchmark::ClobberMemory();
  }
  countEvaluations(state);
}
BENCHMARK(SurfaceOcct)->Apply(cases);
#endif

}  // namespace
