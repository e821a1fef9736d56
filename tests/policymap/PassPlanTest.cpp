// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/PassPlan.h>

#include <gmock/gmock.h>

#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSmCommonData;
using PolicyMap::ClassRules;
using PolicyMap::HelperTraits;
using PolicyMap::OptionPlan;
using PolicyMap::OptionState;
using PolicyMap::PresentPolicy;
using PolicyMap::ProgrammedClass;
using PolicyMap::ProgrammedClasses;
using PolicyMap::WantedPolicy;

using enum PolicyMap::ClassMapMatchOption;

Vorel::IntfId ethernet(char number) {
  return Vorel::IntfId(Kor::String8(std::string("Ethernet") + number));
}
// "12": Ethernet1 and Ethernet2.
std::vector<Vorel::IntfId> intfs(std::string_view numbers) {
  std::vector<Vorel::IntfId> all;
  for (char const number : numbers) {
    all.push_back(ethernet(number));
  }
  return all;
}

// One class on a list with one rule. "a": permit any; "b": another rule; "d": deny any.
ProgrammedClass classOf(char rule) {
  Acl::IpRuleConfig config;
  config.permitIs(rule != 'd');
  if (rule == 'b') {
    config.protocolIs(6);
  }
  auto list = Kor::make<Acl::AclRules<Acl::IpRuleConfig>>(
      std::vector<Acl::AclRules<Acl::IpRuleConfig>::Entry>{{10, config}});
  PolicyMap::RuleSources<Acl::IpRuleConfig> sources;
  sources.push_back({Kor::Name("acl"), list});
  return {Kor::Name("c"), Kor::make<ClassMapSmCommonData>("c", nullptr, nullptr),
          Kor::make<ClassRules>(sources)};
}
ProgrammedClasses classesOf(std::string_view rules) {
  ProgrammedClasses classes;
  for (char const rule : rules) {
    classes.add(classOf(rule));
  }
  return classes;
}

// The steps in short: "-1" removes an interface, "+1" adds it; the others are named after their
// operation.
std::string inShort(std::optional<PolicyMap::Pass> const& pass) {
  std::ostringstream out;
  if (!pass) {
    return "nothing";
  }
  char const* separator = "";
  for (PolicyMap::Step const& step : pass->steps) {
    out << std::exchange(separator, " ");
    switch (step.operation) {
    case PolicyMap::HelperOperation::addIntf: out << "+" << step.intf; break;
    case PolicyMap::HelperOperation::removeIntf: out << "-" << step.intf; break;
    case PolicyMap::HelperOperation::updateAction:
      out << "update " << step.updatedClass->name();
      break;
    case PolicyMap::HelperOperation::commitPolicy:
      out << "commit" << (step.option == ipv4 ? "" : " other");
      break;
    default: out << nameOf(step.operation);
    }
  }
  return out.str();
}

// What is present, what is wanted, what the helper supports, and the expected plan.
struct PlanRow {
  char const* name;
  // Present: the programmed rules ("": none), at which interfaces, and whether created and owned.
  char const* programmed;
  char const* at;
  bool created;
  bool owned;
  // Wanted: the rules ("=": as programmed), and at which interfaces.
  char const* wanted;
  char const* wantedAt;
  char const* steps;
  char const* refusal = nullptr;
  void (*change)(OptionState&, HelperTraits&, WantedPolicy&) = nullptr;

  friend void PrintTo(PlanRow const& row, std::ostream* out) { *out << row.name; }
};

using S = OptionState;
using T = HelperTraits;
using W = WantedPolicy;
constexpr char const* denied = "class c: rule 10 of acl: deny rules are not allowed";

PolicyMap::Capabilities withoutDeny() {
  PolicyMap::Capabilities capabilities;
  capabilities.deny = false;
  return capabilities;
}

