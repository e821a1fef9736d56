// SPDX-License-Identifier: Apache-2.0
//
// One policy of 1000 rules through the helper: create, add every rule with its match, sub-rule and
// three action values, 16 interfaces, commit, update every action, delete. Compared with
// hand-written fakes that record the same fields in one flat table (the floor), or in a table per
// field like ours, and with mocks of the helper. Then the same by name, a second pass over a filled
// record, and the memory of a rule.

#include "bench/Contest.h"
#include "bench/RuleArguments.h"
#include "helper/AclHelper.h"

#include <Kor/ByName.h>

#include <gmock/gmock.h>

#ifdef BENCH_WITH_ABSL
#include <absl/container/flat_hash_map.h>
#include <absl/container/flat_hash_set.h>
#endif

#include <algorithm>
#include <array>
#include <malloc.h>
#include <map>
#include <string>
#include <sys/wait.h>
#include <type_traits>
#include <unistd.h>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::SubRuleData;

using Bench::ruleCount;

constexpr std::uint32_t intfCount = 16;

struct Policy : Bench::RuleArguments {
  std::vector<Vorel::IntfId> intfs;

  Policy() {
    for (std::uint32_t number = 1; number <= intfCount; ++number) {
      intfs.emplace_back(Kor::String("Ethernet" + std::to_string(number)));
    }
  }
};

template <class Helper>
void addRules(Helper& helper, Policy const& policy) {
  for (AclRuleKey const& key : policy.keys) {
    helper.addRule(key, SubRuleData(), policy.policyData, policy.classData);
  }
}

// Every rule again, with other values of its actions.
template <class Helper>
void updateRules(Helper& helper, Policy const& policy) {
  policy.classData->action1ValueIs(policy.classData->action1Value() + 1);
  policy.classData->action2ValueIs(policy.classData->action2Value() + 1);
  policy.classData->action3ValueIs(policy.classData->action3Value() + 1);
  for (AclRuleKey const& key : policy.keys) {
    helper.updateAction(key, SubRuleData(), policy.policyData, policy.classData);
  }
}

// The calls from the creation of the policy to its deletion.
template <class Helper>
void drive(Helper& helper, Policy const& policy) {
  auto const option = ClassMapMatchOption::ipv4;
  helper.createPolicy(policy.policyData, option);
  addRules(helper, policy);
  for (Vorel::IntfId const intf : policy.intfs) {
    helper.addIntfToPolicy(policy.policyData, intf, option);
  }
  helper.commitPolicy(policy.policyData, option);
  updateRules(helper, policy);
  helper.deletePolicy(policy.policyData, option);
}

// ours -----------------------------------------------------------------------------------

class Ours {
 public:
  PolicyMap::PolicyMapAclHelper& operator*() { return *helper_; }

 private:
  PolicyMap::PolicyMapAclHelper::Ptr helper_ = PolicyMapTest::aclHelperFactory(true, false);
};

// The same calls through kept names.
class ByName {
 public:
  template <class... Args>
  void createPolicy(Args const&... args) {
    helper_.call(create_, args...);
  }
  template <class... Args>
  void addRule(Args const&... args) {
    helper_.call(add_, args...);
  }
  template <class... Args>
  void addIntfToPolicy(Args const&... args) {
    helper_.call(addIntf_, args...);
  }
  template <class... Args>
  void commitPolicy(Args const&... args) {
    helper_.call(commit_, args...);
  }
  template <class... Args>
  void updateAction(Args const&... args) {
    helper_.call(update_, args...);
  }
  template <class... Args>
  void deletePolicy(Args const&... args) {
    helper_.call(delete_, args...);
  }

 private:
  Kor::GenericRef helper_ = Kor::construct("PolicyMapTest::AclHelper", true, false);
  Kor::AttributeName create_{"createPolicy"};
  Kor::AttributeName add_{"addRule"};
  Kor::AttributeName addIntf_{"addIntfToPolicy"};
  Kor::AttributeName commit_{"commitPolicy"};
  Kor::AttributeName update_{"updateAction"};
  Kor::AttributeName delete_{"deletePolicy"};
};

// by hand --------------------------------------------------------------------------------

struct Hash {
  template <class Key>
  std::size_t operator()(Key const& key) const {
    return key.hash();
  }
};
template <class Key, class Value>
using Table = std::unordered_map<Key, Value, Hash>;
template <class Key>
using TableSet = std::unordered_set<Key, Hash>;

