// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/Minimise.h"

#include "testkit/Labs.h"
#include "testkit/runs/RunFile.h"

#include <gmock/gmock.h>

#include <array>
#include <sstream>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Ten lists, classes and policy-maps in more than 40 lines; `line` is one of them.
std::string manyLines(std::string const& line) {
  std::string text;
  for (int i = 0; i != 10; ++i) {
    std::string const name = "n" + std::to_string(i);
    text += "ip access-list " + name + "\n permit tcp any any eq " + std::to_string(80 + i) + "\n" +
            (i == 6 ? " " + line + "\n" : "") + "class-map match-any " + name +
            "\n match access-group " + name + "\n";
  }
  return text + "policy-map P\n class n1\n  set action1 1\n class n6\n  set action1 2\n"
                "interface Ethernet1\n service-policy input P\n";
}

// A fault that is not met is a finding, whatever else is loaded.
Script withUnmetFault() {
  Script script{.options = {.updateAction = true}};
  script.steps = {Step::load("edge.cfg", manyLines("permit udp any any")),
                  Step::faults("addRule nth=1 once; addIntfToPolicy nth=900; createPolicy nth=1"),
                  Step::advance(3), Step::check()};
  return script;
}

TEST(Minimise, LeavesOutStepsFaultsLinesAndOptions) {
  Minimised const minimised = minimise(withUnmetFault());
  EXPECT_THAT(minimised.script.steps,
              ElementsAre(testing::AnyOf(Step::faults("addRule nth=1 once"),
                                         Step::faults("addIntfToPolicy nth=900"),
                                         Step::faults("createPolicy nth=1"))));
  EXPECT_EQ(linesOf(minimised.script), 0U);
  EXPECT_FALSE(minimised.script.options.updateAction);
  ASSERT_THAT(minimised.found, testing::Not(IsEmpty()));
  EXPECT_EQ(minimised.found.front().kind, Irregularity::Kind::finding);
}

TEST(Minimise, KeepsTheTextOfAnException) {
  Script script;
  script.steps = {Step::load("edge.cfg", manyLines("permit udp any any")),
                  Step::load("edit.cfg", "ip access-list n1\n permit tcp any any eq 70000\n"),
                  Step::check(), Step::load("other.cfg", "other wrong line\n")};
  ASSERT_GE(linesOf(script), 40U);
  std::vector<Irregularity> const found = PolicyMapTestKit::record(script).found;
  ASSERT_THAT(found, SizeIs(1));
  Minimised const minimised = minimise(script);
  EXPECT_EQ(minimised.found, found);
  EXPECT_THAT(minimised.script.steps, ElementsAre(script.steps[1]))
      << "with fewer lines, the error is in another line";
}

TEST(Minimise, LeavesFewLinesOfText) {
  Script script;
  script.steps = {Step::load("edge.cfg", manyLines("permit udp any any")),
                  {.kind = Step::Kind::inject, .text = "noError=x"},
                  Step::check()};
  ASSERT_GE(linesOf(script), 40U);
  Minimised const minimised = minimise(script);
  EXPECT_THAT(minimised.script.steps,
              ElementsAre(Step{.kind = Step::Kind::inject, .text = "noError=x"}));
  EXPECT_EQ(minimised.found.front().kind, Irregularity::Kind::exception);
}

// The third text fails because of what the first two have in common.
TEST(Minimise, JoinsTexts) {
  std::string const list = "ip access-list P\n";
  Script script;
  script.steps = {Step::load("a.cfg", list + " 4294967280 permit ip any any\n"),
                  Step::load("b.cfg", list + " permit udp any any\n"),
                  Step::load("c.cfg", list + " permit tcp any any\n")};
  Minimised const minimised = minimise(script);
  EXPECT_THAT(minimised.script.steps,
              ElementsAre(Step::load("a.cfg", list + " 4294967280 permit ip any any\n"
                                                     " permit udp any any\n"),
                          script.steps[2]))
      << "the error names the third text, which is not joined";
}

// A commit that is never done needs a policy, but no list.
TEST(Minimise, LetsClassesMatchRulesOfTheirOwn) {
  for (auto const& [list, match, rule] :
       {std::array{"ip access-list a\n 5 permit tcp any any eq 80\n",
                   " match access-group name a\n", " match ip tcp any any eq 80\n"},
        std::array{"ipv6 access-list a\n permit udp any any\n", " match ipv6 access-group a\n",
                   " match ipv6 udp any any\n"},
        std::array{"mac access-list a\n permit any any arp\n", " match mac access-group a\n",
                   " match mac any any arp\n"}}) {
    std::string const others = "policy-map P\n class c\ninterface Ethernet1\n"
                               " service-policy input P\n";
    std::string const classMap = "class-map match-any c\n";
    Script script;
    script.options.async = true;
    script.options.asyncDelay = 0;
    script.steps = {Step::faults("commitPolicy once delay=1000"),
                    Step::load("edge.cfg", list + classMap + match + others), Step::check()};
    EXPECT_EQ(minimise(script).script.steps[1].text, classMap + rule + others);
  }
}

TEST(Minimise, IsWhatTheScriptComesTo) {
  Minimised const minimised = minimise(withUnmetFault());
  EXPECT_EQ(minimised.found, PolicyMapTestKit::record(minimised.script).found);
}

TEST(Minimise, IsTheSameEachTime) {
  std::size_t calls = 0;
  Minimised const first = minimise(withUnmetFault(), [&] { ++calls; });
  Minimised const second = minimise(withUnmetFault());
  EXPECT_EQ(first.script.steps, second.script.steps);
  EXPECT_EQ(first.tries, second.tries);
  EXPECT_EQ(calls, first.tries);
  EXPECT_GT(calls, 0U);
}

TEST(Minimise, NeedsSomethingIrregular) {
  Script script;
  script.steps = {Step::load("edge.cfg", simplePolicy), Step::check()};
  EXPECT_THAT([&] { (void)minimise(script); },
              testing::ThrowsMessage<std::invalid_argument>("nothing of the script is irregular"));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
