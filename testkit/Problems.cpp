// SPDX-License-Identifier: Apache-2.0
#include "testkit/Problems.h"

#include "testkit/Explanations.h"

#include <PolicyMap/ClassMapSm.h>
#include <PolicyMap/Explanation.h>
#include <PolicyMap/PolicyMapSm.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using namespace Text;

using ProblemKind = Problem::Kind;
using Attachments = std::map<PolicyMap::PolicyMapSmKey, std::vector<Vorel::IntfId>>;

Attachments attachmentsIn(Settings const& settings) {
  Attachments attachments;
  for (auto const& [intf, interface] : settings.interfaces) {
    for (Direction const direction : {Direction::input, Direction::output}) {
      std::string const& name = interface.policyMaps[static_cast<std::size_t>(direction)];
      if (!name.empty()) {
        attachments[{name, toText(direction)}].push_back(intf);
      }
    }
  }
  return attachments;
}

std::string listOf(Lab const& lab, std::vector<Vorel::IntfId> const& intfs) {
  std::string text;
  for (Vorel::IntfId const intf : intfs) {
    text += (text.empty() ? "" : ", ") + lab.nameOf(intf);
  }
  return text;
}

// The problems of one policy-map in one direction.
class PolicyProblems {
 public:
  PolicyProblems(Lab const& lab, PolicyMap::PolicyMapSmKey const& key,
                 std::vector<Problem>& problems)
      : lab_(lab),
        key_(key),
        where_("policy-map " + key.first().stdString() + " (" + key.second().stdString() + ")"),
        problems_(problems) {}

  void find(std::vector<Vorel::IntfId> const& attachedAt) {
    auto const& policyMaps = lab_.configuration().effective().policyMaps;
    auto const settings = policyMaps.find(key_.first().stdString());
    if (settings == policyMaps.end()) {
      add(ProblemKind::missing, where_, "not defined, but attached to " + listOf(lab_, attachedAt));
      return;
    }
    for (std::string const& className : settings->second->order.names()) {
      findOfClass(className);
    }
    auto const status = lab_.status()->policyMapStatus(key_);
    // The failing class may have reported the error already.
    if (status && !status->error().empty() && told_.count(status->error().stdString()) == 0) {
      add(ProblemKind::failed, where_, status->error().stdString());
    }
  }

 private:
  void findOfClass(std::string const& className) {
    std::string const where = where_ + ", class " + className;
    if (lab_.configuration().effective().classMaps.count(className) == 0) {
      add(ProblemKind::missing, where, "missing class-map " + className);
      return;
    }
    auto const policy = lab_.machine()->policyMapSm(key_);
    auto const classMap = policy ? policy->classMapSm(className) : nullptr;
    if (!classMap || !classMap->classMapStatus()) {
      return;
    }
    std::string const text = classMap->classMapStatus()->error().stdString();
    if (std::string const error = errorOf(className); !error.empty()) {
      told_.insert(error);
      add(ProblemKind::failed, where, text);
    } else if (!text.empty()) {
      addMissing(className, where);
    } else if (lab_.configuration().effective().classMaps.at(className)->matches.size() == 0) {
      add(ProblemKind::empty, where, "its class-map has no match");
    } else if (intersectsToNothing(className, *classMap)) {
      add(ProblemKind::empty, where, "no packet meets all of its conditions");
    }
  }

  // True for a match-all class whose conditions have rules, but no common one.
  bool intersectsToNothing(std::string const& className, PolicyMap::ClassMapSm& classMap) const {
    ClassMap const& settings = *lab_.configuration().effective().classMaps.at(className);
    return settings.match == ClassMatch::all && settings.matches.byNumber().size() > 1 &&
           std::all_of(PolicyMap::allMatchOptions.begin(), PolicyMap::allMatchOptions.end(),
                       [&](PolicyMap::ClassMapMatchOption option) {
                         return classMap.rules(option)->empty();
                       });
  }

  void addMissing(std::string const& className, std::string const& where) {
    if (explanations_.empty()) {
      explanations_ = PolicyMap::explain(*lab_.machine(), key_);
    }
    for (PolicyMap::Explanation::Missing const& missing : explanations_.front().missing) {
      if (missing.className.view() == className) {
        add(ProblemKind::missing, where, withReasons("missing " + missing.object));
      }
    }
  }

  // The error of a class, which takes precedence over its missing objects.
  std::string errorOf(std::string const& className) const {
    auto const status = lab_.status()->policyMapStatus(key_);
    if (status) {
      for (auto const& failure : status->failureIteratorConst()) {
        if (failure.value().className() == Kor::String(className)) {
          return failure.value().error().stdString();
        }
      }
    }
    return {};
  }

  void add(ProblemKind kind, std::string where, std::string text) {
    problems_.push_back({kind, std::move(where), std::move(text)});
  }

  Lab const& lab_;
  PolicyMap::PolicyMapSmKey const& key_;
  std::string where_;
  std::vector<Problem>& problems_;
  std::set<std::string> told_;
  // Of this policy; filled when they are needed.
  std::vector<PolicyMap::Explanation> explanations_;
};

}  // namespace

std::vector<Problem> findProblems(Lab const& lab) {
  std::vector<Problem> problems;
  for (auto const& [key, intfs] : attachmentsIn(lab.configuration().effective())) {
    PolicyProblems(lab, key, problems).find(intfs);
  }
  for (EffectiveSettings::Note const& note : lab.configuration().notes()) {
    problems.push_back({ProblemKind::missing, note.where, note.text});
  }
  return problems;
}

AttachmentCount countAttachments(Lab const& lab) {
  AttachmentCount count;
  for (Attachment const& attachment : attachmentsOf(lab.explain())) {
    ++count.all;
    count.programmed += attachment.programmed ? 1 : 0;
  }
  for (EffectiveSettings::Note const& note : lab.configuration().notes()) {
    count.all += note.isAttachment ? 1 : 0;
  }
  return count;
}

Outcome outcomeOf(Lab const& lab) {
  Outcome outcome{findProblems(lab), countAttachments(lab), lab.faults(), {}};
  for (Finding const& finding : lab.findings()) {
    outcome.findings.push_back({Irregularity::Kind::finding, toText(finding)});
  }
  return outcome;
}

std::string toText(Problem const& problem) {
  return problem.where + ": " + problem.text;
}

}  // namespace PolicyMapTestKit
