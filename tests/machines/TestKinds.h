// SPDX-License-Identifier: Apache-2.0
#pragma once

// The three kinds of test actions, for typed tests.

#include "machines/PolicyMapTestSm.h"

#include <gtest/gtest.h>

#include <cstdint>

#define TEST_KIND(N)                                                                        \
  struct Kind##N {                                                                          \
    using Action = PolicyMapTest::TestAction##N;                                            \
    using Machine = PolicyMapTest::TestAction##N##Sm;                                       \
    static constexpr int number = N;                                                        \
    static constexpr char const* actionName = "PolicyMapTest::TestAction" #N;               \
    static constexpr char const* machineName = "PolicyMapTest::TestAction" #N "Sm";         \
    static constexpr Kor::AttributeId valueId = 257 + (N);                                  \
    static Kor::Ptr<Action> make(Kor::Name const& name, Zub::UniqueId const& id) {          \
      return PolicyMapTest::testAction##N##Factory(name, id);                               \
    }                                                                                       \
    static Kor::Ptr<Action> holding(std::uint32_t value) {                                  \
      auto action = make("web", Zub::UniqueId("id"));                                       \
      action->valueIs(value);                                                               \
      return action;                                                                        \
    }                                                                                       \
    static Kor::Ptr<Machine> machine(Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& data, \
                                     Kor::Ptr<PolicyMap::Action const> const& action) {     \
      return Machine::TestAction##N##SmIs(nullptr, nullptr, data, action);                  \
    }                                                                                       \
    static std::uint32_t value(PolicyMapTest::TestClassCommonData const& data) {            \
      return data.action##N##Value();                                                       \
    }                                                                                       \
    static void valueIs(PolicyMapTest::TestClassCommonData& data, std::uint32_t value) {    \
      data.action##N##ValueIs(value);                                                       \
    }                                                                                       \
  };
TEST_KIND(1)
TEST_KIND(2)
TEST_KIND(3)
#undef TEST_KIND

using TestKinds = testing::Types<Kind1, Kind2, Kind3>;
