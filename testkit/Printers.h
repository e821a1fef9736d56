// SPDX-License-Identifier: Apache-2.0
#pragma once

// How Google Test prints the values of the platform and the library in messages: as a person would
// write them. To be included by every source of a test program, or by none; testkit/Matchers.h
// includes it.

#include "testkit/Explanations.h"
#include "testkit/GoogleTest.h"
#include "testkit/Journal.h"
#include "testkit/Printing.h"

#include <Kor/Ptr.h>
#include <Kor/PtrInterface.h>
#include <Kor/String.h>

#include <gmock/gmock.h>

#include <concepts>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

// Google Test finds these functions by name, in the namespace of the value.
// NOLINTBEGIN(readability-identifier-naming)

namespace PolicyMapTestKit {

template <class Value>
concept Describable = requires(Value const& value) {
  { value.describe() } -> std::convertible_to<std::string>;
};
template <class Value>
concept DescribedHere = requires(Value const& value) {
  { describe(value) } -> std::convertible_to<std::string>;
};

// A call per line, and not in one line as other containers.
inline void PrintTo(Journal const& journal, std::ostream* out) {
  *out << (journal.empty() ? "no entries" : "");
  for (std::string const& line : journal.lines()) {
    *out << "\n  " << line;
  }
  *out << (journal.empty() ? "" : "\n ");
}

}  // namespace PolicyMapTestKit

namespace Kor {

inline void PrintTo(String8 const& text, std::ostream* out) {
  testing::internal::PrintTo(text.stdString(), out);
}

template <class Object>
void PrintTo(Ptr<Object> const& object, std::ostream* out) {
  if (!object) {
    *out << "null";
  } else if constexpr (std::is_base_of_v<PtrInterface, Object>) {
    *out << PolicyMapTestKit::describe(static_cast<PtrInterface const&>(*object));
  } else {
    *out << static_cast<void const*>(object.get());
  }
}

}  // namespace Kor

namespace Acl {

template <PolicyMapTestKit::Describable Value>
void PrintTo(Value const& value, std::ostream* out) {
  *out << value.describe();
}

}  // namespace Acl

namespace PolicyMap {

template <PolicyMapTestKit::DescribedHere Value>
void PrintTo(Value const& value, std::ostream* out) {
  *out << PolicyMapTestKit::describe(value);
}

}  // namespace PolicyMap

namespace PolicyMapTest {

inline void PrintTo(AclPolicyType const& type, std::ostream* out) {
  *out << PolicyMapTestKit::describe(type);
}

}  // namespace PolicyMapTest

namespace testing::internal {

// As texts, and not as addresses.
template <>
class FormatForComparison<char const*, std::string_view> {
 public:
  static std::string Format(char const* literal) { return PrintToString(std::string(literal)); }
};

// A literal is compared with the text, so it is printed as text and not as an address.
template <>
class FormatForComparison<char const*, Kor::String8> {
 public:
  static std::string Format(char const* literal) { return PrintToString(std::string(literal)); }
};

// These matchers bind a reference to the text, for which g++ does not use an explicit conversion.
template <>
template <>
inline bool StartsWithMatcher<std::string>::MatchAndExplain(Kor::String8 const& s,
                                                            MatchResultListener* listener) const {
  return MatchAndExplain(s.stdString(), listener);
}
template <>
template <>
inline bool EndsWithMatcher<std::string>::MatchAndExplain(Kor::String8 const& s,
                                                          MatchResultListener* listener) const {
  return MatchAndExplain(s.stdString(), listener);
}
template <>
inline bool MatchesRegexMatcher::MatchAndExplain(Kor::String8 const& s,
                                                 MatchResultListener* listener) const {
  return MatchAndExplain(s.stdString(), listener);
}

}  // namespace testing::internal

// NOLINTEND(readability-identifier-naming)
