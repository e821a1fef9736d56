// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/SettingsEditor.h"

#include <Kor/Exception.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>

namespace PolicyMapTestKit::Text {

namespace {

// A statement that is invalid for the current settings.
struct Failure {
  SourcePosition position;
  std::string expected;
  std::string found;
  // As a skipped line.
  std::string kind;
};

std::string nameOf(Family family) {
  switch (family) {
  case Family::ip4: return "ip";
  case Family::ip6: return "ipv6";
  case Family::mac: break;
  }
  return "mac";
}

std::string nameOf(AccessListId const& list) {
  return nameOf(list.family) + " access-list " + list.name.text;
}

class Editor {
 public:
  explicit Editor(Settings& settings) : settings_(settings) {}

  void carryOut(Statement const& statement) {
    statement_ = &statement;
    std::visit([this](auto const& body) { apply(body); }, statement.body);
  }

 private:
  // Errors

  // `found` is the text that the message quotes.
  [[noreturn]] void fail(std::string expected, std::string found, std::string kind) const {
    throw Failure{statement_->subjectPosition(), std::move(expected), std::move(found),
                  std::move(kind)};
  }
  [[noreturn]] void fail(std::string expected, Name const& name, std::string kind) const {
    throw Failure{statement_->positionOf(name), std::move(expected), name.text, std::move(kind)};
  }
  [[noreturn]] void failAbsent(std::string const& what, Name const& name) const {
    fail("the name of " + what + " that exists", name,
         "no " + what.substr(what.find(' ') + 1) + " (absent)");
  }

  // Access lists

  AccessList* findList(AccessListId const& id) {
    auto& lists = settings_.listsOf(id.family);
    auto const found = lists.find(id.name.text);
    return found == lists.end() ? nullptr : &found->second.edit();
  }
  AccessList& existingList(AccessListId const& id) {
    AccessList* const list = findList(id);
    if (list == nullptr) {
      fail("the name of an " + nameOf(id.family) + " access-list that exists", id.name,
           "no " + nameOf(id.family) + " access-list (absent)");
    }
    return *list;
  }

  void apply(AccessListOpen const& body) {
    auto& lists = settings_.listsOf(body.list.family);
    auto const [found, isNew] = lists.try_emplace(body.list.name.text);
    if (isNew) {
      found->second.edit().standard = body.standard;
    } else if (found->second->standard != body.standard) {
      fail(std::string(body.standard ? "a standard" : "an extended") +
               " access-list, which the one of this name is not",
           body.list.name, nameOf(body.list.family) + " access-list (other kind)");
    }
  }

  void apply(AccessListRemove const& body) {
    existingList(body.list);
    settings_.listsOf(body.list.family).erase(body.list.name.text);
  }

  // Without a number, an entry that already exists is not repeated, so loading a text again has no
  // effect.
  void addEntry(AccessListId const& id, std::optional<std::uint32_t> const& sequence,
                ListEntry entry) {
    auto& entries = existingList(id).entries;
    if (!sequence && entries.numberOf(entry)) {
      return;
    }
    std::optional<std::uint32_t> const number = sequence ? sequence : entries.nextNumber();
    if (!number) {
      fail("a sequence number: none is left after the last entry of " + nameOf(id),
           statement_->subject.text, "access-list entry (number)");
    }
    entries.put(*number, std::move(entry));
  }

  static ListEntry entryOf(ListRule const& line) {
    return line.groups ? ListEntry(line) : ListEntry(line.rule);
  }

  void apply(RuleAdd const& body) { addEntry(body.list, body.sequence, entryOf(body.rule)); }
  void apply(RemarkAdd const& body) { addEntry(body.list, body.sequence, Remark{body.text}); }

  void apply(RuleRemove const& body) {
    auto& entries = existingList(body.list).entries;
    std::optional<std::uint32_t> const number = entries.numberOf(entryOf(body.rule));
    if (!number) {
      fail("a rule of " + nameOf(body.list), describe(body.rule.rule), "no rule (absent)");
    }
    entries.erase(*number);
  }

