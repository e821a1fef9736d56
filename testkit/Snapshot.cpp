// SPDX-License-Identifier: Apache-2.0
#include "testkit/Snapshot.h"

#include "testkit/Printing.h"

#include <PolicyMap/PerOption.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <ostream>

namespace PolicyMapTestKit {

namespace {

using PolicyMap::AclRuleKey;
using PolicyMapTest::AclPolicyData;
using Text::ConfiguredRule;

// The places of keys in a list without equal keys.
class PlacesOfKeys {
 public:
  explicit PlacesOfKeys(std::vector<AclRuleKey> const& keys)
      : keys_(keys), slots_(std::bit_ceil(2 * keys.size() + 1), none) {
    for (std::uint32_t i = 0; i != keys.size(); ++i) {
      slots_[slotOf(keys[i])] = i;
    }
  }

  static constexpr std::uint32_t none = UINT32_MAX;
  [[nodiscard]] std::uint32_t find(AclRuleKey const& key) const { return slots_[slotOf(key)]; }

 private:
  // That of the key, or the empty one for it.
  [[nodiscard]] std::size_t slotOf(AclRuleKey const& key) const {
    std::size_t slot = key.hash() & (slots_.size() - 1);
    while (slots_[slot] != none && keys_[slots_[slot]] != key) {
      slot = (slot + 1) & (slots_.size() - 1);
    }
    return slot;
  }

