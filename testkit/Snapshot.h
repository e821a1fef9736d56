// SPDX-License-Identifier: Apache-2.0
#pragma once

// Snapshot: all records of a helper as values, ordered by policy-map, direction and option.

#include "testkit/Export.h"
#include "testkit/Record.h"
#include "testkit/Recorder.h"

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

enum class WithRules : std::uint8_t { no, yes };

class POLICYMAPTESTKIT_API Snapshot {
 public:
  Snapshot() = default;
  // In the order of forEachRecord().
  explicit Snapshot(std::vector<Record> records) : records_(std::move(records)) {}

  [[nodiscard]] auto begin() const { return records_.begin(); }
  [[nodiscard]] auto end() const { return records_.end(); }
  [[nodiscard]] std::size_t size() const { return records_.size(); }
  [[nodiscard]] bool empty() const { return records_.empty(); }
  bool operator==(Snapshot const&) const = default;

  // The record of a policy-map in one direction. Without an option: the only one that is created,
  // or else the only one. Throws LookupError if there is none or more than one.
  [[nodiscard]] Record const& record(
      std::string_view policyMap, std::string_view direction = "input",
      std::optional<PolicyMap::ClassMapMatchOption> option = {}) const;

 private:
  std::vector<Record> records_;
};

POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, Snapshot const& snapshot);

// Calls `visit` for each rule of a record, in the order of programming. Those that were written
// into the record without a call of the helper come last, by key. `visit` must not change the
// record.
using EachRule = std::function<void(std::function<void(RuleRecord const&)> const& visit)>;

// Calls `visit` for each record of a helper, ordered by policy-map, direction and option, with the
// record without its rules. Holds one rule at a time. `eachRule` is valid during the call.
POLICYMAPTESTKIT_API void forEachRecord(
    RecordedHelper const& helper,
    std::function<void(Record const& record, EachRule const& eachRule)> const& visit);
// The same with a record at a time.
POLICYMAPTESTKIT_API void forEachRecord(RecordedHelper const& helper, WithRules withRules,
                                        std::function<void(Record const&)> const& visit);

// All records at once.
POLICYMAPTESTKIT_API Snapshot snapshotOf(RecordedHelper const& helper,
                                         WithRules withRules = WithRules::yes);

}  // namespace PolicyMapTestKit
