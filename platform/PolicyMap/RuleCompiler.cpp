// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/RuleCompiler.h"

#include "PolicyMap/RuleLists.h"

#include <algorithm>
#include <map>
#include <set>

namespace PolicyMap {
namespace {

template <class Rule>
std::vector<Kor::Name>& dependencies(CompiledClass& result) {
  if constexpr (std::is_same_v<Rule, Acl::IpRuleConfig>) {
    return result.ipAcls;
  } else if constexpr (std::is_same_v<Rule, Acl::Ip6RuleConfig>) {
    return result.ip6Acls;
  } else {
    return result.macAcls;
  }
}

void note(std::vector<Kor::Name>& names, Kor::Name const& name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) {
    names.push_back(name);
  }
}

// Gathers the sources of one option while class-maps are walked.
template <class Rule>
class Gatherer {
 public:
  void addList(Kor::Name const& name, Kor::Ptr<Acl::AclRules<Rule> const> rules) {
    // A list that is matched twice matches nothing more the second time.
    if (seen_.insert(name).second) {
      finishOwn();
      sources_.push_back({name, std::move(rules)});
    }
  }
  // A rule of the class-map itself has its place as number, unless an earlier one is there already,
  // as happens with nested class-maps: numbers ascend.
  void addOwn(std::uint32_t place, Rule const& rule) {
    std::uint32_t const number = std::max(place, nextNumber_);
    nextNumber_ = number + 1;
    own_.emplace_back(number, rule);
  }
  [[nodiscard]] ClassRules::PtrConst finish() {
    finishOwn();
    return Kor::make<ClassRules>(std::move(sources_));
  }

 private:
  void finishOwn() {
    if (!own_.empty()) {
      sources_.push_back({Kor::Name(), Kor::make<Acl::AclRules<Rule>>(std::move(own_))});
      own_.clear();
    }
  }

  std::set<Kor::Name> seen_;
  std::vector<typename Acl::AclRules<Rule>::Entry> own_;
  std::uint32_t nextNumber_ = 0;
  RuleSources<Rule> sources_;
};

class Compiler {
 public:
  Compiler(Kor::Ptr<ClassMapTypeConfig const> const& classMaps,
           Kor::Ptr<Acl::Config const> const& acls)
      : classMaps_(classMaps), acls_(acls) {}

  CompiledClass compile(ClassMapSubConfig const& classMap) {
    path_.push_back(classMap.name());
    walk(classMap);
    result_.rules = {ipv4_.finish(), ipv6_.finish(), mac_.finish(), mpls_.finish()};
    return std::move(result_);
  }

 private:
  void walk(ClassMapSubConfig const& classMap) {
    std::map<std::uint32_t, ClassMapMatch> inOrder;
    for (auto const& entry : classMap.matchIteratorConst()) {
      inOrder.emplace(entry.key(), entry.value());
    }
    if (classMap.matchType() == ClassMapMatchType::matchAll && inOrder.size() > 1) {
      fail("class-map " + classMap.name().stdString() +
           ": match-all over several matches is not supported");
      return;
    }
    for (auto const& [place, match] : inOrder) {
      switch (match.kind()) {
      case ClassMapMatch::Kind::acl: addList(match.option(), match.name()); break;
      case ClassMapMatch::Kind::rule: addOwn(place, match); break;
      case ClassMapMatch::Kind::classMap: descend(match.name()); break;
      }
    }
  }

  void addList(ClassMapMatchOption option, Kor::Name const& name) {
    switch (option) {
    case ClassMapMatchOption::ipv4: addList(ipv4_, name); break;
    case ClassMapMatchOption::ipv6: addList(ipv6_, name); break;
    case ClassMapMatchOption::mac: addList(mac_, name); break;
    case ClassMapMatchOption::mpls: addList(mpls_, name); break;
    }
  }
  template <class Rule>
  void addList(Gatherer<Rule>& gatherer, Kor::Name const& name) {
    note(dependencies<Rule>(result_), name);
    auto const list = acls_ ? RuleLists<Rule>::find(*acls_, name) : nullptr;
    if (list) {
      gatherer.addList(name, list->rulesBySeq());
    } else {
      missing(RuleLists<Rule>::kind, name);
    }
  }

  void addOwn(std::uint32_t place, ClassMapMatch const& match) {
    if (auto const* const ip = std::get_if<Acl::IpRuleConfig>(&match.rule())) {
      ipv4_.addOwn(place, *ip);
    } else if (auto const* const ip6 = std::get_if<Acl::Ip6RuleConfig>(&match.rule())) {
      ipv6_.addOwn(place, *ip6);
    } else {
      auto& gatherer = match.option() == ClassMapMatchOption::mpls ? mpls_ : mac_;
      gatherer.addOwn(place, std::get<Acl::MacRuleConfig>(match.rule()));
    }
  }

  void descend(Kor::Name const& name) {
    note(result_.classMaps, name);
    if (std::find(path_.begin(), path_.end(), name) != path_.end()) {
      fail("class-map " + name.stdString() + " matches itself: " + pathTo(name));
      return;
    }
    auto const config = classMaps_ ? classMaps_->classMapConfig(name) : nullptr;
    if (!config || !config->currentSubConfig()) {
      missing("class-map", name);
      return;
    }
    // A class-map that is nested twice matches nothing more the second time; walking it again could
    // take exponential time.
    if (!walked_.insert(name).second) {
      return;
    }
    path_.push_back(name);
    walk(*config->currentSubConfig());
    path_.pop_back();
  }

  [[nodiscard]] std::string pathTo(Kor::Name const& name) const {
    std::string text;
    for (Kor::Name const& step : path_) {
      text += step.stdString() + " > ";
    }
    return text + name.stdString();
  }

  void missing(std::string_view kind, Kor::Name const& name) {
    std::string text(kind);
    text += " " + name.stdString();
    if (std::find(result_.missing.begin(), result_.missing.end(), text) == result_.missing.end()) {
      result_.missing.push_back(std::move(text));
    }
  }

  void fail(std::string const& text) {
    if (result_.error.empty()) {
      result_.error = text;
    }
  }

  Kor::Ptr<ClassMapTypeConfig const> const& classMaps_;
  Kor::Ptr<Acl::Config const> const& acls_;
  std::vector<Kor::Name> path_;  // from the outermost class-map to the one being walked
  std::set<Kor::Name> walked_;
  Gatherer<Acl::IpRuleConfig> ipv4_;
  Gatherer<Acl::Ip6RuleConfig> ipv6_;
  Gatherer<Acl::MacRuleConfig> mac_;
  Gatherer<Acl::MacRuleConfig> mpls_;
  CompiledClass result_;
};

}  // namespace

CompiledClass compileClass(Kor::Ptr<ClassMapSubConfig const> const& classMap,
                           Kor::Ptr<ClassMapTypeConfig const> const& classMaps,
                           Kor::Ptr<Acl::Config const> const& acls) {
  if (!classMap) {
    return Compiler(classMaps, acls).compile(ClassMapSubConfig(Kor::Name()));
  }
  return Compiler(classMaps, acls).compile(*classMap);
}

}  // namespace PolicyMap
