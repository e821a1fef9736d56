// SPDX-License-Identifier: Apache-2.0
#pragma once

// Problems that keep policies from being programmed as configured.

#include "testkit/Export.h"
#include "testkit/Lab.h"
#include "testkit/runs/Recovery.h"

#include <algorithm>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

struct POLICYMAPTESTKIT_API Problem {
  enum class Kind : std::uint8_t {
    missing,  // a referenced object does not exist
    failed,   // a policy or one of its classes could not be programmed
    empty,    // a class matches nothing; what is configured is programmed all the same
  };

  Kind kind = Kind::failed;
  // Location, e.g. "policy-map EDGE (input), class WEB".
  std::string where;
  std::string text;
};

// Ordered by policy-map, direction and place of the class. Ignores objects that are not attached.
POLICYMAPTESTKIT_API std::vector<Problem> findProblems(Lab const& lab);

// How often something is attached, and how often its rules of at least one option are programmed
// there.
struct AttachmentCount {
  std::size_t all = 0;
  std::size_t programmed = 0;
};
POLICYMAPTESTKIT_API AttachmentCount countAttachments(Lab const& lab);

// What a run has come to, for those who report it in several places.
struct Outcome {
  std::vector<Problem> problems;
  AttachmentCount attachments;
  std::vector<FaultState> faults;
  std::vector<Irregularity> findings;

  // No fault is unmet, unless it is optional, and nothing was found.
  [[nodiscard]] bool isRegular() const {
    return findings.empty() && std::none_of(faults.begin(), faults.end(), &isUnmet);
  }
};
POLICYMAPTESTKIT_API Outcome outcomeOf(Lab const& lab);

// "policy-map EDGE (input), class WEB: missing ip access-list WEB".
POLICYMAPTESTKIT_API std::string toText(Problem const& problem);

}  // namespace PolicyMapTestKit
