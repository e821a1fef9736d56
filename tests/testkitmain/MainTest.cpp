// SPDX-License-Identifier: Apache-2.0

// Failed assertions in a program with the test kit's main function.

#include "testkit/Assertions.h"
#include "testkit/Lab.h"

#include <Kor/Assert.h>

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <optional>
#include <string>

namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMapTestKit::AssertionFailed;
using PolicyMapTestKit::HelperCall;
using PolicyMapTestKit::Lab;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::string const edge = "ip access-list web\n 10 permit tcp any any eq 80\n"
                         "class-map match-any web\n match access-group web\n"
                         "policy-map edge\n class web\n  set action1 7\n"
                         "interface Ethernet1\n service-policy input edge\n";

// Deletes a policy that does not exist.
void breakTheOrder(Lab& lab) {
  auto const data = lab.machine()->policyMapSm({"edge", "input"})->policyCommonData();
  lab.helper()->deletePolicy(data, ClassMapMatchOption::ipv6);
}

std::string messageOf(Lab& lab) {
  try {
    breakTheOrder(lab);
  } catch (AssertionFailed const& error) {
    return error.what();
  }
  return "none";
}

TEST(Main, AFailedAssertionFailsTheTestAndIsAnException) {
  Lab lab;
  lab.load(edge);
  std::string message;
  EXPECT_NONFATAL_FAILURE(message = messageOf(lab), "assertion \"data\" failed at");
  EXPECT_THAT(message, HasSubstr("PolicyMapTestSm: assertion \"data\" failed at"));
}

TEST(Main, ItsMessageNamesTheCallAndTheEndOfTheJournal) {
  Lab lab;
  lab.load(edge);
  std::string message;
  EXPECT_NONFATAL_FAILURE(message = messageOf(lab), "in the call deletePolicy edge/input ipv6");
  EXPECT_THAT(message,
              AllOf(HasSubstr(", after load policy text\n"), HasSubstr("the journal ends with\n"),
                    HasSubstr("\n6 t=0 commitPolicy edge/input ipv4\n")));
}

TEST(Main, TheJournalIsCutToTenEntries) {
  Lab lab;
  lab.load(edge);
  for (int i = 0; i < 20; ++i) {
    lab.advance(std::chrono::seconds(1));
  }
  std::string message;
  EXPECT_NONFATAL_FAILURE(message = messageOf(lab), "deletePolicy");
  std::string const tail = message.substr(message.find("the journal ends with"));
  EXPECT_EQ(std::count(tail.begin(), tail.end(), '\n'), 10);
  EXPECT_THAT(tail, HasSubstr("27 t=20 deletePolicy"));
}

TEST(Main, InsideAnOperationTheCoreGoesOn) {
  Lab lab;
  lab.helper()->aroundIs([](HelperCall& call, std::function<void()> const& proceed) {
    proceed();
    KOR_ASSERT_AS("Test", "not a commit", call.operation != "commitPolicy");
  });
  EXPECT_NONFATAL_FAILURE(lab.load(edge), "in the call commitPolicy edge/input ipv4");
  EXPECT_EQ(lab.failure("edge").operation(), "commitPolicy");
  lab.helper()->aroundIs({});
  lab.advance(std::chrono::seconds(1));
  EXPECT_TRUE(lab.record("edge").created);
}

TEST(Main, WithoutALabOnlyTheAssertionIsNamed) {
  std::optional<Lab> lab(std::in_place);
  lab->load(edge);
  lab.reset();
  std::string message;
  auto const fail = [&] {
    try {
      KOR_ASSERT_AS("Test", "never", false);
    } catch (AssertionFailed const& error) {
      message = error.what();
    }
  };
  EXPECT_NONFATAL_FAILURE(fail(), "Test: assertion \"never\" failed at");
  EXPECT_THAT(message, Not(HasSubstr("journal")));
}

}  // namespace
