// SPDX-License-Identifier: Apache-2.0
#include <Kor/Hash.h>
#include <Kor/String.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;
using Kor::Name;
using Kor::String8;

static_assert(sizeof(String8) == sizeof(void*));
static_assert(sizeof(Name) == sizeof(void*));

TEST(String8, ADefaultTextIsEmpty) {
  String8 const text;
  EXPECT_TRUE(text.empty());
  EXPECT_TRUE(!text);
  EXPECT_EQ(text.length(), 0U);
  EXPECT_STREQ(text.charPtr(), "");
  EXPECT_EQ(text, String8(""));
  EXPECT_EQ(text.hash(), String8(std::string()).hash());
}

TEST(String8, CopiesShareTheText) {
  String8 const text("Ethernet3/1");
  String8 const copy = text;
  EXPECT_EQ(copy.charPtr(), text.charPtr());
  EXPECT_EQ(copy, "Ethernet3/1");
}

TEST(String8, ACopyOutlivesTheTextItWasMadeFrom) {
  String8 copy;
  {
    String8 const text("short lived");
    copy = text;
  }
  EXPECT_EQ(copy.stdString(), "short lived");
}

TEST(String8, MovingLeavesTheEmptyText) {
  String8 text("moved");
  String8 const taken = std::move(text);
  EXPECT_EQ(taken, "moved");
  EXPECT_TRUE(text.empty());  // NOLINT(bugprone-use-after-move): the empty text is promised
}

TEST(String8, AssigningATextToItselfKeepsIt) {
  String8 text("self");
  auto& alias = text;
  text = alias;
  EXPECT_EQ(text, "self");
  text = std::move(alias);
  EXPECT_EQ(text, "self");
}

TEST(String8, HoldsEmbeddedNulBytes) {
  String8 const text("a\0b"sv);
  EXPECT_EQ(text.length(), 3U);
  EXPECT_EQ(text.view(), "a\0b"sv);
  EXPECT_EQ(text[1], '\0');
  EXPECT_NE(text, String8("a"));
  EXPECT_NE(text, String8("a\0c"sv));
  EXPECT_EQ(text.charPtr()[3], '\0') << "terminated behind its last byte";
}

TEST(String8, IsOrderedAsUnsignedBytesWithAPrefixFirst) {
  EXPECT_LT(String8("a"), String8("b"));
  EXPECT_LT(String8("z"), String8("\x80"));
  EXPECT_LT(String8("a"), String8("a\0"sv));
  EXPECT_LT(String8(), String8("\0"sv));
  EXPECT_LT(String8("pm"), String8("pm1"));
  EXPECT_GT(String8("pm2"), String8("pm10"));
}

RC_GTEST_PROP(String8, ComparesLikeSequencesOfUnsignedBytes,
              (std::string const& a, std::string const& b)) {
  std::basic_string<unsigned char> const bytesA(a.begin(), a.end());
  std::basic_string<unsigned char> const bytesB(b.begin(), b.end());
  RC_ASSERT((String8(a) < String8(b)) == (bytesA < bytesB));
  RC_ASSERT((String8(a) == String8(b)) == (bytesA == bytesB));
}

RC_GTEST_PROP(String8, JoinsAsStandardStringsDo, (std::string const& a, std::string const& b)) {
  RC_ASSERT((String8(a) + String8(b)).stdString() == a + b);
  RC_ASSERT((String8(a) + String8(b)).hash() == String8(a + b).hash());
}

TEST(String8, JoiningWithTheEmptyTextSharesTheOther) {
  String8 const text("whole");
  EXPECT_EQ((text + String8()).charPtr(), text.charPtr());
  EXPECT_EQ((String8() + text).charPtr(), text.charPtr());
}

TEST(String8, IsWrittenByLengthWhateverTheWidthOfTheStream) {
  std::ostringstream out;
  out << std::setw(12) << std::setfill('*') << String8("a\0b"sv) << 7;
  EXPECT_EQ(out.str(), std::string("a\0b7"sv));
}

