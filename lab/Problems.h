// SPDX-License-Identifier: Apache-2.0
// What keeps policies from being programmed as they are written.
#pragma once

#include "lab/Session.h"

#include <string>
#include <vector>

namespace lab {

struct Problem {
  enum class Kind : std::uint8_t {
    missing,  ///< something is referred to that does not exist
    failed,   ///< a policy or a class of it could not be programmed
  };

  Kind kind = Kind::failed;
  /// Where, as "policy-map EDGE (input), class WEB".
  std::string where;
  std::string text;
};

/// By policy-map, direction and place of the class. What is attached nowhere is not looked at.
std::vector<Problem> findProblems(Session const& session);

/// "policy-map EDGE (input), class WEB: missing ip access-list WEB".
std::string toText(Problem const& problem);

}  // namespace lab
