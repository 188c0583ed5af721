// SPDX-License-Identifier: MIT
// The three vectors against a naive model: a view is a shared array and a list of places in it.
// Run for every kernel set, it also shows that all sets give the same bits.
#include <algorithm>
#include <climits>
#include <memory>
#include <string>

#include "knotwork/vector/double_vec_pick.h"
#include "knotwork/vector/int_vec_pick.h"
#include "knotwork/vector/schar_vec_pick.h"
#include "support/recorded_errors.h"
#include "vector/vector_oracle.h"

namespace {

template <class T>
struct ModelView {
  explicit ModelView(const std::vector<T>& values)
      : elements(std::make_shared<std::vector<T>>(values)) {
    for (std::size_t i = 0; i < values.size(); ++i) places.push_back(static_cast<int>(i));
  }
  std::size_t size() const { return places.size(); }
  T& operator[](std::size_t i) const { return (*elements)[static_cast<std::size_t>(places[i])]; }
  std::vector<T> values() const {
    std::vector<T> all;
    for (std::size_t i = 0; i < size(); ++i) all.push_back((*this)[i]);
    return all;
  }
  ModelView picked(const std::vector<int>& indices) const {
    ModelView view(*this);
    view.places.clear();
    for (const int i : indices) view.places.push_back(places[static_cast<std::size_t>(i)]);
    return view;
  }

  std::shared_ptr<std::vector<T>> elements;
  std::vector<int> places;
};

// A few views, some on the same elements, beside their models.
template <class Vec>
class ModelRun {
 public:
  using T = typename Vec::value_type;
  using Model = ModelView<T>;
  using Rules = Oracle<T>;

  explicit ModelRun(unsigned seed) : random_(seed) {
    for (std::size_t i = 0; i < kViews; ++i) {
      models_.emplace_back(randomValues(kLongest));
      vectors_[i].reference(vectorOf<Vec>(models_[i].values()));
    }
  }

  void step() {
    using Step = void (ModelRun::*)(std::size_t to, std::size_t from);
    constexpr Step steps[] = {
        &ModelRun::share,      &ModelRun::slice,      &ModelRun::changeStorage,
        &ModelRun::assign,     &ModelRun::combineTwo, &ModelRun::changeOne,
        &ModelRun::combineTwo, &ModelRun::changeOne,  &ModelRun::pick};
    const auto to = random_() % kViews, from = random_() % kViews;
    (this->*any(steps))(to, from);
  }

  void expectAgreement() {
    for (std::size_t i = 0; i < kViews; ++i) {
      EXPECT_TRUE(holds(vectors_[i], models_[i].values())) << "view " << i;
    }
    EXPECT_EQ(errors_.takeTexts(), expectedErrors_);
    expectedErrors_.clear();
  }

 private:
  static constexpr bool kReal = std::is_floating_point_v<T>;
  static constexpr std::size_t kViews = 5;
  static constexpr int kLongest = 70;  // twice the lanes of the shortest elements, and some more

  template <class Choices>
  const auto& any(const Choices& choices) {
    return choices[random_() % std::size(choices)];
  }

  std::vector<T> randomValues(int n) {
    std::vector<T> values;
    for (int i = 0; i < n; ++i) values.push_back(randomElement<T>(random_));
    return values;
  }

  void replace(std::size_t to, const Vec& v, const Model& model) {
    vectors_[to].reference(v);
    models_[to] = model;
  }

  void makeDivisor(std::size_t to) {
    std::vector<T> values;
    for (const T x : models_[to].values()) values.push_back(nonZero(x));
    replace(to, vectorOf<Vec>(values), Model(values));
  }

  // How far an operation on views of different lengths goes once it has reported.
  std::size_t paired(std::size_t left, std::size_t right, const char* name = Vec::className) {
    if (left != right) {
      expectedErrors_ += messages(name, {{"VNMATCH", lengthsDiffer(left, right)}});
    }
    return std::min(left, right);
  }

