// SPDX-License-Identifier: Apache-2.0
#pragma once

// LookupError: a name that was looked up is not there.

#include "testkit/Export.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

// At most `most` of the known names, the most similar first.
POLICYMAPTESTKIT_API std::vector<std::string> nearestNames(std::string_view wanted,
                                                           std::vector<std::string> known,
                                                           std::size_t most = 3);

// Something that was looked up is not there. what() names it and the nearest that are there.
class POLICYMAPTESTKIT_API LookupError : public std::out_of_range {
 public:
  // `what` is e.g. "record"; `known` are the names that are there.
  LookupError(std::string_view what, std::string_view wanted,
              std::vector<std::string> const& known);
  explicit LookupError(std::string const& text) : std::out_of_range(text) {}
  ~LookupError() override;
};

}  // namespace PolicyMapTestKit
