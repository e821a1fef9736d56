// SPDX-License-Identifier: Apache-2.0
#pragma once

// DoingHelper: a recording helper that lists its calls, and does something, once, inside the
// operation of a name, before that is carried out. What it does may throw.

#include "helper/AclHelper.h"
#include "support/ForwardingHelper.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using PolicyMap::ClassMapMatchOption;
using Deed = std::function<void()>;

// Calls a deed once, the first time that it is due.
inline void once(Deed& deed) {
  if (deed) {
    std::exchange(deed, nullptr)();
  }
}

class DoingHelper final : public ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  using ForwardingHelper::ForwardingHelper;

  void doInside(std::string operation, Deed deed) {
    operation_ = std::move(operation);
    deed_ = std::move(deed);
  }
  // Whether it was done.
  [[nodiscard]] bool doneInside() const { return !deed_; }
  [[nodiscard]] std::vector<std::string> const& calls() const { return calls_; }
  void forgetCalls() { calls_.clear(); }

 protected:
  void around(HelperCall& call, Proceed const& proceed) override {
    calls_.emplace_back(call.operation);
    if (call.operation == operation_) {
      once(deed_);
    }
    proceed();
    if (call.operation == "updateAction") {
      updateActionErrorIs("");  // what is set inside fails one call
    }
  }

 private:
  std::string operation_;
  Deed deed_;
  std::vector<std::string> calls_;
};

}  // namespace TestSupport