  void apply(RemarkRemove const& body) {
    auto& entries = existingList(body.list).entries;
    if (body.text.empty()) {
      entries.eraseRemarks();
      return;
    }
    std::optional<std::uint32_t> const number = entries.numberOf(Remark{body.text});
    if (!number) {
      fail("a remark of " + nameOf(body.list), body.text, "no remark (absent)");
    }
    entries.erase(*number);
  }

  void apply(EntryRemove const& body) {
    auto& entries = existingList(body.list).entries;
    ListEntry const* const entry = entries.find(body.sequence);
    if (entry == nullptr || (body.remarkOnly && !std::holds_alternative<Remark>(*entry))) {
      fail(std::string("the number of ") + (body.remarkOnly ? "a remark" : "an entry") + " of " +
               nameOf(body.list),
           std::to_string(body.sequence), "no access-list entry (absent)");
    }
    entries.erase(body.sequence);
  }

  // Object-groups

  ObjectGroup& existingGroup(Name const& name) {
    auto const found = settings_.objectGroups->find(name.text);
    if (found == settings_.objectGroups->end()) {
      failAbsent("an object-group", name);
    }
    return settings_.objectGroups.edit().at(name.text);
  }

  void apply(ObjectGroupOpen const& body) {
    auto const found = settings_.objectGroups->find(body.group.text);
    if (found == settings_.objectGroups->end()) {
      settings_.objectGroups.edit()[body.group.text] = {body.kind, {}, statement_->position};
    } else if (found->second.kind != body.kind) {
      fail("the kind of the object-group at " + toText(found->second.place), body.group,
           "object-group (other kind)");
    }
  }

  void apply(ObjectGroupRemove const& body) {
    existingGroup(body.group);
    settings_.objectGroups.edit().erase(body.group.text);
  }

  void apply(ObjectGroupMembers const& body) {
    std::vector<GroupMember>& members = existingGroup(body.group).members;
    for (GroupMember const& member : body.members) {
      auto const place = std::find(members.begin(), members.end(), member);
      if (!body.remove && place == members.end()) {
        members.push_back(member);
      } else if (body.remove && place == members.end()) {
        fail("a member of object-group " + body.group.text, statement_->subject,
             "no member (absent)");
      } else if (body.remove) {
        members.erase(place);
      }
    }
  }

  // Class-maps

  ClassMap& existingClassMap(Name const& name) {
    auto const found = settings_.classMaps.find(name.text);
    if (found == settings_.classMaps.end()) {
      failAbsent("a class-map", name);
    }
    return found->second.edit();
  }

  void apply(ClassMapOpen const& body) {
    auto const [found, isNew] = settings_.classMaps.try_emplace(body.classMap.text);
    if (isNew || (body.matchWritten && found->second->match != body.match)) {
      found->second.edit().match = body.match;
    }
  }

  void apply(ClassMapRemove const& body) {
    existingClassMap(body.classMap);
    settings_.classMaps.erase(body.classMap.text);
  }

  void matchIs(Name const& classMap, PolicyMap::ClassMapMatch const& match, bool remove,
               Name const& shown) {
    auto& matches = existingClassMap(classMap).matches;
    std::optional<std::uint32_t> const place = matches.numberOf(match);
    if (remove && !place) {
      fail("a match of class-map " + classMap.text, shown, "no match (absent)");
    }
    if (remove) {
      matches.erase(*place);
    } else if (!place) {
      // Numbers cannot run out: only this line assigns them, ten per line of input.
      matches.put(matches.nextNumber().value(), match);
    }
  }

