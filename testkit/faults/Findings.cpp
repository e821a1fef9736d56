// SPDX-License-Identifier: Apache-2.0
#include "testkit/faults/Findings.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>
#include <utility>

namespace PolicyMapTestKit {

namespace {

FindingHandler& handler() {
  static FindingHandler it;
  return it;
}

std::string_view nameOf(Finding::Kind kind) {
  switch (kind) {
  case Finding::Kind::unmetFault: return "unmet fault";
  case Finding::Kind::leftover: return "leftover";
  case Finding::Kind::idleCommit: return "idle commit";
  case Finding::Kind::callAfterFailure: return "call after a failure";
  case Finding::Kind::repeatedCreation: return "repeated creation";
  case Finding::Kind::missingCommit: break;
  }
  return "missing commit";
}

}  // namespace

std::span<StrictnessSwitch const> strictnessSwitches() {
  static constexpr std::array switches{
      StrictnessSwitch{"leftovers", &Strictness::leftovers},
      StrictnessSwitch{"idleCommits", &Strictness::idleCommits},
      StrictnessSwitch{"callsAfterFailures", &Strictness::callsAfterFailures},
      StrictnessSwitch{"repeatedCreations", &Strictness::repeatedCreations},
      StrictnessSwitch{"missingCommits", &Strictness::missingCommits},
  };
  return switches;
}

std::string toText(Finding const& finding) {
  std::string const text = std::string(nameOf(finding.kind)) + ": " + finding.text;
  return finding.afterFault ? text + ", after an injected fault" : text;
}

std::ostream& operator<<(std::ostream& out, Finding const& finding) {
  return out << toText(finding);
}

FindingHandler findingHandlerIs(FindingHandler next) {
  return std::exchange(handler(), std::move(next));
}

void FindingList::add(Finding const& finding) {
  if (std::find(all_.begin(), all_.end(), finding) != all_.end()) {
    return;
  }
  all_.push_back(finding);
  if (handler()) {
    handler()(finding);
  }
}

std::vector<Finding> FindingList::take() {
  return std::exchange(all_, {});
}

}  // namespace PolicyMapTestKit