using PolicyData = PolicyMap::PolicyMapSmCommonData::PtrConst;
using ClassData = PolicyMap::ClassMapSmCommonData::PtrConst;
using RecordKey = std::pair<PolicyMap::PolicyMapSmKey, ClassMapMatchOption>;

struct Counters {
  bool created = false;
  bool dirty = false;
  std::uint32_t creations = 0;
  std::uint32_t commits = 0;
};

// What the fakes below have in common. A record has `counters`.
template <class Record>
class Records {
 public:
  Kor::String createPolicy(PolicyData const& data, ClassMapMatchOption option) {
    Record& record = of(data, option);
    record.counters.created = true;
    ++record.counters.creations;
    return {};
  }
  Kor::String commitPolicy(PolicyData const& data, ClassMapMatchOption option) {
    Record& record = of(data, option);
    ++record.counters.commits;
    record.counters.dirty = false;
    return {};
  }

 protected:
  Record& of(PolicyData const& data, ClassMapMatchOption option) {
    return records_[{data->policyKey(), option}];
  }

 private:
  std::map<RecordKey, Record> records_;
};

template <template <class, class> class Map, template <class> class Set>
struct FakeRecord {
  Counters counters;
  Map<AclRuleKey, Acl::IpRuleConfig> matches;
  Map<AclRuleKey, Set<SubRuleData>> subRules;
  std::array<Map<AclRuleKey, std::uint32_t>, 3> actions;
  Set<Vorel::IntfId> intfs;
};

// A typical hand-written fake: the same fields in a table each.
template <template <class, class> class Map, template <class> class Set>
class Fake : public Records<FakeRecord<Map, Set>> {
 public:
  Kor::String addRule(AclRuleKey const& key, SubRuleData const& subRule, PolicyData const& data,
                      ClassData const& classData) {
    Record& record = this->of(data, key.matchOption());
    record.matches[key] = classData->getIpRule(key);
    record.subRules[key].insert(subRule);
    recordActions(record, key, classData);
    record.counters.dirty = true;
    return {};
  }
  Kor::String addIntfToPolicy(PolicyData const& data, Vorel::IntfId intf,
                              ClassMapMatchOption option) {
    this->of(data, option).intfs.insert(intf);
    return {};
  }
  Kor::String updateAction(AclRuleKey const& key, SubRuleData const& subRule,
                           PolicyData const& data, ClassData const& classData) {
    Record& record = this->of(data, key.matchOption());
    recordActions(record, key, classData);
    return record.subRules.at(key).count(subRule) != 0 ? Kor::String() : Kor::String("unknown");
  }
  Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) {
    Record& record = this->of(data, option);
    record.counters.created = false;
    record.matches.clear();
    record.subRules.clear();
    for (auto& actions : record.actions) {
      actions.clear();
    }
    record.intfs.clear();
    return {};
  }

 private:
  using Record = FakeRecord<Map, Set>;

  static void recordActions(Record& record, AclRuleKey const& key, ClassData const& classData) {
    auto const values = classData.as<PolicyMapTest::TestClassCommonData const>();
    record.actions[0][key] = values->action1Value();
    record.actions[1][key] = values->action2Value();
    record.actions[2][key] = values->action3Value();
  }
};

struct FloorRule {
  AclRuleKey key;
  SubRuleData subRule;
  std::vector<SubRuleData> others;
  Acl::IpRuleConfig match;
  std::array<std::uint32_t, 3> actions{};

  [[nodiscard]] bool has(SubRuleData const& wanted) const {
    return subRule == wanted || std::find(others.begin(), others.end(), wanted) != others.end();
  }
};
struct FloorRecord {
  Counters counters;
  std::vector<FloorRule> rules;
  std::vector<std::uint32_t> index;  // 1 + the place of the rule, 0: none
  std::vector<Vorel::IntfId> intfs;

  FloorRule& ruleIs(AclRuleKey const& key, SubRuleData const& subRule) {
    if (4 * (rules.size() + 1) > 3 * index.size()) {
      index.assign(std::max<std::size_t>(16, 2 * index.size()), 0);
      for (std::uint32_t place = 0; place != rules.size(); ++place) {
        slotOf(rules[place].key) = place + 1;
      }
    }
    std::uint32_t& slot = slotOf(key);
    if (slot == 0) {
      rules.push_back({key, subRule, {}, {}, {}});
      slot = static_cast<std::uint32_t>(rules.size());
    }
    return rules[slot - 1];
  }
  std::uint32_t& slotOf(AclRuleKey const& key) {
    std::size_t place = key.hash() & (index.size() - 1);
    while (index[place] != 0 && !(rules[index[place] - 1].key == key)) {
      place = (place + 1) & (index.size() - 1);
    }
    return index[place];
  }
};

