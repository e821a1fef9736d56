// SPDX-License-Identifier: Apache-2.0
#pragma once

// Checks of this library's values, in addition to acl/ValueChecks.h.

#include "acl/ValueChecks.h"

#include <Kor/Strep.h>

#include <gtest/gtest.h>

#include <string>

namespace policymap {

template <class T>
std::string parseError(std::string const& text) {
  return TestSupport::rangeError([&] { (void)Kor::strepToValue<T>(Kor::String8(text)); });
}

// The text forms for generic code, by look-up and by <<.
template <class T>
void expectFoundText(T const& value, std::string const& text) {
  EXPECT_EQ(valueToStrep(value), Kor::String8(text));
  EXPECT_EQ(TestSupport::printed(value), text);
}

// All six comparisons of a lesser and a greater value.
template <class T>
void expectLess(T const& a, T const& b) {
  EXPECT_TRUE(a < b && a <= b && a != b && b > a && b >= a && a <= a && a >= a && a == a);
  EXPECT_FALSE(b < a || b <= a || a == b || a > b || a >= b || a != a || a < a || a > a);
}

}  // namespace policymap
