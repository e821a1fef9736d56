// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/RuleCompiler.h"

#include "PolicyMap/RuleGatherer.h"
#include "PolicyMap/RuleLists.h"
#include "PolicyMap/RuleProduct.h"
#include "PolicyMap/RuleUnion.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <tuple>

namespace PolicyMap {
namespace {

// Unique names, in the order in which they were added.
class Noted {
 public:
  void add(Kor::Name const& name) {
    if (seen_.insert(name).second) {
      names_.push_back(name);
    }
  }
  [[nodiscard]] std::vector<Kor::Name> finish() { return std::move(names_); }

 private:
  std::set<Kor::Name> seen_;
  std::vector<Kor::Name> names_;
};

// The rules of one class-map, or of one operand of a match-all.
struct Gathered {
  RuleGatherer<Acl::IpRuleConfig> ipv4;
  RuleGatherer<Acl::Ip6RuleConfig> ipv6;
  RuleGatherer<Acl::MacRuleConfig> mac;
  RuleGatherer<Acl::MacRuleConfig> mpls;
  std::set<Kor::Name> walked;  // the class-maps already included

  // The next inline rule does not continue the list of those before.
  void beginList() {
    ipv4.beginList();
    ipv6.beginList();
    mac.beginList();
    mpls.beginList();
  }
};

class Compiler {
 public:
  Compiler(Kor::Ptr<ClassMapTypeConfig const> const& classMaps,
           Kor::Ptr<Acl::Config const> const& acls, RuleLimits const& limits)
      : classMaps_(classMaps), acls_(acls), limits_(limits) {}

  CompiledClass compile(ClassMapSubConfig const& classMap) {
    Gathered all;
    path_.push_back(classMap.name());
    onPath_.insert(classMap.name());
    enter(classMap, all);
    // Class-maps nest to any depth, so the walk is kept in walks_ instead of on the call stack.
    while (!walks_.empty()) {
      Walk& walk = walks_.back();
      if (walk.next < walk.matches.size()) {
        auto const& [place, match] = walk.matches[walk.next++];
        add(place, match, walk.matchAll ? walk.operands.emplace_back() : *walk.into);
      } else {
        leave();
      }
    }
    using Option = ClassMapMatchOption;
    Kor::Name const& name = classMap.name();
    result_.rules[Option::ipv4] = Kor::make<ClassRules>(unite(all.ipv4, name, name));
    result_.rules[Option::ipv6] = Kor::make<ClassRules>(unite(all.ipv6, name, name));
    result_.rules[Option::mac] = Kor::make<ClassRules>(unite(all.mac, name, name));
    result_.rules[Option::mpls] = Kor::make<ClassRules>(unite(all.mpls, name, name));
    result_.ipAcls = ipAcls_.finish();
    result_.ip6Acls = ip6Acls_.finish();
    result_.macAcls = macAcls_.finish();
    result_.classMaps = nested_.finish();
    return std::move(result_);
  }

 private:
  using Matches = std::vector<std::pair<std::uint32_t, ClassMapMatch>>;

  // The walk through one class-map.
  struct Walk {
    Kor::Name name;
    bool matchAll = false;
    Matches matches;  // ordered by place
    std::size_t next = 0;
    Gathered* into = nullptr;
    std::deque<Gathered> operands;  // of a match-all: one per match
  };

  void enter(ClassMapSubConfig const& classMap, Gathered& into) {
    // Operands of match-alls may nest the same class-maps repeatedly.
    if (!entered_.insert(path_.back()).second && ++repeatedly_ > limits_.repeatedWalks) {
      fail("class-map " + path_.front().stdString() + ": nested class-maps branch too often");
    }
    Walk& walk = walks_.emplace_back();
    walk.name = classMap.name();
    walk.into = &into;
    if (!result_.error.empty()) {
      return;
    }
    for (auto const& entry : classMap.matchIteratorConst()) {
      walk.matches.emplace_back(entry.key(), entry.value());
    }
    std::sort(walk.matches.begin(), walk.matches.end(),
              [](auto const& a, auto const& b) { return a.first < b.first; });
    if (classMap.matchType() == ClassMapMatchType::matchAll) {
      dropRepeated(walk.matches);
      walk.matchAll = walk.matches.size() > 1;
    }
  }

