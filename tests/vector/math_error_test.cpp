// SPDX-License-Identifier: MIT
// The error frame: what the default handler prints and decides, the catalogues and their list.
#include "knotwork/vector/math_error.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <new>
#include <sstream>
#include <tuple>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/math_codes.h"
#include "support/expected_death.h"
#include "support/recorded_errors.h"

namespace {

constexpr unsigned kWarning = 0, kByMessage = 1, kFatal = 2;

// Runs `report` under the default handler and returns what it printed.
template <class F>
std::string printedBy(F report) {
  testing::internal::CaptureStderr();
  report();
  return testing::internal::GetCapturedStderr();
}

TEST(MathErrorDeathTest, FatalReportsPrintTheMessageAndAbort) {
  EXPECT_DEATH(DoubleVec(5, 0.0).boundsCheck(7),
               terminatedBy("[INDEX: DoubleVec]: Index (7) out of range [0->4]"));
  EXPECT_DEATH(DoubleVec().boundsCheck(0),
               terminatedBy("[INDEX: DoubleVec]: Index (0) out of range [0->4294967295]"));
  // A message's own full stop stays.
  EXPECT_DEATH(raiseMathErrorCode(knotwork::kDivideByZero, "DoubleVec"),
               terminatedBy("[DIVZERO: DoubleVec]: Divide by zero."));
}

TEST(MathErrorDeathTest, RecordSeverityOverridesTheMessages) {
  const auto report = [](int code, unsigned severity) {
    raiseMathError(MathErrorRecord(static_cast<unsigned short>(code), severity, 0x900E), "X", "f");
  };
  const std::string empty = "[ZEROVEC: X]: f: vector is empty",
                    stride = "[STRIDE: X]: Stride must be 1";
  EXPECT_EQ(printedBy([&] { report(knotwork::kEmptyVector, kByMessage); }),
            "** " + empty + ".\n** Processing continues.\n");
  EXPECT_EQ(printedBy([&] { report(knotwork::kStrideNotOne, kWarning); }),
            "** " + stride + ".\n** Processing continues.\n");
  EXPECT_EQ(printedBy([&] { report(knotwork::kNoError, kFatal); }), "");
  EXPECT_DEATH(report(knotwork::kStrideNotOne, kByMessage), terminatedBy(stride));
  EXPECT_DEATH(report(knotwork::kEmptyVector, kFatal), terminatedBy(empty));
  EXPECT_DEATH(report(knotwork::kEmptyVector, 7), terminatedBy(empty));
}

TEST(MathErrorDeathTest, CodesOfMissingCataloguesTerminateWhateverTheirSeverity) {
  const auto report = [](unsigned short code) { raiseMathError(MathErrorRecord(code, 0, 0), 1); };
  const auto reportAfterRemoval = [&] {
    unregisterCatalogue(4);
    report(0x4005);
  };
  EXPECT_DEATH(report(0x6ABC), wholeText("** Error number 0x6abc.** Processing terminated.\n"));
  EXPECT_DEATH(reportAfterRemoval(),
               wholeText("** Error number 0x4005.** Processing terminated.\n"));
}

TEST(MathError, HandlersReplaceEachOtherAndSeeTheArguments) {
  RecordedErrors outer;
  const auto expectOne = [](RecordedErrors& errors, unsigned code, unsigned severity,
                            unsigned origin, const std::string& text) {
    ASSERT_EQ(errors.all().size(), 1u);
    const RecordedError& error = errors.all()[0];
    EXPECT_EQ(std::tie(error.code, error.severity, error.origin, error.text),
              std::tie(code, severity, origin, text));
  };
  {
    RecordedErrors inner;
    raiseMathErrorCode(knotwork::kElementNotStored, 1, 2, "x");
    expectOne(inner, 0x4009, kByMessage, 0xF000, "Can't change element (1,2) of x");
  }
  raiseMathError(MathErrorRecord(0x4002, kFatal, 0x1234), 0.5, 1e100);
  expectOne(outer, 0x4002, kFatal, 0x1234, "Constant reference was changed from 0.5 to 1e+100");
}

// The file has "code severity format" lines: what hosts may rely on.
TEST(MathMessages, KeepTheirCodesSeveritiesAndTexts) {
  const std::ifstream file(KNOTWORK_TEST_DATA "/vector/messages.txt");
  std::ostringstream wanted;
  wanted << file.rdbuf();
  std::ostringstream out;
  for (const auto& [id, count] : {std::pair{3u, 20u}, {4u, 26u}, {5u, 19u}}) {
    for (unsigned code = id << 12; code < (id << 12) + count; ++code) {
      const MathMessageEntry* entry = findMathMessage(static_cast<unsigned short>(code));
      ASSERT_NE(entry, nullptr);
      out << std::hex << code << ' ' << entry->defaultSeverity << ' ' << entry->format << '\n';
    }
  }
  EXPECT_EQ(out.str(), wanted.str());
}

TEST(MathMessages, CataloguesRegisterOncePerObjectAndCanComeBack) {
  constexpr MathMessageEntry first[] = {{0, "first"}}, second[] = {{2, "second"}};
  MathMessageCatalogue a{9, first, 1, nullptr}, b{9, second, 1, nullptr},
      c{10, nullptr, 0, nullptr};
  for (MathMessageCatalogue* each : {&a, &b, &a, &c}) registerCatalogue(*each);
  EXPECT_EQ(findMathMessage(0x9000), first);    // the first of an identifier hides the second
  EXPECT_EQ(findMathMessage(0xA000), nullptr);  // no entries
  unregisterCatalogue(9);
  EXPECT_EQ(findMathMessage(0x9000), second);
  EXPECT_EQ(a.next, nullptr);
  registerCatalogue(a);
  EXPECT_EQ(c.next, &a);  // behind the others now
  for (const unsigned id : {9u, 10u, 9u, 11u}) unregisterCatalogue(id);
  EXPECT_EQ(findMathMessage(0x9000), nullptr);
  EXPECT_NE(findMathMessage(0x5000), nullptr);
}

// Destroying more often than constructing takes the library's own uses back: the last of them takes
// the catalogue out, and of the constructions after it the first registers.
template <class Init>
[[noreturn]] void exitWithZeroIfCounted(unsigned id) {
  const auto registered = [=] { return findMathMessage(static_cast<unsigned short>(id << 12)); };
  alignas(Init) unsigned char place[sizeof(Init)];
  Init* init = new (place) Init;
  for (int uses = 0; registered() && uses < 1000; ++uses) init->~Init();
  bool good = !registered();
  new (place) Init;
  good &= registered() != nullptr;
  unregisterCatalogue(id);
  new (place) Init;  // the second registers nothing
  good &= !registered();
  init->~Init();
  init->~Init();
  for (int uses = 0; uses < 2; ++uses) new (place) Init;
  init->~Init();
  good &= registered() != nullptr;
  init->~Init();
  std::_Exit(good && !registered() ? 0 : 1);
}

TEST(MathMessagesDeathTest, FirstInitialiserRegistersAndLastUnregisters) {
  EXPECT_EXIT(exitWithZeroIfCounted<VectorMessagesInit>(3), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitWithZeroIfCounted<RWMATXInit>(4), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitWithZeroIfCounted<FactorMessagesInit>(5), testing::ExitedWithCode(0), "");
}

}  // namespace
