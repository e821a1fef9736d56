// SPDX-License-Identifier: Apache-2.0
#include "testkit/Journal.h"

#include "machines/TestClassCommonData.h"
#include "testkit/Printing.h"
#include "testkit/Record.h"
#include "testkit/text/RuleConversion.h"

#include <PolicyMap/HelperOperationModels.h>
#include <PolicyMap/PerOption.h>

#include <algorithm>
#include <ostream>
#include <sstream>

namespace PolicyMapTestKit {

namespace {

using PolicyMapTest::TestClassCommonData;
using Text::ConfiguredRule;

ConfiguredRule matchOf(PolicyMap::AclRuleKey const& key,
                       PolicyMap::ClassMapSmCommonData const& data) {
  auto const mac = [&] { return ConfiguredRule(data.getMacRule(key)); };
  return PolicyMap::forOption(
      key.matchOption(), [&] { return ConfiguredRule(data.getIpRule(key)); },
      [&] { return ConfiguredRule(data.getIp6Rule(key)); }, mac, mac);
}

JournalEntry::Actions actionsOf(TestClassCommonData const& data) {
  return {
#define POLICYMAPTEST_ROW(kind) data.action##kind##Value(),
      POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  };
}

// The operations that take the values of the actions.
bool hasActions(std::string_view operation) {
  return operation == "addRule" || operation == "updateAction";
}

void describeArguments(std::ostream& out, JournalEntry const& entry) {
  if (entry.policy) {
    out << ' ' << nameOf(*entry.policy);
  }
  if (entry.option) {
    out << ' ' << *entry.option;
  }
  if (entry.intf) {
    out << ' ' << entry.intf->name();
  }
  if (!entry.className.empty()) {
    out << ' ' << entry.className;
  }
  if (entry.rule) {
    out << ' ' << nameInList(*entry.rule);
  }
  if (entry.match) {
    out << ' ' << Text::describe(*entry.match);
  }
  if (entry.rule && !!entry.subRule) {
    out << " (" << describe(entry.subRule) << ")";
  }
  if (entry.actions) {
    for (std::size_t i = 0; i != entry.actions->size(); ++i) {
      if ((*entry.actions)[i] != 0) {
        out << ' ' << PolicyMapTest::testActionNames[i] << '=' << (*entry.actions)[i];
      }
    }
  }
}

}  // namespace

std::string JournalEntry::describe() const {
  std::ostringstream out;
  switch (kind) {
  case Kind::test: out << "[" << operation << (text.empty() ? "" : " ") << text << "]"; break;
  case Kind::status:
    out << "status of " << nameOf(*policy);
    if (option) {
      out << ' ' << *option;
    }
    out << ": " << operation << ' ' << (text.empty() ? Kor::String("-") : text);
    break;
  case Kind::result: out << "result: " << (error.empty() ? Kor::String("done") : error); break;
  case Kind::call:
    out << describeCall();
    if (!error.empty()) {
      out << (threw ? " -> throws " : " -> ") << error;
    } else if (operation == "getCountForRule") {
      out << " -> " << count;
    }
  }
  return out.str();
}

std::string JournalEntry::describeCall() const {
  std::ostringstream out;
  out << operation;
  describeArguments(out, *this);
  return out.str();
}

bool JournalEntry::continues(JournalEntry const& before) const {
  return kind == Kind::call && before.kind == Kind::call && policy == before.policy &&
         cause == before.cause;
}

std::ostream& operator<<(std::ostream& out, JournalEntry const& entry) {
  return out << entry.number << " t=" << entry.time << ' ' << entry.describe();
}

std::ostream& operator<<(std::ostream& out, Journal const& journal) {
  if (journal.dropped() != 0) {
    out << journal.dropped() << " earlier entries\n";
  }
  for (std::string const& line : journal.lines()) {
    out << line << '\n';
  }
  return out;
}

std::vector<std::string> Journal::lines() const {
  std::vector<std::string> lines;
  JournalEntry const* before = nullptr;
  for (JournalEntry const& entry : entries_) {
    std::ostringstream line;
    line << entry;
    if (!entry.cause.empty() && (before == nullptr || !entry.continues(*before))) {
      line << " (" << entry.cause << ")";
    }
    lines.push_back(line.str());
    before = &entry;
  }
  return lines;
}

// writing -------------------------------------------------------------------------------

JournalEntry& Journal::add(JournalEntry::Kind kind, std::string_view operation) {
  if (entries_.size() == limit_) {
    entries_.pop_front();
    ++dropped_;
  }
  JournalEntry& entry = entries_.emplace_back();
  entry.kind = kind;
  entry.number = ++written_;
  entry.time = loop_->now();
  entry.operation = operation;
  entry.text = lastStep_;
  return entry;
}

void Journal::testDid(std::string_view operation, Kor::String const& text) {
  if (limit_ == 0) {
    return;
  }
  std::string const step = std::string(operation) + (text.empty() ? "" : " ") + text.stdString();
  lastStep_ = Kor::String(step);
  objectsWritten_ = 0;
  add(JournalEntry::Kind::test, operation).text = text;
}

void Journal::testWrote(Kor::String const& object) {
  constexpr std::string_view operation = "write";
  constexpr unsigned mostNamed = 4;
  if (limit_ == 0) {
    return;
  }
  JournalEntry const* const newest = entries_.empty() ? nullptr : &entries_.back();
  bool const inARow = newest != nullptr && newest->operation == operation;
  if (inARow && newest->text == object) {
    return;
  }
  objectsWritten_ = inARow ? objectsWritten_ + 1 : 1;
  if (objectsWritten_ == 1) {
    lastStep_ = Kor::String(std::string(operation) + " " + object.stdString());
  } else if (objectsWritten_ <= mostNamed) {
    lastStep_ = Kor::String(lastStep_.stdString() + ", " + object.stdString());
  } else if (objectsWritten_ == mostNamed + 1) {
    lastStep_ = Kor::String(lastStep_.stdString() + ", ...");
  }
  add(JournalEntry::Kind::test, operation).text = object;
}

std::uint64_t Journal::begin(HelperCall const& call, std::string_view cause) {
  if (limit_ == 0) {
    return 0;
  }
  JournalEntry& entry = add(JournalEntry::Kind::call, call.operation);
  if (call.policy != nullptr && *call.policy) {
    entry.policy = (*call.policy)->policyKey();
  }
  entry.option = call.option;
  entry.cause = cause;
  entry.intf = call.intf;
  if (call.classData != nullptr && *call.classData) {
    enterClass(entry, call);
  }
  openCalls_.push_back(entry.number);
  return entry.number;
}

void Journal::enterClass(JournalEntry& entry, HelperCall const& call) {
  PolicyMap::ClassMapSmCommonData const& data = **call.classData;
  entry.className = data.name();
  if (call.rule == nullptr) {
    return;
  }
  entry.rule = *call.rule;
  if (call.subRule != nullptr) {
    entry.subRule = *call.subRule;
  }
  if (call.operation == "addRule") {
    entry.match = matchOf(*call.rule, data);
  }
  if (hasActions(call.operation)) {
    if (auto const* const test = dynamic_cast<TestClassCommonData const*>(&data)) {
      entry.actions = actionsOf(*test);
    }
  }
}

void Journal::end(std::uint64_t number, HelperCall const& call, bool threw) {
  std::erase(openCalls_, number);
  if (entry(number) != nullptr) {
    JournalEntry& ended = entries_[number - entries_.front().number];
    ended.error = call.error;
    ended.count = call.count;
    ended.threw = threw;
  }
}

JournalEntry const* Journal::entry(std::uint64_t number) const {
  bool const kept =
      !entries_.empty() && number >= entries_.front().number && number <= entries_.back().number;
  return kept ? &entries_[number - entries_.front().number] : nullptr;
}

JournalEntry const* Journal::openCall() const {
  return openCalls_.empty() ? nullptr : entry(openCalls_.back());
}

void Journal::resultArrived(Kor::String const& error) {
  if (limit_ != 0) {
    add(JournalEntry::Kind::result, "result").error = error;
  }
}

void Journal::statusChanged(PolicyMap::PolicyMapSmKey const& policy,
                            std::optional<PolicyMap::ClassMapMatchOption> option,
                            std::string_view attribute, std::string const& value) {
  if (limit_ != 0) {
    JournalEntry& entry = add(JournalEntry::Kind::status, attribute);
    entry.policy = policy;
    entry.option = option;
    entry.text = Kor::String(value);
  }
}

void Journal::clear() {
  entries_.clear();
  dropped_ = 0;
}

// queries -------------------------------------------------------------------------------

template <class Wanted>
Journal Journal::some(Wanted const& wanted) const {
  Journal found(*loop_, limit_);
  for (JournalEntry const& entry : entries_) {
    if (wanted(entry)) {
      found.entries_.push_back(entry);
    }
  }
  found.written_ = written_;
  return found;
}

std::vector<std::string> operationNames() {
  using Helper = PolicyMap::PolicyMapAclHelper;
  std::vector<std::string> names;
  names.reserve(PolicyMap::helperOperationAttrs<Helper>.size());
  for (auto const& row : PolicyMap::helperOperationAttrs<Helper>) {
    names.emplace_back(row.name);
  }
  return names;
}

void needOperation(std::string_view name) {
  std::vector<std::string> const known = operationNames();
  if (std::find(known.begin(), known.end(), name) == known.end()) {
    throw LookupError("operation", name, known);
  }
}

Journal Journal::calls(std::string_view operation) const {
  if (!operation.empty()) {
    needOperation(operation);
  }
  return some([&](JournalEntry const& entry) {
    return entry.kind == JournalEntry::Kind::call &&
           (operation.empty() || entry.operation == operation);
  });
}

Journal Journal::ofPolicy(std::string_view policyMap) const {
  return some([&](JournalEntry const& entry) {
    return entry.policy && entry.policy->first().stdString() == policyMap;
  });
}

Journal Journal::ofClass(std::string_view className) const {
  return some([&](JournalEntry const& entry) { return entry.className.stdString() == className; });
}

Journal Journal::ofRule(std::string_view rule) const {
  return some(
      [&](JournalEntry const& entry) { return entry.rule && nameInList(*entry.rule) == rule; });
}

Journal Journal::since(std::uint64_t number) const {
  return some([&](JournalEntry const& entry) { return entry.number >= number; });
}

Journal Journal::failed() const {
  return some([](JournalEntry const& entry) { return !entry.error.empty(); });
}

}  // namespace PolicyMapTestKit
