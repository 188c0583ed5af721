// SPDX-License-Identifier: MIT
// Vectors as text: exact output, and what reading leaves in vector and stream.
#include <iomanip>
#include <sstream>
#include <string>

#include "support/failing_new.h"
#include "vector/vector_oracle.h"

namespace {

template <class Vec>
std::string textOf(const Vec& v) {
  std::ostringstream out;
  out << v;
  return out.str();
}

template <class Vec>
class VectorText : public testing::Test {};
TYPED_TEST_SUITE(VectorText, AllVectors);

TYPED_TEST(VectorText, BreaksLinesAfterTheSetNumberOfElements) {
  const TypeParam seven(7, 1, 1), backwards = seven.slice(2, 3, -1);
  EXPECT_EQ(textOf(TypeParam()), "[  ]");
  EXPECT_EQ(textOf(TypeParam(1, -1)), "[ -1 ]");
  EXPECT_EQ(textOf(backwards), "[ 3 2 1 ]");
  EXPECT_EQ(textOf(seven.slice(0, 5, 1)), "[ 1 2 3 4 5 ]");
  EXPECT_EQ(textOf(seven), "[\n1 2 3 4 5\n6 7\n]");
  EXPECT_EQ(TypeParam::setFormatting(1), 5);
  EXPECT_EQ(textOf(backwards), "[\n3\n2\n1\n]");
  EXPECT_EQ(TypeParam::setFormatting(7), 1);
  EXPECT_EQ(textOf(seven), "[ 1 2 3 4 5 6 7 ]");
  for (const int bad : {0, -3}) {
    TypeParam::setFormatting(bad);
    EXPECT_EQ(textOf(bad < 0 ? TypeParam() : seven).front(), '[');
    EXPECT_EQ(TypeParam::numberPerLine, 5);  // the print repairs it
  }
}

TEST(DoubleText, IsWrittenWithTheStreamsOwnSettings) {
  std::ostringstream out;
  out << std::setprecision(3) << std::fixed << DoubleVec(2, 1.0 / 3) << ' ' << std::setw(4)
      << DoubleVec(1, 2.0);
  EXPECT_EQ(out.str(), "[ 0.333 0.333 ]   [ 2.000 ]");  // a width goes to the bracket
  std::istringstream in("[0.1 -2e-3]");
  DoubleVec v;
  in >> v;
  EXPECT_TRUE(holds(v, {0.1, -2e-3}));
}

TYPED_TEST(VectorText, ReadsBracketedAndBareFormsAndLeavesTheStreamAsTold) {
  using T = typename TypeParam::value_type;
  constexpr auto kGood = std::ios::goodbit, kFail = std::ios::failbit;
  constexpr auto kEnd = std::ios::eofbit | std::ios::failbit;
  // What a vector (7 7 7) holds after reading the text, the stream's state, what is left there.
  const struct {
    const char* text;
    std::vector<int> elements;
    std::ios::iostate state;
    std::string rest;
  } readings[] = {
      {"[]x", {}, kGood, "x"},
      {" \n[ ] 5", {}, kGood, " 5"},
      {"[1 2 3]4", {1, 2, 3}, kGood, "4"},
      {"[\n1 2\t-3\n4 ]", {1, 2, -3, 4}, kGood, ""},
      {"[1 2", {1, 2}, kEnd, ""},
      {"[1 x 3]", {1}, kFail, "x 3]"},
      {"[1 2,3]", {1, 2}, kFail, ",3]"},
      {"[[1]]", {}, kFail, "[1]]"},
      {"[", {}, kEnd, ""},
      {"  ", {}, kEnd, ""},
      {"  1 2 3", {1, 2, 3}, kEnd, ""},
      {"1 2]", {1, 2}, kFail, "]"},
      {"x", {}, kFail, "x"},
  };
  for (const auto& reading : readings) {
    SCOPED_TRACE(reading.text);
    std::istringstream in(reading.text);
    TypeParam v(3, 7);
    EXPECT_EQ(&(in >> v), &in);
    EXPECT_EQ(in.rdstate(), reading.state);
    EXPECT_TRUE(holds(v, std::vector<T>(reading.elements.begin(), reading.elements.end())));
    in.clear();
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), reading.rest);
  }
  std::istringstream tooLarge("[1 99999999999999999999999e999 2]"), failed("[1]");
  TypeParam v(3, 7);
  tooLarge >> v;
  EXPECT_TRUE(tooLarge.fail() && holds(v, {1}));
  failed.setstate(std::ios::failbit);
  failed >> v;
  EXPECT_EQ(v.length(), 0u);
}

TYPED_TEST(VectorText, WritesIntoSharedElementsUntilTheyAreTooFew) {
  TypeParam v(6, 0), every2nd = v.slice(0, 3, 2);
  std::istringstream fits("[1 2 3]"), grows("[4 5 6 7]"), shrinks("8");
  fits >> every2nd;
  EXPECT_TRUE(holds(v, {1, 0, 2, 0, 3, 0}));
  EXPECT_EQ(every2nd.stride(), 2);
  grows >> every2nd;  // three go into v, the fourth into storage of its own
  EXPECT_TRUE(holds(v, {4, 0, 5, 0, 6, 0}));
  EXPECT_TRUE(holds(every2nd, {4, 5, 6, 7}));
  TypeParam all(v);
  shrinks >> all;
  EXPECT_TRUE(holds(all, {8}));
  EXPECT_EQ(v(0), 8);
}

// For doubles the stream itself may allocate.
TEST(IntText, GrowsBy128WhileReading) {
  const auto allocations = [](unsigned n) {
    std::stringstream text(textOf(IntVec(n, 1)));
    IntVec v;
    const long before = knotwork::test::newCalls();
    text >> v;
    EXPECT_EQ(v, IntVec(n, 1));
    return knotwork::test::newCalls() - before;
  };
  allocations(2);  // storage that the first reading leaves behind serves the later ones
  const long few = allocations(2);
  for (const unsigned n : {2u, 127u, 129u, 255u, 257u, 383u})
    EXPECT_EQ(allocations(n), few + (knotwork::test::canObserveAllocation() ? n / 128 : 0)) << n;
}

TEST(SCharText, KeepsTheLow8BitsOfWhatItReads) {
  std::istringstream in("[ 255 300 -129 65 ]");
  SCharVec v;
  in >> v;
  EXPECT_EQ(textOf(v), "[ -1 44 127 65 ]");
}

}  // namespace
