// SPDX-License-Identifier: MIT
// What vectors allocate, and what they do when they cannot.
#include <sstream>

#include "knotwork/vector/double_vec_pick.h"
#include "knotwork/vector/int_vec_pick.h"
#include "knotwork/vector/math_codes.h"
#include "knotwork/vector/math_error.h"
#include "knotwork/vector/schar_vec_pick.h"
#include "support/expected_death.h"
#include "support/failing_new.h"
#include "vector/vector_oracle.h"

namespace {

using knotwork::test::canObserveAllocation;
using knotwork::test::expectEveryFailureReported;
using knotwork::test::FailingNew;
using knotwork::test::newCalls;

template <class Vec>
class VectorStorage : public testing::Test {
 protected:
  void SetUp() override {
    if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own here";
  }
};
TYPED_TEST_SUITE(VectorStorage, AllVectors);

TYPED_TEST(VectorStorage, ABlockIsSharedByUpTo65535Views) {
  const TypeParam v(2, 7);
  std::vector<TypeParam>(65535, v);  // with v itself the count wraps
  EXPECT_EQ(v(1), 7);
}

TEST(RWBlock, FiveObjectsOfASizeAreRecycledLastFirst) {
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own here";
  for (const std::size_t size : {1, 2, 10, static_cast<int>(sizeof(RWBlock))}) {
    SCOPED_TRACE(size);
    const std::size_t releaseSize = (size + 1) / 2 * 2;
    std::vector<void*> objects;
    for (int i = 0; i < 11; ++i) objects.push_back(RWBlock::operator new(size));
    for (int i = 0; i < 6; ++i) RWBlock::operator delete(objects[i], releaseSize);
    const long before = newCalls();
    for (int i = 4; i >= 0; --i) EXPECT_EQ(RWBlock::operator new(size), objects[i]);
    EXPECT_EQ(newCalls(), before);
    objects[5] = RWBlock::operator new(size);
    EXPECT_EQ(newCalls(), before + 1);
    for (void* object : objects) RWBlock::operator delete(object, releaseSize);
  }
  RWBlock::operator delete(nullptr, 10);
  const long before = newCalls();  // of no size, or too large: straight to the allocator and back
  for (const std::size_t size : {0, 0, 64, 64}) {
    RWBlock::operator delete(RWBlock::operator new(size), size);
  }
  EXPECT_EQ(newCalls(), before + 4);
}

TEST(RWBlockDeathTest, OutOfMemoryIsFatalByDefault) {
  const auto allocate = [] {
    const FailingNew none(0);
    RWBlock block(1, 8);
  };
  if (!canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own here";
  EXPECT_DEATH(allocate(), terminatedBy("[NOMEM: RWBlock]: Out of memory"));
}

// Uses every operation that allocates; ends with the sum of what it has, to read all of it.
template <class Vec>
double useEverything() {
  using T = typename Vec::value_type;
  const T raw[] = {1, 2, 3, 4, 5, 6};
  Vec a(6, 2), b(raw, 6), c(6, 1, 1), empty;
  const Vec view = reverse(b);
  Vec same(a);
  same.deepenShallowCopy();
  same += a;
  a = view;
  b = b.slice(0, b.length() / 2, 2);
  c.resize(9);
  c.resize(2);
  empty.reshape(4);
  empty = T{1};
  const IntVec list = b.lessIndex(4);
  Vec picked(b.vecPick(list));
  b.vecPick(list) = picked;
  picked = b.vecPick(list);
  static std::stringstream ones = [] {
    std::stringstream text;
    text << IntVec(300, 1);
    return text;
  }();
  ones.seekg(0);
  // For doubles the stream makes allocations of its own, whose failure nobody reports.
  if constexpr (!std::is_same_v<Vec, DoubleVec>) ones >> empty;
  Vec result = -(a + b) * view - c + cumsum(same) * T{3};
  result.reference(delta(reverse(abs(result))));
  result *= result;
  double total = 0;
  for (const Vec* v :
       std::initializer_list<const Vec*>{&a, &b, &c, &empty, &view, &same, &picked, &result}) {
    EXPECT_TRUE(v->length() == 0 || v->data() != nullptr);
    for (int i = 0; i < static_cast<int>(v->length()); ++i) total += (*v)(i);
  }
  return total;
}

TYPED_TEST(VectorStorage, FailureOfAnyAllocationIsReportedAndHarmsNothing) {
  const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
  const double untroubled = useEverything<TypeParam>();
  expectEveryFailureReported(useEverything<TypeParam>);
  EXPECT_EQ(useEverything<TypeParam>(), untroubled);  // the failures have left nothing behind
  setMathErrorHandler(before);
}

TYPED_TEST(VectorStorage, AFailedChangeKeepsTheVector) {
  TypeParam v(3, 5, 1);
  const TypeParam view(v);
  const MathErrorHandler before = setMathErrorHandler([](MathErrorRecord, va_list) {});
  {
    const FailingNew none(0);
    v.resize(9);
    v.reshape(9);
    v.deepenShallowCopy();
    EXPECT_EQ(TypeParam(4, 1).length() + v.copy().length() + (v + v).length(), 0u);
  }
  setMathErrorHandler(before);
  EXPECT_TRUE(holds(v, {5, 6, 7}));
  EXPECT_EQ(v.data(), view.data());
}

}  // namespace
