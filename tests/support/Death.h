// SPDX-License-Identifier: Apache-2.0
#pragma once

// EXPECT_ASSERTION(statement, source, text, file): expects that the statement ends the process by
// the assertion of that source and text, and that stderr has no other output. Any line number
// matches.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace TestSupport {

inline bool isAssertionReport(std::string const& printed, std::string const& source,
                              std::string const& text, std::string const& file) {
  std::string const head =
      std::string(source).append(": assertion \"").append(text).append("\" failed at ");
  std::string const fileAndColon = file + ":";
  if (!printed.starts_with(head) ||
      printed.compare(head.size(), fileAndColon.size(), fileAndColon) != 0) {
    return false;
  }
  std::string const line = printed.substr(head.size() + fileAndColon.size());
  return line.size() >= 2 && line.back() == '\n' &&
         line.find_first_not_of("0123456789") == line.size() - 1;
}

MATCHER_P3(IsAssertionReport, source, text, file,
           std::string("is the report of assertion \"") + text + "\" of " + source + " in " +
               file) {
  return isAssertionReport(arg, source, text, file);
}

}  // namespace TestSupport

#define EXPECT_ASSERTION(statement, source, text, file) \
  EXPECT_EXIT(                                          \
      statement, ::testing::KilledBySignal(SIGABRT),    \
      ::TestSupport::IsAssertionReport(std::string(source), std::string(text), std::string(file)))
