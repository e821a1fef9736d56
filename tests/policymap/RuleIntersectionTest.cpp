// SPDX-License-Identifier: Apache-2.0
#include "support/FieldValues.h"

#include <PolicyMap/FieldMeeting.h>
#include <PolicyMap/RuleIntersection.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace policymap {
namespace {

using Acl::PortMatch;
using Acl::TtlMatch;
using PolicyMap::Disjoint;
using PolicyMap::ExactRule;
using PolicyMap::Inexpressible;
using PolicyMap::Intersection;
using PolicyMap::PortRanges;

// A field of any other type does not compile.
template <class Value>
concept Meets = requires(Value const& one, Value& both) {
  PolicyMap::meet(one, one, both);
};
static_assert(Meets<bool> && Meets<std::uint32_t> && Meets<Acl::OptionalNumber>);
static_assert(!Meets<std::uint8_t> && !Meets<std::int64_t> && !Meets<std::string>);
static_assert(!Meets<PortMatch>, "ports need their exact ranges");

// every field of every rule

template <class Rule>
Rule const* found(Intersection<Rule> const& met) {
  auto const* const exact = std::get_if<ExactRule<Rule>>(&met);
  return exact != nullptr ? &exact->rule : nullptr;
}

template <class Rule>
void expectRule(ExactRule<Rule> const& a, ExactRule<Rule> const& b, Rule const& expected) {
  Intersection<Rule> const met = intersect(a, b);
  ASSERT_NE(found(met), nullptr) << "nothing is left";
  EXPECT_EQ(*found(met), expected);
  EXPECT_TRUE(std::get<ExactRule<Rule>>(met).srcPorts.empty());
  EXPECT_TRUE(std::get<ExactRule<Rule>>(met).dstPorts.empty());
}

template <class Rule, class Field>
void checkField(Field const& field) {
  using Value = std::remove_cvref_t<decltype((Rule().*field.get)())>;
  auto const with = [&](Value const& value) {
    ExactRule<Rule> exact;
    (exact.rule.*field.set)(value);
    return exact;
  };
  bool const isPermit = field.name == "permit";
  auto const [some, other] = TestSupport::twoValues<Value>();
  auto const [a, b, none] = std::tuple(isPermit ? with(Value()) : with(some),
                                       isPermit ? with(some) : with(other), ExactRule<Rule>());
  {
    SCOPED_TRACE("both have the same");
    expectRule(a, a, a.rule);
  }
  {
    SCOPED_TRACE("one has it");
    expectRule(a, none, a.rule);
    expectRule(none, a, a.rule);
  }
  {
    SCOPED_TRACE("none has it");
    expectRule(none, none, none.rule);
  }
  SCOPED_TRACE("they differ");
  if (std::is_same_v<Value, bool>) {
    expectRule(a, b, a.rule);
    expectRule(b, a, a.rule);
  } else {
    EXPECT_TRUE(std::holds_alternative<Disjoint>(intersect(a, b)));
    EXPECT_TRUE(std::holds_alternative<Disjoint>(intersect(b, a)));
  }
}

struct FieldCase {
  std::string name;
  std::function<void()> check;
};

template <class Rule>
void addCases(std::string const& kind, std::vector<FieldCase>& cases) {
  std::apply(
      [&](auto const&... fields) {
        (cases.push_back({kind + "_" + std::string(fields.name),
                          [field = fields] { checkField<Rule>(field); }}),
         ...);
      },
      Rule::korFields());
}

std::vector<FieldCase> allFields() {
  std::vector<FieldCase> cases;
  addCases<Acl::IpRuleConfig>("ipv4", cases);
  addCases<Acl::Ip6RuleConfig>("ipv6", cases);
  addCases<Acl::MacRuleConfig>("mac", cases);
  return cases;
}

class EveryField : public testing::TestWithParam<FieldCase> {};

TEST_P(EveryField, Meets) {
  GetParam().check();
}

INSTANTIATE_TEST_SUITE_P(RuleIntersection, EveryField, testing::ValuesIn(allFields()),
                         [](auto const& field) { return field.param.name; });

// numbers

ExactRule<Acl::IpRuleConfig> withTtl(TtlMatch const& ttl) {
  ExactRule<Acl::IpRuleConfig> exact;
  exact.rule.ttlIs(ttl);
  return exact;
}

TtlMatch ttlOfBoth(TtlMatch const& a, TtlMatch const& b) {
  auto const met = intersect(withTtl(a), withTtl(b));
  return found(met) != nullptr ? found(met)->ttl() : TtlMatch::lt(0);
}

TEST(RuleIntersection, AllTtlsButOneAreSaidByNotEqual) {
  TtlMatch const all = TtlMatch::range(0, 255);
  EXPECT_EQ(ttlOfBoth(TtlMatch::neq(5), all), TtlMatch::neq(5));
  EXPECT_EQ(ttlOfBoth(TtlMatch::neq(5), TtlMatch::neq(5)), TtlMatch::neq(5));
  EXPECT_EQ(ttlOfBoth(TtlMatch::neq(1), all), TtlMatch::neq(1));
  EXPECT_EQ(ttlOfBoth(TtlMatch::neq(254), all), TtlMatch::neq(254));
  EXPECT_EQ(ttlOfBoth(TtlMatch::neq(0), all), TtlMatch::range(1, 255));
  EXPECT_EQ(ttlOfBoth(TtlMatch::neq(255), all), TtlMatch::range(0, 254));
}

TEST(RuleIntersection, TtlsWithAHoleThatNoMatchSaysAreInexpressible) {
  for (auto const& [a, b] :
       {std::pair(TtlMatch::neq(5), TtlMatch::neq(7)), std::pair(TtlMatch::neq(5), TtlMatch::gt(0)),
        std::pair(TtlMatch::neq(5), TtlMatch::lt(255))}) {
    auto const met = intersect(withTtl(a), withTtl(b));
    ASSERT_TRUE(std::holds_alternative<Inexpressible>(met)) << a.describe() << ", " << b.describe();
    EXPECT_EQ(std::get<Inexpressible>(met).field, "TTL");
  }
}

TEST(RuleIntersection, WhatIsDisjointInOneFieldIsDisjointWhateverTheOthersAre) {
  auto a = withTtl(TtlMatch::neq(5));
  auto b = withTtl(TtlMatch::neq(7));
  a.rule.protocolIs(6);
  b.rule.protocolIs(17);
  EXPECT_TRUE(std::holds_alternative<Disjoint>(intersect(a, b)));
  a.rule.protocolIs(std::nullopt);
  a.rule.vniIs(1);
  b.rule.vniIs(2);
  EXPECT_TRUE(std::holds_alternative<Disjoint>(intersect(a, b)));
}

TEST(RuleIntersection, ExactPortsMeetFurtherPorts) {
  ExactRule<Acl::IpRuleConfig> a;
  ExactRule<Acl::IpRuleConfig> b;
  a.rule.srcPortIs(PortMatch::neq(80));
  b.rule.srcPortIs(PortMatch::range(79, 82));
  auto const holed = std::get<ExactRule<Acl::IpRuleConfig>>(intersect(a, b));
  EXPECT_EQ(holed.rule.srcPort(), PortMatch::range(79, 82));
  EXPECT_EQ(holed.srcPorts, (PortRanges{{79, 79}, {81, 82}}));
  EXPECT_TRUE(holed.dstPorts.empty());

  // An intersection with any port keeps the ranges. A further one can leave a single range.
  EXPECT_EQ(std::get<ExactRule<Acl::IpRuleConfig>>(intersect(holed, {})), holed);
  EXPECT_EQ(std::get<ExactRule<Acl::IpRuleConfig>>(intersect({}, holed)), holed);
  b.rule.srcPortIs(PortMatch::gt(80));
  auto const whole = std::get<ExactRule<Acl::IpRuleConfig>>(intersect(b, holed));
  EXPECT_EQ(whole.rule.srcPort(), PortMatch::range(81, 82));
  EXPECT_TRUE(whole.srcPorts.empty());
  b.rule.srcPortIs(PortMatch::eq(80));
  EXPECT_TRUE(std::holds_alternative<Disjoint>(intersect(holed, b)));
}

TEST(RuleIntersection, TheMatchOfExactPortsIsTheSmallestRangeAroundThem) {
  struct Case {
    PortMatch a;
    PortMatch b;
    PortMatch around;
    PortRanges exact;
  };
  for (auto const& [a, b, around, exact] : {
           Case{PortMatch::gt(0), PortMatch::neq(2), PortMatch::range(1, 65535),
                PortRanges{{1, 1}, {3, 65535}}},
           Case{PortMatch::lt(65535), PortMatch::neq(2), PortMatch::range(0, 65534),
                PortRanges{{0, 1}, {3, 65534}}},
           Case{PortMatch::neq(2), PortMatch::neq(4), PortMatch::range(0, 65535),
                PortRanges{{0, 1}, {3, 3}, {5, 65535}}},
           Case{PortMatch::neq(2), PortMatch::range(0, 65535), PortMatch::neq(2), PortRanges()},
       }) {
    ExactRule<Acl::IpRuleConfig> one;
    ExactRule<Acl::IpRuleConfig> other;
    one.rule.dstPortIs(a);
    other.rule.dstPortIs(b);
    auto const met = std::get<ExactRule<Acl::IpRuleConfig>>(intersect(one, other));
    EXPECT_EQ(met.rule.dstPort(), around);
    EXPECT_EQ(met.dstPorts, exact);
  }
}

// packets

template <class Match>
rc::Gen<Match> numbers() {
  return rc::gen::exec([] {
    auto const near = [] {
      auto const step = *rc::gen::inRange<std::int64_t>(0, 6);
      return *rc::gen::arbitrary<bool>() ? step : Match::highest - step;
    };
    std::int64_t const one = near();
    std::int64_t const other = near();
    switch (*rc::gen::inRange(0, 6)) {
    case 0: return Match::eq(one);
    case 1: return Match::neq(one);
    case 2: return Match::lt(one);
    case 3: return Match::gt(one);
    case 4: return Match::range(std::min(one, other), std::max(one, other));
    default: return Match::any();
    }
  });
}

template <class Ranges>
bool within(Ranges const& ranges, std::int64_t number) {
  return std::any_of(ranges.begin(), ranges.end(), [number](auto const& range) {
    return number >= range.low && number <= range.high;
  });
}

bool takesPort(ExactRule<Acl::IpRuleConfig> const& exact, std::int64_t port) {
  return exact.dstPorts.empty() ? within(exact.rule.dstPort().ranges(), port)
                                : within(exact.dstPorts, port);
}

RC_GTEST_PROP(RuleIntersection, TakesThePortsAndTtlsThatAllRulesTake, ()) {
  ExactRule<Acl::IpRuleConfig> all;
  std::vector<ExactRule<Acl::IpRuleConfig>> rules;
  bool some = true;
  bool expressible = true;
  for (int i = 0; i < 4 && some && expressible; ++i) {
    auto& rule = rules.emplace_back();
    rule.rule.dstPortIs(*numbers<PortMatch>());
    rule.rule.ttlIs(*numbers<TtlMatch>());
    if (rule.rule.matchesNothing()) {
      rules.pop_back();  // the compiler leaves such rules out before it intersects
      continue;
    }
    auto const met = intersect(all, rule);
    some = !std::holds_alternative<Disjoint>(met);
    expressible = !std::holds_alternative<Inexpressible>(met);
    if (auto const* const exact = std::get_if<ExactRule<Acl::IpRuleConfig>>(&met)) {
      all = *exact;
    }
  }
  auto const allTake = [&](auto const& takes) {
    return std::all_of(rules.begin(), rules.end(), takes);
  };
  bool anyPort = false;
  for (std::int64_t port = 0; port <= PortMatch::highest; port += port == 10 ? 65515 : 1) {
    bool const taken = allTake([port](auto const& rule) { return takesPort(rule, port); });
    anyPort = anyPort || taken;
    RC_ASSERT(!some || !expressible || takesPort(all, port) == taken);
  }
  bool anyTtl = false;
  for (std::int64_t ttl = 0; ttl <= TtlMatch::highest; ++ttl) {
    auto const takes = [ttl](auto const& rule) { return within(rule.rule.ttl().ranges(), ttl); };
    bool const taken = allTake(takes);
    anyTtl = anyTtl || taken;
    RC_ASSERT(!some || !expressible || takes(all) == taken);
  }
  RC_ASSERT(some == (anyPort && anyTtl));
  // The match of the rule is the smallest one that covers the exact ranges.
  if (some && expressible && !all.dstPorts.empty()) {
    RC_ASSERT(all.rule.dstPort() ==
              PortMatch::range(all.dstPorts.front().low, all.dstPorts.back().high));
  }
}

}  // namespace
}  // namespace policymap
