// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/Settings.h"

#include <Kor/Hash.h>

namespace PolicyMapTestKit::Text {

std::uint32_t ListEntryHash::operator()(ListEntry const& entry) const {
  if (auto const* const remark = std::get_if<Remark>(&entry)) {
    return Kor::hashBytes(remark->text);
  }
  if (auto const* const skipped = std::get_if<SkippedEntry>(&entry)) {
    return skipped->place.line;
  }
  auto const* const line = std::get_if<ListRule>(&entry);
  return hashOf(line != nullptr ? line->rule : std::get<ConfiguredRule>(entry));
}

std::uint32_t MatchHash::operator()(PolicyMap::ClassMapMatch const& match) const {
  return Kor::hashCombine(Kor::hashCombine(Kor::hashOf(match.kind()), match.name().hash()),
                          hashOf(match.rule()));
}

void ListEntries::put(std::uint32_t number, ListEntry entry) {
  remarks_.erase(number);
  expanding_.erase(number);
  if (std::holds_alternative<Remark>(entry)) {
    remarks_.insert(number);
  } else if (!std::holds_alternative<ConfiguredRule>(entry)) {
    expanding_.insert(number);
  }
  entries_.put(number, std::move(entry));
}

bool ListEntries::erase(std::uint32_t number) {
  remarks_.erase(number);
  expanding_.erase(number);
  return entries_.erase(number);
}

void ListEntries::eraseRemarks() {
  for (std::uint32_t const number : remarks_) {
    entries_.erase(number);
  }
  remarks_.clear();
}

Settings withoutAttachments(Settings settings) {
  auto const clear = [](InterfaceSettings& interface) {
    interface.policyMaps = {};
    interface.typedPolicyMaps = {};
    interface.accessGroups = {};
    interface.skippedAttachments = {};
  };
  for (auto& [intf, interface] : settings.interfaces) {
    clear(interface);
  }
  for (auto& [where, interface] : settings.elsewhere) {
    clear(interface);
  }
  settings.zonePairs.clear();
  return settings;
}

std::string nameOf(Settings const& settings, Vorel::IntfId intf) {
  auto const found = settings.interfaces.find(intf);
  bool const written = found != settings.interfaces.end() && !found->second.written.empty();
  return written ? found->second.written : intf.name().stdString();
}

char const* toText(Direction direction) {
  return direction == Direction::input ? "input" : "output";
}

}  // namespace PolicyMapTestKit::Text
