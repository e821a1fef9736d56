// SPDX-License-Identifier: Apache-2.0
#include "testkit/Explanations.h"

#include "testkit/Printing.h"
#include "testkit/text/ConditionReasons.h"
#include "testkit/text/MatchConditions.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <sstream>

namespace PolicyMapTestKit {

namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::Explanation;
using PolicyMap::IntfObstacle;
using PolicyMap::ProgrammingState;

// Without now, the time itself.
std::string until(double time, std::optional<double> now) {
  std::ostringstream text;
  if (now) {
    text << "in " << std::max(time - *now, 0.0) << " s";
  } else {
    text << "at t=" << time;
  }
  return text.str();
}

std::string since(double time, std::optional<double> now) {
  std::ostringstream text;
  if (now) {
    text << "for " << std::max(*now - time, 0.0) << " s";
  } else {
    text << "since t=" << time;
  }
  return text.str();
}

std::string nameIn(IntfNames const& names, Vorel::IntfId intf) {
  auto const found = names.find(intf);
  return found == names.end() ? intf.name().stdString() : found->second;
}

// " (members Ethernet1, Ethernet2)"
std::string membersOf(Explanation::Intf const& portChannel, IntfNames const& names) {
  std::string text;
  for (Vorel::IntfId const member : portChannel.members) {
    text += (text.empty() ? " (members " : ", ") + nameIn(names, member);
  }
  return text.empty() ? text : text + ")";
}

// "Ethernet1, Ethernet2 (does not exist or is shut down)" of the interfaces that are wanted.
std::string intfsOf(Explanation const& explanation, IntfNames const& names, bool withObstacle) {
  std::string text;
  for (Explanation::Intf const& each : explanation.intfs) {
    std::string const obstacle = describe(each.obstacle, explanation.option);
    if (obstacle.empty() != withObstacle) {
      text += (text.empty() ? "" : ", ") + nameIn(names, each.intf);
      text += obstacle.empty() ? membersOf(each, names) : " (" + obstacle + ")";
    }
  }
  return text;
}

std::string programmedAt(Explanation const& explanation, IntfNames const& names) {
  std::string const without = intfsOf(explanation, names, true);
  return "programmed at " + intfsOf(explanation, names, false) +
         (without.empty() ? "" : "; not at " + without);
}

std::string failureOf(Explanation const& explanation, std::optional<double> now) {
  PolicyMap::PolicyFailure const& failure = explanation.failure;
  std::string text = "failed: " + failure.operation().stdString();
  if (!(!failure.rule())) {
    text += " of class " + failure.className().stdString() + ", rule " + nameInList(failure.rule());
  }
  text += ": " + failure.error().stdString();
  text += explanation.nextTry ? "; next try " + until(*explanation.nextTry, now)
                              : std::string("; tried again after the next change");
  return text;
}

std::string optionWord(ClassMapMatchOption option) {
  switch (option) {
  case ClassMapMatchOption::ipv4: return "IPv4";
  case ClassMapMatchOption::ipv6: return "IPv6";
  case ClassMapMatchOption::mac: return "MAC";
  default: return "MPLS";
  }
}

std::string stateOf(Explanation const& explanation, IntfNames const& names,
                    std::optional<double> now) {
  switch (explanation.state) {
  case ProgrammingState::programmed: return programmedAt(explanation, names);
  case ProgrammingState::noPolicyMap:
    return "policy-map " + explanation.policy.first().stdString() + " does not exist";
  case ProgrammingState::noHelper: return "there is no helper";
  case ProgrammingState::noMachine: return "no machine programs it";
  case ProgrammingState::waiting:
    return "waiting for the result of " + std::string(explanation.waitingFor) + " " +
           since(explanation.waitingSince, now);
  case ProgrammingState::failed: return failureOf(explanation, now);
  case ProgrammingState::refused: return "refused: " + explanation.failure.error().stdString();
  case ProgrammingState::due:
    return explanation.programmed ? "programmed; a change is not processed yet"
                                  : "not programmed yet";
  case ProgrammingState::optionNotAllowed:
    return optionWord(explanation.option) + " rules are not served";
  case ProgrammingState::nothingToProgram:
    return "nothing to program: no class has " + optionWord(explanation.option) + " rules";
  case ProgrammingState::noIntf:
    return "no interface is eligible: " + intfsOf(explanation, names, true);
  }
  return {};
}

std::string missingOf(Explanation const& explanation) {
  std::string text;
  for (Explanation::Missing const& missing : explanation.missing) {
    text += "; class " + missing.className.stdString() + ": " +
            withReasons("missing " + missing.object);
  }
  return text;
}

bool hasNothing(Explanation const& explanation) {
  return explanation.state == ProgrammingState::nothingToProgram;
}

// How much is known of an option: nothing to program, not looked at yet, or something to tell.
enum class Known : std::uint8_t { nothing, undecided, decided };

Known knownOf(Explanation const& explanation) {
  if (hasNothing(explanation)) {
    return Known::nothing;
  }
  bool const undecided = explanation.state == ProgrammingState::due && !explanation.programmed;
  return undecided ? Known::undecided : Known::decided;
}

bool sameForAllOptions(Explanation const& explanation) {
  switch (explanation.state) {
  case ProgrammingState::nothingToProgram:
  case ProgrammingState::noPolicyMap:
  case ProgrammingState::noHelper:
  case ProgrammingState::noMachine: return true;
  default: return knownOf(explanation) == Known::undecided;
  }
}

// Also rules that only wait for a result or for their turn.
bool carries(Explanation const& explanation, Explanation::Intf const& intf) {
  bool const comes =
      explanation.state == ProgrammingState::waiting || explanation.state == ProgrammingState::due;
  return (explanation.programmed || comes) && intf.obstacle == IntfObstacle::none;
}

std::string lineOf(Explanation const& explanation, IntfNames const& names,
                   std::optional<double> now) {
  return nameOf(explanation.policy) + " " + toText(explanation.option) + ": " +
         stateOf(explanation, names, now) + missingOf(explanation);
}

using Place = std::pair<PolicyMap::PolicyMapSmKey, Vorel::IntfId>;

// Where the rules of some option are programmed.
std::set<Place> placesOf(std::vector<Explanation> const& explanations) {
  std::set<Place> places;
  for (Explanation const& explanation : explanations) {
    for (Explanation::Intf const& each : explanation.intfs) {
      if (carries(explanation, each)) {
        places.emplace(explanation.policy, each.intf);
      }
    }
  }
  return places;
}

bool asConfigured(Explanation const& explanation, std::set<Place> const& served) {
  bool const hasIntfs = explanation.state == ProgrammingState::programmed ||
                        explanation.state == ProgrammingState::noIntf;
  return hasIntfs && explanation.missing.empty() &&
         std::all_of(explanation.intfs.begin(), explanation.intfs.end(),
                     [&](Explanation::Intf const& each) {
                       return each.obstacle == IntfObstacle::none ||
                              (each.obstacle == IntfObstacle::noAddress &&
                               served.count({explanation.policy, each.intf}) != 0);
                     });
}

}  // namespace