  void apply(ClassMatchList const& body) {
    matchIs(body.classMap,
            PolicyMap::ClassMapMatch::acl(matchOption(body.list.family), body.list.name.text),
            body.remove, body.list.name);
  }
  void apply(ClassMatchClass const& body) {
    matchIs(body.classMap, PolicyMap::ClassMapMatch::classMap(body.nested.text), body.remove,
            body.nested);
  }
  // A condition with several rules is a class-map of its own, which class-maps with the same
  // condition share. That of a condition that no rule can express does not exist.
  void apply(ClassMatchCondition const& body) {
    MatchCondition const& condition = body.condition;
    Name const shown{condition.text, statement_->subject.column};
    if (condition.rules.size() == 1) {
      matchIs(body.classMap, ownMatch(condition.rules.front()), body.remove, shown);
      return;
    }
    std::string const name = conditionName(condition.text);
    matchIs(body.classMap, PolicyMap::ClassMapMatch::classMap(name), body.remove, shown);
    if (!condition.rules.empty() && settings_.classMaps.count(name) == 0) {
      ClassMap& conditions = settings_.classMaps[name].edit();
      conditions.match = ClassMatch::any;
      for (ConfiguredRule const& rule : condition.rules) {
        conditions.matches.put(conditions.matches.nextNumber().value(), ownMatch(rule));
      }
    }
  }
  void apply(ClassMatchRule const& body) {
    matchIs(body.classMap, ownMatch(body.rule), body.remove,
            {describe(body.rule), statement_->subject.column});
  }

  // Policy-maps

  PolicyMapSettings& existingPolicyMap(Name const& name) {
    auto const found = settings_.policyMaps.find(name.text);
    if (found == settings_.policyMaps.end()) {
      failAbsent("a policy-map", name);
    }
    return found->second.edit();
  }

  [[noreturn]] void failNoClass(Name const& policyMap, Name const& className, std::string kind) {
    fail("a class of policy-map " + policyMap.text, className, std::move(kind));
  }

  void apply(PolicyMapOpen const& body) { settings_.policyMaps.try_emplace(body.policyMap.text); }

  void apply(PolicyMapRemove const& body) {
    existingPolicyMap(body.policyMap);
    settings_.policyMaps.erase(body.policyMap.text);
  }

  void apply(PolicyClassOpen const& body) {
    PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
    std::string const& name = body.className.text;
    if (!body.insertBefore) {
      if (policyMap.actions.try_emplace(name).second) {
        policyMap.order.append(name);
      }
      return;
    }
    Name const& other = *body.insertBefore;
    if (other == body.className || policyMap.actions.count(other.text) == 0) {
      fail("another class of policy-map " + body.policyMap.text, other, "class (insert-before)");
    }
    if (!policyMap.actions.try_emplace(name).second) {
      policyMap.order.erase(name);
    }
    policyMap.order.insertBefore(name, other.text);
  }

  void apply(PolicyClassRemove const& body) {
    PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
    if (policyMap.actions.erase(body.className.text) == 0) {
      failNoClass(body.policyMap, body.className, "no class (absent)");
    }
    policyMap.order.erase(body.className.text);
  }

  void apply(PolicyClassAction const& body) {
    PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
    auto const found = policyMap.actions.find(body.className.text);
    if (found == policyMap.actions.end()) {
      failNoClass(body.policyMap, body.className, "set (no class)");
    }
    std::size_t const action = body.action - std::size_t{1};
    if (!body.value && !found->second[action]) {
      fail("an action of class " + body.className.text,
           std::string(PolicyMapTest::testActionNames[action]), "no set (absent)");
    }
    found->second[action] = body.value;
  }

  // The third action counts what the class does: equal texts are equal numbers.
  void apply(PolicyClassDeed const& body) {
    PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
    auto const found = policyMap.actions.find(body.className.text);
    if (found == policyMap.actions.end()) {
      failNoClass(body.policyMap, body.className, "action (no class)");
    }
    std::vector<std::string>& deeds = policyMap.deeds[body.className.text];
    auto const place = std::find(deeds.begin(), deeds.end(), body.text);
    if (body.remove && place == deeds.end()) {
      fail("what class " + body.className.text + " does", body.text, "no action (absent)");
    }
    if (body.remove) {
      deeds.erase(place);
    } else if (place == deeds.end()) {
      deeds.push_back(body.text);
    }
    std::string all;
    for (std::string const& deed : deeds) {
      all += (all.empty() ? "" : "; ") + deed;
    }
    found->second[2] = all.empty() ? std::nullopt : std::optional(numberOfDeed(all));
  }

