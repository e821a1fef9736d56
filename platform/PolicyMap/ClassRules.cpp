// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassRules.h"

#include "PolicyMap/PerOption.h"

#include <algorithm>

namespace PolicyMap {

ClassRules::ClassRules(Sources sources) : sources_(std::move(sources)) {
  std::visit(
      [this](auto const& all) {
        for (std::size_t place = 0; place < all.size(); ++place) {
          if (!all[place].named) {
            lists_.emplace(all[place].aclName, place);
            continue;
          }
          auto const& rules = all[place].named->rules();
          for (std::size_t i = 0; i < rules.size(); ++i) {
            named_.try_emplace({rules[i].seqno, rules[i].aclName}, place, i);
          }
        }
      },
      sources_);
}
ClassRules::~ClassRules() = default;

ClassRules::Sources ClassRules::emptySources(ClassMapMatchOption option) {
  auto const mac = [] { return Sources(RuleSources<Acl::MacRuleConfig>()); };
  return forOption(
      option, [] { return Sources(RuleSources<Acl::IpRuleConfig>()); },
      [] { return Sources(RuleSources<Acl::Ip6RuleConfig>()); }, mac, mac);
}

bool ClassRules::empty() const {
  return std::visit(
      [](auto const& sources) {
        return std::all_of(sources.begin(), sources.end(),
                           [](auto const& source) { return source.empty(); });
      },
      sources_);
}

namespace {

template <class Rule>
bool sameNamed(Kor::Ptr<NamedRules<Rule> const> const& a,
               Kor::Ptr<NamedRules<Rule> const> const& b) {
  return a == b || (a && b && a->rules() == b->rules());
}

// The sources that have at least one rule that matches something.
template <class Rule>
std::vector<RuleSource<Rule> const*> contributing(RuleSources<Rule> const& sources) {
  std::vector<RuleSource<Rule> const*> some;
  for (RuleSource<Rule> const& source : sources) {
    if (!source.empty()) {
      some.push_back(&source);
    }
  }
  return some;
}

template <class Rule>
bool sameSources(RuleSources<Rule> const& oldSources, RuleSources<Rule> const& newSources,
                 Acl::AclDiff const& aclDiff) {
  auto const a = contributing(oldSources);
  auto const b = contributing(newSources);
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](RuleSource<Rule> const* x, RuleSource<Rule> const* y) {
                      return x->aclName == y->aclName && aclDiff.sameEffect(x->rules, y->rules) &&
                             sameNamed(x->named, y->named);
                    });
}

}  // namespace

bool ClassRules::sameEffect(ClassRules const& other, Acl::AclDiff const* aclDiff) const {
  if (this == &other) {
    return true;
  }
  if (aclDiff == nullptr || sources_.index() != other.sources_.index()) {
    return false;
  }
  return std::visit(
      [&](auto const& sources) {
        using Same = std::remove_cvref_t<decltype(sources)>;
        return sameSources(sources, std::get<Same>(other.sources_), *aclDiff);
      },
      sources_);
}

}  // namespace PolicyMap
