// SPDX-License-Identifier: Apache-2.0
#include "packets/Subject.h"

#include "packets/hardware/CommittedRules.h"
#include "testkit/Explanations.h"
#include "testkit/Lookup.h"
#include "testkit/Printing.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMap::Explanation;
using PolicyMap::ProgrammingState;
using PolicyMapTestKit::Lab;
using PolicyMapTestKit::Record;
using Key = PolicyMapTest::AclPolicyType;

// What describe() says after "POLICY/DIRECTION OPTION: ".
std::string stateText(Explanation const& explanation, double now) {
  std::string const text = PolicyMapTestKit::describe(explanation, now);
  std::size_t const colon = text.find(": ");
  return colon == std::string::npos ? text : text.substr(colon + 2);
}

// Of a policy that is created, or of which there is nothing to program.
bool isAsConfigured(Explanation const& explanation) {
  return explanation.state == ProgrammingState::programmed ||
         explanation.state == ProgrammingState::nothingToProgram;
}

class Collector {
 public:
  Collector(Lab const& lab, Selection const& selection) : lab_(lab), selection_(selection) {
    if (!selection.interface.empty()) {
      intf_ = Vorel::IntfId(Kor::String(selection.interface));
    }
  }

  std::vector<Subject> run() {
    for (Explanation const& each : PolicyMap::explain(*lab_.machine())) {
      if (isWanted(each)) {
        subjects_.push_back(read(each));
      }
    }
    if (subjects_.empty()) {
      refuseUnknown();
    }
    readRecords();
    for (Subject& subject : subjects_) {
      takeRecord(subject);
    }
    return std::move(subjects_);
  }

 private:
  [[nodiscard]] bool isWanted(Explanation const& each) {
    attached_.insert(each.policy.first().stdString());
    auto const isOrAny = [](std::string const& wanted, Kor::Name const& name) {
      return wanted.empty() || wanted == name.stdString();
    };
    return isOrAny(selection_.policyMap, each.policy.first()) &&
           isOrAny(selection_.direction, each.policy.second()) &&
           (!selection_.option || *selection_.option == each.option) &&
           (!intf_ || intfOf(each) != nullptr);
  }

  [[nodiscard]] Explanation::Intf const* intfOf(Explanation const& each) const {
    auto const found =
        std::find_if(each.intfs.begin(), each.intfs.end(),
                     [this](Explanation::Intf const& one) { return one.intf == *intf_; });
    return found == each.intfs.end() ? nullptr : &*found;
  }

  Subject read(Explanation const& each) const {
    Subject subject{each.policy, each.option, {}, {}, {}};
    subject.configured = configuredPolicy({lab_.acls(), lab_.classMaps(), lab_.policyMaps()},
                                          each.policy.first().view(), each.option);
    if (!isAsConfigured(each)) {
      subject.obstacle = stateText(each, lab_.now());
    }
    if (intf_ && subject.obstacle.empty()) {
      std::string const reason = PolicyMapTestKit::describe(intfOf(each)->obstacle, each.option);
      subject.obstacle = reason.empty() ? "" : "not at " + lab_.nameOf(*intf_) + ": " + reason;
    }
    return subject;
  }

  void readRecords() {
    std::set<Key> wanted;
    for (Subject const& subject : subjects_) {
      wanted.emplace(subject.policy, subject.option);
    }
    lab_.forEachRecord(PolicyMapTestKit::WithRules::yes, [&](Record const& record) {
      Key const key(
          PolicyMap::PolicyMapSmKey(Kor::Name(record.policy), Kor::Name(record.direction)),
          record.option);
      if (record.created && wanted.contains(key)) {
        committed_.emplace(key, committedRules(lab_, record));
      }
    });
  }

  void takeRecord(Subject& subject) {
    auto const found = committed_.find({subject.policy, subject.option});
    if (found == committed_.end()) {
      return;
    }
    if (found->second) {
      subject.recorded = std::move(*found->second);
    } else {
      subject.obstacle = "not committed, and the journal does not have the last commit";
    }
  }

  void refuseUnknown() const {
    if (!selection_.policyMap.empty() && !attached_.contains(selection_.policyMap)) {
      throw PolicyMapTestKit::LookupError("attached policy-map", selection_.policyMap,
                                          {attached_.begin(), attached_.end()});
    }
  }

  Lab const& lab_;
  Selection const& selection_;
  std::optional<Vorel::IntfId> intf_;
  std::set<std::string> attached_;
  std::vector<Subject> subjects_;
  std::map<Key, std::optional<std::vector<PolicyMapTestKit::RuleRecord>>> committed_;
};

}  // namespace

std::string Subject::name() const {
  return policy.first().stdString() + " " + policy.second().stdString() + " " +
         PolicyMapTestKit::toText(option);
}

std::vector<Subject> subjectsOf(Lab const& lab, Selection const& selection) {
  return Collector(lab, selection).run();
}

std::string DecidingRule::name() const {
  return (list.empty() ? "" : list + " ") + std::to_string(seqno);
}

DecidingRule decidingRule(PolicyMapTestKit::RuleRecord const& rule) {
  return {rule.key.className().stdString(), rule.key.aclName().stdString(), rule.key.seqno(),
          rule.matchText()};
}

DecidingRule decidingRule(ConfiguredRule const& rule) {
  std::string match = std::visit([](auto const& some) { return some.describe(); }, rule.match);
  return {rule.className.stdString(), rule.list.stdString(), rule.seqno, std::move(match)};
}

SubjectSide::SubjectSide(Subject const& subject, Said said, Slice const& slice, DenyReading deny,
                         Treatments& treatments)
    : subject_(&subject) {
  if (said == Said::byRecords) {
    recorded_.emplace(slice, subject.recorded, deny, treatments);
  } else {
    configured_.emplace(slice, subject.configured, treatments);
  }
}

Side const& SubjectSide::side() const {
  return recorded_ ? static_cast<Side const&>(*recorded_) : *configured_;
}

std::optional<DecidingRule> SubjectSide::rule(std::uint32_t number) const {
  if (number == noRule) {
    return std::nullopt;
  }
  return recorded_ ? decidingRule(subject_->recorded[number])
                   : decidingRule(configured_->rule(number));
}

}  // namespace PolicyMapPackets
