// SPDX-License-Identifier: Apache-2.0
#pragma once

// Assertions check the promises of this code itself. They are on in every build type. A failed one
// prints
//
//   SOURCE: assertion "TEXT" failed at FILE:LINE
//
// to stderr and ends the process. Bad input raises Kor::Exception instead.

#include "Kor/Export.h"

#include <string_view>

namespace Kor {

// The views stay valid until the process ends.
struct AssertionFailure {
  std::string_view source;  // the asserting source, e.g. "Kor/HashMap"
  std::string_view text;    // the asserted expression
  std::string_view file;
  int line;
};

using AssertionHandler = void (*)(AssertionFailure const&);

// Installs the handler that runs instead of the print to stderr, and returns the previous one. Null
// restores the print. If the handler returns, the process aborts.
KOR_API AssertionHandler assertionHandlerIs(AssertionHandler handler);

[[noreturn]] KOR_API void assertionFailed(AssertionFailure const& failure);

// The last folder and the stem of a path: "platform/Kor/HashMap.h" gives "Kor/HashMap".
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

// Asserts `condition` with the given source name and text, both string literals.
#define KOR_ASSERT_AS(source, text, condition)                        \
  do {                                                                \
    if (!(condition)) [[unlikely]] {                                  \
      ::Kor::assertionFailed({(source), (text), __FILE__, __LINE__}); \
    }                                                                 \
  } while (false)

// Asserts `condition`. The text is its spelling, the source name is that of the file.
#define KOR_ASSERT(condition) KOR_ASSERT_AS(::Kor::sourceNameOf(__FILE__), #condition, condition)
