// SPDX-License-Identifier: Apache-2.0
#pragma once

// Difference: what changed between two snapshots, or two records, as a value: by policy, rule and
// field.
//
//   Snapshot const before = lab.snapshot();
//   lab.load(...);
//   EXPECT_THAT(difference(before, lab.snapshot()), IsEmpty());
//   // edge/input ipv4: rule web 10: action1 7 -> 8
//   for (Change const& change : difference(before, lab.snapshot())) { ... change.kind ... }

#include "testkit/Export.h"
#include "testkit/Record.h"
#include "testkit/Snapshot.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMapTestKit {

// One change of one record. Members that the kind does not mention are empty.
struct POLICYMAPTESTKIT_API Change {
  enum class Kind : std::uint8_t {
    created,          // the policy
    removed,          // the policy: it is no longer created
    committed,        // the record is no longer dirty
    uncommitted,      // the record is dirty
    counterChanged,   // `field` is its name in the record, e.g. "commitCount"
    intfAdded,        // `after` is its name
    intfRemoved,      // `before` is its name
    ruleAdded,        // `rule`; `after` is its match
    ruleRemoved,      // `rule`; `before` is its match
    matchChanged,     // `rule`; before and after are the matches
    subRulesChanged,  // `rule`; before and after are the sub-rules, separated by " | "
    actionChanged,    // `rule`; `field` is the action, e.g. "action1"
    rulesReordered,   // of the rules in both records; before and after are the classes in order
  };

  Kind kind = Kind::created;
  std::string policy;
  std::string direction;
  PolicyMap::ClassMapMatchOption option{};
  std::optional<PolicyMap::AclRuleKey> rule = {};
  std::string field = {};
  std::string before = {};
  std::string after = {};
  // Counters and actions as numbers; for sub-rules, how many there are.
  std::uint64_t numberBefore = 0;
  std::uint64_t numberAfter = 0;

  bool operator==(Change const&) const = default;

  // One line: "edge/input ipv4: rule web 10: action1 7 -> 8". Names the class of a rule if it is
  // not also the name of its list.
  [[nodiscard]] std::string describe() const;
};

// The changes by policy-map, direction and option. Of one record, in this order: its state,
// counters, interfaces that were added, those that were removed, rules that were removed, the other
// rules in their new order, the order of the rules. The counters of rules and sub-rules are
// compared only if the rules were left out of a record.
class POLICYMAPTESTKIT_API Difference {
 public:
  Difference() = default;
  explicit Difference(std::vector<Change> changes) : changes_(std::move(changes)) {}

  [[nodiscard]] auto begin() const { return changes_.begin(); }
  [[nodiscard]] auto end() const { return changes_.end(); }
  [[nodiscard]] std::size_t size() const { return changes_.size(); }
  [[nodiscard]] bool empty() const { return changes_.empty(); }
  bool operator==(Difference const&) const = default;

 private:
  std::vector<Change> changes_;
};

// A record that is missing in a snapshot is compared as one to which nothing ever happened.
[[nodiscard]] POLICYMAPTESTKIT_API Difference difference(Snapshot const& before,
                                                         Snapshot const& after);
// The changes name the policy of `after`.
[[nodiscard]] POLICYMAPTESTKIT_API Difference difference(Record const& before, Record const& after);

POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, Change const& change);
// A line per change; "no difference" if there are none.
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, Difference const& difference);

}  // namespace PolicyMapTestKit
