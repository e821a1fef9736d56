// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/PolicyMapStatus.h>

namespace policymap {

// Records the notifications of a policy status.
class StatusWatcher : public TestSupport::Watcher<PolicyMap::PolicyMapStatus::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onError() override { heard("error"); }
  void onProgrammed(ClassMapMatchOption option) override { heard("programmed " + text(option)); }
  void onClassMapStatus(Kor::Name const& name) override { heard("class " + text(name)); }
  void onTimeProgrammed(ClassMapMatchOption option) override {
    heard("time of " + text(option) + (notifier()->korTimeProgrammed(option) ? "" : " gone"));
  }
  void onAppliedIntf(PolicyMap::OptionIntf const& where) override {
    heard(text(where.option()) + (notifier()->appliedIntf(where) ? " at " : " not at ") +
          text(where.intf()));
  }
};

}  // namespace policymap
