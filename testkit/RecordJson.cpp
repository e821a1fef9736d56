// SPDX-License-Identifier: Apache-2.0
#include "testkit/RecordJson.h"

#include "testkit/Printing.h"
#include "testkit/text/JsonText.h"
#include "testkit/text/RuleConversion.h"

#include <utility>

namespace PolicyMapTestKit {

using Text::Json;

void appendJson(std::string& out, RuleRecord const& rule) {
  Text::JsonText json(out);
  json.open('{');
  json.name("class").value(rule.key.className().view());
  json.name("acl").value(rule.key.aclName().view());
  json.name("seq").value(rule.key.seqno());
  json.name("match").value(Text::describe(rule.match));
  for (std::size_t i = 0; i != rule.actions.size(); ++i) {
    json.name(PolicyMapTest::testActionNames[i]).value(rule.actions[i]);
  }
  json.name("subRules").open('[');
  for (PolicyMap::SubRuleData const& subRule : rule.subRules) {
    json.value(describe(subRule));
  }
  json.close(']');
  json.close('}');
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

void appendJson(std::string& out, Record const& record) {
  out += jsonOf(record).text();
  out.back() = ',';  // in place of the closing brace
  out += "\"rules\":[";
  for (RuleRecord const& rule : record) {
    appendJson(out, rule);
    out += ',';
  }
  if (out.back() == ',') {
    out.pop_back();
  }
  out += "]}";
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