TEST(String8, AnIteratorKnowsItsBytePosition) {
  String8 const text("aéz");
  auto it = text.begin();
  EXPECT_EQ(it.position(), 0U);
  EXPECT_EQ(*it, 'a');
  ++it;
  ++it;
  ++it;
  EXPECT_EQ(it.position(), 3U) << "bytes, not characters";
  EXPECT_EQ(*it, 'z');
  ++it;
  EXPECT_EQ(it, text.end());
  EXPECT_EQ(text.end().position(), text.length());
}

TEST(String8, AnIteratorKeepsItsTextAlive) {
  String8::IteratorConst it;
  { it = String8("kept").begin(); }
  EXPECT_EQ(*it, 'k');
  EXPECT_EQ(it.text(), "kept");
}

TEST(Name, IsATextInEveryRespect) {
  Name const name("pm1");
  String8 const text = name;
  EXPECT_EQ(text.charPtr(), name.charPtr());
  EXPECT_EQ(name, Name("pm1"));
  EXPECT_EQ(name, String8("pm1"));
  EXPECT_LT(name, Name("pm2"));
  EXPECT_EQ(Name(text).charPtr(), text.charPtr());
  EXPECT_EQ(Kor::hashOf(name), Kor::hashOf(text));
}

// Stored data and the order of iteration depend on these values.
TEST(Hash, OfATextIsTheSameEverywhere) {
  EXPECT_EQ(String8("").hash(), 0x811c9dc5U);
  EXPECT_EQ(String8("a").hash(), 0xe40c292cU);
  EXPECT_EQ(String8("b").hash(), 0xe70c2de5U);
  EXPECT_EQ(String8("foobar").hash(), 0xbf9cf968U);
  EXPECT_EQ(Kor::hashBytes("foobar"), 0xbf9cf968U);
  EXPECT_EQ(String8("\xff"sv).hash(), Kor::hashBytes("\xff")) << "bytes are unsigned";
  EXPECT_EQ(Kor::hashBytes("\xff"), (2166136261U ^ 0xffU) * 16777619U);
}

TEST(Hash, ReversingTheBitsTwiceIsNothing) {
  EXPECT_EQ(Kor::bitReverse(1U), 0x80000000U);
  EXPECT_EQ(Kor::bitReverse(0x12345678U), 0x1e6a2c48U);
  EXPECT_EQ(Kor::bitReverse(Kor::bitReverse(0xdeadbeefU)), 0xdeadbeefU);
}

RC_GTEST_PROP(Hash, ReversalMovesEachBitToItsMirrorPlace, (std::uint32_t bits)) {
  std::uint32_t mirrored = 0;
  for (unsigned i = 0; i < 32; ++i) {
    mirrored |= ((bits >> i) & 1U) << (31 - i);
  }
  RC_ASSERT(Kor::bitReverse(bits) == mirrored);
}

TEST(Hash, NumbersSpreadWithoutCollision) {
  std::set<std::uint32_t> hashes;
  for (std::uint32_t number = 0; number < 10000; ++number) {
    hashes.insert(Kor::hashNumber(number));
  }
  EXPECT_EQ(hashes.size(), 10000U);
}

enum class Direction : std::int8_t { in = 0, out = 1 };

TEST(Hash, OfANumberDependsOnItsValueAndWideNumbersUseAllTheirBits) {
  EXPECT_EQ(Kor::hashOf(7), Kor::hashOf(7U));
  EXPECT_EQ(Kor::hashOf(Direction::out), Kor::hashOf(1));
  EXPECT_NE(Kor::hashOf(std::uint64_t{1}), Kor::hashOf(std::uint64_t{1} << 32));
  EXPECT_NE(Kor::hashCombine(1, 2), Kor::hashCombine(2, 1));
}

}  // namespace
