// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/RuleCompiler.h"

#include "PolicyMap/RuleLists.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>

namespace PolicyMap {
namespace {

// Names in the order in which they came, each once.
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

// Gathers the rules of one option while class-maps are walked.
template <class Rule>
class Gatherer {
 public:
  void addList(Kor::Name const& name, Kor::Ptr<Acl::AclRules<Rule> const> rules) {
    // A list that is matched twice matches nothing more the second time.
    if (lists_.insert(name).second) {
      RuleSource<Rule> const list{name, std::move(rules)};
      if (!list.empty()) {
        finishOwn();  // otherwise nothing stands between own rules before and behind the list
      }
      sources_.push_back(list);
    }
  }
  // A rule of the class-map itself has its place as number, unless an earlier one is there already,
  // as happens with nested class-maps: numbers ascend.
  void addOwn(std::uint32_t place, Rule const& rule) {
    std::uint32_t const number = std::max(place, nextNumber_);
    nextNumber_ = number + 1;
    own_.emplace_back(number, rule);
  }
  // A rule that is there already matches nothing more. Another one of the same name, as rules that
  // two class-maps have at the same place make, takes the next number that is free.
  void addComposed(std::vector<NamedRule<Rule>> rules) {
    std::vector<NamedRule<Rule>> added;
    added.reserve(rules.size());
    for (NamedRule<Rule>& rule : rules) {
      if (named(rule)) {
        added.push_back(std::move(rule));
      }
    }
    if (!added.empty()) {
      finishOwn();
      sources_.push_back({Kor::Name(), nullptr, Kor::make<ComposedRules<Rule>>(std::move(added))});
    }
  }
  [[nodiscard]] RuleSources<Rule> finish() {
    finishOwn();
    return std::move(sources_);
  }

 private:
  // Answers whether the rule is a new one.
  bool named(NamedRule<Rule>& rule) {
    for (;; ++rule.seqno) {
      auto const [there, isNew] =
          composed_.try_emplace(std::pair(rule.seqno, rule.aclName), rule.exact);
      if (isNew || there->second == rule.exact) {
        return isNew;
      }
    }
  }

  void finishOwn() {
    if (!own_.empty()) {
      sources_.push_back({Kor::Name(), Kor::make<Acl::AclRules<Rule>>(std::move(own_))});
      own_.clear();
    }
  }

  std::set<Kor::Name> lists_;
  std::map<std::pair<std::uint32_t, Kor::Name>, ExactRule<Rule>> composed_;
  std::vector<typename Acl::AclRules<Rule>::Entry> own_;
  std::uint32_t nextNumber_ = 0;
  RuleSources<Rule> sources_;
};

// What one class-map, or one operand of a match-all, stands for.
struct Gathered {
  Gatherer<Acl::IpRuleConfig> ipv4;
  Gatherer<Acl::Ip6RuleConfig> ipv6;
  Gatherer<Acl::MacRuleConfig> mac;
  Gatherer<Acl::MacRuleConfig> mpls;
  std::set<Kor::Name> walked;  // class-maps that are in it
};

// All rules of an operand, one after the other.
template <class Rule>
std::vector<NamedRule<Rule>> listed(RuleSources<Rule> const& sources) {
  std::vector<NamedRule<Rule>> rules;
  ClassRules(ClassRules::Sources(sources)).forEach([&](auto const& ref) {
    if constexpr (std::is_same_v<std::remove_cvref_t<decltype(ref.rule)>, Rule>) {
      rules.push_back({ref.aclName, ref.seqno, {ref.rule, ref.srcPorts, ref.dstPorts}});
    }
    return true;
  });
  return rules;
}

// The name of a rule that two rules make together: the first's number, and the other added to its
// list name.
template <class Rule>
NamedRule<Rule> together(NamedRule<Rule> const& first, NamedRule<Rule> const& second,
                         ExactRule<Rule> exact) {
  std::string name = first.aclName.stdString() + " & " + second.aclName.stdString();
  // An intersection has its first number in no name yet.
  auto const joint = second.aclName.view().find(" & ");
  if (joint == std::string_view::npos) {
    name += ":" + std::to_string(second.seqno);
  } else {
    name.insert(first.aclName.length() + 3 + joint, ":" + std::to_string(second.seqno));
  }
  return {Kor::Name(Kor::String8(name)), first.seqno, std::move(exact)};
}

class Compiler {
 public:
  Compiler(Kor::Ptr<ClassMapTypeConfig const> const& classMaps,
           Kor::Ptr<Acl::Config const> const& acls)
      : classMaps_(classMaps), acls_(acls) {}

