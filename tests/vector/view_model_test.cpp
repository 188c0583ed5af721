// SPDX-License-Identifier: MIT
// The three vectors against a naive model: a view is a shared array and a list of places in it.
#include <algorithm>
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
  std::shared_ptr<std::vector<T>> elements;
  std::vector<int> places;

  static ModelView owning(std::vector<T> values) {
    ModelView view{std::make_shared<std::vector<T>>(std::move(values)), {}};
    for (std::size_t i = 0; i < view.elements->size(); ++i) {
      view.places.push_back(static_cast<int>(i));
    }
    return view;
  }
  std::size_t size() const { return places.size(); }
  T& operator[](std::size_t i) const { return (*elements)[static_cast<std::size_t>(places[i])]; }
  std::vector<T> values() const {
    std::vector<T> all;
    for (std::size_t i = 0; i < size(); ++i) all.push_back((*this)[i]);
    return all;
  }
  ModelView picked(const std::vector<int>& indices) const {
    ModelView view{elements, {}};
    for (const int i : indices) view.places.push_back(places[static_cast<std::size_t>(i)]);
    return view;
  }
};

// A few views, some on the same elements, beside their models.
template <class Vec>
class ModelRun {
 public:
  using T = typename Vec::value_type;
  using Model = ModelView<T>;

  explicit ModelRun(unsigned seed) : random_(seed) {
    for (std::size_t i = 0; i < kViews; ++i) {
      const std::vector<T> values = randomValues(12);
      models_.push_back(Model::owning(values));
      vectors_.push_back(std::make_unique<Vec>(vectorOf<Vec>(values)));
    }
  }

