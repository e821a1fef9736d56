// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/StatusPublisher.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::PolicyFailure;
using PolicyMap::PolicyMapStatus;
using PolicyMap::PresentPolicy;
using testing::ElementsAre;
using testing::IsEmpty;

using enum PolicyMap::ClassMapMatchOption;

PolicyFailure failureOf(char const* error, char const* className = "") {
  return {error, "addRule", Kor::Name(className), {}};
}

class Publishing : public testing::Test {
 protected:
  PresentPolicy const absent{};
  PresentPolicy const own{{true, true}, {intf("Ethernet1"), intf("Ethernet2")}};
  PresentPolicy const ofAnother{{true, false}, {intf("Ethernet3")}};

  PolicyMap::ProgrammedState state;
  PolicyMap::StatusPublisher publisher{state};
  Kor::Ptr<PolicyMapStatus> status =
      Kor::make<PolicyMapStatus>(PolicyMap::PolicyMapSmKey("pm", "input"));
};

TEST_F(Publishing, WhatIsProgrammedSinceWhenAndWhere) {
  publisher.publish(*status, ipv4, own, 5);
  EXPECT_TRUE(status->programmed(ipv4));
  EXPECT_FALSE(status->programmed(ipv6));
  EXPECT_EQ(status->timeProgrammed(ipv4), 5);
  EXPECT_THAT(status->intfs(ipv4), ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
  state[ipv4].intfsUnpublished = true;
  publisher.publish(*status, ipv4, absent, std::nullopt);
  EXPECT_FALSE(status->programmed(ipv4));
  EXPECT_FALSE(status->korTimeProgrammed(ipv4));
  EXPECT_THAT(status->intfs(ipv4), IsEmpty());
}

TEST_F(Publishing, InterfacesThatLeftGoAndOthersStay) {
  publisher.publish(*status, ipv4, own, 5);
  state[ipv4].intfsUnpublished = true;
  publisher.publish(*status, ipv4, {{true, true}, {intf("Ethernet2"), intf("Ethernet4")}}, 5);
  EXPECT_THAT(status->intfs(ipv4), ElementsAre(intf("Ethernet2"), intf("Ethernet4")));
}

TEST_F(Publishing, InterfacesAreWrittenWhenTheyHaveChanged) {
  publisher.publish(*status, ipv4, own, 5);
  publisher.publish(*status, ipv4, {{true, true}, {}}, 5);
  EXPECT_THAT(status->intfs(ipv4), ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
}

TEST_F(Publishing, TimeAndInterfacesOfAPolicyOfAnotherMachineStay) {
  publisher.publish(*status, ipv4, own, 5);
  state[ipv4].intfsUnpublished = true;
  publisher.publish(*status, ipv4, ofAnother, std::nullopt);
  EXPECT_TRUE(status->programmed(ipv4));
  EXPECT_EQ(status->timeProgrammed(ipv4), 5);
  EXPECT_THAT(status->intfs(ipv4), ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
}

TEST_F(Publishing, TheErrorIsThatOfTheFirstOptionThatFailed) {
  state[ipv6].failure = failureOf("second");
  publisher.publish(*status, ipv6, absent, std::nullopt);
  EXPECT_EQ(status->error(), "second");
  state[ipv4].failure = failureOf("first");
  publisher.publish(*status, ipv4, absent, std::nullopt);
  EXPECT_EQ(status->error(), "first");
  EXPECT_EQ(status->failure(ipv4), failureOf("first"));
  EXPECT_EQ(status->failure(ipv6), failureOf("second"));
  state[ipv4].failure = {};
  state[ipv6].failure = {};
  publisher.publish(*status, ipv4, absent, std::nullopt);
  publisher.publish(*status, ipv6, absent, std::nullopt);
  EXPECT_EQ(status->error(), "");
  EXPECT_EQ(status->failures(), 0U);
}

TEST_F(Publishing, AtFirstAllClassesAreDue) {
  EXPECT_TRUE(publisher.allDue());
  EXPECT_THAT(publisher.takeDueClasses(), IsEmpty());
  EXPECT_FALSE(publisher.allDue());
  publisher.allClassesDue();
  EXPECT_TRUE(publisher.allDue());
}

TEST_F(Publishing, TheClassThatFailedIsDueAndAgainWhenItNoLongerFails) {
  EXPECT_THAT(publisher.takeDueClasses(), IsEmpty());
  state[ipv4].failure = failureOf("full", "c");
  publisher.publish(*status, ipv4, absent, std::nullopt);
  EXPECT_THAT(publisher.takeDueClasses(), ElementsAre(Kor::Name("c")));
  state[ipv4].failure = failureOf("full", "d");
  publisher.publish(*status, ipv4, absent, std::nullopt);
  EXPECT_THAT(publisher.takeDueClasses(), ElementsAre(Kor::Name("c"), Kor::Name("d")));
  state[ipv4].failure = {};
  publisher.publish(*status, ipv4, absent, std::nullopt);
  EXPECT_THAT(publisher.takeDueClasses(), ElementsAre(Kor::Name("d")));
}

TEST_F(Publishing, OfAClassWhetherAnyOptionHasItAndItsFirstFailure) {
  auto const global = Kor::make<PolicyMap::PolicyMapGlobalData>(nullptr, nullptr, nullptr);
  auto const raw = Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name("c"));
  auto const machine = Kor::make<ClassSm>(global, nullptr, nullptr, raw, nullptr);
  machine->hasNotificationActiveIs(true);
  machine->classNameIs(Kor::Name("c"));
  state[ipv6].classes.add(
      {Kor::Name("c"), machine->classCommonData(),
       Kor::make<PolicyMap::ClassRules>(PolicyMap::ClassRules::emptySources(ipv6))});
  publisher.publish(*machine);
  EXPECT_TRUE(machine->classMapStatus()->programmed());
  EXPECT_EQ(machine->classMapStatus()->error(), "");
  state[ipv6].classes.clear();
  state[ipv4].failure = failureOf("first", "c");
  state[ipv6].failure = failureOf("second", "c");
  publisher.publish(*machine);
  EXPECT_FALSE(machine->classMapStatus()->programmed());
  EXPECT_EQ(machine->classMapStatus()->error(), "first");
  state[ipv4].failure = failureOf("other", "d");
  publisher.publish(*machine);
  EXPECT_EQ(machine->classMapStatus()->error(), "second");
}

}  // namespace
}  // namespace policymap
