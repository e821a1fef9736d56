// SPDX-License-Identifier: Apache-2.0
#pragma once

// Settings: the configuration read so far, as plain values. Copies share what is not edited, so
// they are cheap. A file is applied to a copy, which is kept only if the whole file was valid.

#include "records/TestActionKinds.h"
#include "testkit/Export.h"
#include "testkit/config/InterfaceAddresses.h"
#include "testkit/config/NameOrder.h"
#include "testkit/config/NumberedEntries.h"
#include "testkit/config/ObjectGroups.h"
#include "testkit/text/RuleConversion.h"
#include "testkit/text/Statement.h"

#include <PolicyMap/ClassMapMatch.h>
#include <Vorel/IntfId.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace PolicyMapTestKit::Text {

// A value shared by copies of the settings until one of them edits it.
template <class Value>
class Shared {
 public:
  Shared() : value_(std::make_shared<Value>()) {}

  Value const& operator*() const { return *value_; }
  Value const* operator->() const { return value_.get(); }
  // For writing. Unshares the value first.
  Value& edit() {
    if (value_.use_count() != 1) {
      value_ = std::make_shared<Value>(*value_);
    }
    return *value_;
  }
  // True if both share one object, and so are equal.
  bool sameAs(Shared const& other) const { return value_ == other.value_; }

 private:
  std::shared_ptr<Value> value_;
};

struct Remark {
  std::string text;

  bool operator==(Remark const&) const = default;
};

// An entry that was skipped. The entries after a `deny` would match what it denies, so they are not
// configured.
struct SkippedEntry {
  SourcePosition place;
  SkippedKind kind = SkippedKind::other;

  bool operator==(SkippedEntry const& other) const {
    return place.line == other.place.line && *place.file == *other.place.file;
  }
};

// A line of an access list. A rule with alternatives is a ListRule, any other a ConfiguredRule.
using ListEntry = std::variant<ConfiguredRule, Remark, ListRule, SkippedEntry>;

struct POLICYMAPTESTKIT_API ListEntryHash {
  std::uint32_t operator()(ListEntry const& entry) const;
};

// The lines of an access list by number. Remarks are found without a search through the rules.
class POLICYMAPTESTKIT_API ListEntries {
 public:
  using Entries = NumberedEntries<ListEntry, ListEntryHash>;

  Entries::ByNumber const& byNumber() const noexcept { return entries_.byNumber(); }
  std::size_t size() const noexcept { return entries_.size(); }
  // True if what is configured is not the rules as they are: a line has alternatives, or was
  // skipped.
  bool needExpansion() const noexcept { return !expanding_.empty(); }
  ListEntry const* find(std::uint32_t number) const { return entries_.find(number); }
  std::optional<std::uint32_t> numberOf(ListEntry const& entry) { return entries_.numberOf(entry); }
  std::optional<std::uint32_t> nextNumber() const { return entries_.nextNumber(); }
  void put(std::uint32_t number, ListEntry entry);
  bool erase(std::uint32_t number);
  void eraseRemarks();

 private:
  Entries entries_;
  std::set<std::uint32_t> remarks_;
  std::set<std::uint32_t> expanding_;
};

struct AccessList {
  // Matches source addresses only.
  bool standard = false;
  ListEntries entries;
};

struct POLICYMAPTESTKIT_API MatchHash {
  std::uint32_t operator()(PolicyMap::ClassMapMatch const& match) const;
};

struct ClassMap {
  ClassMatch match = ClassMatch::all;
  // By place.
  NumberedEntries<PolicyMap::ClassMapMatch, MatchHash> matches;
};

// The values of the actions of one class, by kind; none for an action that it does not have.
using ClassActions = std::array<std::optional<std::uint32_t>, PolicyMapTest::testActionKinds>;

// What a class does that is no number.
struct OtherAction {
  std::string text;
  // The kind of action, from 1, whose value is the number of the text.
  std::uint8_t action = otherAction;
};

struct PolicyMapSettings {
  // The classes in matching order.
  NameOrder order;
  std::unordered_map<std::string, ClassActions> actions;
  // Of each class, in order.
  std::unordered_map<std::string, std::vector<OtherAction>> otherActions;
};

struct InterfaceSettings {
  // The name as it was written first, if that is not the canonical one.
  std::string written;
  InterfaceAddresses ip4;
  // None of them is primary.
  InterfaceAddresses ip6;
  // None unless configured.
  std::optional<bool> switchport;
  bool shutdown = false;
  std::optional<std::uint32_t> channelGroup;
  // Indexed by Direction; empty for none.
  std::array<std::string, 2> policyMaps;
  // Those attached with another type than `qos`, by type.
  std::array<std::map<std::string, std::string>, 2> typedPolicyMaps;
  // Lists that are attached by themselves: by Direction and Family, each by priority.
  using AccessGroups = std::array<std::map<std::uint32_t, std::string>, 3>;
  std::array<AccessGroups, 2> accessGroups;
  // Empty for none.
  std::string zone;
  // Lines that would attach something, and were skipped.
  std::set<std::string> skippedAttachments;

  bool operator==(InterfaceSettings const&) const = default;
};

struct ZonePair {
  // Its place in the order in which the zone-pairs were written.
  std::size_t order = 0;
  std::string source;
  std::string destination;
  std::string policyMap;
};

// What is written. EffectiveSettings turns it into what is configured.
struct Settings {
  using Lists = std::map<std::string, Shared<AccessList>>;

  Lists& listsOf(Family family) { return lists[static_cast<std::size_t>(family)]; }
  Lists const& listsOf(Family family) const { return lists[static_cast<std::size_t>(family)]; }

  // Indexed by Family.
  std::array<Lists, 3> lists;
  std::map<std::string, Shared<ClassMap>> classMaps;
  std::map<std::string, Shared<PolicyMapSettings>> policyMaps;
  std::map<Vorel::IntfId, InterfaceSettings> interfaces;
  // Where something may be attached that is no interface, such as the control plane.
  std::map<std::string, InterfaceSettings> elsewhere;
  Shared<ObjectGroups> objectGroups;
  std::map<std::string, ZonePair> zonePairs;
  // Bare numbers of port-channels, and the port-channels.
  std::map<std::string, Vorel::IntfId> barePortChannels;
  // What classes do that is no number; the third action is the place of its text here, from 1.
  Shared<std::vector<std::string>> otherActions;
  // None: not said, which is on for a configuration that matches MPLS, else off.
  std::optional<bool> ipRouting;
  bool ip6Routing = false;
  // The entries after a `deny` that is left out count, though they match what it denies.
  bool widening = false;
};

// The same with nothing attached anywhere.
POLICYMAPTESTKIT_API Settings withoutAttachments(Settings settings);

// The name of an interface as it is written, or the canonical one.
POLICYMAPTESTKIT_API std::string nameOf(Settings const& settings, Vorel::IntfId intf);

// "input" or "output".
POLICYMAPTESTKIT_API char const* toText(Direction direction);

}  // namespace PolicyMapTestKit::Text