  void step() {
    const auto to = random_() % kViews, from = random_() % kViews;
    switch (random_() % 8) {
      case 0:
        return share(to, from);
      case 1:
        return changeStorage(to);
      case 2:
        return assign(to, from);
      case 3:
        return updateByVector(to, from);
      case 4:
        return updateByScalar(to);
      case 5:
        return renew(to, from);
      case 6:
        return pick(to, from);
      default:
        return slice(to, from);
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

  std::vector<T> randomValues(int n) {
    std::vector<T> values;
    for (int i = 0; i < n; ++i) values.push_back(randomElement<T>(random_));
    return values;
  }

  void replace(std::size_t to, const Vec& v, Model model) {
    vectors_[to] = std::make_unique<Vec>(v);
    models_[to] = std::move(model);
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

  // Any slice that the vector can hold, more often than not the whole length.
  void slice(std::size_t to, std::size_t from) {
    const int length = static_cast<int>(models_[from].size());
    const int first = numberIn(random_, -1, length), stride = numberIn(random_, -3, 3);
    const int n = numberIn(random_, 0, 14);
    std::vector<int> indices;
    bool inside = true;
    for (int i = 0; i < n; ++i) {
      indices.push_back(first + i * stride);
      inside = inside && indices.back() >= 0 && indices.back() < length;
    }
    vectors_[from]->sliceCheck(first, static_cast<unsigned>(n), stride);
    if (inside) {
      const Model model = models_[from].picked(indices);
      replace(to, vectors_[from]->slice(first, static_cast<unsigned>(n), stride), model);
    } else {
      expectedErrors_ += "[SLICE: " + std::string(Vec::className) + "]: slice (" +
                         std::to_string(first) + ", " + std::to_string(n) + ", " +
                         std::to_string(stride) + ") cannot be made from vector (" +
                         std::to_string(length) + ")\n";
    }
  }

  void changeStorage(std::size_t to) {
    Vec& v = *vectors_[to];
    std::vector<T> values = models_[to].values();
    const auto n = static_cast<std::size_t>(numberIn(random_, 0, 20));
    if (random_() % 3 == 0) {
      v.deepenShallowCopy();
      EXPECT_EQ(v.stride(), 1);
    } else if (n == values.size()) {
      return v.resize(static_cast<unsigned>(n));  // changes nothing, sharing included
    } else if (random_() % 2 == 0) {
      v.resize(static_cast<unsigned>(n));
      values.resize(n);
    } else {
      v.reshape(static_cast<unsigned>(n));
      values = randomValues(static_cast<int>(n));
      for (std::size_t i = 0; i < n; ++i) v[static_cast<int>(i)] = values[i];
    }
    models_[to] = Model::owning(values);
  }

  void assign(std::size_t to, std::size_t from) {
    if (random_() % 4 == 0) {
      const T x = randomElement<T>(random_);
      *vectors_[to] = x;
      for (std::size_t i = 0; i < models_[to].size(); ++i) models_[to][i] = x;
      return;
    }
    const std::vector<T> values = models_[from].values();
    const std::size_t n = paired(models_[to].size(), values.size());
    *vectors_[to] = *vectors_[from];
    for (std::size_t i = 0; i < n; ++i) models_[to][i] = values[i];
  }

  // In index order and without a temporary, whatever the two have in common.
  void updateByVector(std::size_t to, std::size_t from) {
    const std::size_t n = paired(models_[to].size(), models_[from].size());
    const auto update = [&](T (*f)(T, T)) {
      for (std::size_t i = 0; i < n; ++i) models_[to][i] = f(models_[to][i], models_[from][i]);
    };
    switch (random_() % 3) {
      case 0:
        *vectors_[to] += *vectors_[from];
        return update(Oracle<T>::add);
      case 1:
        *vectors_[to] -= *vectors_[from];
        return update(Oracle<T>::subtract);
      default:
        *vectors_[to] *= *vectors_[from];
        return update(Oracle<T>::multiply);
    }
  }

  void updateByScalar(std::size_t to) {
    Vec& v = *vectors_[to];
    const T s = nonZero(randomElement<T>(random_));
    const auto update = [&](T (*f)(T, T), T x) {
      for (std::size_t i = 0; i < models_[to].size(); ++i) models_[to][i] = f(models_[to][i], x);
    };
    switch (random_() % 6) {
      case 0:
        v += s;
        return update(Oracle<T>::add, s);
      case 1:
        v -= s;
        return update(Oracle<T>::subtract, s);
      case 2:
        v *= s;
        return update(Oracle<T>::multiply, s);
      case 3:
        v /= s;
        return update(Oracle<T>::scaleDown, s);
      case 4:
        ++v;
        return update(Oracle<T>::add, T{1});
      default:
        --v;
        return update(Oracle<T>::subtract, T{1});
    }
  }

  // A new vector made from others: as long as the right operand, with 0 where the left one ends.
  void renew(std::size_t to, std::size_t from) {
    const Vec &a = *vectors_[to], &b = *vectors_[from];
    const std::vector<T> x = models_[to].values(), y = models_[from].values();
    if (random_() % 2 == 0) return replace(to, b.copy(), Model::owning(y));
    std::vector<T> sums(y.size());
    const std::size_t n = paired(x.size(), y.size());
    for (std::size_t i = 0; i < n; ++i) sums[i] = Oracle<T>::add(x[i], y[i]);
    replace(to, a + b, Model::owning(sums));
  }

  void pick(std::size_t to, std::size_t from) {
    const Model& source = models_[from];
    if (source.size() == 0) return;
    std::vector<int> indices;
    for (int i = numberIn(random_, 0, 14); i > 0; --i) {
      indices.push_back(numberIn(random_, 0, static_cast<int>(source.size()) - 1));
    }
    // Through a list that is itself a view with a stride.
    const IntVec list = reverse(vectorOf<IntVec>({indices.rbegin(), indices.rend()}));
    auto pick = vectors_[from]->vecPick(list);
    const Model picked = source.picked(indices);
    const auto name = pick.className;
    switch (random_() % 4) {
      case 0: {
        replace(to, Vec(pick), Model::owning(picked.values()));
        return;
      }
      case 1: {
        const T x = pick.length() > 0 ? (pick = randomElement<T>(random_))(0) : T{};
        for (std::size_t i = 0; i < picked.size(); ++i) picked[i] = x;
        return;
      }
      case 2: {
        const std::size_t n = paired(picked.size(), models_[to].size(), name);
        pick = *vectors_[to];
        for (std::size_t i = 0; i < n; ++i) picked[i] = models_[to][i];
        return;
      }
      default: {
        const std::size_t n = paired(picked.size(), models_[to].size(), name);
        *vectors_[to] = pick;
        for (std::size_t i = 0; i < n; ++i) models_[to][i] = picked[i];
        return;
      }
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
  for (unsigned seed = 1; seed <= 40; ++seed) {
    ModelRun<TypeParam> run(seed);
    for (int step = 0; step < 150; ++step) {
      run.step();
      run.expectAgreement();
      if (this->HasFailure()) FAIL() << "seed " << seed << ", step " << step;
    }
  }
}

TYPED_TEST(VectorViews, ShareAndPartAsToldByTheirStorage) {
  const TypeParam v(6, 1, 1), same(v);
  TypeParam part = v.slice(4, 3, -2);
  EXPECT_EQ(part.data(), v.data() + 4);
  EXPECT_EQ(part.stride(), -2);
  EXPECT_EQ(&part.sub(1), v.data() + 5);  // storage, not the view
  TypeParam nested = part.slice(2, 2, -1);
  EXPECT_EQ(nested.stride(), 2);
  EXPECT_EQ(nested.data(), v.data());
  TypeParam still = v.slice(3, 4, 0);
  still += 1;  // four times the same element
  EXPECT_EQ(v(3), 8);

  TypeParam sole(3, 1);
  const auto* before = sole.data();
  sole.deepenShallowCopy();
  EXPECT_EQ(sole.data(), before);
  const TypeParam other(sole);
  sole.deepenShallowCopy();
  EXPECT_NE(sole.data(), before);
  EXPECT_EQ(other.data(), before);
  EXPECT_EQ(reverse(TypeParam()).length(), 0u);
}

TYPED_TEST(VectorViews, ChecksReportWithTheClassNameAndOrigin) {
  const std::string name = TypeParam::className;
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
  v.sliceCheck(1, 4000000000u, 2147483647);  // no wrapping back into the vector
  v.slice(0, 2, 2).strideCheck();
  v.emptyErr("f");
  const unsigned codes[] = {0x3005, 0x3005, 0x300F, 0x300C, 0x300C, 0x300C, 0x300D, 0x3011};
  ASSERT_EQ(errors.all().size(), std::size(codes));
  for (std::size_t i = 0; i < std::size(codes); ++i) {
    EXPECT_EQ(errors.all()[i].code, codes[i]);
    EXPECT_EQ(errors.all()[i].severity, 1u);
    EXPECT_EQ(errors.all()[i].origin, TypeParam::origin);
  }
  EXPECT_EQ(errors.takeTexts(),
            "[INDEX: " + name + "]: Index (-1) out of range [0->4]\n" +                       //
                "[INDEX: " + name + "]: Index (5) out of range [0->4]\n" +                    //
                "[VNMATCH: " + name + "]: Vector lengths do not match (5 vs 3)\n" +           //
                "[SLICE: " + name + "]: slice (4, 6, -1) cannot be made from vector (5)\n" +  //
                "[SLICE: " + name + "]: slice (5, 1, 1) cannot be made from vector (5)\n" +   //
                "[SLICE: " + name + "]: slice (1, 4000000000, 2147483647) cannot be made from " +
                "vector (5)\n" +                                //
                "[STRIDE: " + name + "]: Stride must be 1\n" +  //
                "[ZEROVEC: " + name + "]: f: vector is empty\n");
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
