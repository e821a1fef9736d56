// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ProgrammedState.h"

#include <algorithm>
#include <utility>

namespace PolicyMap {

void ProgrammedClasses::add(ProgrammedClass programmed) {
  places_.emplace(programmed.data.get(), classes_.size());
  placesByName_.emplace(programmed.name, classes_.size());
  classes_.push_back(std::move(programmed));
}

void ProgrammedClasses::clear() {
  classes_.clear();
  places_.clear();
  placesByName_.clear();
}

ProgrammedClass* ProgrammedClasses::find(ClassMapSmCommonData const* data) {
  auto const place = places_.find(data);
  return place == places_.end() ? nullptr : &classes_[place->second];
}

ProgrammedClass const* ProgrammedClasses::find(ClassMapSmCommonData const* data) const {
  auto const place = places_.find(data);
  return place == places_.end() ? nullptr : &classes_[place->second];
}

ProgrammedClass const* ProgrammedClasses::find(Kor::Name const& name) const {
  auto const place = placesByName_.find(name);
  return place == placesByName_.end() ? nullptr : &classes_[place->second];
}

std::vector<Kor::Name> ProgrammedClasses::around(std::set<Kor::Name> const& names) const {
  std::set<std::size_t> places;
  for (Kor::Name const& name : names) {
    if (auto const found = placesByName_.find(name); found != placesByName_.end()) {
      std::size_t const first = found->second == 0 ? 0 : found->second - 1;
      for (std::size_t place = first; place < std::min(found->second + 2, size()); ++place) {
        places.insert(place);
      }
    }
  }
  std::vector<Kor::Name> some;
  some.reserve(places.size());
  for (std::size_t const place : places) {
    some.push_back(classes_[place].name);
  }
  return some;
}

std::vector<Kor::Name> ProgrammedClasses::adopt(std::span<ProgrammedClass const> same) {
  std::vector<Kor::Name> renewed;
  for (ProgrammedClass const& wanted : same) {
    std::size_t const place = placesByName_.at(wanted.name);
    ProgrammedClass& programmed = classes_[place];
    programmed.rules = wanted.rules;
    if (programmed.data != wanted.data) {
      places_.erase(programmed.data.get());
      programmed.data = wanted.data;
      programmed.actionUpdates = wanted.data->updateAclActions() - 1;
      places_.emplace(programmed.data.get(), place);
      renewed.push_back(programmed.name);
    }
  }
  return renewed;
}

void OptionState::forget() {
  classes.clear();
  recreate = false;
  intfsUnpublished = true;
}

void OptionState::failureDel() {
  failure = PolicyFailure();
  retry = false;
  updateFailed = false;
  leftover = false;
}

void OptionState::failureIs(PolicyFailure const& passFailure) {
  if (!updateFailed) {
    failure = passFailure;
  }
  leftover = false;
}

void OptionState::refusedIs(PolicyFailure const& refusal) {
  retry = false;
  if (!refusal && leftover) {
    return;
  }
  failureDel();
  failure = refusal;
}

}  // namespace PolicyMap
