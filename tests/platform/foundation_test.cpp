// SPDX-License-Identifier: MIT
// The foundation stand-in: shared text, type records and exceptions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "knotwork/platform/foundation/memory_exception.h"
#include "knotwork/platform/foundation/string.h"

TEST(String, ShortestDecimalReadsBackTheSame) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 2000; ++i) {
    const double value =
        std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 2000) - 1050);
    EXPECT_EQ(std::strtod(Tstring().setDouble(value).asChar(), nullptr), value);
  }
  EXPECT_STREQ(Tstring().setDouble(0.1).asChar(), "0.1");
  EXPECT_STREQ(Tstring("x").setDouble(37.5).asChar(), "37.5");
  EXPECT_STREQ(Tstring().setDouble(-std::numeric_limits<double>::infinity()).asChar(), "-inf");
}

TEST(String, CopiesKeepTheirTextWhenTheOriginalChanges) {
  Tstring text("Constraint solving ... ");
  const Tstring copy(text);
  EXPECT_EQ(copy.asChar(), text.asChar());
  text += Tstring().setDouble(50);
  EXPECT_STREQ((text += " completed.").asChar(), "Constraint solving ... 50 completed.");
  EXPECT_STREQ(copy.asChar(), "Constraint solving ... ");
  const Tstring& itself = text;
  text = itself;
  EXPECT_EQ(text.length(), 36U);
  EXPECT_TRUE(Tstring(nullptr) == Tstring("") && !(text == copy));
}

TEST(Metaclass, FindsAncestorsOverSeveralSteps) {
  const Tmetaclass other("Other", {}, nullptr);
  const Tmetaclass made("Made", {&other, &TmemoryExceptionTmeta},
                        []() -> void* { return new Tstring("made"); });
  EXPECT_TRUE(Tmetaclass::istype(&made, TexceptionTmeta) && Tmetaclass::istype(&made, other));
  EXPECT_FALSE(Tmetaclass::istype(&other, made) || Tmetaclass::istype(nullptr, other));
  auto* const text = static_cast<Tstring*>(Tmetaclass::construct(&made));
  EXPECT_STREQ(text->asChar(), "made");
  delete text;
  EXPECT_EQ(Tmetaclass::construct(&TexceptionTmeta), nullptr);
}

TEST(Exception, CastsAndCachesByType) {
  try {
    throw TmemoryException();
  } catch (Texception& e) {
    EXPECT_EQ(e.typeof(), &TmemoryExceptionTmeta);
    EXPECT_NE(e.cast(&TexceptionTmeta), nullptr);
    EXPECT_EQ(e.cast(nullptr), nullptr);
    Texception* const kept = e.cache();
    EXPECT_TRUE(kept != &e && kept->cache() == kept && kept->cast(&TmemoryExceptionTmeta));
  }
}
