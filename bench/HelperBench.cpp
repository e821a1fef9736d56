// SPDX-License-Identifier: Apache-2.0
//
// One policy of 1000 rules through the helper: create, add every rule with its match, sub-rule and
// three action values, 16 interfaces, commit, update every action, delete. Compared with
// hand-written fakes that record the same fields in std::map and std::unordered_map, and with a
// mock of the helper.

#include "helper/AclHelper.h"
#include "machines/TestClassCommonData.h"

#include <benchmark/benchmark.h>
#include <gmock/gmock.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::SubRuleData;

constexpr std::uint32_t ruleCount = 1000;
constexpr std::uint32_t intfCount = 16;

// The arguments that the framework passes to a helper.
struct Policy {
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  PolicyMap::PolicyMapSmCommonData::Ptr policyData =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("policy", "input"));
  PolicyMapTest::TestClassCommonData::Ptr classData =
      Kor::make<PolicyMapTest::TestClassCommonData>("class", nullptr, acls);
  std::vector<AclRuleKey> keys;
  std::vector<Vorel::IntfId> intfs;

  Policy() {
    auto const list = acls->ipAclIs("acl");
    for (std::uint32_t seqno = 1; seqno <= ruleCount; ++seqno) {
      Acl::IpRuleConfig rule;
      rule.protocolIs(6);
      rule.dstPortIs(Acl::PortMatch::eq(seqno));
      list->ruleIs(seqno, rule);
      keys.emplace_back("class", "acl", seqno, ClassMapMatchOption::ipv4);
    }
    for (std::uint32_t number = 1; number <= intfCount; ++number) {
      intfs.emplace_back(Kor::String("Ethernet" + std::to_string(number)));
    }
    classData->action1ValueIs(1);
    classData->action2ValueIs(2);
    classData->action3ValueIs(3);
  }
};

// The calls from the creation of the policy to its deletion.
template <class Helper>
void drive(Helper& helper, Policy const& policy) {
  auto const option = ClassMapMatchOption::ipv4;
  SubRuleData const subRule;
  helper.createPolicy(policy.policyData, option);
  for (AclRuleKey const& key : policy.keys) {
    helper.addRule(key, subRule, policy.policyData, policy.classData);
  }
  for (Vorel::IntfId const intf : policy.intfs) {
    helper.addIntfToPolicy(policy.policyData, intf, option);
  }
  helper.commitPolicy(policy.policyData, option);
  for (AclRuleKey const& key : policy.keys) {
    helper.updateAction(key, subRule, policy.policyData, policy.classData);
  }
  helper.deletePolicy(policy.policyData, option);
}

void recordingHelper(benchmark::State& state) {
  Policy const policy;
  auto const helper = PolicyMapTest::aclHelperFactory(true, false);
  for (auto _ : state) {
    drive(*helper, policy);
  }
}
BENCHMARK(recordingHelper)->Unit(benchmark::kMicrosecond);

// by hand --------------------------------------------------------------------------------

struct Hash {
  template <class Key>
  std::size_t operator()(Key const& key) const {
    return key.hash();
  }
};
template <class Key, class Value>
using Tree = std::map<Key, Value>;
template <class Key, class Value>
using Table = std::unordered_map<Key, Value, Hash>;
template <class Key>
using TreeSet = std::set<Key>;
template <class Key>
using TableSet = std::unordered_set<Key, Hash>;

// A typical hand-written fake: the same fields in standard collections.
template <template <class, class> class Map, template <class> class Set>
class Fake {
 public:
  using PolicyData = PolicyMap::PolicyMapSmCommonData::PtrConst;
  using ClassData = PolicyMap::ClassMapSmCommonData::PtrConst;

