// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/SettingsEditor.h"

#include "testkit/config/StatementEditor.h"

#include <cstdint>
#include <map>
#include <string>

namespace PolicyMapTestKit::Text {

namespace {

void checkExpansion(AccessList const& list, ObjectGroups const& groups, PolicyText& text,
                    Reading reading) {
  LineNumbers numbers;
  for (auto const& [number, entry] : list.entries.byNumber()) {
    auto const* const line = std::get_if<ListRule>(&entry);
    bool const several = line != nullptr;
    try {
      std::size_t const rules =
          several ? rulesOf(*line, groups, reading == Reading::widening).size() : 1;
      static_cast<void>(
          numbers.firstOf(number, rules, several ? line->alternatives->place : SourcePosition()));
    } catch (InputError const& error) {
      if (reading == Reading::strict) {
        throw;
      }
      // A line of an earlier file was counted then.
      if (!text.statements.empty() &&
          error.position().file == text.statements.front().position.file) {
        bool const deny = several && isDeny(line->rule);
        text.skipped.add(deny ? "deny (object-group)" : "permit (object-group)", error.position());
      }
    }
  }
}

// Expands every list that the text changed, or all of them if it changed object-groups: a group may
// be defined after the lines that name it.
void checkExpansions(Settings const& before, Settings const& settings, PolicyText& text,
                     Reading reading) {
  bool const sameGroups = before.objectGroups.sameAs(settings.objectGroups);
  for (Family const family : {Family::ip4, Family::ip6}) {
    for (auto const& [name, list] : settings.listsOf(family)) {
      auto const was = before.listsOf(family).find(name);
      bool const same =
          sameGroups && was != before.listsOf(family).end() && was->second.sameAs(list);
      if (!same && list->entries.needExpansion()) {
        checkExpansion(*list, *settings.objectGroups, text, reading);
      }
    }
  }
}

}  // namespace

void editSettings(Settings& settings, PolicyText& text, Reading reading) {
  Settings const before = settings;
  settings.widening = reading == Reading::widening;
  StatementEditor editor(settings);
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
      if (auto const* const opened = std::get_if<InterfaceOpen>(&statement.body);
          opened != nullptr && settings.elsewhere.count(opened->interface.text) != 0) {
        text.skipped.add("interface (name)", statement.position);
      }
    } catch (StatementFailure const& failure) {
      if (reading == Reading::strict) {
        throw InputError(failure.position, failure.expected, failure.found);
      }
      text.skipped.add(failure.kind, failure.position);
      passedOver.emplace(line, failure.kind);
    }
  }
  editor.finish();
  checkExpansions(before, settings, text, reading);
}

}  // namespace PolicyMapTestKit::Text
