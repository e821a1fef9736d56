// SPDX-License-Identifier: Apache-2.0
#pragma once

// Treatments: what becomes of packets, as numbers that both readers use.

#include "packets/Export.h"
#include "packets/engine/Side.h"
#include "records/TestActionKinds.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace PolicyMapPackets {

// The class of a packet, and the values of its actions. Without a class: nothing becomes of it.
struct Treatment {
  std::string className;
  std::array<std::uint32_t, PolicyMapTest::testActionKinds> actions{};

  auto operator<=>(Treatment const&) const = default;
};

// "action1 1, action3 7" of the values other than 0; "no action".
[[nodiscard]] POLICYMAPPACKETS_API std::string actionsText(Treatment const& treatment);
// The class and its actions; "no class".
[[nodiscard]] POLICYMAPPACKETS_API std::string toText(Treatment const& treatment);

class POLICYMAPPACKETS_API Treatments {
 public:
  // The default treatment is noTreatment.
  TreatmentId idOf(Treatment const& treatment);
  [[nodiscard]] std::size_t count() const { return byId_.size(); }
  [[nodiscard]] Treatment const& of(TreatmentId id) const { return byId_[id]; }

 private:
  std::vector<Treatment> byId_{Treatment()};
  std::map<Treatment, TreatmentId> ids_{{Treatment(), noTreatment}};
};

}  // namespace PolicyMapPackets