// The least that records the same: everything about a rule in one element of a vector, which an
// index finds by linear probing, and interfaces in a vector. A deleted policy keeps its memory.
class Floor : public Records<FloorRecord> {
 public:
  Kor::String addRule(AclRuleKey const& key, SubRuleData const& subRule, PolicyData const& data,
                      ClassData const& classData) {
    Record& record = of(data, key.matchOption());
    Rule& rule = record.ruleIs(key, subRule);
    rule.match = classData->getIpRule(key);
    if (!rule.has(subRule)) {
      rule.others.push_back(subRule);
    }
    recordActions(rule, classData);
    record.counters.dirty = true;
    return {};
  }
  Kor::String addIntfToPolicy(PolicyData const& data, Vorel::IntfId intf,
                              ClassMapMatchOption option) {
    of(data, option).intfs.push_back(intf);
    return {};
  }
  Kor::String updateAction(AclRuleKey const& key, SubRuleData const& subRule,
                           PolicyData const& data, ClassData const& classData) {
    Rule& rule = of(data, key.matchOption()).ruleIs(key, subRule);
    recordActions(rule, classData);
    return rule.has(subRule) ? Kor::String() : Kor::String("unknown");
  }
  Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) {
    Record& record = of(data, option);
    record.counters.created = false;
    record.rules.clear();
    std::fill(record.index.begin(), record.index.end(), 0U);
    record.intfs.clear();
    return {};
  }

 private:
  using Rule = FloorRule;
  using Record = FloorRecord;

  static void recordActions(Rule& rule, ClassData const& classData) {
    auto const values = classData.as<PolicyMapTest::TestClassCommonData const>();
    rule.actions = {values->action1Value(), values->action2Value(), values->action3Value()};
  }
};

#ifdef BENCH_WITH_ABSL
template <class Key, class Value>
using FlatTable = absl::flat_hash_map<Key, Value, Hash>;
template <class Key>
using FlatTableSet = absl::flat_hash_set<Key, Hash>;
#endif

// mocks ----------------------------------------------------------------------------------

class Mock {
 public:
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
class MockWithDefaults : public testing::NiceMock<Mock> {
 public:
  MockWithDefaults() {
    using testing::Invoke;
    using Target = decltype(fake_);
    ON_CALL(*this, createPolicy).WillByDefault(Invoke(&fake_, &Target::createPolicy));
    ON_CALL(*this, addRule).WillByDefault(Invoke(&fake_, &Target::addRule));
    ON_CALL(*this, addIntfToPolicy).WillByDefault(Invoke(&fake_, &Target::addIntfToPolicy));
    ON_CALL(*this, commitPolicy).WillByDefault(Invoke(&fake_, &Target::commitPolicy));
    ON_CALL(*this, updateAction).WillByDefault(Invoke(&fake_, &Target::updateAction));
    ON_CALL(*this, deletePolicy).WillByDefault(Invoke(&fake_, &Target::deletePolicy));
  }

