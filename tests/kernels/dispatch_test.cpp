// SPDX-License-Identifier: MIT
// Which kernel set is in use. The program runs once as it is and once for the set `baseline`, by
// the environment.
#include "kernels/dispatch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kernels/kernels.h"

namespace knotwork::detail {
namespace {

TEST(Dispatch, ObeysTheEnvironment) {
  const char* asked = std::getenv("KNOTWORK_KERNELS");
  const std::string wanted = asked == nullptr ? "best" : asked;
  EXPECT_STREQ(activeKernels->name,
               wanted == "best" ? kernelSetsHere().front()->name : wanted.c_str());
}

TEST(Dispatch, FindsEverySetByItsNameAndTheFastestAsBest) {
  const auto sets = kernelSetsHere();
  EXPECT_STREQ(sets.back()->name, "baseline");
  for (const KernelSet* set : sets) {
    const KernelChoice choice = chooseKernels(set->name);
    EXPECT_EQ(choice.set, set);
    EXPECT_EQ(choice.complaint, "");
  }
  for (const char* best : {static_cast<const char*>(nullptr), "", "best"}) {
    EXPECT_EQ(chooseKernels(best).set, sets.front());
    EXPECT_EQ(chooseKernels(best).complaint, "");
  }
}

TEST(Dispatch, SaysThatAnUnknownNameIsNotObeyed) {
  for (const char* name : {"basic", "Baseline", "avx2 ", "none"}) {
    const KernelChoice choice = chooseKernels(name);
    EXPECT_EQ(choice.set, kernelSetsHere().front());
    EXPECT_NE(choice.complaint.find(std::string("\"") + name + '"'), std::string::npos);
    EXPECT_NE(choice.complaint.find(choice.set->name), std::string::npos);
  }
}

}  // namespace
}  // namespace knotwork::detail
