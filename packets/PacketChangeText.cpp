// SPDX-License-Identifier: Apache-2.0
#include "packets/PacketChange.h"

#include <ostream>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::Json;

std::string rulesText(RuleChanges const& rules) {
  std::string text;
  auto const add = [&text](std::size_t count, char const* what) {
    if (count != 0) {
      text += (text.empty() ? std::to_string(count) + (count == 1 ? " rule " : " rules ")
                            : ", " + std::to_string(count) + " ");
      text += what;
    }
  };
  add(rules.added, "added");
  add(rules.removed, "removed");
  add(rules.changed, "changed");
  if (rules.reordered) {
    text = "rules in another order";
  }
  return text.empty() ? "no rule changed" : text;
}

std::string moveText(std::pair<std::string, std::string> const& classes, Count const& packets) {
  bool const isOne = packets == Count(1);
  std::string text = packetsText(packets);
  if (classes.first == classes.second) {
    return text + (isOne ? " gets" : " get") + " other actions of " + classText(classes.first);
  }
  text += isOne ? " goes from " : " go from ";
  return text + classText(classes.first) + " to " + classText(classes.second);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, PacketChange const& change) {
  out << change.subject << ": ";
  if (change.verdict == Verdict::notProgrammed) {
    return out << toText(change.verdict) << " " << change.reason;
  }
  out << rulesText(change.rules);
  char const* separator = "; ";
  for (auto const& [classes, packets] : change.moved) {
    out << separator << (change.isSpent ? "at least " : "") << moveText(classes, packets);
    separator = ", ";
  }
  if (change.isSpent) {
    out << "; the rest is undecided";
  } else if (change.moved.empty()) {
    out << (change.hasExceptions ? "; every packet but the excepted ones is treated as before"
                                 : "; every packet is treated as before");
  } else {
    out << (change.hasExceptions ? "; all others but the excepted ones are treated as before"
                                 : "; all others are treated as before");
  }
  printEach(out, change, {"before", "after"});
  return out;
}

Json jsonOf(PacketChange const& change) {
  Json json(Json::Object{{"subject", change.subject}, {"verdict", toText(change.verdict)}});
  if (!change.reason.empty()) {
    json.add("reason", change.reason);
  }
  json.add("rules", Json(Json::Object{{"added", std::uint64_t{change.rules.added}},
                                      {"removed", std::uint64_t{change.rules.removed}},
                                      {"changed", std::uint64_t{change.rules.changed}},
                                      {"reordered", change.rules.reordered}}));
  addTo(json, change, {"before", "after"});
  return json;
}

}  // namespace PolicyMapPackets
