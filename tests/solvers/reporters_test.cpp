// SPDX-License-Identifier: MIT
// Reporters, kernel ticks, exceptions, and the order of virtual operations.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "knotwork/platform/foundation/memory_exception.h"
#include "knotwork/platform/foundation/string.h"
#include "knotwork/platform/kernel/ticks.h"
#include "knotwork/solvers/ag_exception.h"
#include "knotwork/solvers/householder.h"

namespace knotwork::test {
namespace {

template <class Action>
std::string printedBy(Action action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

TEST(Reporter, VerboseOnesPrintLines) {
  TsolverReporter reporter(false);
  EXPECT_TRUE(reporter.isVerbose() && !reporter.isSilent());
  EXPECT_EQ(printedBy([&] { reporter.reportMessage("two words"); }), "Report: (two words)\n");
  EXPECT_EQ(printedBy([&] { reporter.reportFormatted("%d of %5.3f", 3, 0.5); }),
            "Report: (3 of 0.500)\n");
  EXPECT_EQ(printedBy([&] { reporter.reportString(Tstring()); }), "Report: ()\n");
  EXPECT_EQ(printedBy([&] { EXPECT_EQ(reporter.reportStep(-3, 10), 0); }),
            "Report: Step -3 out of maximum 10\n");
  EXPECT_EQ(printedBy([&] { reporter.reportProgress(1.0); }),
            "Report: (Constraint solving ... 100 completed.)\n");
  EXPECT_EQ(printedBy([&] { reporter.reportProgress(1.0 / 3); }),
            "Report: (Constraint solving ... 33.33333333333333 completed.)\n");
  EXPECT_FALSE(reporter.stopRequested());
}

TEST(Reporter, SilentOnesPrintNothing) {
  TsolverReporter reporter(false);
  reporter.silent() = true;
  EXPECT_EQ(printedBy([&] {
              reporter.reportMessage("a");
              reporter.reportFormatted("a");
              reporter.reportString("a");
              reporter.reportStep(1, 2);
              reporter.reportProgress(0.5);
            }),
            "");
}

TEST(Reporter, FormattedTextIsCutAt1023CharactersAndANullFormatIsNone) {
  TsolverReporter reporter(false);
  const std::string text(3000, 'x');
  EXPECT_EQ(printedBy([&] { reporter.reportFormatted("%s", text.c_str()); }),
            "Report: (" + text.substr(0, 1023) + ")\n");
  EXPECT_EQ(printedBy([&] { reporter.reportFormatted(nullptr); }), "");
}

TEST(Reporter, EveryTextGoesThroughTheOverriddenMessage) {
  struct Collecting : TsolverReporter {
    Collecting() : TsolverReporter(true) {}
    void reportMessage(const char* text) override { collected.append(text).append("|"); }
    std::string collected;
  } reporter;
  reporter.reportFormatted("%d", 1);
  reporter.reportString("b");
  reporter.reportProgress(0.25);
  EXPECT_EQ(reporter.collected, "1|b|Constraint solving ... 25 completed.|");
}

TEST(KernelTicks, GoToTheReporterThatWasSwitchedOnLast) {
  struct Counting : TsolverReporter {
    explicit Counting(int answer) : TsolverReporter(true), answer_(answer) {}
    int reportStep(int, int) override { return answer_; }
    int answer_;
  };
  EXPECT_EQ(ag_tick(1, 2), 0);
  Counting first(5);
  first.enableTicks(true);
  EXPECT_EQ(ag_tick(1, 2), 5);
  {
    Counting second(6);
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

TEST(KernelErrors, BecomeExceptions) {
  EXPECT_THROW(AG_raiseException(902), TmemoryException);
  for (const int code : {0, 901, -7}) {
    try {
      AG_raiseException(code);
      FAIL();
    } catch (const TagException& caught) {
      EXPECT_EQ(caught.errorCode(), code);
      EXPECT_EQ(caught.typeof(), &TagExceptionTmeta);
    }
  }
}

TEST(KernelErrors, CanBeCastAndKept) {
  TagException exception(12);
  EXPECT_EQ(exception.cast(&TagExceptionTmeta), &exception);
  EXPECT_EQ(exception.cast(&TexceptionTmeta), static_cast<Texception*>(&exception));
  EXPECT_EQ(exception.cast(&TmemoryExceptionTmeta), nullptr);
  auto* kept = static_cast<TagException*>(exception.cache());
  EXPECT_NE(kept, &exception);
  EXPECT_EQ(kept->errorCode(), 12);
  EXPECT_EQ(kept->cache(), kept);
  TagException(13).cache();
  EXPECT_EQ(kept->errorCode(), 13);
}

TEST(KernelErrors, AreConstructedByTheFactoryOfTheirRecord) {
  static int made;
  Tmetaclass derived("Derived", {&TagExceptionTmeta}, [] { return static_cast<void*>(&made); });
  EXPECT_EQ(TagException::construct(&derived), &made);
  EXPECT_EQ(TagException::construct(&TagExceptionTmeta), nullptr);
  EXPECT_EQ(TagException::construct(&TexceptionTmeta), nullptr);
  EXPECT_EQ(TagException::construct(nullptr), nullptr);
}

#if defined(__i386__) || defined(__x86_64__)

// Place of a virtual operation in the table: its member pointer holds the offset plus 1.
template <class Member>
int place(Member member) {
  std::ptrdiff_t offset;
  std::memcpy(&offset, &member, sizeof offset);
  return static_cast<int>((offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

TEST(VirtualOperations, KeepTheirOrder) {
  // The destructor takes two places.
  struct Open : Thouseholder {
    static void check() {
      int next = 2;
      EXPECT_EQ(place(&Open::isSolvable), next++);
      EXPECT_EQ(place<int (Open::*)(TtupleVector&, TtupleVector*) const>(&Open::solveInPlace),
                next++);
      EXPECT_EQ(place<int (Open::*)(DoubleVec&, DoubleVec*) const>(&Open::solveInPlace), next++);
      EXPECT_EQ(place(&Open::resetMatrix), next++);
      EXPECT_EQ(place(&Open::originalColumn), next++);
      EXPECT_EQ(place(&Open::preSetMatrix), next++);
      EXPECT_EQ(place(&Open::findAllZeros), next++);
      EXPECT_EQ(place(&Open::altMatrix), next++);
      EXPECT_EQ(place(&Open::factor), next++);
    }
  };
  Open::check();
  EXPECT_EQ(place(&TsolverReporter::reportFormatted), 2);
  EXPECT_EQ(place(&TsolverReporter::reportString), 3);
  EXPECT_EQ(place(&TsolverReporter::stopRequested), 4);
  EXPECT_EQ(place(&TsolverReporter::reportStep), 5);
  EXPECT_EQ(place(&TsolverReporter::reportMessage), 6);
  EXPECT_EQ(place(&TagException::typeof), 0);
  EXPECT_EQ(place(&TagException::cast), 1);
  EXPECT_EQ(place(&TagException::cache), 2);
}

#endif

}  // namespace
}  // namespace knotwork::test
