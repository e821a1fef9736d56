// SPDX-License-Identifier: Apache-2.0

// The edits of a programmed policy that are programmed: those after which a key has another rule,
// or the keys are in another order. No other edit causes calls of the helper.

#include "support/NormalForm.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

#include <cctype>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatch;
using TestSupport::counts;
using TestSupport::normalForm;
using TestSupport::Scenario;
using TestSupport::tcp;

// A change that is made in one turn of the loop.
struct Edit {
  std::string name;
  std::function<void(Scenario&)> act;

  friend void PrintTo(Edit const& edit, std::ostream* out) { *out << edit.name; }
};

using enum PolicyMap::ClassMapMatchOption;

Acl::IpRuleConfig toPort(std::int64_t port) {
  return tcp(Acl::PortMatch::eq(port));
}
Acl::IpRuleConfig nothing() {
  return tcp(Acl::PortMatch::lt(0));
}
Kor::Ptr<Acl::IpAclConfig> list(Scenario& s) {
  return s.acls->ipAcl("acl");
}
void ownRule(Scenario& s, std::uint32_t place, std::int64_t port) {
  s.classMap("c")->matchIs(place, ClassMapMatch::rule(toPort(port)));
}

// Class c: lists "acl" and "more", then two rules of its own. It is followed by class d.
void configure(Scenario& s) {
  s.simplePolicy();
  s.rule("acl", 20, toPort(80));
  s.rule("more", 1, toPort(443));
  s.classMatches("c", "more", ipv4, 2);
  ownRule(s, 7, 22);
  ownRule(s, 9, 23);
  s.rule("other", 5);
  s.classMatches("d", "other");
  s.usesClass("pm", "d", 20);
}

std::vector<Edit> editsWithoutEffect() {
  return {
      {"rules taken out and put back the other way round",
       [](Scenario& s) {
         list(s)->ruleDelAll();
         s.rule("acl", 20, toPort(80));
         s.rule("acl", 10);
       }},
      {"list removed and built anew",
       [](Scenario& s) {
         s.acls->ipAclDel("acl");
         s.rule("acl", 20, toPort(80));
         s.rule("acl", 10);
       }},
      {"rule written over by an equal one", [](Scenario& s) { s.rule("acl", 20, toPort(80)); }},
      {"rule changed and changed back",
       [](Scenario& s) {
         s.rule("acl", 20, toPort(81));
         s.rule("acl", 20, toPort(80));
       }},
      {"rule moved to another number and back",
       [](Scenario& s) {
         list(s)->ruleDel(20);
         s.rule("acl", 15, toPort(80));
         list(s)->ruleDel(15);
         s.rule("acl", 20, toPort(80));
       }},
      {"rule that matches nothing added", [](Scenario& s) { s.rule("acl", 15, nothing()); }},
      {"list of rules that match nothing added",
       [](Scenario& s) {
         s.rule("nothing", 1, nothing());
         s.classMatches("c", "nothing", ipv4, 8);
       }},
      {"class of rules that match nothing added",
       [](Scenario& s) {
         s.rule("nothing", 1, nothing());
         s.classMatches("e", "nothing");
         s.usesClass("pm", "e", 15);
       }},
      {"empty list added between rules",
       [](Scenario& s) {
         s.acls->ipAclIs("empty");
         s.classMatches("c", "empty", ipv4, 8);
       }},
      {"absent list added", [](Scenario& s) { s.classMatches("c", "absent", ipv4, 8); }},
      {"list matched once more", [](Scenario& s) { s.classMatches("c", "acl", ipv4, 8); }},
      {"lists moved to other places in the same order",
       [](Scenario& s) {
         s.classMap("c")->matchDel(1);
         s.classMap("c")->matchDel(2);
         s.classMatches("c", "more", ipv4, 6);
         s.classMatches("c", "acl", ipv4, 3);
       }},
      {"list matched by way of another class map",
       [](Scenario& s) {
         s.classMatches("inner", "acl");
         s.classMap("c")->matchIs(1, ClassMapMatch::classMap("inner"));
       }},
      {"only match of a class made to match all",
       [](Scenario& s) { s.classMap("d")->matchTypeIs(PolicyMap::ClassMapMatchType::matchAll); }},
      {"priorities changed in the same order",
       [](Scenario& s) {
         s.usesClass("pm", "d", 40);
         s.usesClass("pm", "c", 30);
       }},
      {"priorities exchanged and exchanged back",
       [](Scenario& s) {
         s.usesClass("pm", "d", 10);
         s.usesClass("pm", "c", 20);
         s.usesClass("pm", "c", 10);
         s.usesClass("pm", "d", 20);
       }},
      {"class taken out and put back",
       [](Scenario& s) {
         s.policy("pm")->classPrioDel("c");
         s.usesClass("pm", "c", 10);
       }},
      {"class map replaced by an equal one",
       [](Scenario& s) {
         s.classes->classMapConfigDel("d");
         s.classMatches("d", "other");
       }},
      {"policy map replaced by an equal one",
       [](Scenario& s) {
         auto const next = Kor::make<PolicyMap::PolicyMapSubConfig>(Kor::Name("pm"));
         next->classPrioIs("d", 2);
         next->classPrioIs("c", 1);
         s.policies->policyMapConfig("pm")->currentSubConfigIs(next);
       }},
      {"policy detached and attached",
       [](Scenario& s) {
         s.detach("Ethernet1");
         s.attach("pm", "Ethernet1");
       }},
  };
}

