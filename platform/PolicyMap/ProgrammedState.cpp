// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ProgrammedState.h"

#include <utility>

namespace PolicyMap {

void ProgrammedClasses::add(ProgrammedClass programmed) {
  places_.emplace(programmed.data.get(), classes_.size());
  classes_.push_back(std::move(programmed));
}

void ProgrammedClasses::clear() {
  classes_.clear();
  places_.clear();
}

ProgrammedClass* ProgrammedClasses::find(ClassMapSmCommonData const* data) {
  auto const place = places_.find(data);
  return place == places_.end() ? nullptr : &classes_[place->second];
}

ProgrammedClass const* ProgrammedClasses::find(ClassMapSmCommonData const* data) const {
  auto const place = places_.find(data);
  return place == places_.end() ? nullptr : &classes_[place->second];
}

std::vector<Kor::Name> ProgrammedClasses::adopt(ProgrammedClasses const& same) {
  std::vector<Kor::Name> renewed;
  for (std::size_t i = 0; i < classes_.size(); ++i) {
    ProgrammedClass& programmed = classes_[i];
    ProgrammedClass const& wanted = same.classes_[i];
    programmed.rules = wanted.rules;
    if (programmed.data != wanted.data) {
      places_.erase(programmed.data.get());
      programmed.data = wanted.data;
      programmed.actionUpdates = wanted.data->updateAclActions() - 1;
      places_.emplace(programmed.data.get(), i);
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
