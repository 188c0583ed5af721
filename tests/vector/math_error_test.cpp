// SPDX-License-Identifier: MIT
// The error frame: what the default handler prints and decides, the catalogues and their list.
#include "knotwork/vector/math_error.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <sstream>

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
  {
    RecordedErrors inner;
    raiseMathErrorCode(knotwork::kElementNotStored, 1, 2, "x");
    ASSERT_EQ(inner.all().size(), 1u);
    EXPECT_EQ(inner.all()[0].code, 0x4009u);
    EXPECT_EQ(inner.all()[0].severity, kByMessage);
    EXPECT_EQ(inner.all()[0].origin, 0xF000u);
    EXPECT_EQ(inner.all()[0].text, "Can't change element (1,2) of x");
  }
  raiseMathError(MathErrorRecord(0x4002, kFatal, 0x1234), 0.5, 1e100);
  ASSERT_EQ(outer.all().size(), 1u);
  EXPECT_EQ(outer.all()[0].severity, kFatal);
  EXPECT_EQ(outer.all()[0].origin, 0x1234u);
  EXPECT_EQ(outer.all()[0].text, "Constant reference was changed from 0.5 to 1e+100");
}

// Every catalogue as "code severity format", in its own words: these lines are a host's contract.
constexpr char kAllMessages[] =
    R"(3000 2 [BADORDER: %s]: Mismatch of function (%u) and rhs (%u) order
3001 2 [BADPARITY: %s]: Length (%u) of a real series must be %s
3002 2 [BADVERNO: %s]: Bad formatting version number.  Expected %d; got %d
3003 2 [DIVZERO: %s]: Divide by zero.
3004 2 [GENERIC: %s]: Generic error number %d; %s
3005 2 [INDEX: %s]: Index (%d) out of range [0->%u]
3006 2 [LUNDEF: %s]: Undefined LU factorization
3007 2 [MNMATCH: %s]: Rows or columns do not match: (%u, %u) vs (%u, %u)
3008 2 [NOMEM: %s]: Out of memory
3009 2 [NPOINTS: %s]: Vector (%u) %s %d
300a 2 [NSQUARE: %s]: Matrix (%u, %u) is not square
300b 2 [RWBREQ: %s]: RWBlock new request of size %d != correct: %d
300c 2 [SLICE: %s]: slice (%d, %u, %d) cannot be made from vector (%u)
300d 2 [STRIDE: %s]: Stride must be 1
300e 2 [VMNMATCH: %s]: %s Vector (%u) does not match matrix: (%u, %u)
300f 2 [VNMATCH: %s]: Vector lengths do not match (%u vs %u)
3010 0 [ZEROSD: %s]: Series has zero standard deviation
3011 0 [ZEROVEC: %s]: %s: vector is empty
3012 2 [ZPIVOT: %s]: Pivot number %d is zero
3013 2 [BADROOT: %s]: Zero'th root of 1 requested
4000 0 Internal error, you've found a bug
4001 2 Matrix pick out of range: index %d not in 0->%d
4002 2 Constant reference was changed from %g to %g
4003 2 Complex constant reference was changed from %g+i%g to %g+i%g
4004 2 Matrix sizes don't match (%dx%d) vs (%dx%d)
4005 2 Element (%dx%d) not in matrix of size (%ux%u)
4006 2 Row (%d) not in matrix with %u rows
4007 2 Column (%d) not in matrix with %u columns
4008 2 Diagonal %d not in %s matrix of size (%ux%u)
4009 2 Can't change element (%d,%d) of %s
400a 2 Wrong number of points (%u) for %ux%u %s
400b 2 Wrong number of points (%u) for %ux%u %s with bandwidth %u
400c 2 Bandwidths don't match: lower: %u & %u, upper: %u & %u
400d 2 %dx%d matrix not square
400e 0 matrix not symmetric
400f 0 matrix not anti-symmetric
4010 0 matrix not hermetian
4011 0 matrix not banded
4012 0 matrix not triangular
4013 0 matrix not tri-diagonal
4014 2 inner product not possible between %s (%ux%u) and vector (%u)
4015 2 inner product not possible vector(%u) and %s (%ux%u)
4016 2 inner product not possible %s matrices (%u,%u) and (%ux%u)
4017 2 wrong number of elements (%u) for %s (%ux%u)
4018 2 cant build order %u leading submatrix of order %u matrix
4019 2 Restoring %s, data vector len %d, expected %u
5000 0 Internal error, you've found a bug
5001 0 Condition number not calculated
5002 2 b vector length wrong (%u!=%u)
5003 0 diagonal of Hermetian matrix being factorized is non-real
5004 2 vector wrong length to permute (%u!=%u)
5005 2 Invalid Cholesky shift direction
5006 2 Invalid Cholesky shift columns (%d,%d)
5007 2 Data matrix wrong height (%u!=%u)
5008 2 Vector to hold sines or cosines wrong length (%u!=%u)
5009 2 Different number of residuals than data columns (%u!=%u)
500a 2 Internal error: The normal equations are not positive definite
500b 2 Data %d doesn't exist, only %d data columns
500c 2 vec pointers must have stride == 1
500d 2 Can't factorize, %ux%u matrix not square
500e 2 Can't factorize, bandwidth %d too big for %dx%d matrix
500f 0 Called factor, but a factorization has already been computed
5010 2 Matrix must have more rows than cols to be factorizable, but %d<%d
5011 2 Can't solve system of equations, matrix not successfully factorized
5012 2 Pivoting position specifier must be INITIAL,FREE, or FINAL, not %d
)";

TEST(MathMessages, KeepTheirCodesSeveritiesAndTexts) {
  std::ostringstream out;
  const auto list = [&](unsigned id, unsigned count) {
    for (unsigned code = id << 12; code < (id << 12) + count; ++code) {
      const MathMessageEntry* entry = findMathMessage(static_cast<unsigned short>(code));
      ASSERT_NE(entry, nullptr);
      out << std::hex << code << ' ' << entry->defaultSeverity << ' ' << entry->format << '\n';
    }
  };
  list(3, 20);
  list(4, 26);
  list(5, 19);
  EXPECT_EQ(out.str(), kAllMessages);
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
  new (place) Init;
  good &= !registered();
  init->~Init();
  init->~Init();
  new (place) Init;
  new (place) Init;
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
