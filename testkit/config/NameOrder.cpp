// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/NameOrder.h"

#include <utility>

namespace PolicyMapTestKit::Text {

std::vector<std::string> NameOrder::names() const {
  std::vector<std::string> names;
  names.reserve(links_.size() - 1);
  for (std::string const* name = &links_.at({}).next; !name->empty();
       name = &links_.at(*name).next) {
    names.push_back(*name);
  }
  return names;
}

void NameOrder::insert(std::string const& name, std::string const& next) {
  std::string const previous = std::exchange(links_.at(next).previous, name);
  links_.at(previous).next = name;
  links_[name] = {previous, next};
}

void NameOrder::erase(std::string const& name) {
  auto const found = links_.find(name);
  Links const around = std::move(found->second);
  links_.erase(found);
  links_.at(around.previous).next = around.next;
  links_.at(around.next).previous = around.previous;
}

}  // namespace PolicyMapTestKit::Text
