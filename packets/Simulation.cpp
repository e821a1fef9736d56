// SPDX-License-Identifier: Apache-2.0
#include "packets/Simulation.h"

#include <algorithm>

namespace PolicyMapPackets {

namespace {

using PolicyMap::SubRuleData;

// The first sub-rule that takes a packet which its rule takes; the first of all for packets without
// ports.
std::size_t subRuleFor(Packet const& packet, std::vector<SubRuleData> const& subRules) {
  if (!packet.slice().has(FieldId::sourcePort)) {
    return 0;
  }
  std::uint32_t const source = packet[FieldId::sourcePort];
  std::uint32_t const destination = packet[FieldId::destinationPort];
  auto const found = std::find_if(subRules.begin(), subRules.end(), [&](SubRuleData const& each) {
    return each.srcPortLow() <= source && source <= each.srcPortHigh() &&
           each.dstPortLow() <= destination && destination <= each.dstPortHigh();
  });
  return static_cast<std::size_t>(found - subRules.begin());
}

}  // namespace

class Simulator::Table {
 public:
  Table(Subject const& subject, DenyReading deny)
      : subject_(subject), hits_(subject.recorded.size()) {
    for (std::size_t i = 0; i != hits_.size(); ++i) {
      hits_[i].resize(subject.recorded[i].subRules.size());
    }
    for (Slice const& slice : Slice::ofOption(subject.option)) {
      slices_[static_cast<std::size_t>(slice.id())] =
          std::make_unique<SliceTable>(slice, subject, deny, treatments_);
    }
    classes_.resize(treatments_.count());
  }

  void take(Packet const& packet, std::uint64_t times) {
    SliceTable const* const table = slices_[static_cast<std::size_t>(packet.slice().id())].get();
    if (table == nullptr) {
      return;
    }
    packets_ += times;
    left_.clear();
    std::vector<Line> const& lines = table->side.lines();
    for (LineIndex const index : table->index.near(packet.box())) {
      Line const& line = lines[index];
      if (!contains(packet.slice(), line.box, packet.box()) ||
          std::find(left_.begin(), left_.end(), line.list) != left_.end()) {
        continue;
      }
      std::vector<SubRuleData> const& subRules = subject_.recorded[line.rule].subRules;
      hits_[line.rule][subRuleFor(packet, subRules)] += times;
      if (line.candidate) {
        classes_[line.treatment] += times;
        return;
      }
      left_.push_back(line.list);
    }
    classes_[noTreatment] += times;
  }

  [[nodiscard]] Simulation result() const {
    Simulation simulation{subject_.name(), subject_.policy, packets_, {}, {}};
    for (std::size_t i = 0; i != hits_.size(); ++i) {
      PolicyMapTestKit::RuleRecord const& rule = subject_.recorded[i];
      RuleHits& hits = simulation.rules.emplace_back(RuleHits{rule.key, decidingRule(rule)});
      for (std::size_t sub = 0; sub != rule.subRules.size(); ++sub) {
        hits.packets += hits_[i][sub];
        hits.subRules.push_back({rule.subRules[sub], hits_[i][sub]});
      }
      simulation.classes.try_emplace(rule.key.className().stdString());
    }
    for (TreatmentId id = 0; id != classes_.size(); ++id) {
      simulation.classes[treatments_.of(id).className] += classes_[id];
    }
    return simulation;
  }

 private:
  // The packets of one slice in the records of one subject.
  struct SliceTable {
    SliceTable(Slice const& slice, Subject const& subject, DenyReading deny, Treatments& treatments)
        : side(slice, subject.recorded, deny, treatments), index(side) {}

    RecordedSide side;
    PointIndex index;
  };

  Subject const& subject_;
  Treatments treatments_;
  std::array<std::unique_ptr<SliceTable>, sliceCount> slices_;
  std::vector<std::vector<std::uint64_t>> hits_;  // by rule and sub-rule
  std::vector<std::uint64_t> classes_;            // by treatment
  std::vector<std::uint32_t> left_;               // the classes that the current packet has left
  std::uint64_t packets_ = 0;
};

std::size_t Simulation::neverHit() const {
  return static_cast<std::size_t>(std::count_if(
      rules.begin(), rules.end(), [](RuleHits const& rule) { return rule.packets == 0; }));
}

Simulator::Simulator(std::vector<Subject> subjects, DenyReading deny)
    : subjects_(std::move(subjects)) {
  for (Subject const& subject : subjects_) {
    if (!subject.recorded.empty()) {
      tables_.push_back(std::make_unique<Table>(subject, deny));
    }
  }
}

Simulator::~Simulator() = default;

void Simulator::take(Packet const& packet, std::uint64_t times) {
  for (std::unique_ptr<Table> const& table : tables_) {
    table->take(packet, times);
  }
}

std::vector<Simulation> Simulator::results() const {
  std::vector<Simulation> all;
  all.reserve(tables_.size());
  for (std::unique_ptr<Table> const& table : tables_) {
    all.push_back(table->result());
  }
  return all;
}

void showHits(PolicyMapTestKit::Lab& lab, std::vector<Simulation> const& simulations) {
  using Key = std::pair<PolicyMap::PolicyMapSmKey, PolicyMap::AclRuleKey>;
  std::map<Key, std::uint64_t> hits;
  for (Simulation const& simulation : simulations) {
    for (RuleHits const& rule : simulation.rules) {
      hits[{simulation.policy, rule.key}] = rule.packets;
    }
  }
  lab.aroundIs([hits](PolicyMapTestKit::HelperCall& call, auto const& proceed) {
    proceed();
    if (call.operation == "getCountForRule") {
      auto const found = hits.find({(*call.policy)->policyKey(), *call.rule});
      call.count = found == hits.end() ? 0 : found->second;
    }
  });
}

}  // namespace PolicyMapPackets