  Kor::String createPolicy(PolicyData const& data, ClassMapMatchOption option) {
    Record& record = records_[{data->policyKey(), option}];
    record.created = true;
    ++record.creations;
    return {};
  }
  Kor::String addRule(AclRuleKey const& key, SubRuleData const& subRule, PolicyData const& data,
                      ClassData const& classData) {
    Record& record = records_[{data->policyKey(), key.matchOption()}];
    record.matches[key] = classData->getIpRule(key);
    record.subRules[key].insert(subRule);
    recordActions(record, key, classData);
    record.dirty = true;
    return {};
  }
  Kor::String addIntfToPolicy(PolicyData const& data, Vorel::IntfId intf,
                              ClassMapMatchOption option) {
    records_[{data->policyKey(), option}].intfs.insert(intf);
    return {};
  }
  Kor::String commitPolicy(PolicyData const& data, ClassMapMatchOption option) {
    Record& record = records_[{data->policyKey(), option}];
    ++record.commits;
    record.dirty = false;
    return {};
  }
  Kor::String updateAction(AclRuleKey const& key, SubRuleData const& subRule,
                           PolicyData const& data, ClassData const& classData) {
    Record& record = records_[{data->policyKey(), key.matchOption()}];
    recordActions(record, key, classData);
    return record.subRules.at(key).count(subRule) != 0 ? Kor::String() : Kor::String("unknown");
  }
  Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) {
    Record& record = records_[{data->policyKey(), option}];
    record.created = false;
    record.matches.clear();
    record.subRules.clear();
    for (auto& actions : record.actions) {
      actions.clear();
    }
    record.intfs.clear();
    return {};
  }

 private:
  struct Record {
    bool created = false;
    bool dirty = false;
    std::uint32_t creations = 0;
    std::uint32_t commits = 0;
    Map<AclRuleKey, Acl::IpRuleConfig> matches;
    Map<AclRuleKey, Set<SubRuleData>> subRules;
    std::array<Map<AclRuleKey, std::uint32_t>, 3> actions;
    Set<Vorel::IntfId> intfs;
  };

  static void recordActions(Record& record, AclRuleKey const& key, ClassData const& classData) {
    auto const values = classData.as<PolicyMapTest::TestClassCommonData const>();
    record.actions[0][key] = values->action1Value();
    record.actions[1][key] = values->action2Value();
    record.actions[2][key] = values->action3Value();
  }

  std::map<std::pair<PolicyMap::PolicyMapSmKey, ClassMapMatchOption>, Record> records_;
};

template <class Helper>
void byHand(benchmark::State& state) {
  Policy const policy;
  Helper helper;
  for (auto _ : state) {
    drive(helper, policy);
  }
}
void fakeOnMap(benchmark::State& state) {
  byHand<Fake<Tree, TreeSet>>(state);
}
void fakeOnUnorderedMap(benchmark::State& state) {
  byHand<Fake<Table, TableSet>>(state);
}
BENCHMARK(fakeOnMap)->Unit(benchmark::kMicrosecond);
BENCHMARK(fakeOnUnorderedMap)->Unit(benchmark::kMicrosecond);

// a mock ---------------------------------------------------------------------------------

class Mock {
 public:
  using PolicyData = PolicyMap::PolicyMapSmCommonData::PtrConst;
  using ClassData = PolicyMap::ClassMapSmCommonData::PtrConst;

  MOCK_METHOD(Kor::String, createPolicy, (PolicyData const&, ClassMapMatchOption));
  MOCK_METHOD(Kor::String, addRule,
              (AclRuleKey const&, SubRuleData const&, PolicyData const&, ClassData const&));
  MOCK_METHOD(Kor::String, addIntfToPolicy,
              (PolicyData const&, Vorel::IntfId, ClassMapMatchOption));
  MOCK_METHOD(Kor::String, commitPolicy, (PolicyData const&, ClassMapMatchOption));
  MOCK_METHOD(Kor::String, updateAction,
              (AclRuleKey const&, SubRuleData const&, PolicyData const&, ClassData const&));
  MOCK_METHOD(Kor::String, deletePolicy, (PolicyData const&, ClassMapMatchOption));
};

// Every call is forwarded to a fake that records.
void mockThatRecords(benchmark::State& state) {
  Policy const policy;
  Fake<Table, TableSet> fake;
  testing::NiceMock<Mock> mock;
  using testing::Invoke;
  ON_CALL(mock, createPolicy).WillByDefault(Invoke(&fake, &decltype(fake)::createPolicy));
  ON_CALL(mock, addRule).WillByDefault(Invoke(&fake, &decltype(fake)::addRule));
  ON_CALL(mock, addIntfToPolicy).WillByDefault(Invoke(&fake, &decltype(fake)::addIntfToPolicy));
  ON_CALL(mock, commitPolicy).WillByDefault(Invoke(&fake, &decltype(fake)::commitPolicy));
  ON_CALL(mock, updateAction).WillByDefault(Invoke(&fake, &decltype(fake)::updateAction));
  ON_CALL(mock, deletePolicy).WillByDefault(Invoke(&fake, &decltype(fake)::deletePolicy));
  for (auto _ : state) {
    drive(mock, policy);
  }
}
BENCHMARK(mockThatRecords)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
