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
      vectors_.push_back(std::make_unique<Vec>(vectorOf<Vec>(models_[i].values())));
    }
  }

  void step() {
    const auto to = random_() % kViews, from = random_() % kViews;
    switch (random_() % 8) {
      case 0:
        return share(to, from);
      case 1:
        return slice(to, from);
      case 2:
        return changeStorage(to);
      case 3:
        return assign(to, from);
      case 4:
        return updateByVector(to, from);
      case 5:
        return updateByScalar(to);
      case 6:
        return renew(to, from);
      default:
        return pick(to, from);
    }
  }

  void expectAgreement() {
    for (std::size_t i = 0; i < kViews; ++i) {
      EXPECT_TRUE(holds(*vectors_[i], models_[i].values())) << "view " << i;
    }
    EXPECT_EQ(errors_.takeTexts(), expectedErrors_);
    expectedErrors_.clear();
  }

 private:
  static constexpr std::size_t kViews = 5;
  static constexpr int kLongest = 70;  // twice the lanes of the shortest elements, and some more

  std::vector<T> randomValues(int n) {
    std::vector<T> values;
    for (int i = 0; i < n; ++i) values.push_back(randomElement<T>(random_));
    return values;
  }

  void replace(std::size_t to, const Vec& v, const Model& model) {
    vectors_[to] = std::make_unique<Vec>(v);
    models_[to] = model;
  }

  // How far an operation on views of different lengths goes once it has reported.
  std::size_t paired(std::size_t left, std::size_t right, const char* name = Vec::className) {
    if (left != right) {
      expectedErrors_ += "[VNMATCH: " + std::string(name) + "]: Vector lengths do not match (" +
                         std::to_string(left) + " vs " + std::to_string(right) + ")\n";
    }
    return std::min(left, right);
  }

  void share(std::size_t to, std::size_t from) {
    if (random_() % 2 == 0) return replace(to, *vectors_[from], models_[from]);
    vectors_[to]->reference(*vectors_[from]);
    models_[to] = models_[from];
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
    vectors_[from]->sliceCheck(first, static_cast<unsigned>(n), stride);
    const Model model = models_[from].picked(indices);
    replace(to, vectors_[from]->slice(first, static_cast<unsigned>(n), stride), model);
  }

  void changeStorage(std::size_t to) {
    Vec& v = *vectors_[to];
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
    *vectors_[to] = *vectors_[from];
    for (std::size_t i = 0; i < n; ++i) models_[to][i] = values[i];
  }

  // In index order and without a temporary, whatever the two have in common.
  void updateByVector(std::size_t to, std::size_t from) {
    const std::size_t n = paired(models_[to].size(), models_[from].size());
    const auto update = [&](const Model& by, T (*f)(T, T)) {
      for (std::size_t i = 0; i < n; ++i) models_[to][i] = f(models_[to][i], by[i]);
    };
    Vec &x = *vectors_[to], &y = *vectors_[from];
    switch (random_() % 4) {
      case 0:
        x += y;
        return update(models_[from], Rules::add);
      case 1:
        x -= y;
        return update(models_[from], Rules::subtract);
      case 2:
        x *= y;
        return update(models_[from], Rules::multiply);
      default:
        break;
    }
    std::vector<T> divisors;
    for (const T each : models_[from].values()) divisors.push_back(nonZero(each));
    x /= vectorOf<Vec>(divisors);
    update(Model(divisors), Rules::divide);
  }

  void updateByScalar(std::size_t to) {
    Vec& v = *vectors_[to];
    const T s = nonZero(randomElement<T>(random_));
    const auto update = [&](T (*f)(T, T), T x) {
      for (std::size_t i = 0; i < models_[to].size(); ++i) models_[to][i] = f(models_[to][i], x);
    };
    switch (random_() % 7) {
      case 0:
        v += s;
        return update(Rules::add, s);
      case 1:
        v -= s;
        return update(Rules::subtract, s);
      case 2:
        v *= s;
        return update(Rules::multiply, s);
      case 3:
        v /= s;
        return update(Rules::scaleDown, s);
      case 4:
        ++v;
        return update(Rules::add, T{1});
      case 5:
        --v;
        return update(Rules::subtract, T{1});
      default:
        v = s;
        return update([](T, T x) { return x; }, s);
    }
  }

  // A new vector made from others: as long as the right operand, with 0 where the left one ends.
  void renew(std::size_t to, std::size_t from) {
    const Vec &a = *vectors_[to], &b = *vectors_[from];
    const T s = nonZero(randomElement<T>(random_));
    const auto unary = [&](const Vec& v, auto f) {
      std::vector<T> r;
      for (const T each : models_[from].values()) r.push_back(f(each));
      replace(to, v, Model(r));
    };
    const auto binary = [&](Vec (*op)(const Vec&, const Vec&), T (*f)(T, T)) {
      std::vector<T> r(models_[from].size());
      const std::size_t n = paired(models_[to].size(), r.size());
      for (std::size_t i = 0; i < n; ++i) r[i] = f(models_[to][i], models_[from][i]);
      replace(to, op(a, b), Model(r));
    };
    constexpr bool real = std::is_floating_point_v<T>;
    switch (random_() % (real ? 12 : 8)) {
      case 0:
        return binary(operator+, Rules::add);
      case 1:
        return binary(operator-, Rules::subtract);
      case 2:
        return binary(operator*, Rules::multiply);
      case 3:
        return unary(b + s, [=](T x) { return Rules::add(x, s); });
      case 4:
        return unary(b * s, [=](T x) { return Rules::multiply(x, s); });
      case 5:
        return unary(-b, Rules::negate);
      case 6:
        return unary(abs(b), Rules::absolute);
      case 7:
        return unary(b.copy(), [](T x) { return x; });
      default:
        break;
    }
    if constexpr (real) {
      switch (random_() % 4) {
        case 0:
          return binary(operator/, Rules::divide);
        case 1:
          return unary(b / s, [=](T x) { return x / s; });
        case 2:
          return unary(s - b, [=](T x) { return s - x; });
        default:
          return unary(s / b, [=](T x) { return s / x; });
      }
    }
  }

  void pick(std::size_t to, std::size_t from) {
    std::vector<int> indices;
    const int last = static_cast<int>(models_[from].size()) - 1;
    for (int i = last < 0 ? 0 : numberIn(random_, 0, kLongest); i > 0; --i) {
      indices.push_back(numberIn(random_, 0, last));
    }
    // Through a list that is itself a view with a stride.
    auto pick =
        vectors_[from]->vecPick(reverse(vectorOf<IntVec>({indices.rbegin(), indices.rend()})));
    const Model picked = models_[from].picked(indices), other = models_[to];
    const auto copy = [&](const Model& target, const Model& source, std::size_t n) {
      for (std::size_t i = 0; i < n; ++i) target[i] = source[i];
    };
    const auto kind = random_() % 4;
    if (kind == 0) return replace(to, Vec(pick), Model(picked.values()));
    if (kind == 1) {
      const T x = randomElement<T>(random_);
      pick = x;
      return copy(picked, Model(std::vector<T>(indices.size(), x)), indices.size());
    }
    const std::size_t n = paired(picked.size(), other.size(), pick.className);
    if (kind == 2) {
      pick = *vectors_[to];
      copy(picked, other, n);
    } else {
      *vectors_[to] = pick;
      copy(other, picked, n);
    }
  }

  Random random_;
  RecordedErrors errors_;
  std::string expectedErrors_;
  std::vector<Model> models_;
  std::vector<std::unique_ptr<Vec>> vectors_;
};