std::string withReasons(std::string const& missing) {
  std::string const before = "missing class-map " + Text::conditionName({});
  if (!missing.starts_with(before)) {
    return missing;
  }
  std::string const text = missing.substr(before.size());
  return "cannot match " + text + ": " + std::string(Text::reasonAgainst(text));
}

std::string describe(IntfObstacle obstacle, ClassMapMatchOption option) {
  switch (obstacle) {
  case IntfObstacle::none: return {};
  case IntfObstacle::absent: return "does not exist or is shut down";
  case IntfObstacle::excluded: return "excluded by the machine";
  case IntfObstacle::noLayer: return "neither layer 2 nor has an address";
  case IntfObstacle::notServed: return "interfaces of its kind are not served";
  case IntfObstacle::noAddress: return "no " + optionWord(option) + " address";
  case IntfObstacle::notPhysical: return "layer 3, but not physical";
  case IntfObstacle::notRouting: return "routing is off";
  case IntfObstacle::noMembers: return "has no members";
  }
  return {};
}

std::string describe(ProgrammingState state) {
  switch (state) {
  case ProgrammingState::noPolicyMap: return "noPolicyMap";
  case ProgrammingState::noHelper: return "noHelper";
  case ProgrammingState::noMachine: return "noMachine";
  case ProgrammingState::waiting: return "waiting";
  case ProgrammingState::failed: return "failed";
  case ProgrammingState::refused: return "refused";
  case ProgrammingState::due: return "due";
  case ProgrammingState::programmed: return "programmed";
  case ProgrammingState::nothingToProgram: return "nothingToProgram";
  case ProgrammingState::optionNotAllowed: return "optionNotAllowed";
  case ProgrammingState::noIntf: return "noIntf";
  }
  return {};
}

