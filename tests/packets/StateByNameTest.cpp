// SPDX-License-Identifier: Apache-2.0
#include "packets/StateByName.h"

#include "packets/Labs.h"
#include "testkit/Lookup.h"

#include <Kor/ByName.h>

namespace PolicyMapPackets::test {
namespace {

using PolicyMapTestKit::LabByName;
using testing::HasSubstr;

class StateByNameTest : public testing::Test {
 protected:
  StateByNameTest() { lab_->load(Kor::String(policy)); }

  // The lines, separated by line feeds.
  static std::string joined(StateByName::TextLines const& lines) {
    std::string text;
    for (Kor::String const& line : lines) {
      text += (text.empty() ? "" : "\n") + line.stdString();
    }
    return text;
  }
  StateByName::Ptr now(char const* settings = "") const {
    return Kor::make<StateByName>(lab_, settings);
  }

  LabByName::Ptr const lab_ = Kor::make<LabByName>(false, false, false);
};

TEST_F(StateByNameTest, ReturnsJsonWithTheText) {
  Trace const trace = traceOf(lab_->lab(), webPacket);
  auto json = jsonOf(trace);
  json.add("text", printed(trace));
  EXPECT_EQ(joined(now()->trace(webPacket, "")), json.text());
  EXPECT_EQ(joined(now()->prove("")), R"({"subject":"edge input ipv4","verdict":"the same",)"
                                      R"("text":"edge input ipv4: the same"})");
  EXPECT_THAT(joined(now()->unused("")), HasSubstr(R"("text":"edge input ipv4: every rule )"));
}

TEST_F(StateByNameTest, SelectsPolicies) {
  EXPECT_EQ(joined(now(R"({"direction":"output"})")->prove("")), "");
  EXPECT_EQ(joined(now(R"({"option":"mac"})")->prove("")), "");
  EXPECT_NE(joined(now(R"({"policy":"edge","interface":"Ethernet1"})")->prove("")), "");
}

TEST_F(StateByNameTest, TakesSettings) {
  EXPECT_THAT(joined(now()->prove(R"({"deny":"entry"})")), HasSubstr(R"("verdict":"different")"));
  EXPECT_THAT(joined(now()->prove(R"({"deny":"entry","except":["udp any any eq 53"]})")),
              HasSubstr(R"("verdict":"the same")"));
  EXPECT_THAT(joined(now()->prove(R"({"deny":"entry","budget":0})")),
              HasSubstr(R"("verdict":"undecided")"));
  EXPECT_THAT(joined(now()->trace("udp 10.0.0.1 > 192.0.2.53:53", R"({"passed":true})")),
              HasSubstr("does not match"));
}

TEST_F(StateByNameTest, StaysWhenTheLabChangesOrEnds) {
  StateByName::Ptr const before = now();
  lab_->load("ip access-list web\n no 10\n");
  StateByName::Ptr const after = now();
  EXPECT_THAT(joined(before->trace(webPacket, "")), HasSubstr(R"("class":"web")"));
  EXPECT_THAT(joined(after->trace(webPacket, "")), HasSubstr(R"("class":"rest")"));
  lab_->close();
  EXPECT_THAT(joined(before->compare(after, "")),
              HasSubstr("1 rule removed; 2^150 packets go from class web to class rest"));
  EXPECT_THAT(joined(after->compare(before, R"({"of":"configuration","first":0})")),
              HasSubstr("1 rule added; 2^150 packets go from class rest to class web"));
  EXPECT_THROW((void)now(), Kor::RangeException);
}

TEST_F(StateByNameTest, RefusesWhatIsNotValid) {
  EXPECT_THROW((void)now()->trace("no packet", ""), Kor::RangeException);
  EXPECT_THROW((void)now()->prove("no JSON"), Kor::RangeException);
  EXPECT_THROW((void)now()->prove(R"({"deny":"sometimes"})"), Kor::RangeException);
  EXPECT_THROW((void)now()->prove(R"({"except":["nothing"]})"), Kor::RangeException);
  EXPECT_THROW((void)now()->compare(now(), R"({"of":"both"})"), Kor::RangeException);
  EXPECT_THROW((void)now()->compare(nullptr, ""), Kor::RangeException);
  EXPECT_THROW((void)now(R"({"option":"ip"})"), Kor::RangeException);
  EXPECT_THROW((void)now(R"({"policy":"other"})"), PolicyMapTestKit::LookupError);
  EXPECT_THROW(StateByName(nullptr, ""), Kor::RangeException);
}

TEST(State, IsReachedByName) {
  auto const lab = Kor::construct("PolicyMapTestKit::Lab", false, false, false);
  lab["load"](policy);
  auto const state = Kor::construct("PolicyMapPackets::State", lab, "");
  EXPECT_EQ(state["prove"]("").value().list().size(), 1U);
  EXPECT_EQ(state["compare"](state, "").value().list().size(), 1U);
}

}  // namespace
}  // namespace PolicyMapPackets::test