 private:
  Fake<Table, TableSet> fake_;
};

// The calls of a policy are expected with their keys, as a test writes it.
void driveExpectations(benchmark::State& state) {
  Policy const policy;
  for (auto _ : state) {
    Mock mock;
    Fake<Table, TableSet> fake;
    using testing::Invoke;
    auto const& any = testing::_;  // the loop has a variable of that name
    using Target = decltype(fake);
    EXPECT_CALL(mock, createPolicy).WillOnce(Invoke(&fake, &Target::createPolicy));
    for (AclRuleKey const& key : policy.keys) {
      EXPECT_CALL(mock, addRule(key, any, any, any))
          .WillOnce(Invoke(&fake, &Target::addRule))
          .RetiresOnSaturation();
      EXPECT_CALL(mock, updateAction(key, any, any, any))
          .WillOnce(Invoke(&fake, &Target::updateAction))
          .RetiresOnSaturation();
    }
    EXPECT_CALL(mock, addIntfToPolicy).WillRepeatedly(Invoke(&fake, &Target::addIntfToPolicy));
    EXPECT_CALL(mock, commitPolicy).WillOnce(Invoke(&fake, &Target::commitPolicy));
    EXPECT_CALL(mock, deletePolicy).WillOnce(Invoke(&fake, &Target::deletePolicy));
    drive(mock, policy);
  }
}

// works ----------------------------------------------------------------------------------

template <class Helper>
decltype(auto) callable(Helper& helper) {
  if constexpr (std::is_same_v<Helper, Ours>) {
    return *helper;
  } else {
    return (helper);
  }
}

template <class Helper>
void wholePolicy(benchmark::State& state) {
  Policy const policy;
  Helper helper;
  for (auto _ : state) {
    drive(callable(helper), policy);
  }
}

template <class Helper>
void secondPass(benchmark::State& state) {
  Policy const policy;
  Helper helper;
  callable(helper).createPolicy(policy.policyData, ClassMapMatchOption::ipv4);
  addRules(callable(helper), policy);
  for (auto _ : state) {
    updateRules(callable(helper), policy);
  }
  state.SetItemsProcessed(state.iterations() * ruleCount);
}

double heapBytes() {
  struct mallinfo2 const heap = mallinfo2();
  return static_cast<double>(heap.uordblks + heap.hblkhd);
}

// Bytes per rule of many policies, so that what a pool or a table keeps in reserve counts little.
template <class Helper>
double bytesPerRule() {
  constexpr int policies = 100;
  Policy policy;
  Helper helper;
  double const before = heapBytes();
  for (int number = 0; number < policies; ++number) {
    policy.policyData = Kor::make<PolicyMap::PolicyMapSmCommonData>(
        PolicyMap::PolicyMapSmKey(Kor::String("policy" + std::to_string(number)), "input"));
    callable(helper).createPolicy(policy.policyData, ClassMapMatchOption::ipv4);
    addRules(callable(helper), policy);
  }
  return (heapBytes() - before) / (policies * ruleCount);
}

// Measured in a process of its own, whose pools have nothing to reuse.
template <class Helper>
void memory(benchmark::State& state) {
  for (auto _ : state) {
    std::array<int, 2> pipe{};
    double bytes = 0;
    if (::pipe(pipe.data()) != 0) {
      state.SkipWithError("no pipe");
      return;
    }
    pid_t const child = fork();
    if (child == 0) {
      bytes = bytesPerRule<Helper>();
      _exit(write(pipe[1], &bytes, sizeof bytes) == sizeof bytes ? 0 : 1);
    }
    close(pipe[1]);
    if (read(pipe[0], &bytes, sizeof bytes) != sizeof bytes) {
      state.SkipWithError("the measurement failed");
    }
    close(pipe[0]);
    waitpid(child, nullptr, 0);
    Contest::measured(state, bytes);
  }
}

[[maybe_unused]] bool const entered = [] {
  using Contest::enter;
  char const* const policy = "policy of 1000 rules";
  enter(policy, "ours", &wholePolicy<Ours>);
  enter(policy, "floor", &wholePolicy<Floor>);
  enter(policy, "unordered_map", &wholePolicy<Fake<Table, TableSet>>);
  enter(policy, "ON_CALL", &wholePolicy<MockWithDefaults>);
  enter(policy, "EXPECT_CALL", &driveExpectations);
  char const* const named = "policy of 1000 rules, by name";
  enter(named, "ours", &wholePolicy<ByName>);
  enter(named, "direct", &wholePolicy<Ours>);
  char const* const second = "second pass over a filled record, per call";
  enter(second, "ours", &secondPass<Ours>);
  enter(second, "floor", &secondPass<Floor>);
  enter(second, "unordered_map", &secondPass<Fake<Table, TableSet>>);
  char const* const bytes = "heap bytes per recorded rule";
  enter(bytes, "ours", &memory<Ours>)->Iterations(1);
  enter(bytes, "floor", &memory<Floor>)->Iterations(1);
  enter(bytes, "unordered_map", &memory<Fake<Table, TableSet>>)->Iterations(1);
#ifdef BENCH_WITH_ABSL
  enter(policy, "flat map", &wholePolicy<Fake<FlatTable, FlatTableSet>>);
  enter(second, "flat map", &secondPass<Fake<FlatTable, FlatTableSet>>);
  enter(bytes, "flat map", &memory<Fake<FlatTable, FlatTableSet>>)->Iterations(1);
#endif
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
