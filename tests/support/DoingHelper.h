// SPDX-License-Identifier: Apache-2.0
#pragma once

// DoingHelper: a recording helper that lists its calls. It runs a function once, inside the next
// operation of a given name and before that operation is carried out. The function may throw.

#include "helper/AclHelper.h"
#include "testkit/ForwardingHelper.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using PolicyMap::ClassMapMatchOption;
using Deed = std::function<void()>;

// Runs `deed` on the first call and does nothing afterwards.
inline void once(Deed& deed) {
  if (deed) {
    std::exchange(deed, nullptr)();
  }
}

class DoingHelper final : public PolicyMapTestKit::ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  using ForwardingHelper::ForwardingHelper;

  void doInside(std::string operation, Deed deed) {
    operation_ = std::move(operation);
    deed_ = std::move(deed);
  }
  // True once the function was called.
  [[nodiscard]] bool doneInside() const { return !deed_; }
  [[nodiscard]] std::vector<std::string> const& calls() const { return calls_; }
  void forgetCalls() { calls_.clear(); }

 protected:
  void around(PolicyMapTestKit::HelperCall& call, Proceed const& proceed) override {
    calls_.emplace_back(call.operation);
    if (call.operation == operation_) {
      once(deed_);
    }
    proceed();
    if (call.operation == "updateAction") {
      updateActionErrorIs("");  // errors that the function sets fail one call only
    }
  }

 private:
  std::string operation_;
  Deed deed_;
  std::vector<std::string> calls_;
};

}  // namespace TestSupport
