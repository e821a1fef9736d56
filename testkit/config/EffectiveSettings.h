// SPDX-License-Identifier: Apache-2.0
#pragma once

// EffectiveSettings: what is configured for what was written. Lines with object-groups and other
// alternatives become rules; zone-pairs, and lists that are attached by themselves, become
// policy-maps at interfaces; and class-default becomes a class that matches everything.

#include "testkit/Export.h"
#include "testkit/config/Settings.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

class POLICYMAPTESTKIT_API EffectiveSettings {
 public:
  // Whether lists that are attached by themselves count.
  void accessGroupsIs(bool on) { accessGroups_ = on; }

  // What is written and not configured, and why: "ip access-list a", "the deny at f:3:1 ...".
  struct Note {
    std::string where;
    std::string text;
    // Something that is attached, and not programmed there.
    bool isAttachment = true;
  };
  // Of the last of().
  [[nodiscard]] std::vector<Note> const& notes() const { return notes_; }

  // The result shares with earlier ones what has not changed. A line whose object-groups are
  // missing or wrong contributes no rules. If it is a `deny`, neither do the entries after it,
  // unless the reading is widening.
  [[nodiscard]] Settings of(Settings const& written);

 private:
  using AccessListKey = std::pair<Family, std::string>;
  struct Expanded {
    Shared<AccessList> written;
    bool widening;
    // Entries after a lost `deny` are left out.
    bool cut;
    Shared<AccessList> effective;
    // The lines that are left out, and what follows from that.
    std::vector<std::string> notes;
  };

  void expandLists(Settings& settings);
  static Expanded expanded(Shared<AccessList> const& list, Settings const& settings);

  void attachTypedPolicies(InterfaceSettings& interface, std::string const& where);
  void noteElsewhere(Settings const& settings);
  void noteSkipped(InterfaceSettings const& interface, std::string const& where);
  void attachZones(Settings& settings);
  void attachLists(Settings& settings, Vorel::IntfId intf, Direction direction);
  std::string nameOfGroups(InterfaceSettings::AccessGroups const& lists);
  void cutClasses(Settings& settings);

  bool accessGroups_ = true;
  std::vector<Note> notes_;
  Shared<ObjectGroups> groups_;
  // Of the lists that need it.
  std::map<AccessListKey, Expanded> expanded_;
  // Lists whose entries after a lost `deny` are left out.
  std::set<AccessListKey> cutLists_;
  // The lists of the policy-maps of lists that are attached by themselves, by name.
  std::map<std::string, InterfaceSettings::AccessGroups> groupsByName_;
};

}  // namespace PolicyMapTestKit::Text
