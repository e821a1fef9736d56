// SPDX-License-Identifier: Apache-2.0
#pragma once

// Output streams and exit status.

#include "lab/TextLayout.h"

#include <ostream>
#include <stdexcept>

namespace lab {

struct Console {
  std::ostream& out;
  std::ostream& err;
  TextStyle style;
  // Show progress on `err`, which is a terminal.
  bool progress = false;
  // The process ends after the program: what takes long to destroy may be left to it.
  bool endsProcess = false;
};

enum class ExitStatus : int {
  success = 0,
  notProgrammed = 1,  // a policy could not be programmed
  badInput = 2,       // bad usage, or invalid input
  undecided = 3,      // a search was ended before its end
};

// A combination of options that is not allowed. what() says what is required.
class UsageError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

}  // namespace lab
