// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "support/Watcher.h"

#include <Acl/Config.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Acl::Config;
using Acl::IpAclConfig;
using Acl::IpRuleConfig;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

class ConfigWatch : public TestSupport::Watcher<Config::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onIpAcl(Kor::Name name) override { told("ip", name, bool(notifier()->ipAcl(name))); }
  void onIp6Acl(Kor::Name name) override { told("ip6", name, bool(notifier()->ip6Acl(name))); }
  void onMacAcl(Kor::Name name) override { told("mac", name, bool(notifier()->macAcl(name))); }

 private:
  void told(std::string const& kind, Kor::Name const& name, bool present) {
    heard(kind + " " + name.stdString() + (present ? "" : " gone"));
  }
};

template <class List>
class ListWatch : public TestSupport::Watcher<typename List::NotifieeConst> {
 public:
  using TestSupport::Watcher<typename List::NotifieeConst>::Watcher;
  void onRule(std::uint32_t seq) override { this->heard("rule " + std::to_string(seq)); }
};

// One kind of list. The tests below run for each kind.
template <class ListType, class RuleType>
struct Kind {
  using List = ListType;
  using Rule = RuleType;
};
using Ip = Kind<IpAclConfig, IpRuleConfig>;
using Ip6 = Kind<Acl::Ip6AclConfig, Acl::Ip6RuleConfig>;
using Mac = Kind<Acl::MacAclConfig, Acl::MacRuleConfig>;

template <class K>
class AclOf : public testing::Test {
 protected:
  using List = typename K::List;
  using Rule = typename K::Rule;

  static Rule deny() {
    Rule rule;
    rule.permitIs(false);
    return rule;
  }
  static std::string word() {
    return std::is_same_v<K, Ip> ? "ip" : std::is_same_v<K, Ip6> ? "ip6" : "mac";
  }
  typename List::Ptr listIs(Kor::Name const& name) {
    if constexpr (std::is_same_v<K, Ip>) {
      return config_->ipAclIs(name);
    } else if constexpr (std::is_same_v<K, Ip6>) {
      return config_->ip6AclIs(name);
    } else {
      return config_->macAclIs(name);
    }
  }
  typename List::Ptr newList(Kor::Name const& name) {
    if constexpr (std::is_same_v<K, Ip>) {
      return config_->newIpAcl(name);
    } else if constexpr (std::is_same_v<K, Ip6>) {
      return config_->newIp6Acl(name);
    } else {
      return config_->newMacAcl(name);
    }
  }
  void listDel(Kor::Name const& name) {
    if constexpr (std::is_same_v<K, Ip>) {
      config_->ipAclDel(name);
    } else if constexpr (std::is_same_v<K, Ip6>) {
      config_->ip6AclDel(name);
    } else {
      config_->macAclDel(name);
    }
  }
  Journal take() { return std::exchange(journal_, {}); }

  Journal journal_;
  Config::Ptr config_ = Kor::make<Config>();
  Kor::Ptr<ConfigWatch> watch_ = Kor::make<ConfigWatch>(journal_, "config", config_.get());
};

using Kinds = testing::Types<Ip, Ip6, Mac>;
TYPED_TEST_SUITE(AclOf, Kinds);

TYPED_TEST(AclOf, CreatingAndRemovingAListIsAnnounced) {
  this->listIs("a");
  this->listIs("a");
  this->listDel("a");
  this->listDel("a");
  EXPECT_THAT(this->take(),
              ElementsAre("config: " + this->word() + " a", "config: " + this->word() + " a gone"));
}

TYPED_TEST(AclOf, AChangeOfARuleIsAnnouncedByListAndConfig) {
  auto const list = this->listIs("a");
  this->take();
  auto const watch =
      Kor::make<ListWatch<typename TypeParam::List>>(this->journal_, "list", list.get());
  std::string const told = "config: " + this->word() + " a";
  list->ruleIs(10, {});
  EXPECT_THAT(this->take(), ElementsAre("list: rule 10", told));
  list->ruleIs(10, {});
  EXPECT_THAT(this->take(), IsEmpty());
  list->ruleIs(10, this->deny());
  EXPECT_THAT(this->take(), ElementsAre("list: rule 10", told));
  list->ruleDel(10);
  EXPECT_THAT(this->take(), ElementsAre("list: rule 10", told));
  list->ruleDel(10);
  EXPECT_THAT(this->take(), IsEmpty());
}

TYPED_TEST(AclOf, AListMadeSilentlyForwardsToo) {
  auto const list = this->newList("a");
  EXPECT_THAT(this->take(), IsEmpty());
  list->ruleIs(10, {});
  EXPECT_THAT(this->take(), ElementsAre("config: " + this->word() + " a"));
}

TYPED_TEST(AclOf, AListThatWasRemovedOrReplacedForwardsNoMore) {
  auto const removed = this->listIs("a");
  auto const replaced = this->listIs("b");
  this->listDel("a");
  auto const replacing = this->newList("b");
  this->take();
  removed->ruleIs(10, {});
  replaced->ruleIs(10, {});
  EXPECT_THAT(this->take(), IsEmpty());
  EXPECT_EQ(removed->rules(), 1U);
  replacing->ruleIs(10, {});
  EXPECT_THAT(this->take(), ElementsAre("config: " + this->word() + " b"));
}

TYPED_TEST(AclOf, AListThatOutlivesItsConfigIsOnItsOwn) {
  auto const list = this->listIs("a");
  this->config_ = nullptr;
  this->take();
  list->ruleIs(10, {});
  EXPECT_EQ(list->rules(), 1U);
  EXPECT_THAT(this->take(), IsEmpty());
}

