// SPDX-License-Identifier: Apache-2.0
#pragma once

// EffectiveSettings: what is configured for what was written. Lines with object-groups become
// rules; zone-pairs, and lists that are attached by themselves, become policy-maps at interfaces;
// and class-default becomes a class that matches everything.

#include "testkit/Export.h"
#include "testkit/config/Settings.h"

#include <map>
#include <string>
#include <utility>

namespace PolicyMapTestKit::Text {

// The name of the policy-map and class-map of a list that is attached by itself.
POLICYMAPTESTKIT_API std::string accessGroupName(std::string const& list);

class POLICYMAPTESTKIT_API EffectiveSettings {
 public:
  // Whether lists that are attached by themselves count.
  void accessGroupsIs(bool on) { accessGroups_ = on; }

  // The result shares with earlier ones what has not changed. Lines whose object-groups are missing
  // or wrong contribute no rules.
  [[nodiscard]] Settings of(Settings const& written);

 private:
  using AccessListKey = std::pair<Family, std::string>;
  struct Expanded {
    Shared<AccessList> written;
    Shared<AccessList> effective;
  };

  void expandLists(Settings& settings);
  static Shared<AccessList> expanded(AccessList const& list, ObjectGroups const& groups);

  bool accessGroups_ = true;
  Shared<ObjectGroups> groups_;
  // Of the lists with object-groups.
  std::map<AccessListKey, Expanded> expanded_;
};

}  // namespace PolicyMapTestKit::Text
