// SPDX-License-Identifier: Apache-2.0
#include "testkit/Printing.h"

#include "records/AclPolicyData.h"

#include <Kor/Entity.h>
#include <Kor/KorType.h>
#include <PolicyMap/ClassMapStatus.h>
#include <PolicyMap/PolicyMapStatus.h>

#include <cstdint>
#include <set>
#include <sstream>
#include <utility>
#include <variant>

namespace PolicyMapTestKit {

namespace {

using PolicyMap::SubRuleData;

void appendPorts(std::string& text, char const* side, std::uint16_t low, std::uint16_t high,
                 bool rangeChecker) {
  if (low == 0 && high == SubRuleData::highestPort) {
    return;
  }
  text += text.empty() ? "" : ", ";
  text += side + std::to_string(low);
  if (low != high) {
    text += "-" + std::to_string(high);
  }
  text += rangeChecker ? " (range checker)" : "";
}

std::string recordText(PolicyMapTest::AclPolicyData const& record) {
  std::string text = "record " + describe(record.key()) + ": ";
  text += record.created() ? "created" : "not created";
  std::uint32_t const rules = record.subRulesForKeys();
  text += ", " + std::to_string(rules) + (rules == 1 ? " rule" : " rules");
  std::set<Vorel::IntfId> intfs;
  for (auto const& entry : record.intfIteratorConst()) {
    intfs.insert(entry.key());
  }
  std::string separator = ", at ";
  for (Vorel::IntfId const intf : intfs) {
    text += std::exchange(separator, ", ") + intf.name().stdString();
  }
  return text;
}

std::string statusText(PolicyMap::PolicyMapStatus const& status) {
  std::string programmed;
  std::string failures;
  for (PolicyMap::ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    if (status.programmed(option)) {
      programmed += (programmed.empty() ? "programmed for " : ", ") + toText(option);
    }
    if (!(!status.failure(option))) {
      failures += "; " + toText(option) + " failed: " + describe(status.failure(option));
    }
  }
  return "status of " + nameOf(status.key()) + ": " +
         (programmed.empty() ? "not programmed" : programmed) + failures;
}

}  // namespace

std::string nameOf(PolicyMap::PolicyMapSmKey const& policy) {
  return policy.first().stdString() + "/" + policy.second().stdString();
}

std::string nameInList(PolicyMap::AclRuleKey const& rule) {
  std::string const number = std::to_string(rule.seqno());
  return rule.aclName().empty() ? number : rule.aclName().stdString() + " " + number;
}

std::string describe(SubRuleData const& subRule) {
  std::string text;
  appendPorts(text, "src ", subRule.srcPortLow(), subRule.srcPortHigh(), subRule.srcPortRange());
  appendPorts(text, "dst ", subRule.dstPortLow(), subRule.dstPortHigh(), subRule.dstPortRange());
  return text.empty() ? "any ports" : text;
}

std::string describe(PolicyMap::PolicyMapSmKey const& policy) {
  return nameOf(policy);
}

std::string describe(PolicyMapTest::AclPolicyType const& type) {
  return nameOf(type.policyKey()) + " " + toText(type.option());
}

std::string describe(PolicyMap::AclRuleKey const& rule) {
  return nameInList(rule) + " of class " + rule.className().stdString() + ", " +
         toText(rule.matchOption());
}

std::string describe(PolicyMap::PolicyFailure const& failure) {
  if (!failure) {
    return "no failure";
  }
  std::string text = failure.operation().stdString();
  text += (text.empty() ? "" : ": ") + failure.error().stdString();
  return !failure.rule() ? text : text + ", at " + describe(failure.rule());
}

std::string describe(PolicyMap::ServicePolicyKey const& place) {
  return place.intf().name().stdString() + " " + place.direction().stdString();
}

std::string describe(PolicyMap::OptionIntf const& where) {
  return where.intf().name().stdString() + ", " + toText(where.option());
}

std::string describe(PolicyMap::AsyncOperationResult const& result) {
  std::ostringstream text;
  text << (result.error().empty() ? "success" : result.error().stdString()) << " at "
       << result.time() << " s";
  return text.str();
}

std::string describe(PolicyMap::ClassMapMatch const& match) {
  using Kind = PolicyMap::ClassMapMatch::Kind;
  if (match.kind() == Kind::rule) {
    return std::visit([](auto const& rule) { return rule.describe(); }, match.rule());
  }
  bool const ipv4 = match.option() == PolicyMap::ClassMapMatchOption::ipv4;
  std::string const kind = match.kind() == Kind::classMap ? "class-map "
                           : ipv4                         ? "access-group "
                                  : toText(match.option()) + " access-group ";
  return kind + match.name().stdString();
}

std::string describe(Kor::PtrInterface const& object) {
  if (auto const* const record = dynamic_cast<PolicyMapTest::AclPolicyData const*>(&object)) {
    return recordText(*record);
  }
  if (auto const* const status = dynamic_cast<PolicyMap::PolicyMapStatus const*>(&object)) {
    return statusText(*status);
  }
  if (auto const* const status = dynamic_cast<PolicyMap::ClassMapStatus const*>(&object)) {
    std::string const error = status->error().empty() ? "" : ", " + status->error().stdString();
    return "status of class " + status->name().stdString() + ": " +
           (status->programmed() ? "programmed" : "not programmed") + error;
  }
  auto const* const entity = dynamic_cast<Kor::Entity const*>(&object);
  std::string const type(object.fwkType()->name());
  return entity == nullptr ? type : type + " " + entity->name().stdString();
}

std::string toText(PolicyMap::ClassMapMatchOption option) {
  std::ostringstream text;
  text << option;
  return text.str();
}

}  // namespace PolicyMapTestKit
