// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Strep.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"

#include <string_view>
#include <tuple>
#include <utility>

namespace PolicyMap {

// Why a policy is not programmed as configured for one match option. Default: no failure.
class POLICYMAP_API PolicyFailure {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::PolicyFailure";

  PolicyFailure() = default;
  PolicyFailure(Kor::String error, Kor::String operation, Kor::Name className, AclRuleKey rule)
      : error_(std::move(error)),
        operation_(std::move(operation)),
        className_(std::move(className)),
        rule_(std::move(rule)) {}

  // The text returned by the helper, byte for byte, or the core's own text.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  // The helper operation that failed; empty if the core refused the policy.
  [[nodiscard]] Kor::String const& operation() const { return operation_; }
  // The class and rule that caused the failure; empty if it concerns the whole policy.
  [[nodiscard]] Kor::Name const& className() const { return className_; }
  [[nodiscard]] AclRuleKey const& rule() const { return rule_; }
  void errorIs(Kor::String const& error) { error_ = error; }
  void operationIs(Kor::String const& operation) { operation_ = operation; }
  void classNameIs(Kor::Name const& className) { className_ = className; }
  void ruleIs(AclRuleKey const& rule) { rule_ = rule; }

  bool operator==(PolicyFailure const&) const = default;
  [[nodiscard]] bool operator!() const { return *this == PolicyFailure(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using F = PolicyFailure;
    return std::tuple(
        Kor::field("error", &F::error, &F::errorIs,
                   "text of the failure, as the helper or the core gave it; empty: no failure"),
        Kor::field("operation", &F::operation, &F::operationIs,
                   "helper operation that failed; empty if the core refused the policy"),
        Kor::field("className", &F::className, &F::classNameIs,
                   "class that caused the failure; empty if it concerns the whole policy"),
        Kor::field("rule", &F::rule, &F::ruleIs,
                   "rule that caused the failure; the default if it concerns the whole policy"));
  }

 private:
  Kor::String error_;
  Kor::String operation_;
  Kor::Name className_;
  AclRuleKey rule_;
};

}  // namespace PolicyMap