  void leave() {
    Walk& walk = walks_.back();
    if (walk.matchAll) {
      combine(walk);
    } else {
      walk.into->beginList();
    }
    onPath_.erase(path_.back());
    path_.pop_back();
    walks_.pop_back();
  }

  void add(std::uint32_t place, ClassMapMatch const& match, Gathered& into) {
    if (match.kind() != ClassMapMatch::Kind::rule) {
      into.beginList();
    }
    switch (match.kind()) {
    case ClassMapMatch::Kind::acl: addList(match.option(), match.name(), into); break;
    case ClassMapMatch::Kind::rule: addOwn(place, match, into); break;
    case ClassMapMatch::Kind::classMap: descend(match.name(), into); break;
    }
  }

  // match-all ------------------------------------------------------------------------------------

  // A repeated match does not change an intersection.
  static void dropRepeated(Matches& matches) {
    std::set<std::tuple<ClassMapMatch::Kind, ClassMapMatchOption, Kor::Name, Acl::OptionalRule>>
        seen;
    std::erase_if(matches, [&](auto const& entry) {
      ClassMapMatch const& match = entry.second;
      return !seen.emplace(match.kind(), match.option(), match.name(), match.ruleIfAny()).second;
    });
  }

  void combine(Walk& walk) {
    auto const some = [&walk](auto Gathered::*option) {
      return std::any_of(walk.operands.begin(), walk.operands.end(),
                         [option](Gathered const& one) { return (one.*option).matches(); });
    };
    if ((some(&Gathered::ipv4) || some(&Gathered::ipv6)) &&
        (some(&Gathered::mac) || some(&Gathered::mpls))) {
      fail("class-map " + walk.name.stdString() +
           ": match-all over IP and MAC matches cannot be programmed");
      return;
    }
    RuleProduct product("match-all", walk.name, path_.front(), limits_, pairs_);
    combine(walk, &Gathered::ipv4, product);
    combine(walk, &Gathered::ipv6, product);
    combine(walk, &Gathered::mac, product);
    combine(walk, &Gathered::mpls, product);
    fail(product.error());
  }

  template <class Rule>
  void combine(Walk& walk, RuleGatherer<Rule> Gathered::*option, RuleProduct& product) {
    std::vector<RuleSources<Rule>> operands;
    for (Gathered& operand : walk.operands) {
      operands.push_back(unite(operand.*option, walk.name, path_.front()));
    }
    (walk.into->*option).addComposed(product.of(operands));
  }

  // match-any ------------------------------------------------------------------------------------

  template <class Rule>
  RuleSources<Rule> unite(RuleGatherer<Rule>& gatherer, Kor::Name const& classMap,
                          Kor::Name const& whole) {
    RuleProduct product("match-any", classMap, whole, limits_, pairs_);
    RuleSources<Rule> sources = RuleUnion<Rule>(gatherer.finish(), product).take();
    fail(product.error());
    return sources;
  }

  // leaves ------------------------------------------------------------------------------

