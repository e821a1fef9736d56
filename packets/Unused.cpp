// SPDX-License-Identifier: Apache-2.0
#include "packets/Unused.h"

#include "packets/Proof.h"
#include "packets/engine/Usage.h"

#include <algorithm>
#include <ostream>
#include <set>
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
    for (std::size_t i = 0; i != usage_.size(); ++i) {
      add(usage_[i], *rules_[i], unused);
    }
    addClasses(unused);
    unused.isSpent = budget_.isSpent() || subject_.configured.tooLarge;
    return unused;
  }

 private:
  void add(RuleUsage const& usage, ConfiguredRule const& rule, Unused& unused) const {
    using Reason = UnusedRule::Reason;
    if (!usage.matches) {
      unused.rules.push_back({decidingRule(rule), Reason::matchesNothing});
    } else if (usage.isCandidate && !usage.isReached) {
      unused.rules.push_back({decidingRule(rule), Reason::notReached, rulesOf(usage.coveredBy)});
    } else if (!usage.matters) {
      unused.rules.push_back({decidingRule(rule), Reason::noDifference, rulesOf(usage.replacedBy)});
    }
  }

  [[nodiscard]] std::vector<DecidingRule> rulesOf(std::set<std::uint32_t> const& numbers) const {
    std::vector<DecidingRule> rules;
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
  if (unused.rules.empty() && unused.classes.empty()) {
    out << " every rule is used";
  }
  if (unused.isSpent) {
    out << " undecided, there may be more";
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
