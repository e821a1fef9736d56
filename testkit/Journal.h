// SPDX-License-Identifier: Apache-2.0
#pragma once

// Journal: what happened in a Lab, in order: each call of the helper with its arguments and its
// result, asynchronous results, and what the test did. The entries are values.
//
//   for (JournalEntry const& call : lab.journal().calls("addRule").ofPolicy("edge")) { ... }

#include "records/TestActionKinds.h"
#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/text/Statement.h"

#include <Kor/EventLoop.h>
#include <PolicyMap/PolicyMapSmKey.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

struct POLICYMAPTESTKIT_API JournalEntry {
  enum class Kind : std::uint8_t {
    call,    // of an operation of the helper
    result,  // of an asynchronous operation
    status,  // of a policy has changed: `operation` is "programmed", "failure", ...; see
             // LabOptions::journalStatuses
    test,    // what the test did: `operation` is "load", "write", "advance", "trigger", ...
  };
  using Actions = std::array<std::uint32_t, PolicyMapTest::testActionKinds>;

  Kind kind = Kind::call;
  // Counts from 1.
  std::uint64_t number = 0;
  // In seconds of the lab's clock, at the beginning of the call.
  double time = 0;
  // The name of the helper's function, e.g. "addRule"; it outlives the entry.
  std::string_view operation;
  // The arguments that the operation has.
  std::optional<PolicyMap::PolicyMapSmKey> policy;
  std::optional<PolicyMap::ClassMapMatchOption> option;
  std::optional<Vorel::IntfId> intf;
  Kor::Name className;
  // For addRule, updateAction and getCountForRule. The match only for addRule.
  std::optional<PolicyMap::AclRuleKey> rule;
  PolicyMap::SubRuleData subRule;
  std::optional<Text::ConfiguredRule> match;
  std::optional<Actions> actions;
  // The result: "" for success; for getCountForRule the packets.
  Kor::String error;
  std::uint64_t count = 0;
  // True if the operation threw; `error` has the text of the exception.
  bool threw = false;
  // For calls: why the core calls it, e.g. "rules changed"; empty for a call by the test.
  std::string_view cause;
  // For what the test did: its argument. For a status: its new value. For calls: what the test did
  // last before the call, e.g. "load policy text", or what it wrote: "write class-map web,
  // policy-map edge".
  Kor::String text;

  // One line without number and time: "addRule edge/input ipv4 web web:10 permit tcp any any eq 80
  // action1=7 -> table full".
  [[nodiscard]] std::string describe() const;
  // Of a call: the operation and its arguments, without the result.
  [[nodiscard]] std::string describeCall() const;
  // True for a call that the core makes for the same policy and cause as the call `before`.
  [[nodiscard]] bool continues(JournalEntry const& before) const;
};

// "12 t=0.5 " and describe(). Result, time and text of what the test did are part of the line.
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, JournalEntry const& entry);

class POLICYMAPTESTKIT_API Journal {
 public:
  using const_iterator = std::deque<JournalEntry>::const_iterator;

  // Keeps at most `limit` entries, the newest; times are those of `loop`, which must outlive the
  // writes.
  Journal(Kor::EventLoop& loop, std::size_t limit) : loop_(&loop), limit_(limit) {}

  [[nodiscard]] const_iterator begin() const { return entries_.begin(); }
  [[nodiscard]] const_iterator end() const { return entries_.end(); }
  [[nodiscard]] std::size_t size() const { return entries_.size(); }
  [[nodiscard]] bool empty() const { return entries_.empty(); }
  // The number of entries that were dropped.
  [[nodiscard]] std::uint64_t dropped() const { return dropped_; }

  // Copies of some entries, in order.
  // The calls of the helper; with an operation only those. Throws LookupError if there is no such
  // operation.
  [[nodiscard]] Journal calls(std::string_view operation = {}) const;
  [[nodiscard]] Journal ofPolicy(std::string_view policyMap) const;
  [[nodiscard]] Journal ofClass(std::string_view className) const;
  // "LIST NUMBER", e.g. "web 10"; or "NUMBER" for a rule of the class-map itself.
  [[nodiscard]] Journal ofRule(std::string_view rule) const;
  // The lines of the printed journal, without the number of dropped entries.
  [[nodiscard]] std::vector<std::string> lines() const;
  // From this entry number on.
  [[nodiscard]] Journal since(std::uint64_t number) const;
  [[nodiscard]] Journal failed() const;

  // The innermost call that has begun and not returned; null if none, or if it was dropped.
  [[nodiscard]] JournalEntry const* openCall() const;
  // The number of the next entry.
  [[nodiscard]] std::uint64_t next() const { return written_ + 1; }
  // Removes all entries. Numbers go on.
  void clear();

  // Writing. `operation` must outlive the journal.
  void testDid(std::string_view operation, Kor::String const& text);
  // The test wrote to an object, e.g. "class-map web". If the newest entry is the same, it counts
  // for both.
  void testWrote(Kor::String const& object);
  // Enters a call when it begins, and returns its number; then its result.
  std::uint64_t begin(HelperCall const& call, std::string_view cause = {});
  void end(std::uint64_t number, HelperCall const& call, bool threw);
  void resultArrived(Kor::String const& error);
  // `attribute` must outlive the journal.
  void statusChanged(PolicyMap::PolicyMapSmKey const& policy,
                     std::optional<PolicyMap::ClassMapMatchOption> option,
                     std::string_view attribute, std::string const& value);

 private:
  JournalEntry& add(JournalEntry::Kind kind, std::string_view operation);
  // Null if it was dropped or cleared.
  [[nodiscard]] JournalEntry const* entry(std::uint64_t number) const;
  static void enterClass(JournalEntry& entry, HelperCall const& call);
  template <class Wanted>
  Journal some(Wanted const& wanted) const;

  Kor::EventLoop* loop_;
  std::size_t limit_;
  std::deque<JournalEntry> entries_;
  std::uint64_t written_ = 0;
  std::uint64_t dropped_ = 0;
  std::vector<std::uint64_t> openCalls_;  // by number, the innermost last
  Kor::String lastStep_;
  unsigned objectsWritten_ = 0;  // that lastStep_ names; 0: it is no write
};

// The names of the helper's operations, in the order of the documentation.
POLICYMAPTESTKIT_API std::vector<std::string> operationNames();
// Throws LookupError if the helper has no operation of this name.
POLICYMAPTESTKIT_API void needOperation(std::string_view name);

// One line per entry. The first of several calls in a row that have the same policy and cause ends
// with the cause: " (rules changed)".
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, Journal const& journal);

}  // namespace PolicyMapTestKit
