// SPDX-License-Identifier: Apache-2.0
#include "packets/Differences.h"

#include <ostream>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::Json;

std::string sideText(std::string_view side, std::optional<DecidingRule> const& rule,
                     Treatment const& treatment) {
  std::string text(side);
  text += ": ";
  if (!rule) {
    return text + "no rule";
  }
  return text + rule->name() + " " + rule->match + " of class " + rule->className +
         (treatment.className.empty() ? ", which denies" : ", " + actionsText(treatment));
}

}  // namespace

std::string packetsText(Count const& count) {
  return count.text() + (count == Count(1) ? " packet" : " packets");
}

std::string classText(std::string const& name) {
  return name.empty() ? "no class" : "class " + name;
}

void printEach(std::ostream& out, Differences const& found, SideNames const& names) {
  for (Difference const& each : found.differences) {
    out << "\n  " << each.packet << ", as every " << each.around << "\n    "
        << sideText(names.one, each.one, each.oneAs) << "\n    "
        << sideText(names.other, each.other, each.otherAs);
  }
}

Json jsonOf(DecidingRule const& rule) {
  return Json(Json::Object{{"class", rule.className},
                           {"acl", rule.list},
                           {"seq", std::uint64_t{rule.seqno}},
                           {"match", rule.match}});
}

Json jsonOf(Treatment const& treatment) {
  Json::Object object{{"class", treatment.className}};
  for (std::size_t i = 0; i != treatment.actions.size(); ++i) {
    object.emplace_back(std::string(PolicyMapTest::testActionNames[i]),
                        std::uint64_t{treatment.actions[i]});
  }
  return Json(std::move(object));
}

void addTo(Json& json, Differences const& found, SideNames const& names) {
  if (found.pairs == 0) {
    return;
  }
  std::string const one(names.one);
  std::string const other(names.other);
  json.add("packets", found.packets.decimal());
  json.add("log2Packets", found.packets.log2());
  json.add("atLeast", found.isSpent);
  json.add("pairs", std::uint64_t{found.pairs});
  Json::Array moved;
  for (auto const& [classes, packets] : found.moved) {
    moved.push_back(Json(Json::Object{
        {one, classes.first}, {other, classes.second}, {"packets", packets.decimal()}}));
  }
  Json::Array differences;
  for (Difference const& each : found.differences) {
    Json difference(Json::Object{{"packet", toText(each.packet)},
                                 {"around", each.around},
                                 {"packets", each.packets.decimal()}});
    difference.add(one, jsonOf(each.oneAs));
    difference.add(other, jsonOf(each.otherAs));
    if (each.one) {
      difference.add(one + "Rule", jsonOf(*each.one));
    }
    if (each.other) {
      difference.add(other + "Rule", jsonOf(*each.other));
    }
    differences.push_back(std::move(difference));
  }
  json.add("moved", std::move(moved));
  json.add("differences", std::move(differences));
}

}  // namespace PolicyMapPackets