template <class Vec>
class VectorViews : public testing::Test {};
TYPED_TEST_SUITE(VectorViews, AllVectors);

TYPED_TEST(VectorViews, AgreeWithPlainArraysAndIndexLists) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
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
  EXPECT_EQ(part.data(), v.data() + 4);
  EXPECT_EQ(part.stride(), -2);
  EXPECT_EQ(&part.sub(1), v.data() + 5);  // storage, not the view
  EXPECT_EQ(nested.data(), v.data());
  EXPECT_EQ(nested.stride(), 2);
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
  std::string expected;
  const auto expect = [&, name = std::string(TypeParam::className)](const char* tag,
                                                                    const std::string& text) {
    expected += std::string("[") + tag + ": " + name + "]: " + text + "\n";
  };
  expect("INDEX", "Index (-1) out of range [0->4]");
  expect("INDEX", "Index (5) out of range [0->4]");
  expect("VNMATCH", "Vector lengths do not match (5 vs 3)");
  for (const char* slice : {"4, 6, -1", "5, 1, 1", "1, 4000000000, 2147483647"}) {
    expect("SLICE", "slice (" + std::string(slice) + ") cannot be made from vector (5)");
  }
  expect("STRIDE", "Stride must be 1");
  expect("ZEROVEC", "f: vector is empty");
  for (const RecordedError& error : errors.all()) {
    EXPECT_EQ(error.severity, 1u);
    EXPECT_EQ(error.origin, TypeParam::origin);
  }
  EXPECT_EQ(errors.takeTexts(), expected);
}

TEST(VectorNames, CarryTheirOrigins) {
  EXPECT_EQ(DoubleVec::origin, 0x900E);
  EXPECT_EQ(IntVec::origin, 0x9018);
  EXPECT_EQ(SCharVec::origin, 0x9024);
  EXPECT_EQ(DoubleVecPick::origin, 0x900D);
  EXPECT_EQ(IntVecPick::origin, 0x9017);
  EXPECT_EQ(SCharVecPick::origin, 0x9023);
}

}  // namespace
