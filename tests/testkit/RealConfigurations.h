// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared by the tests of real configurations, which are read from the folder that
// POLICYMAPTEST_CORPUS names.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"
#include "testkit/text/Parsing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit::test {

class RealConfigurations : public testing::Test {
 protected:
  using Lines = std::vector<std::string>;
  // What is programmed of a list or a class, each rule as "NUMBER MATCH".
  struct Expected {
    std::string name;
    Lines rules;
  };

  void SetUp() override {
    if (Text::test::corpusFolder().empty()) {
      GTEST_SKIP() << "POLICYMAPTEST_CORPUS is not set: real configurations were not read";
    }
  }

  static Text::SourceText read(std::string const& name) {
    return Text::SourceText::fromFile(Text::test::corpusFolder() + "/configs/" + name);
  }
  static std::vector<std::string> names() {
    std::vector<std::string> all;
    for (auto const& each :
         std::filesystem::directory_iterator(Text::test::corpusFolder() + "/configs")) {
      all.push_back(each.path().filename().string());
    }
    std::sort(all.begin(), all.end());
    return all;
  }
  static void load(Lab& lab, std::string const& name) {
    lab.load(read(name), Text::Reading::lenient);
  }

  // The matches of one class.
  static std::vector<std::string> matchesOf(Record const& record, std::string_view className) {
    std::vector<std::string> matches;
    for (RuleRecord const& rule : record) {
      if (rule.key.className().view() == className) {
        matches.push_back(rule.matchText());
      }
    }
    return matches;
  }

  // The lines of a text, without indentation and empty lines.
  static Lines lines(std::string const& text) {
    Lines all;
    std::istringstream in(text);
    for (std::string line; std::getline(in >> std::ws, line);) {
      all.push_back(line);
    }
    return all;
  }

  // The rules of a class in order, each as "NUMBER MATCH", and all of this list.
  static void expectRules(Record const& record, std::string_view className,
                          std::string_view listName, Lines const& expected) {
    Lines rules;
    rules.reserve(record.rules.size());
    for (RuleRecord const& rule : record) {
      if (rule.key.className().view() == className) {
        EXPECT_EQ(rule.key.aclName().view(), listName);
        rules.push_back(std::to_string(rule.key.seqno()).append(" ").append(rule.matchText()));
      }
    }
    EXPECT_THAT(rules, testing::ElementsAreArray(expected)) << className;
  }

  // Attaches each of these lists of a file at an interface of its own.
  static void expectLists(std::string const& file, std::vector<Expected> const& lists) {
    Lab lab;
    load(lab, file);
    std::ostringstream attached;
    for (std::size_t i = 0; i != lists.size(); ++i) {
      attached << "interface Ethernet" << i + 1 << "\n ip address 192.0.2.1/24\n"
               << " ip access-group " << lists[i].name << " in\n";
    }
    lab.load(attached.str());
    for (Expected const& list : lists) {
      std::string const attachedAs = "access-group " + list.name;
      Record const record = lab.record(attachedAs);
      EXPECT_THAT(record, Programmed());
      expectRules(record, attachedAs, list.name, list.rules);
    }
  }
};

}  // namespace PolicyMapTestKit::test
