// SPDX-License-Identifier: Apache-2.0
#include <Kor/Exception.h>

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <type_traits>

namespace {

TEST(Exception, SaysItsWholeText) {
  using namespace std::string_literals;
  Kor::RangeException const error("a\0b"s);
  EXPECT_EQ(error.text(), "a\0b"s);
  EXPECT_STREQ(error.what(), "a");
  static_assert(std::is_base_of_v<Kor::Exception, Kor::RangeException>);
  static_assert(std::is_base_of_v<std::exception, Kor::Exception>);
}

}  // namespace
