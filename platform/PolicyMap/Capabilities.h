// SPDX-License-Identifier: Apache-2.0
#pragma once

// The capabilities of a helper, and the reasons for which a rule is refused.

#include "Acl/IpFilterBase.h"
#include "Acl/MacRuleConfig.h"
#include "PolicyMap/PolicyMapAclHelper.h"

#include <string_view>

namespace PolicyMap {

// A snapshot of a helper's capabilities. Default: everything is supported.
struct Capabilities {
  bool deny = true;
  bool ttl = true;
  bool onlyTtlEq = false;
  bool ackOrRst = true;
  bool established = true;

  static Capabilities of(PolicyMapAclHelper const& helper) {
    return {helper.denyRulesAllowed(), helper.ttlSupported(), helper.onlyTtlEqSupported(),
            helper.ackOrRstSupported(), helper.establishedSupported()};
  }

  bool operator==(Capabilities const&) const = default;
  // True if no rule can be refused.
  [[nodiscard]] bool all() const { return deny && ttl && !onlyTtlEq && ackOrRst && established; }

  // Why the rule cannot be programmed; empty if it can.
  [[nodiscard]] std::string_view reasonAgainst(Acl::IpFilterBase const& rule) const {
    if (!deny && !rule.permit()) {
      return "deny rules are not allowed";
    }
    if (!ttl && !rule.ttl().isAny()) {
      return "TTL matches are not supported";
    }
    if (onlyTtlEq && !rule.ttl().isAny() && rule.ttl().op() != Acl::MatchOp::eq) {
      return "TTL matches other than equal are not supported";
    }
    if (!ackOrRst && rule.ackOrRst()) {
      return "ACK-or-RST matches are not supported";
    }
    if (!established && rule.established()) {
      return "established matches are not supported";
    }
    return {};
  }
  [[nodiscard]] std::string_view reasonAgainst(Acl::MacRuleConfig const& rule) const {
    return !deny && !rule.permit() ? "deny rules are not allowed" : std::string_view();
  }
};

// Formats "class c: rule 10 of acl: REASON", or "rule 10" for a rule of the class-map itself.
inline Kor::String refusal(AclRuleKey const& key, std::string_view reason) {
  std::string text = "class " + key.className().stdString() + ": rule ";
  text += std::to_string(key.seqno());
  if (!key.aclName().empty()) {
    text += " of " + key.aclName().stdString();
  }
  return text.append(": ").append(reason);
}

}  // namespace PolicyMap
