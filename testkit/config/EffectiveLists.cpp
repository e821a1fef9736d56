// SPDX-License-Identifier: Apache-2.0
// The access lists of EffectiveSettings.

#include "testkit/config/EffectiveSettings.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <variant>

namespace PolicyMapTestKit::Text {

namespace {

std::string nameOf(SkippedKind kind) {
  switch (kind) {
  case SkippedKind::permit: return "permit";
  case SkippedKind::deny: return "deny";
  case SkippedKind::other: break;
  }
  return "line";
}

}  // namespace

void EffectiveSettings::expandLists(Settings& settings) {
  if (!groups_.sameAs(settings.objectGroups)) {
    expanded_.clear();
    groups_ = settings.objectGroups;
  }
  std::map<AccessListKey, Expanded> used;
  cutLists_.clear();
  for (Family const family : {Family::ip4, Family::ip6, Family::mac}) {
    for (auto& [name, list] : settings.listsOf(family)) {
      if (!list->entries.needExpansion()) {
        continue;
      }
      AccessListKey const key{family, name};
      auto const known = expanded_.find(key);
      bool const same = known != expanded_.end() && known->second.written.sameAs(list) &&
                        known->second.widening == settings.widening;
      auto const [now, isNew] =
          used.emplace(key, same ? std::move(known->second) : expanded(list, settings));
      list = now->second.effective;
      for (std::string const& note : now->second.notes) {
        notes_.push_back({"access-list " + name, note, false});
      }
      if (now->second.cut) {
        cutLists_.insert(key);
      }
    }
  }
  expanded_ = std::move(used);
}

EffectiveSettings::Expanded EffectiveSettings::expanded(Shared<AccessList> const& list,
                                                        Settings const& settings) {
  static constexpr char const* cut = ", so the entries after it are left out";
  Expanded result{list, settings.widening, false, {}, {}};
  AccessList& effective = result.effective.edit();
  effective.standard = list->standard;
  LineNumbers numbers;
  auto const put = [&](std::uint32_t number, ListEntry const& entry) {
    if (auto const* const skipped = std::get_if<SkippedEntry>(&entry)) {
      result.cut = skipped->kind == SkippedKind::deny;
      result.notes.push_back("the " + nameOf(skipped->kind) + " at " + toText(skipped->place) +
                             " was skipped" + (result.cut ? cut : ""));
      return;
    }
    auto const* const line = std::get_if<ListRule>(&entry);
    if (line == nullptr) {
      effective.entries.put(numbers.firstOf(number, 1, {}), entry);
      return;
    }
    std::vector<ConfiguredRule> const rules =
        rulesOf(*line, *settings.objectGroups, settings.widening);
    std::uint32_t next = numbers.firstOf(number, rules.size(), line->alternatives->place);
    for (ConfiguredRule const& rule : rules) {
      effective.entries.put(next++, rule);
    }
  };
  for (auto const& [number, entry] : list->entries.byNumber()) {
    try {
      put(number, entry);
    } catch (InputError const& error) {
      auto const* const line = std::get_if<ListRule>(&entry);
      result.cut = (line == nullptr || isDeny(line->rule)) && !settings.widening;
      result.notes.push_back(error.what() + std::string(result.cut ? cut : ""));
    }
    if (result.cut) {
      break;
    }
  }
  return result;
}

}  // namespace PolicyMapTestKit::Text
