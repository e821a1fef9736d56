// SPDX-License-Identifier: Apache-2.0
#include "Acl/OptionalRule.h"

#include "Kor/Exception.h"

#include <string>

namespace Acl {
namespace {

// Parses the rule if it is of type `Rule`.
template <class Rule>
bool readRule(std::string_view typeName, Kor::TextIterator& it, Kor::TextIterator const& end,
              OptionalRule& rule) {
  if (typeName != Rule::korTypeName) {
    return false;
  }
  rule = Kor::sequenceTo<Rule>(it, end);
  return true;
}

}  // namespace

Kor::String valueToStrep(OptionalRule const& rule) {
  auto const print = [](auto const& some) { return Kor::valueToStrep(some); };
  return rule ? std::visit(print, *rule) : "None";
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, OptionalRule& rule) {
  Kor::skipSpace(it, end);
  if (Kor::takeString(it, end, "None")) {
    rule = std::nullopt;
    return;
  }
  Kor::TextIterator ahead = it;
  Kor::needString(ahead, end, "Value ( ");
  auto const column = ahead.position();
  auto const typeName = Kor::sequenceTo<Kor::String>(ahead, end);
  if (!readRule<IpRuleConfig>(typeName.view(), it, end, rule) &&
      !readRule<Ip6RuleConfig>(typeName.view(), it, end, rule) &&
      !readRule<MacRuleConfig>(typeName.view(), it, end, rule)) {
    throw Kor::RangeException("no such rule type: " + typeName.stdString() + " at column " +
                              std::to_string(column));
  }
}

}  // namespace Acl