  CompiledClass compile(ClassMapSubConfig const& classMap) {
    Gathered all;
    path_.push_back(classMap.name());
    onPath_.insert(classMap.name());
    enter(classMap, all);
    // Class-maps nest to any depth, so what is being walked stands here and not on the stack.
    while (!walks_.empty()) {
      Walk& walk = walks_.back();
      if (walk.next < walk.matches.size()) {
        auto const& [place, match] = walk.matches[walk.next++];
        add(place, match, walk.matchAll ? walk.operands.emplace_back() : *walk.into);
      } else {
        leave();
      }
    }
    result_.rules = {
        Kor::make<ClassRules>(all.ipv4.finish()), Kor::make<ClassRules>(all.ipv6.finish()),
        Kor::make<ClassRules>(all.mac.finish()), Kor::make<ClassRules>(all.mpls.finish())};
    result_.ipAcls = ipAcls_.finish();
    result_.ip6Acls = ip6Acls_.finish();
    result_.macAcls = macAcls_.finish();
    result_.classMaps = nested_.finish();
    return std::move(result_);
  }

 private:
  static constexpr std::size_t mostComposed = 1000000;      // rules of one match-all
  static constexpr std::size_t mostRepeatedWalks = 100000;  // through class-maps, for one class

  using Matches = std::vector<std::pair<std::uint32_t, ClassMapMatch>>;

  // A class-map on the way through it.
  struct Walk {
    Kor::Name name;
    bool matchAll = false;
    Matches matches;  // in order
    std::size_t next = 0;
    Gathered* into = nullptr;
    std::deque<Gathered> operands;  // of a match-all, one for each match
  };

  void enter(ClassMapSubConfig const& classMap, Gathered& into) {
    // Operands of match-alls may nest the same class-maps over and over.
    if (!entered_.insert(path_.back()).second && ++repeatedly_ > mostRepeatedWalks) {
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
    }
    onPath_.erase(path_.back());
    path_.pop_back();
    walks_.pop_back();
  }

  void add(std::uint32_t place, ClassMapMatch const& match, Gathered& into) {
    switch (match.kind()) {
    case ClassMapMatch::Kind::acl: addList(match.option(), match.name(), into); break;
    case ClassMapMatch::Kind::rule: addOwn(place, match, into); break;
    case ClassMapMatch::Kind::classMap: descend(match.name(), into); break;
    }
  }

  // match-all ------------------------------------------------------------------------------------

  // The same match once more takes nothing away.
  static void dropRepeated(Matches& matches) {
    std::vector<ClassMapMatch> seen;
    std::erase_if(matches, [&](auto const& entry) {
      bool const repeated = std::find(seen.begin(), seen.end(), entry.second) != seen.end();
      seen.push_back(entry.second);
      return repeated;
    });
  }

  void combine(Walk& walk) {
    operand_ = walk.name;
    std::vector<RuleSources<Acl::IpRuleConfig>> ipv4;
    std::vector<RuleSources<Acl::Ip6RuleConfig>> ipv6;
    std::vector<RuleSources<Acl::MacRuleConfig>> mac;
    std::vector<RuleSources<Acl::MacRuleConfig>> mpls;
    for (Gathered& operand : walk.operands) {
      ipv4.push_back(operand.ipv4.finish());
      ipv6.push_back(operand.ipv6.finish());
      mac.push_back(operand.mac.finish());
      mpls.push_back(operand.mpls.finish());
    }
    auto const some = [](auto const& all) {
      return std::any_of(all.begin(), all.end(), [](auto const& one) { return !one.empty(); });
    };
    if ((some(ipv4) || some(ipv6)) && (some(mac) || some(mpls))) {
      fail("class-map " + operand_.stdString() +
           ": match-all over IP and MAC matches cannot be programmed");
      return;
    }
    Gathered& into = *walk.into;
    into.ipv4.addComposed(product(ipv4));
    into.ipv6.addComposed(product(ipv6));
    into.mac.addComposed(product(mac));
    into.mpls.addComposed(product(mpls));
  }