  std::vector<AclRuleKey> const& keys_;
  std::vector<std::uint32_t> slots_;
};

ConfiguredRule matchOf(AclPolicyData const& data, AclRuleKey const& key) {
  auto const mac = [&] { return ConfiguredRule(data.ruleMatchMac(key)); };
  return PolicyMap::forOption(
      key.matchOption(), [&] { return ConfiguredRule(data.ruleMatch(key)); },
      [&] { return ConfiguredRule(data.ruleMatch6(key)); }, mac, mac);
}

RuleRecord readRule(AclPolicyData const& data, AclRuleKey const& key) {
  RuleRecord rule{key, matchOf(data, key), {}, {}};
#define POLICYMAPTEST_ROW(kind) rule.actions[(kind)-1] = data.ruleAction##kind(key);
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  data.forEachSubRule(
      key, [&rule](PolicyMap::SubRuleData const& subRule) { rule.subRules.push_back(subRule); });
  std::sort(rule.subRules.begin(), rule.subRules.end());
  return rule;
}

// The keys of the recorded rules. Each key has one match.
std::vector<AclRuleKey> keysOf(AclPolicyData const& data) {
  std::vector<AclRuleKey> keys;
  auto const add = [&keys](auto matches) {
    for (auto const& entry : matches) {
      keys.push_back(entry.key());
    }
  };
  add(data.ruleMatchIteratorConst());
  add(data.ruleMatch6IteratorConst());
  add(data.ruleMatchMacIteratorConst());
  return keys;
}

// The keys in the order of programming. What a test wrote into the record by itself comes last, in
// key order.
std::vector<AclRuleKey> keysInOrder(AclPolicyData const& data,
                                    std::vector<AclRuleKey> const& added) {
  std::vector<AclRuleKey> const all = keysOf(data);
  PlacesOfKeys const places(all);
  std::vector<bool> isOrdered(all.size());
  std::vector<AclRuleKey> ordered;
  ordered.reserve(all.size());
  for (AclRuleKey const& key : added) {
    std::uint32_t const place = places.find(key);
    if (place != PlacesOfKeys::none && !isOrdered[place]) {
      isOrdered[place] = true;
      ordered.push_back(key);
    }
  }
  auto const known = static_cast<std::ptrdiff_t>(ordered.size());
  for (std::size_t place = 0; place != all.size(); ++place) {
    if (!isOrdered[place]) {
      ordered.push_back(all[place]);
    }
  }
  std::sort(ordered.begin() + known, ordered.end());
  return ordered;
}

// Without its rules.
Record readRecord(AclPolicyData const& data) {
  Record record;
  record.policy = data.key().policyKey().first().stdString();
  record.direction = data.key().policyKey().second().stdString();
  record.option = data.key().option();
  record.created = data.created();
  record.dirty = data.dirty();
  record.createCount = data.createCount();
  record.commitCount = data.commitCount();
  record.beginUpdateActionCount = data.beginUpdateActionCount();
  record.endUpdateActionCount = data.endUpdateActionCount();
  for (auto const& entry : data.intfIteratorConst()) {
    record.interfaces.push_back(entry.key());
  }
  std::sort(record.interfaces.begin(), record.interfaces.end());
  record.ruleCount = std::uint64_t{data.ruleMatchs()} + data.ruleMatch6s() + data.ruleMatchMacs();
  data.forEachSubRule([&record](PolicyMap::SubRuleData const&) { ++record.subRuleCount; });
  return record;
}

}  // namespace

void forEachRecord(RecordedHelper const& recorded,
                   std::function<void(Record const&, EachRule const&)> const& visit) {
  std::vector<Kor::Ptr<AclPolicyData const>> records;
  for (auto const& entry : recorded.helper->testDataIteratorConst()) {
    records.push_back(entry.value());
  }
  std::sort(records.begin(), records.end(),
            [](auto const& a, auto const& b) { return a->key() < b->key(); });
  for (auto const& record : records) {
    visit(readRecord(*record), [&](std::function<void(RuleRecord const&)> const& visitRule) {
      for (AclRuleKey const& key :
           keysInOrder(*record, recorded.recorder->rulesAdded(record->key()))) {
        visitRule(readRule(*record, key));
      }
    });
  }
}

void forEachRecord(RecordedHelper const& recorded, WithRules withRules,
                   std::function<void(Record const&)> const& visit) {
  forEachRecord(recorded, [&](Record const& record, EachRule const& eachRule) {
    if (withRules == WithRules::no) {
      visit(record);
      return;
    }
    Record whole = record;
    whole.rules.reserve(record.ruleCount);
    eachRule([&whole](RuleRecord const& rule) { whole.rules.push_back(rule); });
    visit(whole);
  });
}

Snapshot snapshotOf(RecordedHelper const& helper, WithRules withRules) {
  std::vector<Record> records;
  forEachRecord(helper, withRules, [&](Record const& record) { records.push_back(record); });
  return Snapshot(std::move(records));
}

Record const& Snapshot::record(std::string_view policyMap, std::string_view direction,
                               std::optional<PolicyMap::ClassMapMatchOption> option) const {
  std::vector<Record const*> found;
  std::vector<std::string> known;
  for (Record const& record : records_) {
    known.push_back(record.name());
    if (record.policy == policyMap && record.direction == direction &&
        (!option || record.option == *option)) {
      found.push_back(&record);
    }
  }
  if (found.size() > 1 && std::any_of(found.begin(), found.end(),
                                      [](Record const* record) { return record->created; })) {
    std::erase_if(found, [](Record const* record) { return !record->created; });
  }
  if (found.size() == 1) {
    return *found.front();
  }
  std::string wanted = std::string(policyMap) + "/" + std::string(direction);
  if (option) {
    wanted += " " + toText(*option);
  }
  if (found.empty()) {
    throw LookupError("record", wanted, known);
  }
  std::string names;
  for (Record const* const record : found) {
    names += (names.empty() ? "'" : ", '") + record->name() + "'";
  }
  throw LookupError("more than one record '" + wanted + "': " + names +
                    (option ? "" : "; name the option"));
}

std::ostream& operator<<(std::ostream& out, Snapshot const& snapshot) {
  if (snapshot.empty()) {
    return out << "no records";
  }
  char const* separator = "";
  for (Record const& record : snapshot) {
    out << separator << record;
    separator = "\n";
  }
  return out;
}

}  // namespace PolicyMapTestKit
