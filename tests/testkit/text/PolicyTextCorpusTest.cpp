// SPDX-License-Identifier: Apache-2.0

// Real configurations, read leniently: what is understood and what is skipped.

#include "testkit/text/Parsing.h"

#include <gtest/gtest.h>

#include <string>

namespace PolicyMapTestKit::Text::test {
namespace {

class PolicyTextCorpus : public testing::Test {
 protected:
  void SetUp() override {
    if (corpusFolder().empty()) {
      GTEST_SKIP() << "POLICYMAPTEST_CORPUS is not set: real configurations were not read";
    }
  }

  static PolicyText read(std::string const& name) {
    return parsePolicyText(SourceText::fromFile(corpusFolder() + "/configs/" + name),
                           Reading::lenient);
  }

  template <typename Body>
  static std::size_t count(PolicyText const& text) {
    std::size_t found = 0;
    for (Statement const& statement : text.statements) {
      found += std::holds_alternative<Body>(statement.body) ? 1U : 0U;
    }
    return found;
  }

  static std::uint64_t skipped(PolicyText const& text, std::string const& kind) {
    auto const found = text.skipped.byKind().find(kind);
    return found == text.skipped.byKind().end() ? 0 : found->second;
  }
};

TEST_F(PolicyTextCorpus, FirewallHasItsClassesListsAndZones) {
  PolicyText const current = read("zbf-firewall-current.cfg");
  EXPECT_EQ(count<ClassMapOpen>(current), 81U);
  EXPECT_EQ(count<ClassMatchList>(current), 81U);
  EXPECT_EQ(count<AccessListOpen>(current), 81U);
  EXPECT_EQ(count<PolicyMapOpen>(current), 4U);
  EXPECT_EQ(count<PolicyClassOpen>(current), 47U);
  EXPECT_EQ(count<RuleAdd>(current), 81U);
  EXPECT_EQ(count<ClassMatchCondition>(current), 80U);
  EXPECT_EQ(count<ObjectGroupOpen>(current) + count<ObjectGroupMembers>(current), 224U);
  EXPECT_EQ(count<InterfaceZone>(current), 3U);
  EXPECT_EQ(count<ZonePairPolicy>(current), 4U);
  EXPECT_EQ(skipped(current, "banner"), 5U);
  EXPECT_EQ(current.skipped.total(), 5U);
  PolicyText const candidate = read("zbf-firewall-candidate1.cfg");
  EXPECT_EQ(count<PolicyMapOpen>(candidate), 3U);
  EXPECT_EQ(count<PolicyClassOpen>(candidate), 46U);
}

TEST_F(PolicyTextCorpus, EveryEntryOfTheAccessListsIsRead) {
  PolicyText const text = read("ios-acl-partition.cfg");
  EXPECT_EQ(count<RuleAdd>(text), 101U);
  EXPECT_EQ(text.skipped.total(), 3U) << "what the device printed before the text";
}

TEST_F(PolicyTextCorpus, EveryOperatorIsReadAndEveryUnknownOptionIsCounted) {
  PolicyText const text = read("nxos_ip_access_list.cfg");
  EXPECT_EQ(count<AccessListOpen>(text), 25U);
  EXPECT_EQ(count<RuleAdd>(text), 201U);
  EXPECT_EQ(count<RemarkAdd>(text), 2U);
  EXPECT_EQ(count<ObjectGroupOpen>(text), 4U);
  EXPECT_EQ(skipped(text, "permit (http-method)"), 8U);
  EXPECT_EQ(skipped(text, "permit (packet-length)"), 5U);
}

TEST_F(PolicyTextCorpus, FlatTextHasItsClassesAndAttachments) {
  PolicyText const text = read("efos-cluster-switch.cfg");
  EXPECT_EQ(count<ClassMapOpen>(text), 8U);
  EXPECT_EQ(count<PolicyMapOpen>(text), 4U);
  EXPECT_EQ(count<PolicyClassOpen>(text), 16U);
  EXPECT_EQ(count<ServicePolicy>(text), 4U);
}

TEST_F(PolicyTextCorpus, RouterHasItsClassMapsAndAttachments) {
  PolicyText const text = read("asr920-router.cfg");
  EXPECT_EQ(count<ClassMapOpen>(text), 3U);
  EXPECT_EQ(count<ServicePolicy>(text), 8U);
  EXPECT_EQ(skipped(text, "service instance"), 31U);
  EXPECT_EQ(skipped(text, "shutdown"), 0U);
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
