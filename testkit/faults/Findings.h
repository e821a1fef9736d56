// SPDX-License-Identifier: Apache-2.0
#pragma once

// Finding: something that a lab noticed and that a test should fail for: a planned fault that was
// never met, or calls of the core that a strict device would not accept.

#include "testkit/Export.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

struct Finding {
  enum class Kind : std::uint8_t {
    unmetFault,        // a planned fault selected no call that could fail
    leftover,          // a policy is programmed although nothing is attached
    idleCommit,        // a commit without a change since the last one
    callAfterFailure,  // a policy was changed after a failure, instead of being deleted
    repeatedCreation,  // a policy was created twice although nothing had changed
    missingCommit,     // a policy was changed, and nothing is left that would commit it
  };

  Kind kind = Kind::unmetFault;
  std::string text;
  // An injected fault came before, in the same policy.
  bool afterFault = false;

  bool operator==(Finding const&) const = default;
};

// "leftover: edge/input ipv4 is still created", with ", after an injected fault".
POLICYMAPTESTKIT_API std::string toText(Finding const& finding);
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, Finding const& finding);

// What to look for; see Finding::Kind.
struct Strictness {
  bool leftovers = true;
  bool idleCommits = true;
  bool callsAfterFailures = true;
  bool repeatedCreations = true;
  bool missingCommits = true;

  static constexpr Strictness none() { return {false, false, false, false, false}; }
  bool operator==(Strictness const&) const = default;
};

// The members of Strictness by name.
struct StrictnessSwitch {
  std::string_view name;
  bool Strictness::*value;
};
POLICYMAPTESTKIT_API std::span<StrictnessSwitch const> strictnessSwitches();

// Called for each new finding of every lab of the process. testkit/GoogleTest.h sets one that fails
// the running test. None: findings are only kept.
using FindingHandler = std::function<void(Finding const&)>;
// Returns the handler before.
POLICYMAPTESTKIT_API FindingHandler findingHandlerIs(FindingHandler handler);

// The findings of a lab, each once.
class POLICYMAPTESTKIT_API FindingList {
 public:
  void add(Finding const& finding);
  [[nodiscard]] std::vector<Finding> const& all() const { return all_; }
  // For a test that expects them: returns and forgets them. They were handled before.
  std::vector<Finding> take();

 private:
  std::vector<Finding> all_;
};

}  // namespace PolicyMapTestKit
