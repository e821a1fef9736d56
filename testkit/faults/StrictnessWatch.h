// SPDX-License-Identifier: Apache-2.0
#pragma once

// StrictnessWatch: looks at the calls of a helper for those that a strict device would not accept,
// although the helper's assertions do.

#include "helper/AclHelper.h"
#include "records/AclPolicyType.h"
#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/faults/Findings.h"

#include <Kor/EventLoop.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API StrictnessWatch {
 public:
  // On the loop that is current now.
  explicit StrictnessWatch(PolicyMapTest::AclHelper& helper)
      : helper_(helper), loop_(Kor::EventLoop::current()) {}

  void strictnessIs(Strictness const& strictness) { strictness_ = strictness; }
  void findingsAre(FindingList* findings) { findings_ = findings; }

  // Configuration, time or results may have changed, so that the core may begin again.
  void somethingChanged() { ++changes_; }
  // A call begins; it has ended, with its error. `injected`: a fault is the reason for the error.
  void begins(HelperCall const& call);
  void ends(HelperCall const& call, bool injected);
  // The result of the last asynchronous operation arrives.
  void resultArrived(bool failed);
  // Nothing is about to be programmed, and no result is waited for.
  void isSettled();
  // The same, and nothing is attached.
  void isUnconfigured();

 private:
  using Key = PolicyMapTest::AclPolicyType;
  struct Hash {
    std::size_t operator()(Key const& key) const { return key.hash(); }
  };
  // Of a policy of one option.
  struct State {
    std::string_view changed;  // the first operation since the last commit
    std::string_view failed;   // the operation after which the policy must go
    bool injected = false;     // a fault was injected since the last success of a commit
    // When it was created last: the value of changes_, and the time.
    std::pair<std::uint64_t, double> createdAt;
  };

  [[nodiscard]] bool watches() const { return findings_ != nullptr; }
  State& stateOf(HelperCall const& call);
  // Nothing: it is committed, or deleted.
  void changedIs(State& state, std::string_view operation);
  void report(Finding::Kind kind, HelperCall const& call, State const& state,
              std::string const& text);
  void creationBegins(HelperCall const& call, State& state);

  PolicyMapTest::AclHelper& helper_;
  Kor::EventLoop& loop_;
  Strictness strictness_;
  FindingList* findings_ = nullptr;
  std::uint64_t changes_ = 1;
  std::unordered_map<Key, State, Hash> states_;
  std::size_t uncommitted_ = 0;                     // of states_
  std::pair<Key const, State>* current_ = nullptr;  // of the last call
  std::string_view operation_;                      // that was called last
  bool awaiting_ = false;                           // its result
};

}  // namespace PolicyMapTestKit
