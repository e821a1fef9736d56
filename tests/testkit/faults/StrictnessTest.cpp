// SPDX-License-Identifier: Apache-2.0

// Irregular calls of the helper. The core makes none, so the tests make them.

#include "testkit/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto ipv4 = ClassMapMatchOption::ipv4;

std::vector<std::string> textsOf(std::vector<Finding> const& findings) {
  std::vector<std::string> texts;
  for (Finding const& finding : findings) {
    texts.push_back(toText(finding));
  }
  return texts;
}

class StrictnessTest : public testing::Test {
 protected:
  // A policy that is programmed, and its common data.
  void begin(Strictness const& strictness = {}) {
    lab_.emplace(LabOptions{.strictness = strictness});
    lab_->aroundIs([this](HelperCall& call, auto const& proceed) {
      if (call.policy != nullptr) {
        policy_ = *call.policy;
      }
      proceed();
    });
    load(*lab_, simplePolicy);
    EXPECT_THAT(lab_->findings(), IsEmpty());
  }
  [[nodiscard]] std::vector<std::string> found() const { return textsOf(findings_.all()); }

  CollectedFindings findings_;
  std::optional<Lab> lab_;
  PolicyMap::PolicyMapSmCommonData::PtrConst policy_;
};

TEST_F(StrictnessTest, ACommitWithoutAChangeIsFound) {
  begin();
  lab_->helper()->commitPolicy(policy_, ipv4);
  EXPECT_THAT(found(), ElementsAre("idle commit: commitPolicy(P/input ipv4) without a change since "
                                   "the last one"));
  lab_->helper()->commitPolicy(policy_, ipv4);
  EXPECT_THAT(found(), testing::SizeIs(1)) << "each finding once";
}

TEST_F(StrictnessTest, ACallAfterAFailureIsFound) {
  begin();
  FaultScope const faults = lab_->plan("addIntfToPolicy text=x");
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  lab_->helper()->commitPolicy(policy_, ipv4);
  EXPECT_THAT(found(), testing::Contains("call after a failure: commitPolicy(P/input ipv4) after a "
                                         "failed addIntfToPolicy, after an injected fault"));
}

TEST_F(StrictnessTest, ACallAfterAFailedResultIsFound) {
  begin();
  lab_->helper()->asyncOperationsIs(true);
  FaultScope const faults = lab_->plan("addIntfToPolicy text=x");
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  lab_->helper()->asyncTriggerInc(1);
  lab_->helper()->removeIntfFromPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  EXPECT_THAT(found(), ElementsAre("call after a failure: removeIntfFromPolicy(P/input ipv4 "
                                   "Ethernet2) after a failed addIntfToPolicy, after an injected "
                                   "fault"));
}

TEST_F(StrictnessTest, ADeletionAfterAFailureIsRight) {
  begin();
  FaultScope const faults = lab_->plan("addIntfToPolicy,removeIntfFromPolicy text=x");
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  lab_->helper()->deletePolicy(policy_, ipv4);
  lab_->helper()->createPolicy(policy_, ipv4);
  lab_->helper()->removeIntfFromPolicy(policy_, Vorel::IntfId("Ethernet1"), ipv4);
  lab_->helper()->removeIntfFromPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  lab_->helper()->deletePolicy(policy_, ipv4);
  EXPECT_THAT(found(), IsEmpty());
}

TEST_F(StrictnessTest, ASecondCreationWithoutAChangeIsFound) {
  begin();
  lab_->helper()->recreatePolicy(policy_, ipv4);
  EXPECT_THAT(found(), ElementsAre("repeated creation: recreatePolicy(P/input ipv4) although "
                                   "nothing has changed"));
}

TEST_F(StrictnessTest, ACreationAfterAChangeOrAFailureIsRight) {
  begin();
  lab_->settle();
  lab_->helper()->recreatePolicy(policy_, ipv4);
  FaultScope const faults = lab_->plan("commitPolicy text=x");
  lab_->helper()->commitPolicy(policy_, ipv4);
  lab_->helper()->deletePolicy(policy_, ipv4);
  lab_->helper()->createPolicy(policy_, ipv4);
  EXPECT_THAT(found(), IsEmpty());
}

TEST_F(StrictnessTest, WhatIsLeftOfAnEmptyConfigurationIsFound) {
  begin();
  lab_->aroundIs([](HelperCall& call, auto const& proceed) {
    if (call.operation != "deletePolicy") {
      proceed();
    }
  });
  lab_->load("interface Ethernet1\n no service-policy input P\n");
  EXPECT_THAT(found(), ElementsAre("leftover: P/input ipv4 is still created"));
}

TEST_F(StrictnessTest, ADeletionThatIsTriedAgainLeavesNothing) {
  begin();
  FaultScope const faults = lab_->plan("deletePolicy first=3 before");
  lab_->load("interface Ethernet1\n no service-policy input P\n");
  lab_->advance(std::chrono::minutes(1));
  EXPECT_THAT(found(), IsEmpty());
  EXPECT_FALSE(lab_->record("P").created);
}

TEST_F(StrictnessTest, AChangeThatIsNotCommittedIsFound) {
  begin();
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  EXPECT_THAT(found(), IsEmpty()) << "the commit may follow";
  lab_->settle();
  EXPECT_THAT(found(),
              ElementsAre("missing commit: P/input ipv4: addIntfToPolicy is not committed"));
}

TEST_F(StrictnessTest, AChangeThatIsCommittedOrDeletedIsRight) {
  begin();
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  lab_->helper()->commitPolicy(policy_, ipv4);
  lab_->settle();
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet3"), ipv4);
  lab_->helper()->deletePolicy(policy_, ipv4);
  lab_->settle();
  EXPECT_THAT(found(), IsEmpty());
}

TEST_F(StrictnessTest, WhatIsTriedAgainIsCommittedLater) {
  begin();
  lab_->helper()->asyncOperationsIs(true);
  FaultScope const faults = lab_->plan("commitPolicy first=3 before");
  lab_->load("interface Ethernet2\n service-policy input P\n");
  for (int i = 0; i != 20; ++i) {
    lab_->trigger();
    lab_->advance(std::chrono::seconds(1));
  }
  EXPECT_THAT(found(), IsEmpty());
  EXPECT_THAT(lab_->record("P").interfaces, testing::SizeIs(2));
}

TEST_F(StrictnessTest, EachKindCanBeSwitchedOff) {
  begin(Strictness::none());
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  lab_->settle();
  lab_->helper()->commitPolicy(policy_, ipv4);
  lab_->helper()->recreatePolicy(policy_, ipv4);
  FaultScope const faults = lab_->plan("addIntfToPolicy text=x");
  lab_->helper()->addIntfToPolicy(policy_, Vorel::IntfId("Ethernet2"), ipv4);
  lab_->helper()->commitPolicy(policy_, ipv4);
  lab_->aroundIs([](HelperCall& /*call*/, auto const& /*proceed*/) {});
  lab_->load("interface Ethernet1\n no service-policy input P\n");
  EXPECT_THAT(found(), IsEmpty());
}

TEST(FindingHandler, FailsTheRunningTest) {
  EXPECT_NONFATAL_FAILURE(
      {
        Lab lab;
        (void)lab.plan("addRule");
      },
      "unmet fault: addRule: it selected 0 calls; called were nothing");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
