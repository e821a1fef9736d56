// SPDX-License-Identifier: Apache-2.0
#include "lab/PacketVerbs.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace lab {

namespace {

using PolicyMapPackets::Packet;
using PolicyMapPackets::Proof;
using PolicyMapPackets::Trace;
using PolicyMapPackets::Verdict;

}  // namespace

TraceVerb::TraceVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "trace", "Load as run does, and show the way of a packet, the last\nargument, through "
                   "the records and the configuration")),
      arguments_(*command_),
      packetArguments_(*command_) {
  arguments_.addInputOptions();
  command_->add_option("--packet", packets_, "A packet, in place of the last argument; may repeat")
      ->type_name("PACKET")
      ->allow_extra_args(false)
      ->group(PacketArguments::group);
  command_->add_flag("--passed", passedOver_, "Also the rules before the one that decides")
      ->group(PacketArguments::group);
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

ExitStatus TraceVerb::run(Console const& console) {
  if (packets_.empty()) {
    packets_.push_back(arguments_.takeLastInput("PACKET"));
  }
  arguments_.check(0);
  std::vector<Packet> packets;
  for (std::string const& text : packets_) {
    packets.push_back(PolicyMapPackets::readPacket(text));
  }
  std::unique_ptr<Lab> const loaded = labAfter(arguments_, arguments_.readInputs());
  PolicyMapPackets::TraceOptions const options{packetArguments_.selection(),
                                               packetArguments_.deny(), passedOver_};
  std::vector<Trace> const traces = asked([&] {
    std::vector<Trace> all;
    for (Packet const& packet : packets) {
      std::vector<Trace> some = tracePacket(*loaded, packet, options);
      std::move(some.begin(), some.end(), std::back_inserter(all));
    }
    return all;
  });
  printList(console, packetArguments_.json(), Json(Json::Object{{"version", 1U}}), "traces", traces,
            "no attached policy has rules for such packets", "\n");
  return worstOf(traces) == Verdict::different ? ExitStatus::notProgrammed : ExitStatus::success;
}

ProveVerb::ProveVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "prove", "Load as run does, and prove that the records treat every packet\nas the "
                   "configuration says, or show packets that are not")),
      arguments_(*command_),
      packetArguments_(*command_) {
  arguments_.addInputOptions();
  packetArguments_.addSearchOptions();
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

ExitStatus ProveVerb::run(Console const& console) {
  arguments_.check(0);
  std::unique_ptr<Lab> const loaded = labAfter(arguments_, arguments_.readInputs());
  std::vector<Proof> const proofs =
      asked([&] { return prove(*loaded, packetArguments_.searchOptions()); });
  return printResults(console, packetArguments_.json(), "proofs", proofs,
                      "no attached policy has rules");
}

UnusedVerb::UnusedVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "unused", "Load as run does, and show the configured rules and classes that\nno packet "
                    "reaches, and the rules that make no difference")),
      arguments_(*command_),
      packetArguments_(*command_) {
  arguments_.addInputOptions();
  packetArguments_.addBudget(budget_);
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

ExitStatus UnusedVerb::run(Console const& console) {
  arguments_.check(0);
  std::unique_ptr<Lab> const loaded = labAfter(arguments_, arguments_.readInputs());
  std::vector<PolicyMapPackets::Unused> const all =
      asked([&] { return unusedRules(*loaded, packetArguments_.selection(), budget_); });
  printList(console, packetArguments_.json(), Json(Json::Object{{"version", 1U}}), "unused", all,
            "no attached policy has rules");
  bool const isSpent =
      std::any_of(all.begin(), all.end(), [](auto const& each) { return each.isSpent; });
  return isSpent ? ExitStatus::undecided : ExitStatus::success;
}

}  // namespace lab
