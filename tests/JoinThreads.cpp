// Part of every test program: threads of the support library are joined late, at the next spawn or
// when a plug-in goes; a test program that ends waits for them, so that ThreadSanitizer finds none
// left.
#include <gtest/gtest.h>

#include "support/Threads.h"

namespace {

class CJoinThreads : public ::testing::Environment {
 public:
  void TearDown() override { BThreadWaitForAll(); }
};

[[maybe_unused]] const auto* const joinThreads =
    ::testing::AddGlobalTestEnvironment(new CJoinThreads);

}  // namespace