  void share(std::size_t to, std::size_t from) {
    replace(to, random_() % 2 == 0 ? Vec(vectors_[from]) : vectors_[from], models_[from]);
  }

  // Mostly long slices, by steps of -3 to 3.
  void slice(std::size_t to, std::size_t from) {
    const int last = static_cast<int>(models_[from].size()) - 1, stride = numberIn(random_, -3, 3);
    const int most = stride == 0 ? 20 : last / std::abs(stride) + 1;
    const int n = last < 0 ? 0 : numberIn(random_, most / 2, most);
    const int span = n == 0 ? 0 : (n - 1) * stride;
    const int first = numberIn(random_, std::max(0, -span), std::max(0, last - std::max(0, span)));
    std::vector<int> indices;
    for (int i = 0; i < n; ++i) indices.push_back(first + i * stride);
    vectors_[from].sliceCheck(first, static_cast<unsigned>(n), stride);
    const Model model = models_[from].picked(indices);
    replace(to, vectors_[from].slice(first, static_cast<unsigned>(n), stride), model);
  }

  void changeStorage(std::size_t to, std::size_t) {
    Vec& v = vectors_[to];
    std::vector<T> values = models_[to].values();
    const auto n = static_cast<std::size_t>(numberIn(random_, 0, kLongest));
    if (n == values.size()) return v.resize(v.length());  // changes nothing, nor does the sharing
    if (random_() % 3 == 0) {
      v.deepenShallowCopy();
    } else if (random_() % 2 == 0) {
      v.resize(static_cast<unsigned>(n));
      values.resize(n);
    } else {
      v.reshape(static_cast<unsigned>(n));
      values = randomValues(static_cast<int>(n));
      for (std::size_t i = 0; i < n; ++i) v[static_cast<int>(i)] = values[i];
    }
    models_[to] = Model(values);
  }

  void assign(std::size_t to, std::size_t from) {
    const std::vector<T> values = models_[from].values();
    const std::size_t n = paired(models_[to].size(), values.size());
    vectors_[to] = vectors_[from];
    for (std::size_t i = 0; i < n; ++i) models_[to][i] = values[i];
  }

  template <class Operand>
  struct Kind {
    bool isNew;
    void (*apply)(Vec& v, Operand by);
    T (*model)(T x, T by);
  };

  // In place in index order and without a temporary, whatever the two have in common; as a new
  // vector as long as the right operand, with 0 where the left one ends.
  void combineTwo(std::size_t to, std::size_t from) {
    std::vector<Kind<const Vec&>> kinds = {
        {false, [](Vec& v, const Vec& by) { v += by; }, Rules::add},
        {false, [](Vec& v, const Vec& by) { v -= by; }, Rules::subtract},
        {false, [](Vec& v, const Vec& by) { v *= by; }, Rules::multiply},
        {false, [](Vec& v, const Vec& by) { v /= by; }, Rules::divide},
        {true, [](Vec& v, const Vec& by) { v.reference(v + by); }, Rules::add},
        {true, [](Vec& v, const Vec& by) { v.reference(v - by); }, Rules::subtract},
        {true, [](Vec& v, const Vec& by) { v.reference(v * by); }, Rules::multiply}};
    if constexpr (kReal) {
      kinds.push_back({true, [](Vec& v, const Vec& by) { v.reference(v / by); }, Rules::divide});
    }
    const auto& kind = any(kinds);
    if (kind.model == Rules::divide) makeDivisor(from);
    const Model left = models_[to], right = models_[from];
    const std::size_t n = paired(left.size(), right.size());
    if (kind.isNew) models_[to] = Model(std::vector<T>(right.size()));
    kind.apply(vectors_[to], vectors_[from]);
    for (std::size_t i = 0; i < n; ++i) models_[to][i] = kind.model(left[i], right[i]);
  }

