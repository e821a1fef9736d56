// SPDX-License-Identifier: Apache-2.0
#include "packets/Proof.h"

#include <ostream>
#include <utility>

namespace PolicyMapPackets {

using PolicyMapTestKit::Text::Json;

std::ostream& operator<<(std::ostream& out, Proof const& proof) {
  out << proof.subject << ": " << toText(proof.verdict);
  if (proof.verdict == Verdict::notProgrammed) {
    out << ": " << proof.reason;
  } else if (proof.verdict == Verdict::different) {
    out << " for " << (proof.isSpent ? "at least " : "") << packetsText(proof.packets) << " of "
        << proof.pairs << (proof.pairs == 1 ? " pair" : " pairs") << " of rules";
  }
  printEach(out, proof, {"records", "configuration"});
  for (auto const& [classes, packets] : proof.moved) {
    out << "\n  " << packetsText(packets) << " in " << classText(classes.first);
    if (classes.first == classes.second) {
      out << " with other actions than configured";
    } else {
      out << ", configured for " << classText(classes.second);
    }
  }
  for (std::string const& finding : proof.findings) {
    out << "\n  " << finding;
  }
  for (TwoClasses const& each : proof.twoClasses) {
    out << "\n  " << each;
  }
  return out;
}

Json jsonOf(Proof const& proof) {
  Json json(Json::Object{{"subject", proof.subject}, {"verdict", toText(proof.verdict)}});
  if (!proof.reason.empty()) {
    json.add("reason", proof.reason);
  }
  addTo(json, proof, {"recorded", "configured"});
  Json::Array findings;
  for (std::string const& finding : proof.findings) {
    findings.emplace_back(finding);
  }
  if (!findings.empty()) {
    json.add("findings", std::move(findings));
  }
  Json::Array twoClasses;
  for (TwoClasses const& each : proof.twoClasses) {
    twoClasses.push_back(jsonOf(each));
  }
  if (!twoClasses.empty()) {
    json.add("twoClasses", std::move(twoClasses));
  }
  return json;
}

}  // namespace PolicyMapPackets