  void addList(ClassMapMatchOption option, Kor::Name const& name, Gathered& into) {
    if (name.empty()) {
      return;  // the empty match; in rule keys the empty name means the class-map itself
    }
    switch (option) {
    case ClassMapMatchOption::ipv4: addList(into.ipv4, name, ipAcls_); break;
    case ClassMapMatchOption::ipv6: addList(into.ipv6, name, ip6Acls_); break;
    case ClassMapMatchOption::mac: addList(into.mac, name, macAcls_); break;
    case ClassMapMatchOption::mpls: addList(into.mpls, name, macAcls_); break;
    }
  }
  template <class Rule>
  void addList(RuleGatherer<Rule>& gatherer, Kor::Name const& name, Noted& dependencies) {
    dependencies.add(name);
    auto const list = acls_ ? RuleLists<Rule>::find(*acls_, name) : nullptr;
    if (list) {
      gatherer.addList(name, list->rulesBySeq());
    } else {
      missing(RuleLists<Rule>::kind, name);
    }
  }

  static void addOwn(std::uint32_t place, ClassMapMatch const& match, Gathered& into) {
    if (auto const* const ip = std::get_if<Acl::IpRuleConfig>(&match.rule())) {
      into.ipv4.addOwn(place, *ip);
    } else if (auto const* const ip6 = std::get_if<Acl::Ip6RuleConfig>(&match.rule())) {
      into.ipv6.addOwn(place, *ip6);
    } else {
      auto& gatherer = match.option() == ClassMapMatchOption::mpls ? into.mpls : into.mac;
      gatherer.addOwn(place, std::get<Acl::MacRuleConfig>(match.rule()));
    }
  }

  void descend(Kor::Name const& name, Gathered& into) {
    nested_.add(name);
    if (onPath_.contains(name)) {
      fail("class-map " + name.stdString() + " matches itself: " + pathTo(name));
      return;
    }
    auto const config = classMaps_ ? classMaps_->classMapConfig(name) : nullptr;
    if (!config || !config->currentSubConfig()) {
      missing("class-map", name);
      return;
    }
    // A class-map nested twice matches nothing additional; walking it again could take exponential
    // time.
    if (!into.walked.insert(name).second) {
      return;
    }
    path_.push_back(name);
    onPath_.insert(name);
    enter(*config->currentSubConfig(), into);
  }

  [[nodiscard]] std::string pathTo(Kor::Name const& name) const {
    constexpr std::size_t shown = 8;  // at each end of a long path
    std::string text;
    for (std::size_t i = 0; i < path_.size(); ++i) {
      if (i == shown && path_.size() > 2 * shown) {
        text += "... > ";
        i = path_.size() - shown;
      }
      text += path_[i].stdString() + " > ";
    }
    return text + name.stdString();
  }

  void missing(std::string_view kind, Kor::Name const& name) {
    if (missing_[kind].insert(name).second) {
      result_.missing.push_back(std::string(kind) + " " + name.stdString());
    }
  }

  void fail(std::string const& text) {
    if (result_.error.empty()) {
      result_.error = text;
    }
  }

  Kor::Ptr<ClassMapTypeConfig const> const& classMaps_;
  Kor::Ptr<Acl::Config const> const& acls_;
  std::deque<Walk> walks_;       // from the outermost class-map to the current one
  std::vector<Kor::Name> path_;  // their names, as referred to
  std::set<Kor::Name> onPath_;   // the same names, for lookup
  RuleLimits const& limits_;
  std::set<Kor::Name> entered_;
  std::size_t repeatedly_ = 0;
  std::size_t pairs_ = 0;  // of rules compared so far
  Noted ipAcls_;
  Noted ip6Acls_;
  Noted macAcls_;
  Noted nested_;
  std::map<std::string_view, std::set<Kor::Name>> missing_;
  CompiledClass result_;
};

}  // namespace

CompiledClass compileClass(Kor::Ptr<ClassMapSubConfig const> const& classMap,
                           Kor::Ptr<ClassMapTypeConfig const> const& classMaps,
                           Kor::Ptr<Acl::Config const> const& acls, RuleLimits const& limits) {
  if (!classMap) {
    return Compiler(classMaps, acls, limits).compile(ClassMapSubConfig(Kor::Name()));
  }
  return Compiler(classMaps, acls, limits).compile(*classMap);
}

}  // namespace PolicyMap
