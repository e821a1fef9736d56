// SPDX-License-Identifier: Apache-2.0
#include "testkit/LabByName.h"

#include "testkit/Labs.h"

#include <Kor/ByName.h>

#include <gmock/gmock.h>

#include <string>

namespace PolicyMapTestKit::test {
namespace {

using Kor::construct;
using Kor::GenericRef;
using testing::HasSubstr;

std::string textOf(GenericRef const& ref) {
  return testing::PrintToString(ref);
}

TEST(LabByName, FromTextToRecords) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", true, false, false);
  lab.call("load", simplePolicy);
  EXPECT_EQ(textOf(lab.call("rules", "P", "input")),
            "['P 10 permit tcp any any eq 80, action1 1']");
  EXPECT_THAT(textOf(lab.call("record", "P", "input")), HasSubstr("P/input ipv4"));
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("P/input ipv4: programmed at Ethernet1"));
  EXPECT_THAT(textOf(lab.call("journal")), HasSubstr("6 t=0 commitPolicy P/input ipv4"));
  EXPECT_EQ(lab["helper"]["updateActionSupported"], true);
  EXPECT_EQ(lab["policyMaps"]["policyMapConfig"].size(), 1U);
}

TEST(LabByName, FaultsAndTime) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, false);
  lab.call("inject", "commitError", "full");
  lab.call("load", simplePolicy);
  EXPECT_THAT(textOf(lab.call("failure", "P", "input")), HasSubstr("full"));
  lab.call("clearFaults");
  lab.call("advance", 1.0);
  EXPECT_EQ(lab["now"], 1.0);
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("programmed at Ethernet1"));
  EXPECT_THROW(lab.call("inject", "noError", "full"), Kor::RangeException);
}

TEST(LabByName, AsynchronousResults) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, true);
  lab.call("load", simplePolicy);
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("waiting for the result of addIntfToPolicy"));
  lab.call("trigger");
  lab.call("trigger");
  lab.call("settle");
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("programmed at Ethernet1"));
  EXPECT_THROW(lab.call("record", "Q", "input"), LookupError);
}

}  // namespace
}  // namespace PolicyMapTestKit::test
