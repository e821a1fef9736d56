// SPDX-License-Identifier: Apache-2.0
#include "lab/PacketArguments.h"

#include "packets/SelectionWords.h"

#include <array>
#include <string_view>

namespace lab {

namespace {

constexpr std::size_t mostShown = 1000000;

}  // namespace

PacketArguments::PacketArguments(CLI::App& command) : command_(command) {
  command.add_option("--at", selection_.interface, "Only what is attached to this interface")
      ->type_name("INTERFACE")
      ->group(group);
  command.add_option("--policy", selection_.policyMap, "Only this policy-map")
      ->type_name("NAME")
      ->group(group);
  command.add_option("--direction", selection_.direction, "Only input, or only output")
      ->type_name("DIRECTION")
      ->check(CLI::IsMember({"input", "output"}))
      ->group(group);
  command
      .add_option_function<std::string>(
          "--option",
          [this](std::string const& name) { selection_.option = PolicyMapPackets::optionOf(name); },
          "Only rules of this kind")
      ->type_name("ipv4|ipv6|mac|mpls")
      ->check(CLI::IsMember(textsOf(PolicyMapPackets::optionWords)))
      ->group(group);
  command
      .add_option_function<std::string>(
          "--deny",
          [this](std::string const& name) { deny_ = *PolicyMapPackets::denyReadingOf(name); },
          "What an entry that denies does: its packets leave\nthe class (default), nothing becomes "
          "of them, or they\nget the class as by any other entry")
      ->type_name("next-class|stop|entry")
      ->check(CLI::IsMember(textsOf(PolicyMapPackets::denyWords)))
      ->group(group);
  command.add_flag("--json", json_, "Print one JSON object")->group(group);
}

void PacketArguments::addBudget(std::uint64_t& budget) {
  command_
      .add_option("--budget", budget,
                  "Steps of the search for each policy and kind of rule,\nafter which it is "
                  "undecided")
      ->type_name("N")
      ->capture_default_str()
      ->group(group);
}

void PacketArguments::addSearchOptions() {
  addBudget(search_.budget);
  command_
      .add_option("--first", search_.first,
                  "Show this number of pairs of rules that differ; all are\ncounted")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{0}, mostShown))
      ->capture_default_str()
      ->group(group);
  command_
      .add_option("--except", except_,
                  "But for these packets, e.g. 'udp any any eq 53'; may\nrepeat")
      ->type_name("PACKETS")
      ->allow_extra_args(false)
      ->group(group);
}

PolicyMapPackets::SearchOptions PacketArguments::searchOptions() const {
  PolicyMapPackets::SearchOptions options = search_;
  options.selection = selection_;
  options.deny = deny_;
  for (std::string const& set : except_) {
    options.except.emplace_back(set);
  }
  return options;
}

std::unique_ptr<Lab> labAfter(LabArguments const& arguments, std::vector<Step> const& steps) {
  auto loaded = std::make_unique<Lab>(arguments.readOptions());
  for (Step const& step : steps) {
    perform(*loaded, step, arguments.reading());
  }
  return loaded;
}

}  // namespace lab
