// SPDX-License-Identifier: MIT
// Curves in space with 40 spans: point and derivatives at scattered parameters.
#include "knotwork/kernel/spline.h"
#include "samples.h"
#if defined(KNOTWORK_HAVE_SISL)
#include <sisl.h>
#endif
#if defined(KNOTWORK_HAVE_OCCT)
#include <BSplCLib.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>
#endif

using namespace knotwork::bench;

namespace {

constexpr int kSpans = 40;

struct Case {
  explicit Case(const benchmark::State& state)
      : degree(static_cast<int>(state.range(0))),
        nderiv(static_cast<int>(state.range(1))),
        rational(state.range(2) != 0),
        knots(clampedKnots(degree, kSpans, state.range(3) != 0)),
        points(controlPoints(kSpans + degree, rational)),
        t(parameters(kSpans)) {}

  AP_SPLINE curve() const {
    AP_SPLINE s(3, degree, kSpans, rational);
    setKnots(s.Knots(), knots);
    s.set(points.data(), static_cast<int>(points.size()));
    return s;
  }

  int degree, nderiv;
  bool rational;
  Doubles knots, points, t;
};

void CurveKnotwork(benchmark::State& state) {
  const Case c(state);
  const AP_SPLINE s = c.curve();
  Doubles out(static_cast<std::size_t>(s.WorkspaceSize(c.nderiv)));
  std::size_t i = 0;
  for (auto _ : state) {
    s.eval(out.data(), c.t[i++ % kParameters], c.nderiv);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  countEvaluations(state);
}
BENCHMARK(CurveKnotwork)->Apply(cases);

#if defined(KNOTWORK_HAVE_SISL)
void CurveSisl(benchmark::State& state) {
  Case c(state);
  SISLCurve* const s = newCurve(kSpans + c.degree, c.degree + 1, c.knots.data(), c.points.data(),
                                c.rational ? 2 : 1, 3, 1);
  double out[12], check[64];
  int left = 0, status = 0;
  s1221(s, c.nderiv, c.t[0], &left, out, &status);
  c.curve().eval(check, c.t[0], c.nderiv);
  if (!agree(out, check)) state.SkipWithError("the libraries disagree");
  std::size_t i = 0;
  for (auto _ : state) {
    s1221(s, c.nderiv, c.t[i++ % kParameters], &left, out, &status);
    benchmark::DoNotOptimize(out);
    benchmark::ClobberMemory();
  }
  freeCurve(s);
  countEvaluations(state);
}
BENCHMARK(CurveSisl)->Apply(cases);
#endif

#if defined(KNOTWORK_HAVE_OCCT)
struct OcctCurve {
  explicit OcctCurve(const Case& c)
      : degree(c.degree),
        poles(1, kSpans + c.degree),
        weights(1, kSpans + c.degree),
        knots(1, kSpans + 2 * c.degree + 1),
        rational(c.rational) {
    const std::size_t coords = rational ? 4 : 3;
    for (int i = 1; i <= kSpans + c.degree; ++i) {
      const double* const pole = &c.points[static_cast<std::size_t>(i - 1) * coords];
      const double w = rational ? pole[3] : 1.0;
      poles(i) = gp_Pnt(pole[0] / w, pole[1] / w, pole[2] / w);
      weights(i) = w;
    }
    int i = 1;
    for (const double k : c.knots) knots(i++) = k;
  }

  void eval(double t, int nderiv) {
    const TColStd_Array1OfReal* const w = rational ? &weights : BSplCLib::NoWeights();
    const TColStd_Array1OfInteger* const flat = BSplCLib::NoMults();
    if (nderiv == 0) BSplCLib::D0(t, 0, degree, false, poles, w, knots, flat, p);
    if (nderiv == 1) BSplCLib::D1(t, 0, degree, false, poles, w, knots, flat, p, d1);
    if (nderiv == 2) BSplCLib::D2(t, 0, degree, false, poles, w, knots, flat, p, d1, d2);
  }

  int degree;
  TColgp_Array1OfPnt poles;
  TColStd_Array1OfReal weights, knots;
  bool rational;
  gp_Pnt p;
  gp_Vec d1, d2;
};

void CurveOcct(benchmark::State& state) {
  const Case c(state);
  OcctCurve s(c);
  double check[64];
  c.curve().eval(check, c.t[0], c.nderiv);
  s.eval(c.t[0], c.nderiv);
  const double out[3] = {s.p.X(), s.p.Y(), s.p.Z()};
  if (!agree(out, check)) state.SkipWithError("the libraries disagree");
  std::size_t i = 0;
  for (auto _ : state) {
    s.eval(c.t[i++ % kParameters], c.nderiv);
    benchmark::DoNotOptimize(s.p);
    benchmark::ClobberMemory();
  }
  countEvaluations(state);
}
BENCHMARK(CurveOcct)->Apply(cases);
#endif

}  // namespace
