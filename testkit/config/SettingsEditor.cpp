// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/SettingsEditor.h"

#include "testkit/config/StatementEditor.h"

#include <cstdint>
#include <map>
#include <string>

namespace PolicyMapTestKit::Text {

namespace {

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

void editSettings(Settings& settings, PolicyText& text, Reading reading) {
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
    } catch (StatementFailure const& failure) {
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
