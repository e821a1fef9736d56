// SPDX-License-Identifier: Apache-2.0
#include "support/NormalForm.h"

#include <sstream>

namespace TestSupport {

using PolicyMapTest::AclHelper;
using PolicyMapTest::AclPolicyData;

NormalRecord normalRecord(AclPolicyData const& data) {
  NormalRecord record;
  record.created = data.created();
  record.dirty = data.created() && data.dirty();
  auto const matches = [&record](auto const& entries) {
    for (auto const& entry : entries) {
      record.rules[entry.key()].match = entry.value().describe();
    }
  };
  matches(data.ruleMatchIteratorConst());
  matches(data.ruleMatch6IteratorConst());
  matches(data.ruleMatchMacIteratorConst());
  auto const actions = [&record](std::size_t kind, auto const& entries) {
    for (auto const& entry : entries) {
      record.rules[entry.key()].actions.at(kind - 1) = entry.value();
    }
  };
  actions(1, data.ruleAction1IteratorConst());
  actions(2, data.ruleAction2IteratorConst());
  actions(3, data.ruleAction3IteratorConst());
  for (auto const& collection : data.subRulesForKeyIteratorConst()) {
    std::set<PolicyMap::SubRuleData>& subRules = record.rules[collection.key()].subRules;
    for (auto const& entry : collection.value()->subRuleIteratorConst()) {
      if (entry.value()) {
        subRules.insert(entry.key());
      }
    }
  }
  for (auto const& entry : data.intfIteratorConst()) {
    if (entry.value()) {
      record.intfs.insert(entry.key());
    }
  }
  return record;
}

NormalForm normalForm(AclHelper const& helper) {
  NormalForm form;
  for (auto const& entry : helper.testDataIteratorConst()) {
    NormalRecord const record = normalRecord(*entry.value());
    if (record != NormalRecord()) {
      form.emplace(entry.key(), record);
    }
  }
  return form;
}

std::string describe(NormalForm const& form) {
  std::ostringstream out;
  for (auto const& [type, record] : form) {
    out << type.policyKey().first() << '/' << type.policyKey().second() << '/' << type.option()
        << (record.created ? " created" : " not created") << (record.dirty ? " dirty" : "") << ':';
    for (Vorel::IntfId const intf : record.intfs) {
      out << ' ' << intf;
    }
    out << '\n';
    for (auto const& [key, rule] : record.rules) {
      out << "  " << key.className() << ':' << key.aclName() << ':' << key.seqno() << ' '
          << rule.match << " actions " << rule.actions[0] << ' ' << rule.actions[1] << ' '
          << rule.actions[2] << '\n';
      for (PolicyMap::SubRuleData const& subRule : rule.subRules) {
        out << "    " << subRule << '\n';
      }
    }
  }
  return out.str();
}

}  // namespace TestSupport
