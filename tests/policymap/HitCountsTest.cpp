// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/HitCounts.h>

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace policymap {
namespace {

class HitCount : public testing::Test {
 protected:
  PolicyBench bench;

  void SetUp() override {
    bench.simplePolicy();
    bench.rule("acl", 20, Acl::PortMatch::range(1, 1000));
    bench.helper->subRulesForL4PortsIs(true);
    bench.start();
    bench.settle();
  }
  [[nodiscard]] Kor::Ptr<PolicyMap::ClassMapStatus> status() const {
    auto const policy = bench.status->policyMapStatus({"pm", "input"});
    return policy ? policy->classMapStatus("c") : nullptr;
  }
  static PolicyMap::AclRuleKey key(std::uint32_t seqno) {
    return {"c", "acl", seqno, ClassMapMatchOption::ipv4};
  }
  void request(std::uint32_t number) const {
    bench.requests->countRequestIs({"pm", "input"}, number);
  }
};

TEST_F(HitCount, IsReadOnRequestOncePerRuleWhenTheLoopTurns) {
  bench.helper->counts = {{key(10), 5}, {key(20), 7}};
  request(1);
  EXPECT_EQ(bench.helper->countCalls, 0U);
  bench.settle();
  EXPECT_EQ(bench.helper->countCalls, 2U);
  EXPECT_EQ(status()->hitCount(key(10)), 5U);
  EXPECT_EQ(status()->hitCount(key(20)), 7U);
}

TEST_F(HitCount, StaysUntilTheNextRequest) {
  request(1);
  bench.settle();
  bench.helper->counts = {{key(10), 9}};
  bench.settle();
  EXPECT_EQ(status()->hitCount(key(10)), 0U);
  request(2);
  bench.settle();
  EXPECT_EQ(status()->hitCount(key(10)), 9U);
}

TEST_F(HitCount, OfARemovedRuleGoesWithTheNextRequest) {
  request(1);
  bench.settle();
  EXPECT_EQ(status()->hitCounts(), 2U);
  bench.acls->ipAcl("acl")->ruleDel(20);
  request(2);
  bench.settle();
  EXPECT_EQ(status()->hitCounts(), 1U);
}

// Records the rules whose count is reported.
class CountWatcher final : public TestSupport::Watcher<PolicyMap::ClassMapStatus::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onHitCount(PolicyMap::AclRuleKey const& rule) override {
    heard(std::to_string(rule.seqno()));
  }
};

TEST_F(HitCount, IsReportedOnlyIfItHasChanged) {
  bench.helper->counts = {{key(10), 5}, {key(20), 7}};
  request(1);
  bench.settle();
  TestSupport::Journal journal;
  auto const watcher = Kor::make<CountWatcher>(journal, "count", status().get());
  bench.helper->counts[key(20)] = 8;
  request(2);
  bench.settle();
  EXPECT_THAT(journal, testing::ElementsAre("count: 20"));
}

TEST_F(HitCount, OfAPolicyThatDoesNotStandIsNotAskedFor) {
  bench.helper->answers["commit"] = "full";
  bench.rule("acl", 10, Acl::PortMatch::eq(5));
  bench.settle();
  request(1);
  bench.settle();
  EXPECT_EQ(bench.helper->countCalls, 0U);
}

TEST_F(HitCount, OfAnUnknownPolicyIsNotAskedFor) {
  bench.requests->countRequestIs({"other", "input"}, 1);
  bench.settle();
  EXPECT_EQ(bench.helper->countCalls, 0U);
}

// The counts of both options are read until the callback returns false.
TEST_F(HitCount, IsNotAskedForAfterTheStop) {
  PolicyMap::ProgrammedState state;
  auto const data = Kor::make<PolicyMap::ClassMapSmCommonData>("c", nullptr, nullptr);
  auto const policy =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("pm", "input"));
  PolicyMap::RuleSources<Acl::IpRuleConfig> sources;
  sources.push_back({Kor::Name("acl"), Kor::make<Acl::AclRules<Acl::IpRuleConfig>>(
                                           std::vector<Acl::AclRules<Acl::IpRuleConfig>::Entry>{
                                               {10, {}}, {20, {}}})});
  auto const rules = Kor::make<PolicyMap::ClassRules>(sources);
  state[ClassMapMatchOption::ipv4].classes.add({Kor::Name("c"), data, rules});
  state[ClassMapMatchOption::ipv6].classes.add({Kor::Name("c"), data, rules});
  auto const read = [&](bool goesOn) {
    bench.helper->countCalls = 0;
    return PolicyMap::readHitCounts(*bench.helper, policy, data, state, [=] { return goesOn; })
        .size();
  };
  EXPECT_EQ(read(true), 4U);
  EXPECT_EQ(bench.helper->countCalls, 4U);
  EXPECT_EQ(read(false), 1U);
  EXPECT_EQ(bench.helper->countCalls, 1U);
}

// Throws when the count of rule 10 is read.
class ThrowingCounts final : public CallLog {
 public:
  std::uint64_t getCountForRule(PolicyMap::AclRuleKey const& key, PolicyData const& data,
                                ClassData const& classData) override {
    if (key.seqno() == 10) {
      throw std::runtime_error("no counter");
    }
    return CallLog::getCountForRule(key, data, classData);
  }
};

TEST_F(HitCount, OfARuleWhoseCounterThrowsIsAbsent) {
  bench.helper = Kor::make<ThrowingCounts>();
  bench.helper->counts = {{key(20), 7}};
  bench.machine->aclHelperIs(bench.helper);
  bench.settle();
  request(1);
  bench.settle();
  EXPECT_FALSE(status()->korHitCount(key(10)));
  EXPECT_EQ(status()->hitCount(key(20)), 7U);
}

// Runs a function once, when a count is read.
class DoingCounts final : public CallLog {
 public:
  std::function<void()> deed;

  std::uint64_t getCountForRule(PolicyMap::AclRuleKey const& key, PolicyData const& data,
                                ClassData const& classData) override {
    if (auto const once = std::exchange(deed, nullptr)) {
      once();
    }
    return CallLog::getCountForRule(key, data, classData);
  }
};

// The helper is removed while the first count is read.
TEST_F(HitCount, StaysWhenAReadEndsEarly) {
  auto const helper = Kor::make<DoingCounts>();
  helper->counts = {{key(10), 5}, {key(20), 7}};
  bench.helper = helper;
  bench.machine->aclHelperIs(helper);
  bench.settle();
  request(1);
  bench.settle();
  helper->counts[key(10)] = 9;
  helper->deed = [this] { bench.machine->aclHelperDel(); };
  request(2);
  bench.settle();
  EXPECT_EQ(helper->countCalls, 3U);
  EXPECT_EQ(status()->hitCount(key(10)), 5U);
  EXPECT_EQ(status()->hitCount(key(20)), 7U);
}

TEST_F(HitCount, OfAClassWithoutStatusIsNotAskedFor) {
  bench.machine->policyMapSm({"pm", "input"})->classMapSm("c")->classMapStatusIs(nullptr);
  request(1);
  bench.settle();
  EXPECT_EQ(bench.helper->countCalls, 0U);
}

TEST_F(HitCount, GoesWithThePolicy) {
  request(1);
  bench.settle();
  bench.detach("Ethernet1");
  bench.settle();
  EXPECT_FALSE(status());
}

}  // namespace
}  // namespace policymap
