// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/ClassMapSmCommonData.h>

#include <gmock/gmock.h>

#include <limits>

namespace policymap {
namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ActionType;
using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapSmCommonData;
using PolicyMap::ClassMapSubConfig;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;
using TestSupport::Watcher;

class DataWatcher : public Watcher<ClassMapSmCommonData::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onClassMap() override { heard("classMap"); }
  void onClassMapStatus() override { heard("classMapStatus"); }
  void onAction(ActionType type) override { heard("action " + text(type)); }
  void onUpdateAclActions() override { heard("updateAclActions"); }
};

class ClassData : public testing::Test {
 protected:
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<ClassMapSubConfig> classMap = Kor::make<ClassMapSubConfig>("c");
  Kor::Ptr<ClassMapSmCommonData> data = Kor::make<ClassMapSmCommonData>("c", classMap, acls);
  Journal journal;

  Kor::Ptr<DataWatcher> watch() { return Kor::make<DataWatcher>(journal, "w", data.get()); }
};

Acl::IpRuleConfig ipRule(int protocol) {
  Acl::IpRuleConfig rule;
  rule.protocolIs(protocol);
  return rule;
}
Acl::Ip6RuleConfig ip6Rule(int protocol) {
  Acl::Ip6RuleConfig rule;
  rule.protocolIs(protocol);
  return rule;
}
Acl::MacRuleConfig macRule(int vlan) {
  Acl::MacRuleConfig rule;
  rule.vlanIs(vlan);
  return rule;
}

TEST_F(ClassData, CarriesWhatItWasBuiltWith) {
  EXPECT_EQ(data->name(), "c");
  EXPECT_EQ(data->classMap(), classMap);
  EXPECT_EQ(data->aclConfig(), acls);
  EXPECT_FALSE(data->classMapStatus());
  EXPECT_EQ(data->updateAclActions(), 0U);
  EXPECT_EQ(data->actions(), 0U);
}

TEST_F(ClassData, AnswersTheRulesOfNamedLists) {
  acls->ipAclIs("a")->ruleIs(10, ipRule(6));
  acls->ip6AclIs("a")->ruleIs(10, ip6Rule(17));
  acls->macAclIs("a")->ruleIs(10, macRule(5));
  EXPECT_EQ(data->getIpRule({"c", "a", 10, ClassMapMatchOption::ipv4}), ipRule(6));
  EXPECT_EQ(data->getIp6Rule({"c", "a", 10, ClassMapMatchOption::ipv6}), ip6Rule(17));
  EXPECT_EQ(data->getMacRule({"c", "a", 10, ClassMapMatchOption::mac}), macRule(5));
  EXPECT_EQ(data->getMacRule({"c", "a", 10, ClassMapMatchOption::mpls}), macRule(5));
  EXPECT_EQ(data->getMacRule({"c", "a", 10, static_cast<ClassMapMatchOption>(9)}), macRule(5));
}

TEST_F(ClassData, AnswersTheClassMapsOwnRulesByTheirPlace) {
  classMap->matchIs(1, ClassMapMatch::rule(ipRule(6)));
  classMap->matchIs(2, ClassMapMatch::rule(ip6Rule(17)));
  classMap->matchIs(3, ClassMapMatch::rule(macRule(5)));
  EXPECT_EQ(data->getIpRule({"c", "", 1, ClassMapMatchOption::ipv4}), ipRule(6));
  EXPECT_EQ(data->getIp6Rule({"c", "", 2, ClassMapMatchOption::ipv6}), ip6Rule(17));
  EXPECT_EQ(data->getMacRule({"c", "", 3, ClassMapMatchOption::mac}), macRule(5));
}

TEST_F(ClassData, AnswersADefaultRuleForAnUnknownKey) {
  acls->ipAclIs("a")->ruleIs(10, ipRule(6));
  classMap->matchIs(2, ClassMapMatch::rule(ip6Rule(17)));
  classMap->matchIs(3, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "a"));
  EXPECT_EQ(data->getIpRule({"c", "a", 11, ClassMapMatchOption::ipv4}), Acl::IpRuleConfig());
  EXPECT_EQ(data->getIpRule({"c", "b", 10, ClassMapMatchOption::ipv4}), Acl::IpRuleConfig());
  EXPECT_EQ(data->getIpRule({"c", "", 1, ClassMapMatchOption::ipv4}), Acl::IpRuleConfig());
  EXPECT_EQ(data->getIpRule({"c", "", 2, ClassMapMatchOption::ipv4}), Acl::IpRuleConfig())
      << "a rule of another kind";
  EXPECT_EQ(data->getIpRule({"c", "", 3, ClassMapMatchOption::ipv4}), Acl::IpRuleConfig())
      << "a list, no rule of its own";
  EXPECT_EQ(data->getIp6Rule({"c", "a", 10, ClassMapMatchOption::ipv6}), Acl::Ip6RuleConfig());
  EXPECT_EQ(data->getMacRule({}), Acl::MacRuleConfig());
}

