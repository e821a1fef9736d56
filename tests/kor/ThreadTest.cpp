// SPDX-License-Identifier: Apache-2.0
#include <Kor/Thread.h>

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(OwningThread, IsTheOneThatLoadedTheFramework) {
  EXPECT_TRUE(Kor::onOwningThread());
  bool elsewhere = true;
  std::thread([&] { elsewhere = Kor::onOwningThread(); }).join();
  EXPECT_FALSE(elsewhere);
}

}  // namespace
