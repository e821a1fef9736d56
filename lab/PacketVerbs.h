// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab trace` and `policymap-lab prove`: what the records do to packets, and whether that
// is what is configured.

#include "lab/LabArguments.h"
#include "lab/Verb.h"
#include "packets/Proof.h"

#include <optional>
#include <string>

namespace lab {

// The options of both: which policies, and how rules that deny are read.
class PacketArguments {
 public:
  explicit PacketArguments(CLI::App& command);
  PacketArguments(PacketArguments const&) = delete;
  PacketArguments& operator=(PacketArguments const&) = delete;

  LabArguments lab;
  bool json = false;

  [[nodiscard]] Packets::Deny deny() const;
  // Loads the inputs into a new lab, with a journal of all calls, and calls `use` with it and with
  // the selection.
  template <class Use>
  ExitStatus withLab(Use const& use) const;

 private:
  std::optional<std::string> at_;
  std::string policy_;
  std::string option_;
  std::string deny_ = "next-class";
};

class TraceVerb : public Verb {
 public:
  explicit TraceVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if a policy treats the packet otherwise than configured.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  PacketArguments arguments_;
};

class ProveVerb : public Verb {
 public:
  explicit ProveVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if there is a difference, and undecided if there may be one.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  PacketArguments arguments_;
  Packets::ComparisonLimits limits_;
};

}  // namespace lab
