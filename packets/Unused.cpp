// SPDX-License-Identifier: Apache-2.0
#include "packets/Unused.h"

#include "packets/Proof.h"
#include "packets/engine/Usage.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::Json;

class Collecting {
 public:
  Collecting(Subject const& subject, std::uint64_t budget) : subject_(subject), budget_(budget) {}

  Unused run() {
    Unused unused{subject_.name(), {}, {}, false};
    for (Slice const& slice : Slice::ofOption(subject_.option)) {
      ConfigurationSide const side(slice, subject_.configured, treatments_);
      usage_.resize(side.rules());
      addUsage(side, usage_, budget_);
      rules_.clear();
      for (std::uint32_t i = 0; i != side.rules(); ++i) {
        rules_.push_back(&side.rule(i));
      }
    }
    for (Places const& places : placesOfRules()) {
      add(places, unused);
    }
    addClasses(unused);
    unused.isSpent = budget_.isSpent() || subject_.configured.tooLarge;
    return unused;
  }

 private:
  using Places = std::vector<std::uint32_t>;

  // A class may have a list several times, directly and through other class-maps: its rules are
  // in several places then, and are left out in all of them.
  [[nodiscard]] std::vector<Places> placesOfRules() const {
    using Key = std::tuple<Kor::Name, Kor::Name, std::uint32_t, std::string>;
    std::map<Key, std::size_t> known;
    std::vector<Places> all;
    for (std::uint32_t i = 0; i != usage_.size(); ++i) {
      ConfiguredRule const& rule = *rules_[i];
      // Different class-maps may have rules of their own with one number.
      std::string const match = rule.list == Kor::Name() ? decidingRule(rule).match : "";
      auto const [found, isNew] =
          known.try_emplace({rule.className, rule.list, rule.seqno, match}, all.size());
      if (isNew) {
        all.emplace_back();
      }
      all[found->second].push_back(i);
    }
    return all;
  }

  void add(Places const& places, Unused& unused) const {
    using Reason = UnusedRule::Reason;
    auto const everywhere = [&](auto const& holds) {
      return std::all_of(places.begin(), places.end(),
                         [&](std::uint32_t place) { return holds(usage_[place]); });
    };
    DecidingRule const rule = decidingRule(*rules_[places.front()]);
    if (everywhere([](RuleUsage const& each) { return !each.matches; })) {
      unused.rules.push_back({rule, Reason::matchesNothing});
    } else if (everywhere([](RuleUsage const& each) {
                 return !each.matches || (each.isCandidate && !each.isReached);
               })) {
      unused.rules.push_back({rule, Reason::notReached, rulesOf(covering(places))});
    } else if (places.size() == 1 && !usage_[places.front()].matters) {
      // Whether it matters is known of one place at a time.
      unused.rules.push_back(
          {rule, Reason::noDifference, rulesOf(usage_[places.front()].replacedBy)});
    }
  }

  // The rules that cover one in these places, without itself.
  [[nodiscard]] std::set<std::uint32_t> covering(Places const& places) const {
    std::set<std::uint32_t> rules;
    for (std::uint32_t const place : places) {
      rules.insert(usage_[place].coveredBy.begin(), usage_[place].coveredBy.end());
    }
    for (std::uint32_t const place : places) {
      rules.erase(place);
    }
    return rules;
  }

  [[nodiscard]] std::vector<DecidingRule> rulesOf(std::set<std::uint32_t> const& numbers) const {
    std::vector<DecidingRule> rules;
    rules.reserve(numbers.size());
    for (std::uint32_t const number : numbers) {
      rules.push_back(decidingRule(*rules_[number]));
    }
    return rules;
  }

  void addClasses(Unused& unused) const {
    std::set<Kor::Name> known;
    std::set<Kor::Name> reached;
    for (std::size_t i = 0; i != usage_.size(); ++i) {
      known.insert(rules_[i]->className);
      if (usage_[i].isReached) {
        reached.insert(rules_[i]->className);
      }
    }
    for (ConfiguredClass const& each : subject_.configured.classes) {
      Kor::Name const name(each.treatment.className);
      if (known.contains(name) && !reached.contains(name)) {
        unused.classes.push_back(each.treatment.className);
      }
    }
  }

  Subject const& subject_;
  Budget budget_;
  Treatments treatments_;
  std::vector<RuleUsage> usage_;
  std::vector<ConfiguredRule const*> rules_;  // in the subject
};

std::string ruleText(DecidingRule const& rule) {
  return rule.name() + " " + rule.match + " of class " + rule.className;
}

}  // namespace

std::string_view toText(UnusedRule::Reason reason) {
  switch (reason) {
  case UnusedRule::Reason::matchesNothing: return "matches no packet";
  case UnusedRule::Reason::notReached: return "is reached by no packet";
  case UnusedRule::Reason::noDifference: break;
  }
  return "makes no difference";
}

Unused unusedRules(Subject const& subject, std::uint64_t budget) {
  return Collecting(subject, budget).run();
}

std::vector<Unused> unusedRules(std::vector<Subject> const& subjects, std::uint64_t budget) {
  std::vector<Unused> all;
  for (Subject const& subject : subjects) {
    if (subject.configured.hasRules()) {
      all.push_back(unusedRules(subject, budget));
    }
  }
  return all;
}

std::vector<Unused> unusedRules(PolicyMapTestKit::Lab const& lab, Selection const& selection,
                                std::uint64_t budget) {
  return unusedRules(subjectsOf(lab, selection), budget);
}

std::ostream& operator<<(std::ostream& out, Unused const& unused) {
  out << unused.subject << ":";
  bool const isEmpty = unused.rules.empty() && unused.classes.empty();
  if (unused.isSpent) {
    out << (isEmpty ? " undecided" : " undecided, there may be more");
  } else if (isEmpty) {
    out << " every rule is used";
  }
  for (UnusedRule const& each : unused.rules) {
    out << "\n  " << ruleText(each.rule) << " " << toText(each.reason);
    char const* separator =
        each.reason == UnusedRule::Reason::notReached ? ", because of " : "; without it: ";
    for (DecidingRule const& rule : each.because) {
      out << separator << ruleText(rule);
      separator = ", ";
    }
  }
  for (std::string const& name : unused.classes) {
    out << "\n  class " << name << " is reached by no packet";
  }
  return out;
}

Json jsonOf(Unused const& unused) {
  Json::Array rules;
  for (UnusedRule const& each : unused.rules) {
    Json json = jsonOf(each.rule);
    json.add("reason", toText(each.reason));
    Json::Array because;
    for (DecidingRule const& rule : each.because) {
      because.push_back(jsonOf(rule));
    }
    json.add("because", std::move(because));
    rules.push_back(std::move(json));
  }
  Json::Array classes;
  for (std::string const& name : unused.classes) {
    classes.emplace_back(name);
  }
  return Json(Json::Object{{"subject", unused.subject},
                           {"rules", std::move(rules)},
                           {"classes", std::move(classes)},
                           {"undecided", unused.isSpent}});
}

}  // namespace PolicyMapPackets
