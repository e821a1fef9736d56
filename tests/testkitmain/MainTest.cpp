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
using testing::StartsWith;

std::string const edge = "ip access-list web\n 10 permit tcp any any eq 80\n"
                         "class-map match-any web\n match access-group web\n"
                         "policy-map edge\n class web\n  set action1 7\n"
                         "interface Ethernet1\n service-policy input edge\n";

// Deletes a policy that does not exist.
void breakTheOrder(Lab& lab) {
  auto const data = lab.machine()->policyMapSm({"edge", "input"})->policyCommonData();
  lab.helper()->deletePolicy(data, ClassMapMatchOption::ipv6);
}

// The failure of the test that an action reports before it throws; "none" for any other end.
template <class Action>
std::string failureOf(Action const& action) {
  testing::TestPartResultArray results;
  try {
    testing::ScopedFakeTestPartResultReporter const reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    action();
  } catch (AssertionFailed const&) {
    return results.size() == 1 ? results.GetTestPartResult(0).message() : "none";
  }
  return "none";
}

std::string failureOfABrokenOrder(Lab& lab) {
  return failureOf([&] { breakTheOrder(lab); });
}

TEST(Main, AFailedAssertionFailsTheTestAndIsAnException) {
  Lab lab;
  lab.load(edge);
  EXPECT_THAT(failureOfABrokenOrder(lab),
              HasSubstr("PolicyMapTestSm: assertion \"data\" failed at"));
  std::string message;
  auto const fail = [&] {
    try {
      breakTheOrder(lab);
    } catch (AssertionFailed const& error) {
      message = error.what();
    }
  };
  EXPECT_NONFATAL_FAILURE(fail(), "assertion");
  EXPECT_THAT(message, StartsWith("PolicyMapTestSm: assertion \"data\" failed at"));
  EXPECT_THAT(message, Not(HasSubstr("journal"))) << "the failure of the test has it";
}

TEST(Main, ItsMessageNamesTheCallAndTheEndOfTheJournal) {
  Lab lab;
  lab.load(edge);
  EXPECT_THAT(failureOfABrokenOrder(lab),
              AllOf(HasSubstr("in the call deletePolicy edge/input ipv6"),
                    HasSubstr(", after load policy text\n"), HasSubstr("the journal ends with\n"),
                    HasSubstr("\n6 t=0 commitPolicy edge/input ipv4\n")));
}

TEST(Main, TheJournalIsCutToTenEntries) {
  Lab lab;
  lab.load(edge);
  for (int i = 0; i < 20; ++i) {
    lab.advance(std::chrono::seconds(1));
  }
  std::string const message = failureOfABrokenOrder(lab);
  std::string const tail = message.substr(message.find("the journal ends with"));
  EXPECT_EQ(std::count(tail.begin(), tail.end(), '\n'), 10);
  EXPECT_THAT(tail, HasSubstr("27 t=20 deletePolicy"));
}

TEST(Main, InsideAnOperationTheCoreGoesOn) {
  Lab lab;
  lab.aroundIs([](HelperCall& call, std::function<void()> const& proceed) {
    proceed();
    KOR_ASSERT_AS("Test", "not a commit", call.operation != "commitPolicy");
  });
  EXPECT_NONFATAL_FAILURE(lab.load(edge), "in the call commitPolicy edge/input ipv4");
  EXPECT_EQ(lab.failure("edge").operation(), "commitPolicy");
  lab.aroundIs({});
  lab.advance(std::chrono::seconds(1));
  EXPECT_TRUE(lab.record("edge").created);
}

TEST(Main, WithoutALabOnlyTheAssertionIsNamed) {
  std::optional<Lab> lab(std::in_place);
  lab->load(edge);
  lab.reset();
  EXPECT_THAT(failureOf([] { KOR_ASSERT_AS("Test", "never", false); }),
              AllOf(HasSubstr("Test: assertion \"never\" failed at"), Not(HasSubstr("journal"))));
}

}  // namespace
