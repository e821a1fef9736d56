// SPDX-License-Identifier: Apache-2.0
#include "testkit/Problems.h"

#include "testkit/Explanations.h"

#include <PolicyMap/ClassMapSm.h>
#include <PolicyMap/PolicyMapSm.h>

#include <map>
#include <set>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using namespace Text;

using ProblemKind = Problem::Kind;
using Attachments = std::map<PolicyMap::PolicyMapSmKey, std::vector<Vorel::IntfId>>;

Attachments attachmentsOf(Settings const& settings) {
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

std::string listOf(std::vector<Vorel::IntfId> const& intfs) {
  std::string text;
  for (Vorel::IntfId const intf : intfs) {
    text += (text.empty() ? "" : ", ") + intf.name().stdString();
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
      add(ProblemKind::missing, where_, "not defined, but attached to " + listOf(attachedAt));
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
    std::string const error = errorOf(className);
    std::string const text = classMap->classMapStatus()->error().stdString();
    if (!text.empty()) {
      told_.insert(error);
      add(error.empty() ? ProblemKind::missing : ProblemKind::failed, where, withReasons(text));
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
};

}  // namespace

std::vector<Problem> findProblems(Lab const& lab) {
  std::vector<Problem> problems;
  for (auto const& [key, intfs] : attachmentsOf(lab.configuration().effective())) {
    PolicyProblems(lab, key, problems).find(intfs);
  }
  for (EffectiveSettings::Note const& note : lab.configuration().notes()) {
    problems.push_back({ProblemKind::missing, note.where, note.text});
  }
  return problems;
}

std::string toText(Problem const& problem) {
  return problem.where + ": " + problem.text;
}

}  // namespace PolicyMapTestKit
