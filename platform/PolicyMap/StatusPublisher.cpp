// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/StatusPublisher.h"

#include <algorithm>
#include <utility>

namespace PolicyMap {

void StatusPublisher::publish(PolicyMapStatus& status, ClassMapMatchOption option,
                              PresentPolicy const& present, std::optional<double> timeProgrammed) {
  OptionState& state = state_[option];
  for (Kor::Name const& name :
       {std::exchange(failedClass_[option], state.failure.className()), failedClass_[option]}) {
    if (!name.empty()) {
      classDue(name);
    }
  }
  if (present.created) {
    status.programmedIs(option, true);
  } else {
    status.programmedDel(option);
  }
  if (!present.created || present.owned) {
    if (timeProgrammed) {
      status.timeProgrammedIs(option, *timeProgrammed);
    } else {
      status.timeProgrammedDel(option);
    }
    if (std::exchange(state.intfsUnpublished, false)) {
      publishIntfs(status, option, present.intfs);
    }
  }
  PolicyFailure const failure = state.failure;
  if (!failure) {
    status.failureDel(option);
  } else {
    status.failureIs(option, failure);
  }
  status.errorIs(firstError());
}

void StatusPublisher::publishIntfs(PolicyMapStatus& status, ClassMapMatchOption option,
                                   std::vector<Vorel::IntfId> const& intfs) {
  for (Vorel::IntfId const intf : status.intfs(option)) {
    if (!std::binary_search(intfs.begin(), intfs.end(), intf)) {
      status.appliedIntfDel({option, intf});
    }
  }
  for (Vorel::IntfId const intf : intfs) {
    status.appliedIntfIs({option, intf}, true);
  }
}

Kor::String StatusPublisher::firstError() const {
  for (OptionState const& state : state_) {
    if (!state.failure.error().empty()) {
      return state.failure.error();
    }
  }
  return {};
}

void StatusPublisher::publish(ClassMapSm& machine) const {
  Kor::String error;
  bool programmed = false;
  for (OptionState const& state : state_) {
    if (error.empty() && state.failure.className() == machine.className()) {
      error = state.failure.error();
    }
    programmed = programmed || state.classes.find(machine.classCommonData().get()) != nullptr;
  }
  machine.programStateIs(programmed, error);
}

std::set<Kor::Name> StatusPublisher::takeDueClasses() {
  allDue_ = false;
  return std::exchange(dueClasses_, {});
}

}  // namespace PolicyMap
