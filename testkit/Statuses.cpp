// SPDX-License-Identifier: Apache-2.0
#include "testkit/Statuses.h"

#include <map>

namespace PolicyMapTestKit {

namespace {

using PolicyMap::PolicyFailure;
using PolicyMap::PolicyMapStatus;

std::string ruleOf(PolicyFailure const& failure) {
  PolicyMap::AclRuleKey const& rule = failure.rule();
  if (!rule) {
    return {};
  }
  std::string const list = rule.aclName().stdString();
  return (list.empty() ? "" : list + " ") + std::to_string(rule.seqno());
}

void addRows(PolicyMapStatus const& status, std::vector<StatusRow>& rows) {
  for (PolicyMap::ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    bool const programmed = status.programmed(option);
    PolicyFailure const failure = status.failure(option);
    if (!programmed && !failure) {
      continue;
    }
    auto const time = status.korTimeProgrammed(option);
    rows.push_back({status.key().first().stdString(), status.key().second().stdString(), option,
                    programmed, time ? std::optional(time->value()) : std::nullopt,
                    status.intfs(option), failure.error().stdString(),
                    failure.operation().stdString(), failure.className().stdString(),
                    ruleOf(failure)});
  }
}

}  // namespace

std::vector<StatusRow> readStatuses(Lab const& lab) {
  std::map<PolicyMap::PolicyMapSmKey, Kor::Ptr<PolicyMapStatus const>> statuses;
  for (auto const& entry : lab.status()->policyMapStatusIteratorConst()) {
    statuses.emplace(entry.key(), entry.value());
  }
  std::vector<StatusRow> rows;
  for (auto const& [key, status] : statuses) {
    addRows(*status, rows);
  }
  return rows;
}

}  // namespace PolicyMapTestKit
