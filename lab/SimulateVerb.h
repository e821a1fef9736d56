// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab simulate`: load as run does, and send packets through the records.

#include "lab/LabArguments.h"
#include "lab/PacketArguments.h"
#include "lab/Verb.h"
#include "packets/PacketGenerator.h"
#include "packets/Simulation.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lab {

class SimulateVerb : public Verb {
 public:
  explicit SimulateVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  void takeFile(PolicyMapPackets::Simulator& simulator) const;
  void takeCapture(PolicyMapPackets::Simulator& simulator) const;
  void generate(std::vector<PolicyMapPackets::Subject> const& subjects,
                PolicyMapPackets::Simulator& simulator) const;

  CLI::App* command_;
  LabArguments arguments_;
  PacketArguments packetArguments_;
  std::string packetsFile_;
  std::string captureFile_;
  std::uint64_t generated_ = 0;
  PolicyMapPackets::GeneratorOptions generator_;
  bool neverHit_ = false;
};

}  // namespace lab
