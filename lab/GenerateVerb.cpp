// SPDX-License-Identifier: Apache-2.0
#include "lab/GenerateVerb.h"

#include "lab/Kit.h"
#include "testkit/text/FilterSetGenerator.h"

namespace lab {

namespace {

// A line has at most 128 bytes, so `run --rules` can read the largest set.
constexpr std::size_t mostRules = 2000000;

}  // namespace

GenerateVerb::GenerateVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "generate", "Write a filter set for run --rules; equal options give the same\n"
                      "rules, and a smaller set is the beginning of a larger one")) {
  command_->add_option("--rules", rules_, "Number of rules")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{0}, mostRules))
      ->capture_default_str();
  command_->add_option("--seed", seed_, "Another seed gives other rules")
      ->type_name("S")
      ->check(CLI::NonNegativeNumber)  // CLI11 reads -1 as the largest number
      ->capture_default_str();
  command_->add_flag("--ipv6", ip6_, "IPv6 rules");
}

ExitStatus GenerateVerb::run(Console const& console) {
  console.out << generateFilterSet(rules_, seed_, ip6_ ? Family::ip6 : Family::ip4);
  return ExitStatus::success;
}

}  // namespace lab
