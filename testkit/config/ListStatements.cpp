// SPDX-License-Identifier: Apache-2.0
// The statements about access lists and object-groups, and the errors of all.

#include "testkit/config/StatementEditor.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

namespace {

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

}  // namespace

// Errors

void StatementEditor::fail(std::string expected, std::string found, std::string kind) const {
  throw StatementFailure{statement_->subjectPosition(), std::move(expected), std::move(found),
                         std::move(kind)};
}

void StatementEditor::fail(std::string expected, Name const& name, std::string kind) const {
  throw StatementFailure{statement_->positionOf(name), std::move(expected), name.text,
                         std::move(kind)};
}

void StatementEditor::failAbsent(std::string const& what, Name const& name) const {
  fail("the name of " + what + " that exists", name,
       "no " + what.substr(what.find(' ') + 1) + " (absent)");
}

// Access lists

AccessList* StatementEditor::findList(AccessListId const& id) {
  auto& lists = settings_.listsOf(id.family);
  auto const found = lists.find(id.name.text);
  return found == lists.end() ? nullptr : &found->second.edit();
}

AccessList& StatementEditor::existingList(AccessListId const& id) {
  AccessList* const list = findList(id);
  if (list == nullptr) {
    fail("the name of an " + nameOf(id.family) + " access-list that exists", id.name,
         "no " + nameOf(id.family) + " access-list (absent)");
  }
  return *list;
}

void StatementEditor::apply(AccessListOpen const& body) {
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

void StatementEditor::apply(AccessListRemove const& body) {
  existingList(body.list);
  settings_.listsOf(body.list.family).erase(body.list.name.text);
}

void StatementEditor::addEntry(AccessListId const& id, std::optional<std::uint32_t> const& sequence,
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
  // A remark may have the number of a rule, which it is about.
  bool const isRemark = std::holds_alternative<Remark>(entry);
  ListEntry const* const known = entries.find(*number);
  if (!isRemark || known == nullptr || std::holds_alternative<Remark>(*known)) {
    entries.put(*number, std::move(entry));
  }
}

ListEntry StatementEditor::entryOf(ListRule const& line) {
  return line.alternatives ? ListEntry(line) : ListEntry(line.rule);
}

void StatementEditor::apply(RuleAdd const& body) {
  addEntry(body.list, body.sequence, entryOf(body.rule));
}

void StatementEditor::apply(SkippedEntryAdd const& body) {
  addEntry(body.list, body.sequence, SkippedEntry{statement_->position, body.kind});
}

void StatementEditor::apply(RemarkAdd const& body) {
  addEntry(body.list, body.sequence, Remark{body.text});
}

void StatementEditor::apply(RuleRemove const& body) {
  auto& entries = existingList(body.list).entries;
  ListEntry const entry = entryOf(body.rule);
  std::optional<std::uint32_t> number = entries.numberOf(entry);
  if (body.sequence) {
    ListEntry const* const known = entries.find(*body.sequence);
    number = known != nullptr && *known == entry ? body.sequence : std::nullopt;
  }
  if (!number) {
    fail("a rule of " + nameOf(body.list), describe(body.rule.rule), "no rule (absent)");
  }
  entries.erase(*number);
}

void StatementEditor::apply(RemarkRemove const& body) {
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

void StatementEditor::apply(EntryRemove const& body) {
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

ObjectGroup& StatementEditor::existingGroup(Name const& name) {
  auto const found = settings_.objectGroups->find(name.text);
  if (found == settings_.objectGroups->end()) {
    failAbsent("an object-group", name);
  }
  return settings_.objectGroups.edit().at(name.text);
}

void StatementEditor::apply(ObjectGroupOpen const& body) {
  auto const found = settings_.objectGroups->find(body.group.text);
  if (found == settings_.objectGroups->end()) {
    settings_.objectGroups.edit()[body.group.text] = {body.kind, {}, statement_->position};
  } else if (found->second.kind != body.kind) {
    fail("the kind of the object-group at " + toText(found->second.place), body.group,
         "object-group (other kind)");
  }
}

void StatementEditor::apply(ObjectGroupRemove const& body) {
  existingGroup(body.group);
  settings_.objectGroups.edit().erase(body.group.text);
}

void StatementEditor::apply(ObjectGroupMembers const& body) {
  std::vector<GroupMember>& members = existingGroup(body.group).members;
  auto const has = [&](GroupMember const& member) {
    return std::find(members.begin(), members.end(), member) != members.end();
  };
  if (body.remove && !std::all_of(body.members.begin(), body.members.end(), has)) {
    fail("a member of object-group " + body.group.text, statement_->subject, "no member (absent)");
  }
  for (GroupMember const& member : body.members) {
    if (body.remove) {
      std::erase(members, member);
    } else if (!has(member)) {
      members.push_back(member);
    }
  }
}

void StatementEditor::apply(ObjectGroupSkipped const& body) {
  existingGroup(body.group).skipped = statement_->position;
}

}  // namespace PolicyMapTestKit::Text
