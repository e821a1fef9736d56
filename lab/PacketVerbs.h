// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab trace`, `prove` and `unused`: load as run does, and ask what becomes of one
// packet, or of all, and which rules decide any.

#include "lab/LabArguments.h"
#include "lab/PacketArguments.h"
#include "lab/Verb.h"
#include "packets/Proof.h"
#include "packets/Trace.h"
#include "packets/Unused.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lab {

class TraceVerb : public Verb {
 public:
  explicit TraceVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if a packet is not treated as configured.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  LabArguments arguments_;
  PacketArguments packetArguments_;
  std::vector<std::string> packets_;
  bool passedOver_ = false;
};

class ProveVerb : public Verb {
 public:
  explicit ProveVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if some packet is not treated as configured, or else undecided if a proof
  // was given up.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  LabArguments arguments_;
  PacketArguments packetArguments_;
};

class UnusedVerb : public Verb {
 public:
  explicit UnusedVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns undecided if the search was given up. What is found is the answer, and no failure.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  LabArguments arguments_;
  PacketArguments packetArguments_;
  std::uint64_t budget_ = PolicyMapPackets::Budget::usual;
};

}  // namespace lab