TYPED_TEST(AclOf, AHookMayTakeTheListAway) {
  using ListType = typename TypeParam::List;
  auto list = this->listIs("a");
  this->take();
  auto const watch = Kor::make<ListWatch<ListType>>(this->journal_, "list", list.get());
  watch->reactionIs([&] {
    list = nullptr;
    this->listDel("a");
  });
  ListType* const raw = list.get();
  raw->ruleIs(10, {});
  EXPECT_THAT(this->take(), ElementsAre("list: rule 10", "config: " + this->word() + " a gone"));
}

TYPED_TEST(AclOf, TheLogTellsOfListsAndRules) {
  auto const log = Kor::make<TestSupport::LogRecorder>(*this->config_);
  auto const list = this->listIs("a");
  auto const listLog = Kor::make<TestSupport::LogRecorder>(*list);
  list->ruleIs(10, {});
  EXPECT_THAT(log->take(), ElementsAre(this->word() + "Acl", this->word() + "Acl"));
  EXPECT_THAT(listLog->take(), ElementsAre("rule"));
  EXPECT_EQ(list->attributeString(Kor::Entity::nameId), "name");
  EXPECT_EQ(list->attributeString(1), "unknown");
}

TYPED_TEST(AclOf, ASnapshotIsSortedAndKeptUntilTheNextEdit) {
  auto const list = this->listIs("a");
  EXPECT_TRUE(list->rulesBySeq()->empty());
  for (std::uint32_t const seq : {30U, 10U, 4000000000U, 20U}) {
    list->ruleIs(seq, {});
  }
  auto const version = list->rulesBySeq();
  std::vector<std::uint32_t> seqs;
  for (auto const& [seq, rule] : *version) {
    seqs.push_back(seq);
  }
  EXPECT_THAT(seqs, ElementsAre(10U, 20U, 30U, 4000000000U));
  EXPECT_EQ(list->rulesBySeq().get(), version.get());
  list->ruleIs(10, {});
  EXPECT_EQ(list->rulesBySeq().get(), version.get());
}

TYPED_TEST(AclOf, EveryEditMakesANewSnapshotAndLeavesTheOldOne) {
  auto const list = this->listIs("a");
  list->ruleIs(10, {});
  auto const first = list->rulesBySeq();
  list->ruleIs(10, this->deny());
  auto const second = list->rulesBySeq();
  list->newRule(20, {});
  auto const third = list->rulesBySeq();
  list->newRule(20, this->deny());
  auto const fourth = list->rulesBySeq();
  list->ruleDel(10);
  auto const fifth = list->rulesBySeq();
  list->ruleDelAll();
  EXPECT_TRUE(first->rule(10)->permit());
  EXPECT_FALSE(second->rule(10)->permit());
  EXPECT_TRUE(third->rule(20)->permit());
  EXPECT_FALSE(fourth->rule(20)->permit());
  EXPECT_EQ(fifth->rule(10), nullptr);
  EXPECT_EQ(fifth->size(), 1U);
  EXPECT_TRUE(list->rulesBySeq()->empty());
}

TYPED_TEST(AclOf, ARemovalThroughAnIteratorIsAnEditLikeAny) {
  auto const list = this->listIs("a");
  list->ruleIs(10, {});
  this->take();
  auto const version = list->rulesBySeq();
  list->ruleIterator().del();
  EXPECT_TRUE(list->rulesBySeq()->empty());
  EXPECT_THAT(this->take(), ElementsAre("config: " + this->word() + " a"));
}

TYPED_TEST(AclOf, ASnapshotInAHookIsTheNewestVersion) {
  auto const list = this->listIs("a");
  (void)list->rulesBySeq();
  std::size_t seen = 0;
  this->watch_->reactionIs([&] { seen = list->rulesBySeq()->size(); });
  list->ruleIs(10, {});
  EXPECT_EQ(seen, 1U);
}

TYPED_TEST(AclOf, ListsAreEntities) {
  auto const list = this->listIs("a");
  EXPECT_EQ(list->name(), "a");
  EXPECT_EQ(list->fwkType()->level(), 2U);
  EXPECT_EQ(list->ruleId, 258U);
  std::string const kind = std::is_same_v<TypeParam, Ip>    ? "Ip"
                           : std::is_same_v<TypeParam, Ip6> ? "Ip6"
                                                            : "Mac";
  EXPECT_EQ(list->fwkType()->name(), "Acl::" + kind + "AclConfig");
}

TEST(AclConfig, KindsAreSeparateNamespaces) {
  auto const config = Kor::make<Config>();
  config->ipAclIs("a")->ruleIs(10, {});
  EXPECT_FALSE(config->ip6Acl("a"));
  EXPECT_FALSE(config->macAcl("a"));
  EXPECT_EQ(config->ipAcls(), 1U);
  EXPECT_EQ(config->ip6Acls(), 0U);
}

TEST(AclConfig, IsAnEntityOfItsOwnType) {
  Config const config("x");
  EXPECT_EQ(config.name(), "x");
  EXPECT_EQ(config.fwkType()->name(), "Acl::Config");
  EXPECT_EQ(config.fwkType()->level(), 2U);
  EXPECT_EQ(Config::ipAclId, 258U);
  EXPECT_EQ(Config::ip6AclId, 259U);
  EXPECT_EQ(Config::macAclId, 260U);
  EXPECT_EQ(config.attributeString(Kor::Entity::nameId), "name");
}

TEST(AclConfig, AConstConfigHandsOutConstLists) {
  auto const config = Kor::make<Config>();
  config->ipAclIs("a");
  Config::PtrConst const seen = config;
  static_assert(std::is_same_v<decltype(seen->ipAcl("a")), IpAclConfig::PtrConst>);
  EXPECT_TRUE(seen->ipAcl("a"));
}

}  // namespace
