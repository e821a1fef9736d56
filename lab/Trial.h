// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tries an action that might end the process.

#include <Kor/Assert.h>

#include <functional>
#include <string>

namespace lab {

// An assertion as reported: source, text and position.
std::string toText(Kor::AssertionFailure const& failure);

// Runs `action` in a copy of the process and discards its output. Returns the assertion or signal
// that ends the copy, or an empty text if `action` returns or raises an exception. This process is
// not affected. Raises std::system_error if the process cannot be copied.
//
// An assertion handler that raises an exception would not be enough: it may pass through noexcept
// functions, and would leave interrupted operations incomplete.
std::string endOf(std::function<void()> const& action);

}  // namespace lab