  std::uint32_t numberOfDeed(std::string const& text) {
    auto const& known = *settings_.deeds;
    auto const place = std::find(known.begin(), known.end(), text);
    auto const number = static_cast<std::uint32_t>(place - known.begin()) + 1;
    if (place == known.end()) {
      settings_.deeds.edit().push_back(text);
    }
    return number;
  }

  // Interfaces

  // Bare numbers are those of a port-channel, or of an Ethernet interface.
  Vorel::IntfId intfOf(Name const& name) const {
    try {
      bool const bare = name.text.front() >= '0' && name.text.front() <= '9';
      auto const portChannel = settings_.barePortChannels.find(name.text);
      if (portChannel != settings_.barePortChannels.end()) {
        return portChannel->second;
      }
      return Vorel::IntfId(Kor::String((bare ? "Ethernet" : "") + name.text));
    } catch (Kor::RangeException const&) {
      fail("an interface name such as Ethernet3/1, PortChannel7 or Vlan10", name,
           "interface (name)");
    }
  }
  InterfaceSettings& interfaceOf(Name const& name) { return settings_.interfaces[intfOf(name)]; }

  void apply(InterfaceOpen const& body) { interfaceOf(body.interface); }

  void apply(InterfaceRemove const& body) {
    if (settings_.interfaces.erase(intfOf(body.interface)) == 0) {
      failAbsent("an interface", body.interface);
    }
  }

  void apply(InterfaceAddress const& body) {
    InterfaceSettings& interface = interfaceOf(body.interface);
    auto& addresses = body.family == Family::ip4 ? interface.ip4 : interface.ip6;
    if (!body.prefix) {
      addresses.clear();
    } else if (body.remove) {
      if (!addresses.erase(*body.prefix)) {
        fail("an address of interface " + body.interface.text, textOf(*body.prefix, body.family),
             "no address (absent)");
      }
    } else if (body.secondary || body.family == Family::ip6) {
      addresses.addSecondary(*body.prefix);
    } else {
      addresses.addPrimary(*body.prefix);
    }
  }

  static std::string textOf(InterfacePrefix const& prefix, Family family) {
    Kor::String const text = family == Family::ip4
                                 ? interfaceAddress<::Ip::Address>(prefix).text()
                                 : interfaceAddress<::Ip6::Address>(prefix).text();
    return text.stdString();
  }

  void apply(InterfaceSwitchport const& body) { interfaceOf(body.interface).switchport = body.on; }
  void apply(InterfaceShutdown const& body) { interfaceOf(body.interface).shutdown = body.on; }

  void apply(InterfaceChannelGroup const& body) {
    Vorel::IntfId const intf = intfOf(body.interface);
    InterfaceSettings& interface = settings_.interfaces[intf];
    if (body.bare) {
      auto const portChannel = settings_.barePortChannels.find(body.bare->text);
      if (portChannel == settings_.barePortChannels.end()) {
        failAbsent("a port-channel", *body.bare);
      }
      interface.channelGroup.reset();
      if (!body.remove) {
        interface.channelGroup = portChannel->second.numbers().front();
      }
      return;
    }
    if (body.remove) {
      if (body.group && interface.channelGroup != body.group) {
        fail("the channel-group of interface " + body.interface.text, std::to_string(*body.group),
             "no channel-group (absent)");
      }
      interface.channelGroup.reset();
      return;
    }
    if (!intf.isPhysical() || intf.isSubIntf()) {
      fail("a command for " + body.interface.text +
               ", which cannot join a channel-group: it is not a physical interface",
           statement_->subject.text, "channel-group (interface)");
    }
    interface.channelGroup = body.group;
  }

  void apply(ServicePolicy const& body) {
    std::string& attached =
        interfaceOf(body.interface).policyMaps[static_cast<std::size_t>(body.direction)];
    if (!body.remove) {
      attached = body.policyMap->text;
      return;
    }
    if (body.policyMap && attached != body.policyMap->text) {
      fail(std::string("the policy-map that is attached for ") + toText(body.direction),
           *body.policyMap, "no service-policy (absent)");
    }
    attached.clear();
  }

