// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab compare`: load two configurations as run does, and show which packets the second
// treats otherwise than the first.

#include "lab/LabArguments.h"
#include "lab/PacketArguments.h"
#include "lab/Verb.h"
#include "packets/PacketChange.h"

namespace lab {

class CompareVerb : public Verb {
 public:
  explicit CompareVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if some packet is treated otherwise, or else undecided if a comparison
  // was given up.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  LabArguments arguments_;
  PacketArguments packetArguments_;
  bool isEdit_ = false;
  PolicyMapPackets::Said said_ = PolicyMapPackets::Said::byRecords;
};

}  // namespace lab
