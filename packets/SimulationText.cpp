// SPDX-License-Identifier: Apache-2.0
#include "packets/Columns.h"
#include "packets/Simulation.h"
#include "testkit/Printing.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::Json;

constexpr std::string_view classTitle = "class";
constexpr std::string_view ruleTitle = "rule";
constexpr std::string_view packetsTitle = "packets";

}  // namespace

std::ostream& operator<<(std::ostream& out, Simulation const& simulation) {
  out << simulation.subject << ": " << Count(simulation.packets).text()
      << (simulation.packets == 1 ? " packet" : " packets");
  for (auto const& [name, packets] : simulation.classes) {
    if (!name.empty()) {
      out << ", " << Count(packets).text() << " in class " << name;
    }
  }
  auto const none = simulation.classes.find({});
  if (none != simulation.classes.end() && none->second != 0) {
    out << ", " << Count(none->second).text() << " in no class";
  }
  std::size_t classes = classTitle.size();
  std::size_t names = ruleTitle.size();
  std::size_t packets = packetsTitle.size();
  for (RuleHits const& rule : simulation.rules) {
    classes = std::max(classes, rule.rule.className.size());
    names = std::max(names, rule.rule.name().size());
    packets = std::max(packets, Count(rule.packets).text().size());
  }
  auto const line = [&](std::string_view className, std::string_view name, std::string const& count,
                        std::string_view match) {
    out << "\n  " << leftAligned(className, classes) << "  " << leftAligned(name, names) << "  "
        << rightAligned(count, packets) << "  " << match;
  };
  line(classTitle, ruleTitle, std::string(packetsTitle), "match");
  for (RuleHits const& rule : simulation.rules) {
    line(rule.rule.className, rule.rule.name(), Count(rule.packets).text(), rule.rule.match);
  }
  if (std::size_t const never = simulation.neverHit(); never != 0) {
    out << "\n  " << never << (never == 1 ? " rule was" : " rules were") << " never hit";
  }
  return out;
}

Json jsonOf(Simulation const& simulation) {
  Json::Array classes;
  for (auto const& [name, packets] : simulation.classes) {
    classes.push_back(Json(Json::Object{{"class", name}, {"packets", packets}}));
  }
  Json::Array rules;
  for (RuleHits const& hits : simulation.rules) {
    Json rule = jsonOf(hits.rule);
    rule.add("packets", hits.packets);
    Json::Array subRules;
    for (SubRuleHits const& each : hits.subRules) {
      subRules.push_back(Json(Json::Object{{"subRule", PolicyMapTestKit::describe(each.subRule)},
                                           {"packets", each.packets}}));
    }
    rule.add("subRules", std::move(subRules));
    rules.push_back(std::move(rule));
  }
  return Json(Json::Object{{"subject", simulation.subject},
                           {"packets", simulation.packets},
                           {"classes", std::move(classes)},
                           {"rules", std::move(rules)},
                           {"neverHit", std::uint64_t{simulation.neverHit()}}});
}

}  // namespace PolicyMapPackets