std::vector<Edit> editsWithEffect() {
  return {
      {"rule moved to another number in the same order",
       [](Scenario& s) {
         list(s)->ruleDel(20);
         s.rule("acl", 30, toPort(80));
       }},
      {"rules exchanged",
       [](Scenario& s) {
         s.rule("acl", 20);
         s.rule("acl", 10, toPort(80));
       }},
      {"rule made to match nothing", [](Scenario& s) { s.rule("acl", 20, nothing()); }},
      {"rule of the class map moved to another place",
       [](Scenario& s) {
         s.classMap("c")->matchDel(9);
         ownRule(s, 8, 23);
       }},
      {"lists exchanged",
       [](Scenario& s) {
         s.classMatches("c", "acl", ipv4, 2);
         s.classMatches("c", "more", ipv4, 1);
       }},
      {"list with rules moved between rules",
       [](Scenario& s) {
         s.classMap("c")->matchDel(2);
         s.classMatches("c", "more", ipv4, 8);
       }},
      {"same rules from a list of another name",
       [](Scenario& s) {
         s.rule("copy", 5);
         s.classMatches("d", "copy");
       }},
      {"priorities exchanged",
       [](Scenario& s) {
         s.usesClass("pm", "d", 10);
         s.usesClass("pm", "c", 20);
       }},
  };
}

class EditOf : public testing::TestWithParam<Edit> {
 protected:
  // Programs the policy and edits it five seconds later.
  EditOf() {
    configure(scenario);
    scenario.start();
    scenario.advance(5);
    GetParam().act(scenario);
    scenario.settle();
  }
  // The result for a policy that was edited before the machine existed.
  [[nodiscard]] static TestSupport::NormalForm programmedAnew() {
    Scenario fresh;
    configure(fresh);
    GetParam().act(fresh);
    fresh.start();
    fresh.settle();
    return normalForm(*fresh.helper);
  }

  Scenario scenario;
};

class EditWithoutEffect : public EditOf {};
class EditWithEffect : public EditOf {};

TEST_P(EditWithoutEffect, ProgramsNothing) {
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  EXPECT_EQ(scenario.policyStatus()->timeProgrammed(ipv4), 0);
  EXPECT_EQ(describe(normalForm(*scenario.helper)), describe(programmedAnew()));
}

TEST_P(EditWithEffect, ProgramsThePolicyOnceMoreAsAnew) {
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_EQ(scenario.policyStatus()->timeProgrammed(ipv4), 5);
  EXPECT_EQ(describe(normalForm(*scenario.helper)), describe(programmedAnew()));
}

std::string nameOf(testing::TestParamInfo<Edit> const& edit) {
  std::string name;
  bool capital = true;
  for (char const letter : edit.param.name) {
    bool const blank = letter == ' ';
    if (!blank) {
      auto const byte = static_cast<unsigned char>(letter);
      name += capital ? static_cast<char>(std::toupper(byte)) : letter;
    }
    capital = blank;
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Every, EditWithoutEffect, testing::ValuesIn(editsWithoutEffect()), nameOf);
INSTANTIATE_TEST_SUITE_P(Every, EditWithEffect, testing::ValuesIn(editsWithEffect()), nameOf);

}  // namespace
}  // namespace endtoend
