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

void EffectiveSettings::expandLists(Settings& settings) {
  if (!groups_.sameAs(settings.objectGroups)) {
    expanded_.clear();
    groups_ = settings.objectGroups;
  }
  std::map<AccessListKey, Expanded> used;
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
    }
  }
  expanded_ = std::move(used);
}

// A line keeps its number if the rules of the lines before it leave it free, and otherwise follows
// them.
EffectiveSettings::Expanded EffectiveSettings::expanded(Shared<AccessList> const& list,
                                                        Settings const& settings) {
  static constexpr char const* cut = ", so the entries after it are left out";
  Expanded result{list, settings.widening, {}, {}};
  AccessList& effective = result.effective.edit();
  effective.standard = list->standard;
  std::uint64_t next = 0;
  auto const put = [&](std::uint32_t wanted, ListEntry entry) {
    next = std::max<std::uint64_t>(wanted, next);
    if (next <= std::numeric_limits<std::uint32_t>::max()) {
      effective.entries.put(static_cast<std::uint32_t>(next++), std::move(entry));
    }
  };
  for (auto const& [number, entry] : list->entries.byNumber()) {
    if (auto const* const skipped = std::get_if<SkippedEntry>(&entry)) {
      bool const cuts = skipped->isDeny;
      result.notes.push_back(std::string(cuts ? "the deny at " : "the permit at ") +
                             toText(skipped->place) + " was skipped" + (cuts ? cut : ""));
      if (cuts) {
        break;
      }
      continue;
    }
    auto const* const line = std::get_if<ListRule>(&entry);
    if (line == nullptr) {
      put(number, entry);
      continue;
    }
    try {
      for (ConfiguredRule const& rule : rulesOf(*line, *settings.objectGroups, settings.widening)) {
        put(number, rule);
      }
    } catch (InputError const& error) {
      bool const cuts = isDeny(line->rule) && !settings.widening;
      result.notes.push_back(error.what() + std::string(cuts ? cut : ""));
      if (cuts) {
        break;
      }
    }
  }
  return result;
}

}  // namespace PolicyMapTestKit::Text
