// SPDX-License-Identifier: Apache-2.0
// What would end the process if it were done.
#pragma once

#include <Kor/Assert.h>

#include <functional>
#include <string>

namespace lab {

/// An assertion as it is reported: its source, its text and its place.
std::string toText(Kor::AssertionFailure const& failure);

/// Does `action` in a copy of the process, whose output is discarded, and returns what ends the
/// copy: an assertion or a signal. Empty when `action` returns or raises an exception. This process
/// stays as it is. Raises std::system_error when the process cannot be copied.
///
/// An assertion handler that raises an exception would not do: functions on the way are noexcept,
/// and what they began would stay half done.
std::string endOf(std::function<void()> const& action);

}  // namespace lab
