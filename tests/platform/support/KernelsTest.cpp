#include "support/Kernels.h"

#include <gtest/gtest.h>

#include "support/ErrorReport.h"

namespace {

TEST(Kernels, AreFoundByNameOrNotAtAll) {
  const SKernel* best = nullptr;
  for (const SKernel& kernel : AllKernels()) {
    theError.clear();
    const SKernel* const found = FindKernel(kernel.name);
    if (!kernel.usable()) {
      EXPECT_EQ(found, nullptr) << kernel.name;
      EXPECT_EQ(theError.getError(), UNKNOWN_KERNEL);
      continue;
    }
    EXPECT_EQ(found, &kernel);
    if (!best) best = found;
  }
  EXPECT_EQ(FindKernel(""), best);
  EXPECT_STREQ(AllKernels().back().name, "scalar");

  theError.clear();
  EXPECT_EQ(FindKernel("fastest"), nullptr);
  EXPECT_EQ(theError.getError(), UNKNOWN_KERNEL);
  EXPECT_NE(theError.getMessage().find("\"fastest\""), std::string::npos);
}

}  // namespace
