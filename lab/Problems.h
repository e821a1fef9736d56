// SPDX-License-Identifier: Apache-2.0
#pragma once

// Problems that keep policies from being programmed as configured.

#include "lab/Session.h"

#include <string>
#include <vector>

namespace lab {

struct Problem {
  enum class Kind : std::uint8_t {
    missing,  // a referenced object does not exist
    failed,   // a policy or one of its classes could not be programmed
  };

  Kind kind = Kind::failed;
  // Location, e.g. "policy-map EDGE (input), class WEB".
  std::string where;
  std::string text;
};

// Ordered by policy-map, direction and place of the class. Ignores objects that are not attached.
std::vector<Problem> findProblems(Session const& session);

// "policy-map EDGE (input), class WEB: missing ip access-list WEB".
std::string toText(Problem const& problem);

}  // namespace lab
