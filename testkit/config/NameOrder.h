// SPDX-License-Identifier: Apache-2.0
#pragma once

// An ordered list of names.

#include "testkit/Export.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace PolicyMapTestKit::Text {

// The time of an edit does not depend on the number of names or on the place of the edit. Names are
// unique and not empty.
class POLICYMAPTESTKIT_API NameOrder {
 public:
  bool has(std::string const& name) const { return links_.count(name) != 0; }
  // From first to last. Linear in the number of names.
  std::vector<std::string> names() const;

  // `name` must be absent.
  void append(std::string const& name) { insert(name, {}); }
  // `name` must be absent, `other` present.
  void insertBefore(std::string const& name, std::string const& other) { insert(name, other); }
  // `name` must be present.
  void erase(std::string const& name);

 private:
  struct Links {
    std::string previous;
    std::string next;
  };

  void insert(std::string const& name, std::string const& next);

  // Neighbours are linked by name, not by pointer, so the list can be copied. The empty name
  // precedes the first name and follows the last.
  std::unordered_map<std::string, Links> links_{{std::string(), {}}};
};

}  // namespace PolicyMapTestKit::Text
