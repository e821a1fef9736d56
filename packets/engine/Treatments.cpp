// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/Treatments.h"

namespace PolicyMapPackets {

std::string actionsText(Treatment const& treatment) {
  std::string text;
  for (std::size_t i = 0; i != treatment.actions.size(); ++i) {
    if (treatment.actions[i] != 0) {
      text.append(text.empty() ? "" : ", ").append(PolicyMapTest::testActionNames[i]);
      text += " " + std::to_string(treatment.actions[i]);
    }
  }
  return text.empty() ? "no action" : text;
}

std::string toText(Treatment const& treatment) {
  return treatment.className.empty() ? "no class"
                                     : treatment.className + " (" + actionsText(treatment) + ")";
}

TreatmentId Treatments::idOf(Treatment const& treatment) {
  auto const [place, isNew] = ids_.try_emplace(treatment, static_cast<TreatmentId>(byId_.size()));
  if (isNew) {
    byId_.push_back(treatment);
  }
  return place->second;
}

}  // namespace PolicyMapPackets