  void changeOne(std::size_t to, std::size_t) {
    std::vector<Kind<T>> kinds = {
        {false, [](Vec& v, T s) { v = s; }, [](T, T s) { return s; }},
        {false, [](Vec& v, T s) { v += s; }, Rules::add},
        {false, [](Vec& v, T s) { v -= s; }, Rules::subtract},
        {false, [](Vec& v, T s) { v *= s; }, Rules::multiply},
        {false, [](Vec& v, T s) { v /= s; }, Rules::scaleDown},
        {false, [](Vec& v, T) { ++v; }, [](T x, T) { return Rules::add(x, 1); }},
        {false, [](Vec& v, T) { --v; }, [](T x, T) { return Rules::subtract(x, 1); }},
        {true, [](Vec& v, T s) { v.reference(v + s); }, Rules::add},
        {true, [](Vec& v, T s) { v.reference(v * s); }, Rules::multiply},
        {true, [](Vec& v, T) { v.reference(-v); }, [](T x, T) { return Rules::negate(x); }},
        {true, [](Vec& v, T) { v.reference(abs(v)); }, [](T x, T) { return Rules::absolute(x); }},
        {true, [](Vec& v, T) { v.reference(v.copy()); }, [](T x, T) { return x; }}};
    if constexpr (kReal) {
      kinds.push_back({true, [](Vec& v, T s) { v.reference(v / s); }, Rules::divide});
      kinds.push_back(
          {true, [](Vec& v, T s) { v.reference(s - v); }, [](T x, T s) { return s - x; }});
      kinds.push_back(
          {true, [](Vec& v, T s) { v.reference(s / v); }, [](T x, T s) { return s / x; }});
    }
    const auto& kind = any(kinds);
    const T s = nonZero(randomElement<T>(random_));
    if (kind.isNew) models_[to] = Model(models_[to].values());
    kind.apply(vectors_[to], s);
    for (std::size_t i = 0; i < models_[to].size(); ++i)
      models_[to][i] = kind.model(models_[to][i], s);
  }

  // Through a list that is itself a view with a stride.
  void pick(std::size_t to, std::size_t from) {
    std::vector<int> indices;
    const int last = static_cast<int>(models_[from].size()) - 1;
    for (int i = last < 0 ? 0 : numberIn(random_, 0, kLongest); i > 0; --i) {
      indices.push_back(numberIn(random_, 0, last));
    }
    IntVec list(static_cast<unsigned>(indices.size()), 0);
    auto first = vectors_[from].vecPick(reverse(list)), pick(first);
    list = vectorOf<IntVec>({indices.rbegin(), indices.rend()});  // which the picks share
    const Model picked = models_[from].picked(indices), other = models_[to];
    const auto copy = [&](const Model& target, const Model& source) {
      const std::size_t n = paired(picked.size(), other.size(), pick.className);
      for (std::size_t i = 0; i < n; ++i) target[i] = source[i];
    };
    switch (random_() % 4) {
      case 0:
        return replace(to, Vec(pick), Model(picked.values()));
      case 1:
        pick = vectors_[to];
        return copy(picked, other);
      case 2:
        vectors_[to] = pick;
        return copy(other, picked);
      default:
        pick = T{9};
        for (std::size_t i = 0; i < picked.size(); ++i) picked[i] = T{9};
    }
  }

