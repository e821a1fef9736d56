// SPDX-License-Identifier: Apache-2.0
#include "support/FieldValues.h"

#include <Acl/Ip6RuleConfig.h>
#include <Acl/IpRuleConfig.h>
#include <Acl/MacRuleConfig.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

// Checks that a field takes part in everything a rule does, even where code lists the fields one by
// one.
template <class Rule, class Field>
void checkField(Field const& field) {
  using Value = std::remove_cvref_t<decltype((Rule().*field.get)())>;
  bool const isPermit = field.name == "permit";
  Rule rule;
  Value const value = isPermit ? Value() : TestSupport::twoValues<Value>().first;
  (rule.*field.set)(value);
  EXPECT_EQ((rule.*field.get)(), value);
  EXPECT_NE(rule, Rule());
  EXPECT_NE(rule <=> Rule(), std::strong_ordering::equal);
  EXPECT_NE(rule.hash(), Rule().hash());
  EXPECT_NE(Kor::valueToStrep(rule), Kor::valueToStrep(Rule()));
  EXPECT_NE(rule.describe(), Rule().describe());
  EXPECT_FALSE(rule.matchesNothing());
  if constexpr (TestSupport::MatchOnNumbers<Value>) {
    (rule.*field.set)(Value::lt(0));
    EXPECT_TRUE(rule.matchesNothing());
    (rule.*field.set)(Value::gt(Value::highest));
    EXPECT_TRUE(rule.matchesNothing());
  }
}

struct FieldCase {
  std::string name;
  std::function<void()> check;
};

template <class Rule>
void addCases(std::string const& kind, std::vector<FieldCase>& cases) {
  auto const add = [&](auto const& field) {
    cases.push_back({kind + "_" + std::string(field.name), [field] { checkField<Rule>(field); }});
  };
  std::apply([&](auto const&... fields) { (add(fields), ...); }, Rule::korFields());
}

std::vector<FieldCase> allFields() {
  std::vector<FieldCase> cases;
  addCases<Acl::IpRuleConfig>("ipv4", cases);
  addCases<Acl::Ip6RuleConfig>("ipv6", cases);
  addCases<Acl::MacRuleConfig>("mac", cases);
  return cases;
}

class EveryField : public testing::TestWithParam<FieldCase> {};

TEST_P(EveryField, CountsInAllThatIsMadeOfARule) {
  GetParam().check();
}

INSTANTIATE_TEST_SUITE_P(RuleConfig, EveryField, testing::ValuesIn(allFields()),
                         [](auto const& field) { return field.param.name; });

}  // namespace
