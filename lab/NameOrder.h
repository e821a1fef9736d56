// SPDX-License-Identifier: Apache-2.0
// Names in an order of choice.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

namespace lab {

/// Every edit takes the same time however many names there are, and wherever it is made. No name
/// is empty, and none is there twice.
class NameOrder {
 public:
  bool has(std::string const& name) const { return links_.count(name) != 0; }
  /// From the first to the last; takes time for each.
  std::vector<std::string> names() const;

  /// `name` must not be there.
  void append(std::string const& name) { insert(name, {}); }
  /// `name` must not be there, `other` must.
  void insertBefore(std::string const& name, std::string const& other) { insert(name, other); }
  /// `name` must be there.
  void erase(std::string const& name);

 private:
  struct Links {
    std::string previous;
    std::string next;
  };

  void insert(std::string const& name, std::string const& next);

  /// Neighbours by name and not by place, so that a copy is one of its own. The empty name is
  /// before the first and after the last one.
  std::unordered_map<std::string, Links> links_{{std::string(), {}}};
};

}  // namespace lab