  Random random_;
  RecordedErrors errors_;
  std::string expectedErrors_;
  std::vector<Model> models_;
  Vec vectors_[kViews];
};

template <class Vec>
class VectorViews : public testing::Test {};
TYPED_TEST_SUITE(VectorViews, AllVectors);

TYPED_TEST(VectorViews, AgreeWithPlainArraysAndIndexLists) {
  for (unsigned seed = 1; seed <= 80; ++seed) {
    ModelRun<TypeParam> run(seed);
    for (int step = 0; step < 200; ++step) {
      run.step();
      run.expectAgreement();
      if (this->HasFailure()) FAIL() << "seed " << seed << ", step " << step;
    }
  }
}

TYPED_TEST(VectorViews, PointIntoSharedStorage) {
  const TypeParam v(6, 1, 1);
  TypeParam part = v.slice(4, 3, -2), nested = part.slice(2, 2, -1), sole(3, 1);
  EXPECT_TRUE(part.data() == v.data() + 4 && part.stride() == -2);
  EXPECT_EQ(&part.sub(1), v.data() + 5);  // storage, not the view
  EXPECT_TRUE(nested.data() == v.data() && nested.stride() == 2);
  const auto* before = sole.data();
  sole.deepenShallowCopy();
  EXPECT_EQ(sole.data(), before);  // its own already
  const TypeParam other(sole);
  sole.deepenShallowCopy();
  EXPECT_NE(sole.data(), before);
  EXPECT_EQ(reverse(TypeParam()).length(), 0u);
  EXPECT_EQ(part.slice(1, 1, INT_MAX)(0), 3);  // a stride that no step is made by
}

TYPED_TEST(VectorViews, ChecksReportWithTheClassNameAndOrigin) {
  const TypeParam v(5, 0);
  RecordedErrors errors;
  for (const int good : {0, 4}) v.boundsCheck(good);
  v.lengthCheck(5);
  v.strideCheck();
  v.sliceCheck(4, 5, -1);
  v.sliceCheck(-7, 0, 9);
  v.sliceCheck(2, 4000000000u, 0);
  ASSERT_TRUE(errors.all().empty());
  v.boundsCheck(-1);
  v.boundsCheck(5);
  v.lengthCheck(3);
  v.sliceCheck(4, 6, -1);
  v.sliceCheck(5, 1, 1);
  v.sliceCheck(1, 4000000000u, 2147483647);  // does not wrap back into the vector
  v.slice(0, 2, 2).strideCheck();
  v.emptyErr("f");
  for (const RecordedError& error : errors.all()) {
    EXPECT_EQ(error.severity, 1u);
    EXPECT_EQ(error.origin, TypeParam::origin);
  }
  EXPECT_EQ(errors.takeTexts(),
            messages(TypeParam::className,
                     {{"INDEX", "Index (-1) out of range [0->4]"},
                      {"INDEX", "Index (5) out of range [0->4]"},
                      {"VNMATCH", lengthsDiffer(5, 3)},
                      {"SLICE", "slice (4, 6, -1) cannot be made from vector (5)"},
                      {"SLICE", "slice (5, 1, 1) cannot be made from vector (5)"},
                      {"SLICE", "slice (1, 4000000000, 2147483647) cannot be made from vector (5)"},
                      {"STRIDE", "Stride must be 1"},
                      {"ZEROVEC", "f: vector is empty"}}));
}

template <class Pick>
struct CheckedPick : Pick {
  explicit CheckedPick(const Pick& pick) : Pick(pick) {}
  void check(unsigned n) const {
    this->assertElements();
    this->lengthCheck(n);
  }
};

TYPED_TEST(VectorViews, ChecksOfPicksForDerivedClassesReportEveryBadIndex) {
  TypeParam v(3, 1), none;
  const int indices[] = {0, -1, 2, 3};
  CheckedPick checked(v.vecPick(IntVec(indices, 4))), ofNone(none.vecPick(IntVec(1, 0)));
  RecordedErrors errors;
  checked.check(4);
  ofNone.check(2);
  EXPECT_EQ(errors.all().front().origin, checked.origin);
  EXPECT_EQ(errors.takeTexts(),
            messages(checked.className, {{"INDEX", "Index (-1) out of range [0->2]"},
                                         {"INDEX", "Index (3) out of range [0->2]"},
                                         {"INDEX", "Index (0) out of range [0->4294967295]"},
                                         {"VNMATCH", lengthsDiffer(1, 2)}}));
}

TEST(VectorNames, CarryTheirOrigins) {
  const int origins[] = {DoubleVec::origin,     IntVec::origin,     SCharVec::origin,
                         DoubleVecPick::origin, IntVecPick::origin, SCharVecPick::origin};
  const int kept[] = {0x900E, 0x9018, 0x9024, 0x900D, 0x9017, 0x9023};
  EXPECT_TRUE(std::equal(kept, kept + 6, origins));
}

}  // namespace
