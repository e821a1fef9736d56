// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/RandomEdits.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>

#include <regex>
#include <set>

namespace PolicyMapTestKit::test {
namespace {

using testing::Contains;

std::string const edited = "! a comment\n"
                           "ip access-list P\n"
                           " 10 permit tcp any any eq 80\n"
                           "exit\n"
                           "policy-map P\n"
                           " class P\n"
                           "  set action1 7\n"
                           "interface Ethernet1\n";

std::vector<std::string> editsOf(std::string const& text, std::uint64_t seed, std::size_t count) {
  RandomEdits edits;
  edits.add(text);
  std::mt19937_64 random(seed);
  std::vector<std::string> all;
  for (std::size_t i = 0; i != count; ++i) {
    all.push_back(edits.next(random));
  }
  return all;
}

TEST(RandomEdits, AreEmptyWithoutLines) {
  RandomEdits edits;
  EXPECT_TRUE(edits.empty());
  edits.add("! a comment\n\n# another\nexit\nend\n");
  EXPECT_TRUE(edits.empty());
  edits.add("ip routing\n");
  EXPECT_FALSE(edits.empty());
}

TEST(RandomEdits, DependOnTheSeed) {
  EXPECT_EQ(editsOf(edited, 1, 100), editsOf(edited, 1, 100));
  EXPECT_NE(editsOf(edited, 1, 100), editsOf(edited, 2, 100));
}

TEST(RandomEdits, AreOfEachKind) {
  std::vector<std::string> const all = editsOf(edited, 1, 500);
  EXPECT_THAT(all, Contains("no ip access-list P\n"));
  EXPECT_THAT(all, Contains("ip access-list P\n no 10 permit tcp any any eq 80\n"));
  EXPECT_THAT(all, Contains("policy-map P\n class P\n  no set action1 7\n"));
  EXPECT_THAT(all, Contains("policy-map P\n class P\n  set action1 7\n"));
  EXPECT_THAT(all, Contains("ip access-list P\n 10 permit tcp any any eq 80\n"));
  EXPECT_THAT(all, Contains("interface Ethernet1\n shutdown\n"));
  EXPECT_THAT(all, Contains("interface Ethernet1\n no shutdown\n"));
  EXPECT_THAT(
      all, Contains(testing::MatchesRegex("ip access-list P\n 1[1-5] permit tcp any any eq 80\n")));
  EXPECT_THAT(
      all, Contains(testing::MatchesRegex("ip access-list P\n 10 permit tcp any any eq 8[1-5]\n")));
  EXPECT_THAT(all, Contains(testing::MatchesRegex(
                       "policy-map P\n class P\n  set action1 (8|9|10|11|12)\n")));
}

TEST(RandomEdits, AreBelowTheirHeadersAndChangeNumbersAlone) {
  // Words that are no numbers, and the lines above, are as they were.
  std::regex const numbers("(^| )[0-9]+(?= |\n)");
  auto const plain = [&](std::string const& text) {
    return std::regex_replace(text, numbers, "$1N");
  };
  std::set<std::string> const expected = {
      "ip access-list P\n",
      "no ip access-list P\n",
      "ip access-list P\n N permit tcp any any eq N\n",
      "ip access-list P\n no N permit tcp any any eq N\n",
      "policy-map P\n",
      "no policy-map P\n",
      "policy-map P\n class P\n",
      "policy-map P\n no class P\n",
      "policy-map P\n class P\n  set action1 N\n",
      "policy-map P\n class P\n  no set action1 N\n",
      "interface Ethernet1\n",
      "no interface Ethernet1\n",
      "interface Ethernet1\n shutdown\n",
      "interface Ethernet1\n no shutdown\n",
  };
  for (std::string const& edit : editsOf(edited, 3, 1000)) {
    EXPECT_TRUE(expected.contains(plain(edit))) << edit;
  }
}

TEST(RandomEdits, MoveClassesWithinTheirPolicyMap) {
  std::vector<std::string> const all =
      editsOf("policy-map P\n class a\n class b\npolicy-map Q\n class c\n", 1, 500);
  EXPECT_THAT(all, Contains("policy-map P\n class a insert-before b\n"));
  EXPECT_THAT(all, Contains("policy-map P\n class b insert-before a\n"));
  EXPECT_THAT(all, testing::Not(Contains(testing::HasSubstr("class c insert-before"))));
  EXPECT_THAT(all, testing::Not(Contains(testing::HasSubstr("insert-before c"))));
}

TEST(RandomEdits, PutBackWhatTheyRemoved) {
  // A line that cannot change otherwise: what is not "no" puts it back or repeats it.
  std::vector<std::string> const all = editsOf("ip access-list P\n permit ip any any\n", 1, 300);
  auto const removal = std::find(all.begin(), all.end(), "no ip access-list P\n");
  ASSERT_NE(removal, all.end());
  EXPECT_NE(std::find(removal, all.end(), "ip access-list P\n permit ip any any\n"), all.end())
      << "with the lines below";
}

TEST(RandomEdits, RemoveANegation) {
  EXPECT_THAT(editsOf("interface Ethernet1\n no shutdown\n", 1, 200),
              Contains("interface Ethernet1\n shutdown\n"));
  EXPECT_THAT(editsOf("no ip routing\n", 1, 50), Contains("ip routing\n"));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
