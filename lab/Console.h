// SPDX-License-Identifier: Apache-2.0
// Where the program speaks to, and with what status it ends.
#pragma once

#include "lab/TextLayout.h"

#include <ostream>
#include <stdexcept>

namespace lab {

struct Console {
  std::ostream& out;
  std::ostream& err;
  TextStyle style;
  /// A person watches `err` and would like to see progress there.
  bool progress = false;
};

enum class ExitStatus : int {
  success = 0,
  notProgrammed = 1,  ///< a policy could not be programmed
  badInput = 2,       ///< bad usage, or input that cannot be taken
};

/// Options that do not go together. what() says how they would.
class UsageError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

}  // namespace lab
