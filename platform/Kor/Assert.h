// SPDX-License-Identifier: Apache-2.0
#pragma once

// Assertions: a broken promise of our own code. They are on in every build type, print
//
//   SOURCE: assertion "TEXT" failed at FILE:LINE
//
// to stderr and end the process. Bad input is not for assertions: it raises Kor::Exception.

#include "Kor/Export.h"

#include <string_view>

namespace Kor {

// What an assertion reports. All views live until the process ends.
struct AssertionFailure {
  std::string_view source;  // who asserts, as "Kor/HashMap"
  std::string_view text;    // the asserted expression
  std::string_view file;
  int line;
};

using AssertionHandler = void (*)(AssertionFailure const&);

// Installs what runs instead of the print to stderr and answers the handler before it; null
// restores the print. A handler that returns does not save the process: abort() follows.
KOR_API AssertionHandler assertionHandlerIs(AssertionHandler handler);

[[noreturn]] KOR_API void assertionFailed(AssertionFailure const& failure);

// The last folder and the base name of a path without its ending: "platform/Kor/HashMap.h" is
// "Kor/HashMap".
constexpr std::string_view sourceNameOf(std::string_view path) {
  auto const ending = path.rfind('.');
  std::string_view const stem = path.substr(0, ending);
  auto const base = stem.rfind('/');
  if (base == std::string_view::npos || base == 0) {
    return stem;
  }
  auto const folder = stem.rfind('/', base - 1);
  return folder == std::string_view::npos ? stem : stem.substr(folder + 1);
}

}  // namespace Kor

// Asserts `condition` under a source name and a text of its own, both string literals.
#define KOR_ASSERT_AS(source, text, condition)                        \
  do {                                                                \
    if (!(condition)) [[unlikely]] {                                  \
      ::Kor::assertionFailed({(source), (text), __FILE__, __LINE__}); \
    }                                                                 \
  } while (false)

// Asserts `condition` with its own spelling as the text and the file as the source name.
#define KOR_ASSERT(condition) KOR_ASSERT_AS(::Kor::sourceNameOf(__FILE__), #condition, condition)
