// SPDX-License-Identifier: Apache-2.0
#include "packets/TwoClasses.h"

#include "packets/engine/Comparison.h"
#include "packets/engine/FirstReached.h"
#include "testkit/Printing.h"

#include <optional>
#include <ostream>
#include <string>
#include <tuple>

namespace PolicyMapPackets {

namespace {

using Option = PolicyMap::ClassMapMatchOption;

constexpr std::uint32_t ethertype4 = 0x0800;
constexpr std::uint32_t ethertype6 = 0x86dd;

class TwoTables {
 public:
  TwoTables(Subject const& mac, Subject const& other, SearchOptions const& options)
      : mac_(mac), other_(other), deny_(options.deny), budget_(options.budget) {}

  std::optional<TwoClasses> run() {
    return other_.option == Option::mpls ? ofOneHeader() : ofTwoHeaders();
  }

 private:
  struct Decided {
    std::uint32_t rule = 0;
    std::string className;
    Packet packet;
  };

  // MAC and IP rules have no field in common but the Ethernet type, so each frame of it that the
  // first decide may have each packet that the others decide.
  std::optional<TwoClasses> ofTwoHeaders() {
    auto mac = firstOf(mac_, {});
    auto other = firstOf(other_, {});
    if (!mac || !other) {
      return std::nullopt;
    }
    if (mac->className == other->className) {
      if (auto another = firstOf(other_, mac->className)) {
        other = another;
      } else if (another = firstOf(mac_, other->className); another) {
        mac = another;
      } else {
        return std::nullopt;
      }
    }
    return found(mac->packet, mac->rule, other->packet, other->rule);
  }

  // The first rule that gives a packet to a class other than this one.
  std::optional<Decided> firstOf(Subject const& subject, std::string const& butClass) {
    std::optional<Decided> first;
    for (Slice const& slice : Slice::ofOption(subject.option)) {
      RecordedSide const side(slice, subject.recorded, deny_, treatments_);
      Box region = Box::all(slice);
      if (subject.option == Option::mac) {
        std::uint32_t const type = other_.option == Option::ipv4 ? ethertype4 : ethertype6;
        region.takeInterval(slice, FieldId::ethertype, type, type);
      }
      auto const isWanted = [&](TreatmentId treatment) {
        std::string const& name = treatments_.of(treatment).className;
        return !name.empty() && name != butClass;
      };
      auto const reached = firstReached(side, region, isWanted, budget_);
      if (reached && (!first || reached->rule < first->rule)) {
        first = {reached->rule, treatments_.of(reached->treatment).className,
                 Packet(slice, reached->lowest)};
      }
    }
    return first;
  }

  // MAC and MPLS rules see the same labels.
  std::optional<TwoClasses> ofOneHeader() {
    std::optional<TwoClasses> first;
    std::tuple<std::uint32_t, std::uint32_t> rules;
    for (Slice const& slice : Slice::ofOption(Option::mpls)) {
      RecordedSide const mac(slice, mac_.recorded, deny_, treatments_);
      RecordedSide const other(slice, other_.recorded, deny_, treatments_);
      for (PairDifference const& pair : compare(mac, other, budget_).pairs) {
        std::string const& one = treatments_.of(pair.one).className;
        std::string const& two = treatments_.of(pair.other).className;
        std::tuple const its(pair.oneRule, pair.otherRule);
        if (!one.empty() && !two.empty() && one != two && (!first || its < rules)) {
          rules = its;
          Packet const packet(slice, pair.lowest);
          first = found(packet, pair.oneRule, packet, pair.otherRule);
        }
      }
    }
    return first;
  }

  [[nodiscard]] TwoClasses found(Packet const& frame, std::uint32_t rule, Packet const& packet,
                                 std::uint32_t otherRule) const {
    return {frame, decidingRule(mac_.recorded[rule]), other_.option, packet,
            decidingRule(other_.recorded[otherRule])};
  }

  Subject const& mac_;
  Subject const& other_;
  DenyReading deny_;
  Budget budget_;
  Treatments treatments_;
};

}  // namespace

std::vector<TwoClasses> twoClasses(Subject const& mac, std::vector<Subject> const& subjects,
                                   SearchOptions const& options) {
  std::vector<TwoClasses> all;
  for (Subject const& other : subjects) {
    if (other.option == Option::mac || other.policy != mac.policy || !mac.obstacle.empty() ||
        !other.obstacle.empty()) {
      continue;
    }
    if (auto const found = TwoTables(mac, other, options).run()) {
      all.push_back(*found);
    }
  }
  return all;
}

std::ostream& operator<<(std::ostream& out, TwoClasses const& found) {
  if (found.otherOption != Option::mpls) {
    out << found.packet << " in ";
  }
  return out << found.frame << ": class " << found.rule.className << " by " << found.rule.name()
             << " " << found.rule.match << ", and class " << found.otherRule.className << " of the "
             << PolicyMapTestKit::toText(found.otherOption) << " rules by "
             << found.otherRule.name() << " " << found.otherRule.match;
}

PolicyMapTestKit::Text::Json jsonOf(TwoClasses const& found) {
  return PolicyMapTestKit::Text::Json(PolicyMapTestKit::Text::Json::Object{
      {"frame", toText(found.frame)},
      {"rule", jsonOf(found.rule)},
      {"otherOption", PolicyMapTestKit::toText(found.otherOption)},
      {"packet", toText(found.packet)},
      {"otherRule", jsonOf(found.otherRule)}});
}

}  // namespace PolicyMapPackets