PlanRow const rows[] = {
    {"firstTime", "", "", false, false, "a", "12",
     "createPolicy addRule +Ethernet1 +Ethernet2 commit"},
    {"theSame", "a", "12", true, true, "a", "12", "nothing"},
    {"intfAdded", "a", "1", true, true, "=", "12", "+Ethernet2 commit"},
    {"intfRemoved", "a", "12", true, true, "=", "2", "-Ethernet1 commit"},
    {"intfReplaced", "a", "1", true, true, "=", "2", "-Ethernet1 +Ethernet2 commit"},
    {"rulesChanged", "a", "1", true, true, "b", "1", "recreatePolicy addRule commit"},
    {"rulesAndIntfsChanged", "a", "1", true, true, "b", "2",
     "-Ethernet1 recreatePolicy addRule +Ethernet2 commit"},
    {"noRulesLeft", "a", "12", true, true, "", "12", "-Ethernet1 -Ethernet2 deletePolicy", ""},
    {"noIntfsLeft", "a", "12", true, true, "=", "", "-Ethernet1 -Ethernet2 deletePolicy", ""},
    {"nothingWanted", "", "", false, false, "", "", "nothing", ""},
    {"noRulesYet", "", "", false, false, "", "1", "nothing", ""},
    {"noIntfsYet", "", "", false, false, "a", "", "nothing", ""},
    {"anothersPolicyIsProgrammedOver", "", "", true, false, "a", "1",
     "recreatePolicy addRule +Ethernet1 commit"},
    {"anothersPolicyIsLeftAlone", "", "", true, false, "", "1", "nothing", ""},
    {"ownButUnknownIsProgrammedOver", "", "", true, true, "a", "1",
     "recreatePolicy addRule +Ethernet1 commit"},
    {"ownButUnknownIsDeleted", "", "", true, true, "", "1", "deletePolicy", ""},
    {"notTrusted", "a", "1", true, true, "a", "1", "recreatePolicy addRule commit", nullptr,
     [](S& state, T&, W&) { state.recreate = true; }},
    {"otherExpansion", "a", "1", true, true, "=", "1", "recreatePolicy addRule commit", nullptr,
     [](S&, T& helper, W&) { helper.expansion = PolicyMap::PortExpansion::alignedBlocks; }},
    {"intfAddedWhereThatReprograms", "a", "1", true, true, "=", "12",
     "recreatePolicy addRule +Ethernet2 commit", nullptr,
     [](S&, T& helper, W&) { helper.reprogramOnIntfChange = true; }},
    {"sameIntfsWhereThatReprograms", "a", "1", true, true, "=", "1", "nothing", nullptr,
     [](S&, T& helper, W&) { helper.reprogramOnIntfChange = true; }},
    {"denyIsRefused", "", "", false, false, "d", "1", "nothing", denied,
     [](S&, T& helper, W&) { helper.capabilities = withoutDeny(); }},
    {"denyIsRefusedAndTakenDown", "a", "1", true, true, "d", "1", "-Ethernet1 deletePolicy", denied,
     [](S&, T& helper, W&) { helper.capabilities = withoutDeny(); }},
    {"denyNoLongerPossible", "d", "1", true, true, "=", "1", "-Ethernet1 deletePolicy", denied,
     [](S&, T& helper, W&) { helper.capabilities = withoutDeny(); }},
    {"denyAmongOthersIsRefused", "", "", false, false, "abd", "1", "nothing", denied,
     [](S&, T& helper, W&) { helper.capabilities = withoutDeny(); }},
    {"capabilityThatIsNotNeeded", "a", "1", true, true, "=", "1", "nothing", nullptr,
     [](S&, T& helper, W&) { helper.capabilities = withoutDeny(); }},
    {"classesThatCannotBeCompiled", "a", "1", true, true, "a", "1", "-Ethernet1 deletePolicy",
     "cannot",
     [](S&, T&, W& wanted) {
       wanted.refusal = {"cannot", {}, Kor::Name("c"), {}};
     }},
    {"actionMovedIsNoMatterWithUpdates", "a", "1", true, true, "a", "1", "nothing", nullptr,
     [](S& state, T& helper, W&) {
       helper.updateActions = true;
       state.classes.begin()->data->updateAclActionsInc(1);
     }},
    {"actionMovedWithoutUpdates", "a", "1", true, true, "a", "1", "recreatePolicy addRule commit",
     nullptr, [](S& state, T&, W&) { state.classes.begin()->data->updateAclActionsInc(1); }},
};

class Planned : public testing::TestWithParam<PlanRow> {
 protected:
  // Classes with equal rules share their common data, as if from one class machine.
  static WantedPolicy wantedOf(PlanRow const& row, OptionState const& state) {
    WantedPolicy wanted;
    if (std::string_view(row.wanted) == "=") {
      wanted.classes.reset();
    } else if (std::string_view(row.wanted) == row.programmed) {
      wanted.classes = state.classes;
    } else {
      wanted.classes = classesOf(row.wanted);
    }
    wanted.intfs = intfs(row.wantedAt);
    return wanted;
  }

  Acl::AclDiff diff;
};

INSTANTIATE_TEST_SUITE_P(Plan, Planned, testing::ValuesIn(rows),
                         [](auto const& one) { return std::string(one.param.name); });

