// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassRules: the rules of one class for one match option, at one time. It refers to versions of
// access lists instead of copying rules, so that classes and policies that use a list share them.

#include "Acl/AclDiff.h"
#include "Acl/AclRules.h"
#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "Kor/PtrInterface.h"
#include "Kor/String.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/Export.h"

#include <string>
#include <variant>
#include <vector>

namespace PolicyMap {

// Rules of one origin: an access list, or the class-map itself, whose list name is empty. A
// class-map that matches on rules and lists in turn has several sources of its own, with different
// sequence numbers.
template <class Rule>
struct RuleSource {
  Kor::Name aclName;
  Kor::Ptr<Acl::AclRules<Rule> const> rules;
};

template <class Rule>
using RuleSources = std::vector<RuleSource<Rule>>;

class POLICYMAP_API ClassRules : public Kor::PtrInterface {
 public:
  using PtrConst = Kor::Ptr<ClassRules const>;
  using Sources = std::variant<RuleSources<Acl::IpRuleConfig>, RuleSources<Acl::Ip6RuleConfig>,
                               RuleSources<Acl::MacRuleConfig>>;

  // No access list stands twice among the sources.
  explicit ClassRules(Sources sources) : sources_(std::move(sources)) {}
  ~ClassRules() override;

  // The empty sources of an option: MAC rules serve mac, mpls and every further option.
  static Sources emptySources(ClassMapMatchOption option);

  [[nodiscard]] bool empty() const;

  // The rule of that key; null when it is not one of these.
  template <class Rule>
  [[nodiscard]] Rule const* find(AclRuleKey const& key) const {
    auto const* const sources = std::get_if<RuleSources<Rule>>(&sources_);
    if (sources == nullptr) {
      return nullptr;
    }
    for (RuleSource<Rule> const& source : *sources) {
      if (source.aclName == key.aclName()) {
        if (Rule const* const rule = source.rules->rule(key.seqno())) {
          return rule;
        }
      }
    }
    return nullptr;
  }

  // Calls visit(aclName, seqno, rule) for every rule in order, until it answers false.
  template <class Visit>
  void forEach(Visit&& visit) const {
    std::visit(
        [&](auto const& sources) {
          for (auto const& source : sources) {
            for (auto const& [seqno, rule] : *source.rules) {
              if (!visit(source.aclName, seqno, rule)) {
                return;
              }
            }
          }
        },
        sources_);
  }

  // Whether programming `other` instead would make no difference. Without a difference tracker
  // every other object is taken for a difference.
  [[nodiscard]] bool same(ClassRules const& other, Acl::AclDiff const* aclDiff) const;

 private:
  Sources sources_;
};

}  // namespace PolicyMap
