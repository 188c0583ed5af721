// SPDX-License-Identifier: MIT
// Reporters, kernel ticks, exceptions, and the order of virtual operations.
#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <iostream>
#include <locale>
#include <string>
#include <vector>

#include "knotwork/platform/foundation/memory_exception.h"
#include "knotwork/platform/foundation/string.h"
#include "knotwork/platform/kernel/ticks.h"
#include "knotwork/solvers/ag_exception.h"
#include "knotwork/solvers/householder.h"

namespace knotwork::test {
namespace {

// Keeps what it hears, and says what it is told to.
struct Listener : TsolverReporter {
  explicit Listener(int answer = 0) : TsolverReporter(true), answer_(answer) {}
  void reportMessage(const char* text) override { heard.append(text).append("|"); }
  int reportStep(int, int) override { return answer_; }
  std::string heard;
  int answer_;
};

std::string printedBy(TsolverReporter& reporter) {
  testing::internal::CaptureStderr();
  std::cerr << std::setw(40);
  reporter.reportMessage("two words");
  reporter.reportFormatted(nullptr);
  reporter.reportFormatted("%d of %5.3f", 3, 0.5);
  reporter.reportFormatted("%s", std::string(3000, 'x').c_str());
  reporter.reportString(Tstring());
  std::cerr << std::setw(40);
  EXPECT_EQ(reporter.reportStep(-3, 1234), 0);
  reporter.reportProgress(1.0);
  reporter.reportProgress(1.0 / 3);
  return testing::internal::GetCapturedStderr();
}

TEST(Reporter, PrintsLinesIfVerboseThroughTheOverriddenMessage) {
  const std::string lines = "Report: (two words)\nReport: (3 of 0.500)\nReport: (" +
                            std::string(1023, 'x') +
                            ")\nReport: ()\nReport: Step -3 out of maximum 1234\n"
                            "Report: (Constraint solving ... 100 completed.)\n"
                            "Report: (Constraint solving ... 33.33333333333333 completed.)\n";
  TsolverReporter reporter(false);
  EXPECT_TRUE(reporter.isVerbose() && !reporter.isSilent() && !reporter.stopRequested());
  EXPECT_EQ(printedBy(reporter), lines);
  // Whatever the host set in the stream.
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::ios former(nullptr);
  former.copyfmt(std::cerr);
  std::cerr << std::hex << std::showpos << std::setfill('*');
  std::cerr.imbue(std::locale(std::locale(), new Grouping));
  EXPECT_EQ(printedBy(reporter), lines);
  reporter.silent() = true;
  EXPECT_EQ(printedBy(reporter), "");
  std::cerr.copyfmt(former);
  Listener listener;
  listener.reportFormatted("%d", 1);
  listener.reportString("b");
  listener.reportProgress(0.25);
  EXPECT_EQ(listener.heard, "1|b|Constraint solving ... 25 completed.|");
}

TEST(KernelTicks, GoToTheReporterThatWasSwitchedOnLast) {
  EXPECT_EQ(ag_tick(1, 2), 0);
  Listener first(5);
  first.enableTicks(true);
  EXPECT_EQ(ag_tick(1, 2), 5);
  {
    Listener second(6);
    second.enableTicks(true);
    first.enableTicks(false);  // is not the current one
    EXPECT_EQ(ag_tick(1, 2), 6);
  }
  EXPECT_EQ(ag_tick(1, 2), 0);
  first.enableTicks(true);
  EXPECT_EQ(ag_tick(1, 2), 5);
  first.enableTicks(false);
  EXPECT_EQ(ag_tick(1, 2), 0);
}

TEST(KernelErrors, BecomeExceptionsThatCanBeCastAndKept) {
  EXPECT_THROW(AG_raiseException(902), TmemoryException);
  for (const int code : {0, 901, -7}) {
    try {
      AG_raiseException(code);
      FAIL();
    } catch (TagException& caught) {
      EXPECT_EQ(caught.typeof(), &TagExceptionTmeta);
      EXPECT_EQ(caught.cast(&TagExceptionTmeta), &caught);
      EXPECT_EQ(caught.cast(&TexceptionTmeta), static_cast<Texception*>(&caught));
      EXPECT_EQ(caught.cast(&TmemoryExceptionTmeta), nullptr);
      auto* kept = static_cast<TagException*>(caught.cache());
      EXPECT_TRUE(caught.errorCode() == code && kept->errorCode() == code && kept != &caught);
      EXPECT_EQ(kept->cache(), kept);
    }
  }
}

TEST(KernelErrors, AreConstructedByTheFactoryOfTheirRecord) {
  static int made;
  Tmetaclass derived("Derived", {&TagExceptionTmeta}, [] { return static_cast<void*>(&made); });
  EXPECT_EQ(TagException::construct(&derived), &made);
  for (Tmetaclass* none : {&TagExceptionTmeta, &TexceptionTmeta, static_cast<Tmetaclass*>(nullptr)})
    EXPECT_EQ(TagException::construct(none), nullptr);
}

#if defined(__i386__) || defined(__x86_64__)

// Place of a virtual operation in the table: its member pointer holds the offset plus 1.
template <class Member>
int place(Member member) {
  std::ptrdiff_t offset;
  std::memcpy(&offset, &member, sizeof offset);
  return static_cast<int>((offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

template <class... Members>
void expectPlaces(int first, Members... members) {
  const std::vector<int> found{place(members)...};
  for (const int one : found) EXPECT_EQ(one, first++);
}

TEST(VirtualOperations, KeepTheirOrder) {
  struct Open : Thouseholder {
    using Points = int (Open::*)(TtupleVector&, TtupleVector*) const;
    using Numbers = int (Open::*)(DoubleVec&, DoubleVec*) const;
    static void check() {
      expectPlaces(2, &Open::isSolvable, Points(&Open::solveInPlace), Numbers(&Open::solveInPlace),
                   &Open::resetMatrix, &Open::originalColumn, &Open::preSetMatrix,
                   &Open::findAllZeros, &Open::altMatrix, &Open::factor);
    }
  };
  Open::check();  // the destructor takes two places
  using R = TsolverReporter;
  expectPlaces(2, &R::reportFormatted, &R::reportString, &R::stopRequested, &R::reportStep,
               &R::reportMessage);
  expectPlaces(0, &TagException::typeof, &TagException::cast, &TagException::cache);
}

#endif

}  // namespace
}  // namespace knotwork::test