TEST_P(Planned, Steps) {
  PlanRow const& row = GetParam();
  OptionState state;
  state.classes = classesOf(row.programmed);
  HelperTraits helper;
  WantedPolicy wanted = wantedOf(row, state);
  PresentPolicy const present{{row.created, row.owned}, intfs(row.at)};
  if (row.change != nullptr) {
    row.change(state, helper, wanted);
  }
  OptionPlan const plan = planOption(ipv4, wanted, present, state, helper, &diff);
  EXPECT_EQ(inShort(plan.pass), row.steps);
  ASSERT_EQ(plan.refusal.has_value(), row.refusal != nullptr);
  if (plan.refusal) {
    EXPECT_EQ(plan.refusal->error(), row.refusal);
  }
}

TEST_F(Planned, WithoutADifferenceTrackerEveryOtherVersionIsADifference) {
  OptionState state;
  state.classes = classesOf("a");
  WantedPolicy wanted;
  wanted.classes = classesOf("a");
  wanted.intfs = intfs("1");
  PresentPolicy const present{{true, true}, intfs("1")};
  auto const steps = [&](Acl::AclDiff const* tracker) {
    HelperTraits helper;
    helper.updateActions = true;
    return inShort(planOption(ipv4, wanted, present, state, helper, tracker).pass);
  };
  EXPECT_EQ(steps(&diff), "nothing");
  EXPECT_EQ(steps(nullptr), "recreatePolicy addRule commit");
}

TEST_F(Planned, ClassesOfOtherMachinesCanBeTakenOver) {
  OptionState state;
  state.classes = classesOf("a");
  WantedPolicy wanted;
  wanted.classes = classesOf("a");
  wanted.intfs = intfs("1");
  PresentPolicy const present{{true, true}, intfs("1")};
  HelperTraits helper;
  helper.updateActions = true;
  EXPECT_TRUE(planOption(ipv4, wanted, present, state, helper, &diff).sameRules);
  // Without updates, their actions are programmed from the new data by re-creation.
  helper.updateActions = false;
  EXPECT_EQ(inShort(planOption(ipv4, wanted, present, state, helper, &diff).pass),
            "recreatePolicy addRule commit");
}

TEST_F(Planned, RulesAreProgrammedWithTheTraitsOfThePlan) {
  WantedPolicy wanted;
  wanted.classes = classesOf("ab");
  wanted.intfs = intfs("1");
  HelperTraits helper;
  helper.expansion = PolicyMap::PortExpansion::alignedBlocks;
  helper.capabilities = withoutDeny();
  auto const plan = planOption(ipv4, wanted, {}, OptionState(), helper, &diff);
  ASSERT_TRUE(plan.pass);
  EXPECT_EQ(plan.pass->classes.size(), 2U);
  EXPECT_EQ(plan.pass->expansion, helper.expansion);
  EXPECT_EQ(plan.pass->capabilities, helper.capabilities);
  EXPECT_EQ(plan.pass->kind, PolicyMap::PassKind::program);
}

// Action updates.

class PlannedUpdate : public testing::Test {
 protected:
  PlannedUpdate() {
    for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
      state[option].classes.add(first);
      known[option] = true;
    }
    state[ipv4].classes.add(second);
  }
  std::string update(std::vector<Kor::Ptr<ClassMapSmCommonData>> const& changed) {
    PolicyMap::Pass const pass = planActionUpdate(changed, known, state);
    return pass.steps.empty() ? "nothing" : inShort(pass);
  }

  ProgrammedClass first = classOf('a');
  ProgrammedClass second = classOf('b');
  PolicyMap::ProgrammedState state;
  PolicyMap::PerOption<bool> known;
};

TEST_F(PlannedUpdate, OfNothingThatMovedIsNothing) {
  EXPECT_EQ(update({first.data, second.data}), "nothing");
}

TEST_F(PlannedUpdate, CommitsEachOptionConcernedOnce) {
  first.data->updateAclActionsInc(1);
  second.data->updateAclActionsInc(1);
  EXPECT_EQ(update({first.data, second.data}),
            "update c update c commit commit other commit other commit other");
}

TEST_F(PlannedUpdate, LeavesOutOptionsThatAreNotConcerned) {
  second.data->updateAclActionsInc(1);
  EXPECT_EQ(update({first.data, second.data}), "update c commit");
}

TEST_F(PlannedUpdate, LeavesOutClassesThatWereNotNamed) {
  first.data->updateAclActionsInc(1);
  second.data->updateAclActionsInc(1);
  EXPECT_EQ(update({second.data}), "update c commit");
}

TEST_F(PlannedUpdate, LeavesOutOptionsThatAreNotKnown) {
  first.data->updateAclActionsInc(1);
  known = {};
  EXPECT_EQ(update({first.data}), "nothing");
  known[ClassMapMatchOption::mac] = true;
  EXPECT_EQ(update({first.data}), "update c commit other");
}

}  // namespace
}  // namespace policymap