  void apply(InterfaceAccessGroup const& body) {
    std::string& list = interfaceOf(body.interface)
                            .accessGroups[static_cast<std::size_t>(body.direction)]
                                         [static_cast<std::size_t>(body.list.family)];
    if (body.remove && list != body.list.name.text) {
      fail(std::string("the list that is attached for ") + toText(body.direction), body.list.name,
           "no access-group (absent)");
    }
    list = body.remove ? "" : body.list.name.text;
  }

  void apply(InterfaceZone const& body) {
    interfaceOf(body.interface).zone = body.remove ? "" : body.zone;
  }

  void apply(ZonePairOpen const& body) {
    ZonePair& pair = settings_.zonePairs[body.zonePair.text];
    pair.source = body.source.empty() ? pair.source : body.source;
    pair.destination = body.destination.empty() ? pair.destination : body.destination;
  }
  void apply(ZonePairRemove const& body) {
    if (settings_.zonePairs.erase(body.zonePair.text) == 0) {
      failAbsent("a zone-pair", body.zonePair);
    }
  }
  void apply(ZonePairPolicy const& body) {
    std::string& attached = settings_.zonePairs.at(body.zonePair.text).policyMap;
    attached = body.remove ? "" : body.policyMap->text;
  }

  // The port-channel has the last of the numbers, or the next one that is free.
  void apply(PortChannelName const& body) {
    std::string const& text = body.interface.text;
    if (settings_.barePortChannels.count(text) != 0) {
      return;
    }
    std::string number = text.substr(text.rfind('/') + 1);
    Vorel::IntfId intf = intfOf({"PortChannel" + number, body.interface.column});
    while (std::any_of(settings_.barePortChannels.begin(), settings_.barePortChannels.end(),
                       [&](auto const& known) { return known.second == intf; })) {
      number = std::to_string(intf.numbers().front() + 1);
      intf = intfOf({"PortChannel" + number, body.interface.column});
    }
    settings_.barePortChannels.emplace(text, intf);
  }

  void apply(Routing const& body) {
    (body.family == Family::ip4 ? settings_.ipRouting : settings_.ip6Routing) = body.on;
  }

  Settings& settings_;
  Statement const* statement_ = nullptr;
};

// Object-groups may be defined after the lines that name them.
void checkGroups(Settings const& settings, PolicyText& text, Reading reading) {
  for (Settings::Lists const& lists : settings.lists) {
    for (auto const& [name, list] : lists) {
      if (list->entries.grouped() == 0) {
        continue;
      }
      for (auto const& [number, entry] : list->entries.byNumber()) {
        try {
          if (auto const* const line = std::get_if<ListRule>(&entry)) {
            static_cast<void>(rulesOf(*line, *settings.objectGroups));
          }
        } catch (InputError const& error) {
          if (reading == Reading::strict) {
            throw;
          }
          // A line of an earlier file was counted then.
          if (!text.statements.empty() &&
              error.position().file == text.statements.front().position.file) {
            text.skipped.add("permit (object-group)", error.position());
          }
        }
      }
    }
  }
}

}  // namespace

std::string conditionName(std::string const& condition) {
  return "match " + condition;
}

void editSettings(Settings& settings, PolicyText& text, Reading reading) {
  Editor editor(settings);
  std::map<std::uint32_t, std::string> passedOver;  // kinds of skipped lines, by number
  for (Statement const& statement : text.statements) {
    std::uint32_t const line = statement.position.line;
    if (auto const block = passedOver.find(statement.block); block != passedOver.end()) {
      if (passedOver.try_emplace(line, block->second).second) {
        text.skipped.add(block->second, statement.position);
      }
      continue;
    }
    try {
      editor.carryOut(statement);
    } catch (Failure const& failure) {
      if (reading == Reading::strict) {
        throw InputError(failure.position, failure.expected, failure.found);
      }
      text.skipped.add(failure.kind, failure.position);
      passedOver.emplace(line, failure.kind);
    }
  }
  checkGroups(settings, text, reading);
}

}  // namespace PolicyMapTestKit::Text