TEST_F(ClassData, WithoutClassMapAndListsEveryKeyIsUnknown) {
  auto const bare = Kor::make<ClassMapSmCommonData>("c", nullptr, nullptr);
  EXPECT_EQ(bare->getIpRule({"c", "a", 10, ClassMapMatchOption::ipv4}), Acl::IpRuleConfig());
  EXPECT_EQ(bare->getIp6Rule({"c", "", 1, ClassMapMatchOption::ipv6}), Acl::Ip6RuleConfig());
  EXPECT_EQ(bare->getMacRule({"c", "", 1, ClassMapMatchOption::mac}), Acl::MacRuleConfig());
}

TEST_F(ClassData, FollowsTheListsAsTheyAreConfigured) {
  acls->ipAclIs("a")->ruleIs(10, ipRule(6));
  AclRuleKey const key("c", "a", 10, ClassMapMatchOption::ipv4);
  EXPECT_EQ(data->getIpRule(key), ipRule(6));
  acls->ipAcl("a")->ruleIs(10, ipRule(17));
  EXPECT_EQ(data->getIpRule(key), ipRule(17));
  acls->ipAclDel("a");
  EXPECT_EQ(data->getIpRule(key), Acl::IpRuleConfig());
}

TEST_F(ClassData, RulesThatAreBeingProgrammedStayAsTheyWereDecidedOn) {
  acls->ipAclIs("a")->ruleIs(10, ipRule(6));
  PolicyMap::RuleSources<Acl::IpRuleConfig> sources{{"a", acls->ipAcl("a")->rulesBySeq()}};
  data->rulesIs(ClassMapMatchOption::ipv4, Kor::make<PolicyMap::ClassRules>(std::move(sources)));
  acls->ipAcl("a")->ruleIs(10, ipRule(17));
  acls->ipAcl("a")->ruleIs(20, ipRule(47));
  EXPECT_EQ(data->getIpRule({"c", "a", 10, ClassMapMatchOption::ipv4}), ipRule(6));
  EXPECT_EQ(data->getIpRule({"c", "a", 20, ClassMapMatchOption::ipv4}), ipRule(47))
      << "one that is not being programmed is answered as configured";
}

TEST_F(ClassData, RulesOfAFurtherOptionAreThoseOfMpls) {
  acls->macAclIs("a")->ruleIs(10, macRule(5));
  PolicyMap::RuleSources<Acl::MacRuleConfig> sources{{"a", acls->macAcl("a")->rulesBySeq()}};
  data->rulesIs(ClassMapMatchOption::mpls, Kor::make<PolicyMap::ClassRules>(std::move(sources)));
  acls->macAcl("a")->ruleIs(10, macRule(7));
  EXPECT_EQ(data->getMacRule({"c", "a", 10, ClassMapMatchOption{9}}), macRule(5));
  EXPECT_EQ(data->getMacRule({"c", "a", 10, ClassMapMatchOption::mac}), macRule(7));
}

TEST_F(ClassData, AnotherClassMapOrStatusIsAnnouncedOnce) {
  auto const watcher = watch();
  data->classMapIs(Kor::Ptr<ClassMapSubConfig const>(classMap));
  EXPECT_THAT(journal, IsEmpty());
  auto const other = Kor::make<ClassMapSubConfig>("c");
  data->classMapIs(other);
  data->classMapIs(other);
  auto const status = Kor::make<PolicyMap::ClassMapStatus>("c");
  data->classMapStatusIs(status);
  data->classMapStatusIs(status);
  data->classMapStatusIs(nullptr);
  EXPECT_THAT(journal, ElementsAre("w: classMap", "w: classMapStatus", "w: classMapStatus"));
  EXPECT_EQ(data->classMap(), other);
}

TEST_F(ClassData, ActionsAreAnnouncedByKind) {
  auto const watcher = watch();
  auto const action = Kor::make<NumberAction>("c", 2);
  data->actionIs(ActionType{2}, action);
  data->actionIs(ActionType{2}, action);
  data->actionDel(ActionType{1});
  EXPECT_EQ(data->actionDel(ActionType{2}), action);
  EXPECT_THAT(journal, ElementsAre("w: action 2", "w: action 2"));
}

TEST_F(ClassData, UpdatesAddUpAnnounceAndAnswerTheNewCount) {
  auto const watcher = watch();
  EXPECT_EQ(data->updateAclActionsInc(1), 1U);
  EXPECT_EQ(data->updateAclActionsInc(5), 6U);
  EXPECT_EQ(data->updateAclActions(), 6U);
  EXPECT_THAT(journal, ElementsAre("w: updateAclActions", "w: updateAclActions"));
}

TEST_F(ClassData, AnUpdateByZeroDoesNothing) {
  auto const watcher = watch();
  data->updateAclActionsInc(3);
  journal.clear();
  EXPECT_EQ(data->updateAclActionsInc(0), 3U);
  data->updateAclActionsIs(3);
  EXPECT_THAT(journal, IsEmpty());
}

TEST_F(ClassData, UpdatesWrapAround) {
  auto const watcher = watch();
  data->updateAclActionsIs(std::numeric_limits<std::uint32_t>::max());
  EXPECT_EQ(data->updateAclActionsInc(2), 1U);
  EXPECT_EQ(journal.size(), 2U);
}

}  // namespace
}  // namespace policymap
