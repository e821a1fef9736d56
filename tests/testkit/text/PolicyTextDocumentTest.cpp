// SPDX-License-Identifier: Apache-2.0

// Checks docs/policy-text.md against the reader: its examples are read and its names looked up.

#include "testkit/text/Parsing.h"
#include "testkit/text/PortNames.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace PolicyMapTestKit::Text::test {
namespace {

struct Block {
  // The line of the document on which the block begins.
  std::size_t line = 0;
  std::vector<std::string> lines;
};

// The fenced blocks of the document with this mark.
std::vector<Block> blocksOf(std::string const& mark) {
  SourceText const document =
      SourceText::fromFile(std::string(POLICYMAPTEST_SOURCE_DIR) + "/docs/policy-text.md");
  std::vector<Block> blocks;
  bool inside = false;
  LineReader reader(document);
  while (reader.next()) {
    std::string_view const line = reader.line();
    if (line.substr(0, 3) == "```") {
      inside = !inside && line.substr(3) == mark;
      if (inside) {
        blocks.push_back({reader.number() + std::size_t{1}, {}});
      }
    } else if (inside) {
      blocks.back().lines.emplace_back(line);
    }
  }
  return blocks;
}

std::string joined(Block const& block) {
  std::string text;
  for (std::string const& line : block.lines) {
    text += line + "\n";
  }
  return text;
}

bool saysNothing(std::string_view line) {
  Lexer lexer(line);
  lexer.accept("no");
  Token const first = lexer.peek();
  Token const second = lexer.peekSecond();
  bool const isZone = first.is("zone") && second.is("security");
  bool const isDetail = first.is("switchport") && (second.is("mode") || second.is("trunk"));
  bool const isSetting = (first.is("ip") && second.is("access-list") &&
                          line.find("resequence") != std::string_view::npos) ||
                         (first.is("access-list") && second.is("compiled"));
  return isZone || isDetail || isSetting || first.is("statistics") || first.atEnd() ||
         first.text.front() == '!' || first.is("hostname") || first.is("exit") || first.is("end") ||
         first.is("end-class-map") || first.is("end-policy-map") || first.is("description");
}

TEST(PolicyTextDocument, EveryExampleLineIsReadStrictlyAndSaysSomething) {
  auto const blocks = blocksOf("policy");
  ASSERT_GE(blocks.size(), 9U);
  std::size_t lines = 0;
  for (Block const& block : blocks) {
    std::set<std::size_t> speaking;
    ASSERT_EQ(errorOf(joined(block)), "no error") << "block at line " << block.line;
    for (Statement const& statement : statements(joined(block))) {
      speaking.insert(statement.position.line);
    }
    for (std::size_t index = 0; index != block.lines.size(); ++index) {
      EXPECT_EQ(speaking.count(index + 1) == 0, saysNothing(block.lines[index]))
          << "docs/policy-text.md:" << block.line + index << ": " << block.lines[index];
    }
    lines += block.lines.size();
  }
  EXPECT_GE(lines, 150U);
}

// Calls `check(name, value)` for each "name=value" in the blocks with this mark.
void forEachName(std::string const& mark,
                 std::function<void(std::string const&, std::string const&)> const& check) {
  std::size_t names = 0;
  for (Block const& block : blocksOf(mark)) {
    std::istringstream words(joined(block));
    for (std::string word; words >> word; ++names) {
      std::size_t const equals = word.find('=');
      ASSERT_NE(equals, std::string::npos) << word;
      check(word.substr(0, equals), word.substr(equals + 1));
    }
  }
  EXPECT_GE(names, 9U) << mark;
}

template <typename Number>
std::string shown(std::optional<Number> const& number) {
  return number ? std::to_string(*number) : "unknown";
}

std::string shownMessage(std::uint8_t protocol, std::string const& name) {
  auto const message = icmpMessage(protocol, name);
  if (!message) {
    return "unknown";
  }
  return std::to_string(message->type) + (message->code ? "/" + shown(message->code) : "");
}

TEST(PolicyTextDocument, NamesHaveTheNumbersGiven) {
  forEachName("protocols", [](std::string const& name, std::string const& value) {
    EXPECT_EQ(shown(protocolNumber(Family::ip4, name)), value) << name;
  });
  forEachName("tcp-ports", [](std::string const& name, std::string const& value) {
    EXPECT_EQ(shown(portNumber(protocol::tcp, name)), value) << name;
    EXPECT_EQ(shown(portNumber(protocol::sctp, name)), value) << name;
  });
  forEachName("udp-ports", [](std::string const& name, std::string const& value) {
    EXPECT_EQ(shown(portNumber(protocol::udp, name)), value) << name;
  });
  forEachName("dscps", [](std::string const& name, std::string const& value) {
    EXPECT_EQ(shown(dscpNumber(name)), value) << name;
  });
  forEachName("icmp", [](std::string const& name, std::string const& value) {
    EXPECT_EQ(shownMessage(protocol::icmp, name), value) << name;
  });
  forEachName("icmpv6", [](std::string const& name, std::string const& value) {
    EXPECT_EQ(shownMessage(protocol::icmp6, name), value) << name;
  });
  forEachName("ethernet-types", [](std::string const& name, std::string const& value) {
    EXPECT_EQ(etherTypeNumber(name), std::stoul(value, nullptr, 0)) << name;
  });
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
