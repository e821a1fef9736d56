// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a helper cannot program, and why a rule is refused.

#include "Acl/IpFilterBase.h"
#include "Acl/MacRuleConfig.h"
#include "PolicyMap/PolicyMapAclHelper.h"

#include <string_view>

namespace PolicyMap {

// The capabilities of a helper as they were when this was built.
class Capabilities {
 public:
  // Everything.
  Capabilities() = default;
  explicit Capabilities(PolicyMapAclHelper const& helper)
      : deny_(helper.denyRulesAllowed()),
        ttl_(helper.ttlSupported()),
        onlyTtlEq_(helper.onlyTtlEqSupported()),
        ackOrRst_(helper.ackOrRstSupported()),
        established_(helper.establishedSupported()) {}

  bool operator==(Capabilities const&) const = default;
  // Whether no rule can be refused.
  [[nodiscard]] bool all() const {
    return deny_ && ttl_ && !onlyTtlEq_ && ackOrRst_ && established_;
  }

  // Empty when the rule can be programmed.
  [[nodiscard]] std::string_view reasonAgainst(Acl::IpFilterBase const& rule) const {
    if (!deny_ && !rule.permit()) {
      return "deny rules are not allowed";
    }
    if (!ttl_ && !rule.ttl().isAny()) {
      return "TTL matches are not supported";
    }
    if (onlyTtlEq_ && !rule.ttl().isAny() && rule.ttl().op() != Acl::MatchOp::eq) {
      return "TTL matches other than equal are not supported";
    }
    if (!ackOrRst_ && rule.ackOrRst()) {
      return "ACK-or-RST matches are not supported";
    }
    if (!established_ && rule.established()) {
      return "established matches are not supported";
    }
    return {};
  }
  [[nodiscard]] std::string_view reasonAgainst(Acl::MacRuleConfig const& rule) const {
    return !deny_ && !rule.permit() ? "deny rules are not allowed" : std::string_view();
  }

 private:
  bool deny_ = true;
  bool ttl_ = true;
  bool onlyTtlEq_ = false;
  bool ackOrRst_ = true;
  bool established_ = true;
};

// "class c: rule 10 of acl: REASON"; a rule of the class-map itself is "rule 10".
inline Kor::String refusal(AclRuleKey const& key, std::string_view reason) {
  std::string text = "class " + key.className().stdString() + ": rule ";
  text += std::to_string(key.seqno());
  if (!key.aclName().empty()) {
    text += " of " + key.aclName().stdString();
  }
  return text.append(": ").append(reason);
}

}  // namespace PolicyMap
