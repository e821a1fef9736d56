// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared by the tests of the readers: from text to statements, or to the text of an error.

#include "testkit/Printers.h"
#include "testkit/text/FilterSet.h"
#include "testkit/text/PolicyTextParser.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <variant>
#include <vector>

namespace PolicyMapTestKit::Text::test {

inline PolicyText readText(std::string text, Reading reading = Reading::strict) {
  return parsePolicyText(SourceText("t", std::move(text)), reading);
}

inline std::vector<Statement> statements(std::string text) {
  return readText(std::move(text)).statements;
}

// The body of the last statement in a text.
template <typename Body>
Body last(std::string text) {
  auto const all = statements(std::move(text));
  return std::get<Body>(all.at(all.size() - 1).body);
}

// what() of the InputError that `read` throws; "no error" if it throws none.
template <typename Read>
std::string errorFrom(Read read) {
  try {
    static_cast<void>(read());
  } catch (InputError const& error) {
    return error.what();
  }
  return "no error";
}

inline std::string errorOf(std::string text, Reading reading = Reading::strict) {
  return errorFrom([&] { return readText(std::move(text), reading); });
}

// The folder of real inputs; empty if the environment does not name one.
inline std::string corpusFolder() {
  char const* const folder = std::getenv("POLICYMAPTEST_CORPUS");
  return folder == nullptr ? std::string() : std::string(folder);
}

// An address as a rule stores it.
inline Address addressOf(Family family, std::string_view value, std::string_view mask) {
  Address address;
  EXPECT_TRUE(parseAddress(family, value, address.value)) << value;
  EXPECT_TRUE(parseAddress(family, mask, address.mask)) << mask;
  return address;
}

}  // namespace PolicyMapTestKit::Text::test
