// SPDX-License-Identifier: Apache-2.0
#include "testkit/RecordJson.h"

#include "testkit/Printing.h"
#include "testkit/text/RuleConversion.h"

#include <utility>

namespace PolicyMapTestKit {

using Text::Json;

Json jsonOf(RuleRecord const& rule) {
  Json::Array subRules;
  for (PolicyMap::SubRuleData const& subRule : rule.subRules) {
    subRules.emplace_back(describe(subRule));
  }
  Json json(Json::Object{{"class", rule.key.className().view()},
                         {"acl", rule.key.aclName().view()},
                         {"seq", rule.key.seqno()},
                         {"match", Text::describe(rule.match)}});
  for (std::size_t i = 0; i != rule.actions.size(); ++i) {
    json.add(PolicyMapTest::testActionNames[i], rule.actions[i]);
  }
  json.add("subRules", std::move(subRules));
  return json;
}

Json jsonOf(std::vector<Vorel::IntfId> const& intfs) {
  Json::Array names;
  for (Vorel::IntfId const intf : intfs) {
    names.emplace_back(intf.name().view());
  }
  return names;
}

Json jsonOf(Record const& record) {
  return Json::Object{{"policy", record.policy},
                      {"direction", record.direction},
                      {"option", toText(record.option)},
                      {"created", record.created},
                      {"dirty", record.dirty},
                      {"createCount", record.createCount},
                      {"commitCount", record.commitCount},
                      {"beginUpdateActionCount", record.beginUpdateActionCount},
                      {"endUpdateActionCount", record.endUpdateActionCount},
                      {"interfaces", jsonOf(record.interfaces)},
                      {"ruleCount", record.ruleCount},
                      {"subRuleCount", record.subRuleCount}};
}

Json jsonOf(FaultState const& state) {
  Json::Array met;
  for (MetFault const& each : state.met) {
    met.emplace_back(Json::Object{
        {"number", each.number}, {"time", each.time}, {"call", each.call}, {"text", each.text}});
  }
  return Json::Object{
      {"fault", toText(state.fault)}, {"selected", state.selected}, {"met", std::move(met)}};
}

}  // namespace PolicyMapTestKit
