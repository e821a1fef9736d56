// SPDX-License-Identifier: Apache-2.0
#include "model/Operation.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Model {

TEST(Operation, TextIsReadBack) {
  std::mt19937_64 random(1);
  Operations const operations = randomOperations(random, 1000);
  EXPECT_EQ(operationsOf(textOf(operations)), operations);
}

TEST(Operation, EqualSeedsGiveEqualSteps) {
  std::mt19937_64 one(5);
  std::mt19937_64 other(5);
  EXPECT_EQ(randomOperations(one, 100), randomOperations(other, 100));
}

TEST(Operation, WhatIsNoStepIsRefused) {
  EXPECT_THROW((void)operationsOf("jump 1"), std::invalid_argument);
  EXPECT_THROW((void)operationsOf("attach 1 2"), std::invalid_argument);
  EXPECT_THROW((void)operationsOf("turn 1"), std::invalid_argument);
}

}  // namespace Model
