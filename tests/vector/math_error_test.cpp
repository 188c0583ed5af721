// SPDX-License-Identifier: MIT
// The error frame: what the default handler prints and decides, the catalogues and their list.
#include "knotwork/vector/math_error.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <new>
#include <sstream>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/math_codes.h"
#include "support/expected_death.h"
#include "support/recorded_errors.h"

namespace {

constexpr unsigned kWarning = 0, kByMessage = 1, kFatal = 2;

TEST(MathErrorDeathTest, TheRecordsSeverityOverridesTheMessages) {
  const std::string empty = "[ZEROVEC: X]: f: vector is empty",
                    stride = "[STRIDE: X]: Stride must be 1",
                    divide = "[DIVZERO: X]: Divide by zero.";  // a message's own full stop stays
  const struct {
    int code;
    unsigned severity;
    std::string text;
    bool fatal;
  } cases[] = {{knotwork::kEmptyVector, kByMessage, empty, false},
               {knotwork::kStrideNotOne, kWarning, stride, false},
               {knotwork::kStrideNotOne, kByMessage, stride, true},
               {knotwork::kDivideByZero, kByMessage, divide, true},
               {knotwork::kEmptyVector, kFatal, empty, true},
               {knotwork::kEmptyVector, 7, empty, true}};
  const auto report = [](int code, unsigned severity) {
    raiseMathError(MathErrorRecord(static_cast<unsigned short>(code), severity, 0x900E), "X", "f");
  };
  for (const auto& each : cases) {
    if (each.fatal) {
      EXPECT_DEATH(report(each.code, each.severity), terminatedBy(each.text));
      continue;
    }
    testing::internal::CaptureStderr();
    report(knotwork::kNoError, kFatal);
    report(each.code, each.severity);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "** " + each.text + ".\n** Processing continues.\n");
  }
  EXPECT_DEATH(DoubleVec().boundsCheck(0),
               terminatedBy("[INDEX: DoubleVec]: Index (0) out of range [0->4294967295]"));
}

TEST(MathErrorDeathTest, CodesOfMissingCataloguesTerminateWhateverTheirSeverity) {
  const auto report = [](unsigned short code) {
    unregisterCatalogue(4);
    raiseMathError(MathErrorRecord(code, 0, 0), 1);
  };
  EXPECT_DEATH(report(0x6ABC), wholeText("** Error number 0x6abc.** Processing terminated.\n"));
  EXPECT_DEATH(report(0x4005), wholeText("** Error number 0x4005.** Processing terminated.\n"));
}

TEST(MathError, HandlersReplaceEachOtherAndSeeTheArguments) {
  RecordedErrors outer;
  const auto seen = [](RecordedErrors& errors) {
    std::string all;
    for (const auto& [code, severity, origin, text] : errors.take())
      all += std::to_string(code) + " " + std::to_string(severity) + " " + std::to_string(origin) +
             " " + text;
    return all;
  };
  {
    RecordedErrors inner;
    raiseMathErrorCode(knotwork::kElementNotStored, 1, 2, "x");
    EXPECT_EQ(seen(inner), "16393 1 61440 Can't change element (1,2) of x");
  }
  raiseMathError(MathErrorRecord(0x4002, kFatal, 0x1234), 0.5, 1e100);
  EXPECT_EQ(seen(outer), "16386 2 4660 Constant reference was changed from 0.5 to 1e+100");
}

TEST(MathError, FormsTakeWhatCVariadicFunctionsTake) {
  enum Colour : unsigned char { kRed = 200 };
  constexpr MathMessageEntry entry[] = {{0, "%s %hd %.2f %ld %c %d %u %lld %s %d"}};
  MathMessageCatalogue catalogue{9, entry, 1, nullptr};
  registerCatalogue(catalogue);
  RecordedErrors errors;
  char name[] = "name";
  char* const changing = name;
  const signed char small = 'q';
  const auto all = [&](auto raise) {
    raise(changing, short{-3}, 0.25F, 2000000000L, small, true, kRed, 1LL << 40, "lit",
          static_cast<unsigned short>(65535));
  };
  all([](auto... arguments) { raiseMathErrorCode(0x9000, arguments...); });
  all([](auto... arguments) { raiseMathError(MathErrorRecord(0x9000, 0, 0), arguments...); });
  unregisterCatalogue(9);
  ASSERT_EQ(errors.all().size(), 2u);
  for (const RecordedError& error : errors.all()) {
    EXPECT_EQ(error.text, "name -3 0.25 2000000000 q 1 200 1099511627776 lit 65535");
  }
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