  // Of the first rules that each operand matches a packet with, the combination decides: so all
  // combinations, the first operand's rules outermost.
  template <class Rule>
  std::vector<NamedRule<Rule>> product(std::vector<RuleSources<Rule>> const& operands) {
    std::vector<NamedRule<Rule>> left = listed(operands.front());
    for (std::size_t i = 1; i < operands.size() && !left.empty(); ++i) {
      left = product(left, listed(operands[i]));
    }
    return left;
  }

  template <class Rule>
  std::vector<NamedRule<Rule>> product(std::vector<NamedRule<Rule>> const& left,
                                       std::vector<NamedRule<Rule>> const& right) {
    std::vector<NamedRule<Rule>> both;
    for (NamedRule<Rule> const& a : left) {
      for (NamedRule<Rule> const& b : right) {
        Intersection<Rule> met = intersect(a.exact, b.exact);
        if (auto* const exact = std::get_if<ExactRule<Rule>>(&met)) {
          both.push_back(together(a, b, std::move(*exact)));
        } else if (auto const* const inexpressible = std::get_if<Inexpressible>(&met)) {
          fail("class-map " + operand_.stdString() + ": the " + std::string(inexpressible->field) +
               " matches of rules " + nameOf(a) + " and " + nameOf(b) + " cannot be combined");
          return {};
        }
        if (both.size() > mostComposed) {
          fail("class-map " + operand_.stdString() + ": match-all makes more than " +
               std::to_string(mostComposed) + " rules");
          return {};
        }
      }
    }
    return both;
  }

  template <class Rule>
  static std::string nameOf(NamedRule<Rule> const& rule) {
    return std::to_string(rule.seqno) +
           (rule.aclName.empty() ? std::string() : " of " + rule.aclName.stdString());
  }

  // leaves ------------------------------------------------------------------------------

  void addList(ClassMapMatchOption option, Kor::Name const& name, Gathered& into) {
    if (name.empty()) {
      return;  // the empty match; in rule keys the empty name stands for the class-map itself
    }
    switch (option) {
    case ClassMapMatchOption::ipv4: addList(into.ipv4, name, ipAcls_); break;
    case ClassMapMatchOption::ipv6: addList(into.ipv6, name, ip6Acls_); break;
    case ClassMapMatchOption::mac: addList(into.mac, name, macAcls_); break;
    case ClassMapMatchOption::mpls: addList(into.mpls, name, macAcls_); break;
    }
  }
  template <class Rule>
  void addList(Gatherer<Rule>& gatherer, Kor::Name const& name, Noted& dependencies) {
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
    // A class-map that is nested twice matches nothing more the second time; walking it again could
    // take exponential time.
    if (!into.walked.insert(name).second) {
      return;
    }
    path_.push_back(name);
    onPath_.insert(name);
    enter(*config->currentSubConfig(), into);
  }

  [[nodiscard]] std::string pathTo(Kor::Name const& name) const {
    constexpr std::size_t shown = 8;  // at either end of a long path
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
  std::deque<Walk> walks_;       // from the outermost class-map to the one being walked
  std::vector<Kor::Name> path_;  // their names, as they are referred to
  std::set<Kor::Name> onPath_;   // the same
  Kor::Name operand_;            // the match-all class-map being put together, for messages
  std::set<Kor::Name> entered_;
  std::size_t repeatedly_ = 0;
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
                           Kor::Ptr<Acl::Config const> const& acls) {
  if (!classMap) {
    return Compiler(classMaps, acls).compile(ClassMapSubConfig(Kor::Name()));
  }
  return Compiler(classMaps, acls).compile(*classMap);
}

}  // namespace PolicyMap
