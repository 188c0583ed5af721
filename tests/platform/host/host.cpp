// SPDX-License-Identifier: MIT
// The library on a host's own foundation and spline kernel: everything that touches either.
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <source_location>
#include <sstream>

#include "arena_kernel.h"
#include "knotwork/knotwork.h"

namespace {

int failures = 0;

void expect(bool holds, std::source_location where = std::source_location::current()) {
  if (holds) return;
  std::fprintf(stderr, "host.cpp:%u: does not hold\n", static_cast<unsigned>(where.line()));
  ++failures;
}

void curvesGoThereAndBack() {
  AP_SPLINE s(3, 3, 5, 1);
  for (int i = 0; i < 32; ++i) s.CV()[i] = i + 1;
  s.insert(2.0, 2);
  ag_spline* const record = s.AGLIB();
  expect(record && record->dim == 3 && record->degree == 3 && record->spans == 7);
  expect(record->first->p[3] == 4 && record->first->next->p[0] == 5 && arena_records() == 1);
  const AP_SPLINE back(record);
  expect(back.Count() == 10 && std::memcmp(s.CV(), back.CV(), 40 * sizeof(double)) == 0);
  for (int k = -2; k <= 9; ++k) {
    expect(back.Knots()(k) == s.Knots()(k) && back.Knots().repeats(k) == s.Knots().repeats(k));
  }
  TtupleVector points(4, 10, 0.0);
  DoubleVec knots(14);
  expect(TagRw::cvsToTv(record, points) && points(9)(3) == back.CV()[39]);
  expect(TagRw::knotsToDv(record, knots) && knots(1) == back.Knots()(-2));
  points(0)(1) = 70;
  expect(TagRw::tvToCvs(points, record, false) && record->first->p[1] == 70);
  ag_rel_bs(record);
}

void surfacesGoThereAndBack() {
  AP_SURFACE s(3, 2, 3, 4, 2, 0, 0);
  for (int i = 0; i < 90; ++i) s.CV()[i] = i + 1;
  ag_surface* const record = s.AGLIB();
  expect(record && record->uSpans == 4 && record->vDegree == 3);
  const AP_SURFACE back(record, 0);
  expect(back.uCount() == 6 && back.vCount() == 5);
  expect(std::memcmp(s.CV(), back.CV(), 90 * sizeof(double)) == 0);
  TtupleMatrix grid(3, 6, 5, 0.0);
  DoubleVec u(9), v(9);
  expect(TagRw::cvsToTm(record, grid) && TagRw::knotsToDv(record, u, v));
  expect(grid(5, 4)(2) == back.CV()[89] && u(1) == back.uKnots()(-1) && v(1) == back.vKnots()(-2));
  expect(TagRw::tmToCvs(grid, record, true) && TagRw::dvToKnots(u, v, record));
  ag_rel_srf(record);
  expect(arena_records() == 0);
  expect(AP_SURFACE(3, 3, 3, 200, 200, 0, 0).AGLIB() == nullptr);  // more than the arena holds
}

void listsOfPointsAreRead() {
  double p[2][2] = {{1, 2}, {3, 4}};
  ag_cnode second{p[1], 0, nullptr}, first{p[0], 0, &second};
  ag_cp_list list{};
  list.dim = 2, list.count = 2, list.first = &first;
  expect(TagRw::cpListToTv(2, &list)(1)(0) == 3);
  ag_snode b{{}, p[1], nullptr, nullptr}, a{{}, p[0], &b, nullptr};
  ag_sp_array array{};
  array.dim = 2, array.rows = 1, array.cols = 2, array.first = &a;
  expect(TagRw::spArrayToTm(2, &array)(0, 1)(1) == 4);
}

void errorCodesAreTheHostsExceptions() {
  try {
    AG_raiseException(902);
  } catch (const std::runtime_error& e) {
    expect(std::strcmp(e.what(), "out of memory") == 0 && dynamic_cast<const HostObject*>(&e));
  }
  try {
    AG_raiseException(17);
  } catch (Texception& e) {
    expect(e.typeof() == &TagExceptionTmeta && e.typeof()->name == "TagException");
    expect(Tmetaclass::istype(e.typeof(), TexceptionTmeta) && e.cast(&TexceptionTmeta) == &e);
    expect(static_cast<TagException*>(e.cache())->errorCode() == 17);
  }
}

void tablesStandOnTheHostsTable() {
  TvertDataIndexTable table(4, 64);
  std::multimap<int, int> model;
  unsigned random = 1;
  for (int i = 0; i < 3000; ++i) {
    random = random * 1664525u + 1013904223u;
    const int key = static_cast<int>(random >> 25) - 64;
    if (random >> 16 & 1) {
      expect(table.insert(key, i));
      model.emplace(key, i);
    } else if (table.remove(key)) {
      model.erase(--model.upper_bound(key));  // the newest
    } else {
      expect(model.count(key) == 0);
    }
  }
  TvertDataIndexTable copy(table), assigned;
  expect(assigned.insert(1, 1));
  assigned = table;
  table.reset();
  for (TvertDataIndexTable* one : {&copy, &assigned}) {
    std::multimap<int, int> rest = model;
    for (TvertDataIndexTable::Iterator it(*one); !it.isDone(); it.next()) {
      const auto [from, to] = rest.equal_range(it.key());
      auto entry = from;
      while (entry != to && entry->second != it.data()) ++entry;
      expect(entry != to);
      if (entry != to) rest.erase(entry);
    }
    expect(rest.empty());
  }
  expect(TvertDataIndexTable::Iterator(table).isDone());
}

void pointsAreMovedByTheHostsMatrix() {
  struct Move : TxformMatrix {
    T4dDblMatrix m;
    const char* kind() const override { return "move"; }
    const T4dDblMatrix& matrix() const override { return m; }
  } move;
  move.m(3, 0) = 5, move.m(0, 1) = 2;
  TtupleVector points(3, 1, 0.0);
  points(0)(0) = 1, points(0)(1) = 10, points(0)(2) = 100;
  points.applyTransformation(move);
  expect(points(0)(0) == 6 && points(0)(1) == 12 && points(0)(2) == 100);
  T4dDblPoint p;
  TagRw::dvToP4(points(0), p);
  expect(p.x == 6 && p.z == 100 && p.w == 1);
}

void reportersSpeakTheHostsStrings() {
  std::ostringstream written;
  std::streambuf* const former = std::cerr.rdbuf(written.rdbuf());
  TsolverReporter reporter(false);
  reporter.reportProgress(0.5);
  reporter.enableTicks(true);
  arena_tick(3, 8);
  reporter.enableTicks(false);
  arena_tick(4, 8);
  std::cerr.rdbuf(former);
  expect(written.str() ==
         "Report: (Constraint solving ... about 50 completed.)\nReport: Step 3 out of maximum 8\n");
}

}  // namespace

int main() {
  curvesGoThereAndBack();
  surfacesGoThereAndBack();
  listsOfPointsAreRead();
  errorCodesAreTheHostsExceptions();
  tablesStandOnTheHostsTable();
  pointsAreMovedByTheHostsMatrix();
  reportersSpeakTheHostsStrings();
  return failures == 0 ? 0 : 1;
}
