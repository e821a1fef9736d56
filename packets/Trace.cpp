// SPDX-License-Identifier: Apache-2.0
#include "packets/Trace.h"

#include "packets/engine/Surroundings.h"

#include <algorithm>
#include <set>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::RuleRecord;

class Tracing {
 public:
  Tracing(Subject const& subject, Packet const& packet, TraceOptions const& options)
      : subject_(subject),
        packet_(packet),
        options_(options),
        recorded_(packet.slice(), subject.recorded, options.deny, treatments_),
        configured_(packet.slice(), subject.configured, treatments_) {}

  Trace run() {
    LineIndex const recordedLine = decide(recorded_, packet_.box()).line;
    LineIndex const configuredLine = decide(configured_, packet_.box()).line;
    Trace trace{subject_.name(),
                packet_,
                {},
                treatments_.of(recorded_.treatment(recordedLine)),
                {},
                treatments_.of(configured_.treatment(configuredLine)),
                Verdict::same,
                subject_.obstacle,
                {}};
    trace.recorded = way(recordedLine);
    if (configuredLine != configured_.nothing()) {
      trace.configured =
          TraceLine{decidingRule(configured_.rule(ruleOf(configured_, configuredLine))),
                    actionsText(trace.configuredAs)};
    }
    if (!subject_.obstacle.empty()) {
      trace.verdict = Verdict::notProgrammed;
    } else if (recorded_.treatment(recordedLine) != configured_.treatment(configuredLine)) {
      trace.verdict = Verdict::different;
    }
    trace.around = toText(packet_.slice(), surroundings(recorded_, configured_, packet_.box()));
    return trace;
  }

 private:
  static std::uint32_t ruleOf(Side const& side, LineIndex line) { return side.lines()[line].rule; }

  // The rules up to the one that decides.
  [[nodiscard]] std::vector<TraceLine> way(LineIndex decisive) const {
    RecordedSide const& side = recorded_;
    std::uint32_t const last = decisive == side.nothing()
                                   ? static_cast<std::uint32_t>(subject_.recorded.size())
                                   : ruleOf(side, decisive);
    std::set<std::uint32_t> const matching = rulesThatMatch(last);
    std::set<Kor::Name> left;
    std::vector<TraceLine> lines;
    for (std::uint32_t i = 0; i != last; ++i) {
      RuleRecord const& rule = subject_.recorded[i];
      bool const wasLeft = left.contains(rule.key.className());
      bool const leaves = !wasLeft && matching.contains(i);
      if (leaves) {
        left.insert(rule.key.className());
      }
      if (leaves || options_.passedOver) {
        lines.push_back({decidingRule(rule), leaves    ? "leaves the class"
                                             : wasLeft ? "the class was left"
                                                       : "does not match"});
      }
    }
    if (decisive != side.nothing()) {
      bool const ends = side.treatment(decisive) == noTreatment;
      lines.push_back({decidingRule(subject_.recorded[last]),
                       ends ? "ends" : actionsText(treatments_.of(side.treatment(decisive)))});
    }
    return lines;
  }

  // Of those before `last`. They deny: the first other one decides.
  [[nodiscard]] std::set<std::uint32_t> rulesThatMatch(std::uint32_t last) const {
    std::set<std::uint32_t> rules;
    for (Line const& line : recorded_.lines()) {
      if (line.rule < last && contains(packet_.slice(), line.box, packet_.box())) {
        rules.insert(line.rule);
      }
    }
    return rules;
  }

  Subject const& subject_;
  Packet const& packet_;
  TraceOptions const& options_;
  Treatments treatments_;
  RecordedSide recorded_;
  ConfigurationSide configured_;
};

// Whether a table of this option sees the packet.
bool sees(PolicyMap::ClassMapMatchOption option, Packet const& packet) {
  auto const slices = Slice::ofOption(option);
  return std::any_of(slices.begin(), slices.end(),
                     [&](Slice const& slice) { return slice.id() == packet.slice().id(); });
}

}  // namespace

std::vector<Trace> tracePacket(std::vector<Subject> const& subjects, Packet const& packet,
                               TraceOptions const& options) {
  std::vector<Trace> traces;
  for (Subject const& subject : subjects) {
    if (sees(subject.option, packet) && subject.hasRules()) {
      traces.push_back(Tracing(subject, packet, options).run());
    }
  }
  return traces;
}

std::vector<Trace> tracePacket(PolicyMapTestKit::Lab const& lab, Packet const& packet,
                               TraceOptions const& options) {
  return tracePacket(subjectsOf(lab, options.selection), packet, options);
}

}  // namespace PolicyMapPackets
