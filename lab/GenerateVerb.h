// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab generate`: writes a filter set of any size.

#include "lab/Verb.h"

#include <cstddef>
#include <cstdint>

namespace lab {

class GenerateVerb : public Verb {
 public:
  explicit GenerateVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  std::size_t rules_ = 1000;
  std::uint64_t seed_ = 1;
  bool ip6_ = false;
};

}  // namespace lab