std::string describe(IntfObstacle obstacle) {
  switch (obstacle) {
  case IntfObstacle::none: return "none";
  case IntfObstacle::absent: return "absent";
  case IntfObstacle::excluded: return "excluded";
  case IntfObstacle::noLayer: return "noLayer";
  case IntfObstacle::notServed: return "notServed";
  case IntfObstacle::noAddress: return "noAddress";
  case IntfObstacle::notPhysical: return "notPhysical";
  case IntfObstacle::notRouting: return "notRouting";
  case IntfObstacle::noMembers: return "noMembers";
  }
  return {};
}

std::string describe(Explanation const& explanation, std::optional<double> now) {
  return lineOf(explanation, {}, now);
}

Explanations::Explanations(std::vector<Explanation> const& all, double now, IntfNames names)
    : now_(now), names_(std::move(names)) {
  std::map<PolicyMap::PolicyMapSmKey, Known> most;
  for (Explanation const& explanation : all) {
    Known& known = most[explanation.policy];
    known = std::max(known, knownOf(explanation));
  }
  for (Explanation const& explanation : all) {
    if (knownOf(explanation) == most[explanation.policy]) {
      explanations_.push_back(explanation);
    }
  }
}

std::vector<std::string> Explanations::linesOf(Wanted const& wanted) const {
  std::vector<std::string> lines;
  PolicyMap::PolicyMapSmKey last;
  for (Explanation const& explanation : explanations_) {
    bool const first = explanation.policy != std::exchange(last, explanation.policy);
    if (!wanted(explanation)) {
      continue;
    }
    if (!sameForAllOptions(explanation)) {
      lines.push_back(lineOf(explanation, names_, now_));
    } else if (first) {
      std::string const state = hasNothing(explanation) ? "nothing to program: no class has rules"
                                                        : stateOf(explanation, names_, now_);
      lines.push_back(nameOf(explanation.policy) + ": " + state + missingOf(explanation));
    }
  }
  return lines;
}

std::vector<std::string> Explanations::lines() const {
  return linesOf([](Explanation const& /*each*/) { return true; });
}

std::vector<std::string> Explanations::notProgrammed(Wanted const& wanted) const {
  std::set<Place> const served = placesOf(explanations_);
  return linesOf(
      [&](Explanation const& each) { return wanted(each) && !asConfigured(each, served); });
}

std::vector<Attachment> attachmentsOf(Explanations const& explanations) {
  std::map<Place, bool> places;
  for (Explanation const& explanation : explanations) {
    for (Explanation::Intf const& each : explanation.intfs) {
      bool& programmed = places[{explanation.policy, each.intf}];
      programmed = programmed || carries(explanation, each);
    }
  }
  std::vector<Attachment> attachments;
  attachments.reserve(places.size());
  for (auto const& [place, programmed] : places) {
    attachments.push_back({place.first, place.second, programmed});
  }
  return attachments;
}

std::ostream& operator<<(std::ostream& out, Explanations const& explanations) {
  if (explanations.empty()) {
    return out << "nothing is attached";
  }
  char const* separator = "";
  for (std::string const& line : explanations.lines()) {
    out << std::exchange(separator, "\n") << line;
  }
  return out;
}

}  // namespace PolicyMapTestKit
