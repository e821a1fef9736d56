// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/DependencyIndex.h"

#include <utility>

namespace PolicyMap {
namespace {

std::uint64_t dependentsCreated = 0;

}  // namespace

void DependencyIndex::changed(DependencyKind kind, Kor::Name const& name) const {
  auto const& names = byName_[static_cast<std::size_t>(kind)];
  auto found = names.find(name);
  std::uint64_t last = 0;
  // A reaction may add or remove dependents, so each iteration searches for the next one.
  while (found != names.end()) {
    auto const next = found->second.upper_bound(last);
    if (next == found->second.end()) {
      return;
    }
    last = next->first;
    next->second->reaction_(kind, name);
    found = names.find(name);
  }
}

DependencyIndex::Dependent::Dependent(Reaction reaction)
    : reaction_(std::move(reaction)), serial_(++dependentsCreated) {}

DependencyIndex::Dependent::~Dependent() {
  leave();
}

void DependencyIndex::Dependent::indexIs(DependencyIndex* index) {
  leave();
  index_ = index;
}

void DependencyIndex::Dependent::namesAre(Names names) {
  if (index_ == nullptr || names == names_) {
    return;
  }
  leave();
  names_ = std::move(names);
  for (auto const& [kind, name] : names_) {
    index_->byName_[static_cast<std::size_t>(kind)][name].emplace(serial_, this);
  }
}

void DependencyIndex::Dependent::leave() {
  for (auto const& [kind, name] : names_) {
    auto& names = index_->byName_[static_cast<std::size_t>(kind)];
    auto const found = names.find(name);
    found->second.erase(serial_);
    if (found->second.empty()) {
      names.erase(found);
    }
  }
  names_.clear();
}

}  // namespace PolicyMap
