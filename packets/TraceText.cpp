// SPDX-License-Identifier: Apache-2.0
#include "packets/Columns.h"
#include "packets/Trace.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::Json;

constexpr std::string_view configurationName = "configuration";
// Columns are at least so wide, so that the lines of several traces are usually below each other.
constexpr std::size_t leastNameWidth = 19;
constexpr std::size_t leastMatchWidth = 25;

// The rules of both sides in common columns.
class Columns {
 public:
  explicit Columns(Trace const& trace) : name_(std::max(leastNameWidth, trace.subject.size())) {
    for (TraceLine const& line : trace.recorded) {
      add(line);
    }
    if (trace.configured) {
      add(*trace.configured);
    }
  }

  [[nodiscard]] std::string line(std::string_view name, TraceLine const& line) const {
    DecidingRule const& rule = line.rule;
    std::string const seq = std::to_string(rule.seqno);
    return head(name) + leftAligned(rule.className, class_) + "  " +
           (list_ == 0 ? "" : leftAligned(rule.list, list_) + " ") + rightAligned(seq, seq_) +
           "  " + leftAligned(rule.match, match_) + "  " + line.effect;
  }
  [[nodiscard]] std::string head(std::string_view name) const {
    return leftAligned(name, name_) + "  ";
  }

 private:
  void add(TraceLine const& line) {
    class_ = std::max(class_, line.rule.className.size());
    list_ = std::max(list_, line.rule.list.size());
    seq_ = std::max(seq_, std::to_string(line.rule.seqno).size());
    match_ = std::max(match_, line.rule.match.size());
  }

  std::size_t name_;
  std::size_t class_ = 0;
  std::size_t list_ = 0;
  std::size_t seq_ = 0;
  std::size_t match_ = leastMatchWidth;
};

// Without a rule that decides, after those that were passed.
bool endsWithoutRule(Trace const& trace) {
  return trace.recordedAs.className.empty() &&
         (trace.recorded.empty() || trace.recorded.back().effect != "ends");
}

std::string conclusion(Trace const& trace) {
  switch (trace.verdict) {
  case Verdict::different: return "DIFFERENT, as for every " + trace.around;
  case Verdict::notProgrammed: return "NOT PROGRAMMED: " + trace.reason;
  default: return "the same, as for every " + trace.around;
  }
}

Json jsonOf(TraceLine const& line) {
  Json json = jsonOf(line.rule);
  json.add("effect", line.effect);
  return json;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, Trace const& trace) {
  Columns const columns(trace);
  std::string_view name = trace.subject;
  for (TraceLine const& line : trace.recorded) {
    out << columns.line(name, line) << "\n";
    name = {};
  }
  if (endsWithoutRule(trace)) {
    out << columns.head(name) << "no class\n";
  }
  if (trace.configured) {
    out << columns.line(configurationName, *trace.configured) << "\n";
  } else {
    out << columns.head(configurationName) << "no class\n";
  }
  return out << conclusion(trace);
}

Json jsonOf(Trace const& trace) {
  Json json(Json::Object{{"subject", trace.subject},
                         {"packet", toText(trace.packet)},
                         {"verdict", toText(trace.verdict)}});
  if (!trace.reason.empty()) {
    json.add("reason", trace.reason);
  }
  json.add("recorded", jsonOf(trace.recordedAs));
  Json::Array rules;
  for (TraceLine const& line : trace.recorded) {
    rules.push_back(jsonOf(line));
  }
  json.add("recordedRules", std::move(rules));
  json.add("configured", jsonOf(trace.configuredAs));
  if (trace.configured) {
    json.add("configuredRule", jsonOf(*trace.configured));
  }
  json.add("around", trace.around);
  return json;
}

}  // namespace PolicyMapPackets
