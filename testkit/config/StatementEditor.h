// SPDX-License-Identifier: Apache-2.0
#pragma once

// StatementEditor: carries out statements of policy text on settings. Internal; see
// SettingsEditor.h.
//
// The statements about lists and object-groups are in ListStatements.cpp, those about class-maps
// and policy-maps in PolicyStatements.cpp, those about interfaces and zones in
// InterfaceStatements.cpp.

#include "testkit/config/Settings.h"
#include "testkit/text/Statement.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace PolicyMapTestKit::Text {

// A statement that is invalid for the current settings.
struct StatementFailure {
  SourcePosition position;
  std::string expected;
  std::string found;
  // As a skipped line.
  std::string kind;
};

class StatementEditor {
 public:
  // `settings` must outlive this object.
  explicit StatementEditor(Settings& settings) : settings_(settings) {}

  // Throws StatementFailure, and then has changed nothing.
  void carryOut(Statement const& statement) {
    statement_ = &statement;
    std::visit([this](auto const& body) { apply(body); }, statement.body);
  }

  // To be called after the last statement: the texts of what classes do become numbers. Equal texts
  // are equal numbers.
  void finish();

 private:
  // Errors
  // `found` is the text that the message quotes.
  [[noreturn]] void fail(std::string expected, std::string found, std::string kind) const;
  [[noreturn]] void fail(std::string expected, Name const& name, std::string kind) const;
  [[noreturn]] void failAbsent(std::string const& what, Name const& name) const;

  // Access lists
  AccessList* findList(AccessListId const& id);
  AccessList& existingList(AccessListId const& id);
  void apply(AccessListOpen const& body);
  void apply(AccessListRemove const& body);
  // Without a number, an entry that already exists is not repeated, so loading a text again has no
  // effect.
  void addEntry(AccessListId const& id, std::optional<std::uint32_t> const& sequence,
                ListEntry entry);
  static ListEntry entryOf(ListRule const& line);
  void apply(RuleAdd const& body);
  void apply(SkippedEntryAdd const& body);
  void apply(RemarkAdd const& body);
  void apply(RuleRemove const& body);
  void apply(RemarkRemove const& body);
  void apply(EntryRemove const& body);

  // Object-groups
  ObjectGroup& existingGroup(Name const& name);
  void apply(ObjectGroupOpen const& body);
  void apply(ObjectGroupRemove const& body);
  void apply(ObjectGroupMembers const& body);
  void apply(ObjectGroupSkipped const& body);

  // Class-maps
  ClassMap& existingClassMap(Name const& name);
  void apply(ClassMapOpen const& body);
  void apply(ClassMapRemove const& body);
  void matchIs(Name const& classMap, PolicyMap::ClassMapMatch const& match, bool remove,
               Name const& shown);
  void apply(ClassMatchList const& body);
  void apply(ClassMatchClass const& body);
  // A condition with several rules is a class-map of its own, which class-maps with the same
  // condition share. That of a condition that no rule can express does not exist.
  void apply(ClassMatchCondition const& body);
  void apply(ClassMatchRule const& body);

  // Policy-maps
  PolicyMapSettings& existingPolicyMap(Name const& name);
  [[noreturn]] void failNoClass(Name const& policyMap, Name const& className, std::string kind);
  void apply(PolicyMapOpen const& body);
  void apply(PolicyMapRemove const& body);
  void apply(PolicyClassOpen const& body);
  void apply(PolicyClassRemove const& body);
  void apply(PolicyClassAction const& body);
  void apply(PolicyClassOtherAction const& body);
  std::uint32_t numberOfOtherAction(std::string const& text);

  // Interfaces
  // Bare numbers are those of a port-channel, or of an Ethernet interface.
  std::optional<Vorel::IntfId> knownIntf(Name const& name) const;
  Vorel::IntfId intfOf(Name const& name) const;
  InterfaceSettings& interfaceOf(Name const& name);
  void apply(InterfaceOpen const& body);
  void apply(PlaceOpen const& body);
  void apply(InterfaceRemove const& body);
  void apply(InterfaceAddress const& body);
  static std::string textOf(InterfacePrefix const& prefix, Family family);
  void apply(InterfaceSwitchport const& body);
  void apply(InterfaceShutdown const& body);
  void apply(InterfaceChannelGroup const& body);
  void apply(ServicePolicy const& body);
  void apply(InterfaceAccessGroup const& body);
  void apply(SkippedAttachment const& body);
  void apply(InterfaceZone const& body);
  void apply(ZonePairOpen const& body);
  void apply(ZonePairRemove const& body);
  void apply(ZonePairPolicy const& body);
  // The port-channel has the last of the numbers, or the next one that is free.
  void apply(PortChannelName const& body);
  void apply(Routing const& body);

  Settings& settings_;
  Statement const* statement_ = nullptr;
  // Policy-maps and their classes whose texts have changed.
  std::set<std::pair<std::string, std::string>> classesWithTexts_;
};

}  // namespace PolicyMapTestKit::Text
