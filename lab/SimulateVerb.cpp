// SPDX-License-Identifier: Apache-2.0
#include "lab/SimulateVerb.h"

#include "lab/Input.h"
#include "packets/space/Capture.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace lab {

namespace {

using PolicyMapPackets::Simulation;
using PolicyMapPackets::Simulator;
using PolicyMapPackets::Subject;

constexpr std::uint64_t mostGenerated = 1'000'000'000'000;

}  // namespace

SimulateVerb::SimulateVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "simulate", "Load as run does, send packets through the records, and show what each\n"
                      "rule gets of them")),
      arguments_(*command_),
      packetArguments_(*command_) {
  arguments_.addInputOptions();
  auto const group = PacketArguments::group;
  command_->add_option("--packets", packetsFile_, "A file with a packet in each line")
      ->type_name("FILE")
      ->group(group);
  command_->add_option("--capture", captureFile_, "A capture file, pcap or pcapng")
      ->type_name("FILE")
      ->group(group);
  command_
      ->add_option("--generate", generated_,
                   "So many packets at the corners of rules, most of them\nonce, some often")
      ->type_name("N")
      ->check(CLI::Range(std::uint64_t{0}, mostGenerated))
      ->group(group);
  command_->add_option("--seed", generator_.seed, "Of the packets that are generated")
      ->type_name("N")
      ->capture_default_str()
      ->group(group);
  command_->add_flag("--never-hit", neverHit_, "Show only the rules that no packet hit")
      ->group(group);
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

ExitStatus SimulateVerb::run(Console const& console) {
  arguments_.check((packetsFile_ == standardInput ? 1 : 0) +
                   (captureFile_ == standardInput ? 1 : 0));
  if (packetsFile_.empty() && captureFile_.empty() && generated_ == 0) {
    throw UsageError("simulate needs --packets, --capture or --generate");
  }
  std::unique_ptr<Lab> const loaded = labAfter(arguments_, arguments_.readInputs());
  std::vector<Subject> const subjects =
      asked([&] { return subjectsOf(*loaded, packetArguments_.selection()); });
  Simulator simulator(subjects, packetArguments_.deny());
  takeFile(simulator);
  takeCapture(simulator);
  generate(subjects, simulator);
  std::vector<Simulation> results = simulator.results();
  if (neverHit_) {
    for (Simulation& simulation : results) {
      std::erase_if(simulation.rules, [](auto const& rule) { return rule.packets != 0; });
    }
  }
  printList(console, packetArguments_.json(), Json(Json::Object{{"version", 1U}}), "simulations",
            results, "no attached policy has rules");
  return ExitStatus::success;
}

void SimulateVerb::takeFile(Simulator& simulator) const {
  if (packetsFile_.empty()) {
    return;
  }
  for (PolicyMapPackets::Packet const& packet :
       PolicyMapPackets::readPackets(readInput(packetsFile_))) {
    simulator.take(packet);
  }
}

void SimulateVerb::takeCapture(Simulator& simulator) const {
  if (captureFile_.empty()) {
    return;
  }
  for (PolicyMapPackets::Frame const& frame :
       PolicyMapPackets::readCapture(readInput(captureFile_))) {
    if (frame.ip) {
      simulator.take(*frame.ip);
    }
    if (frame.mac) {
      simulator.take(*frame.mac);
    }
  }
}

void SimulateVerb::generate(std::vector<Subject> const& subjects, Simulator& simulator) const {
  PolicyMapPackets::GeneratorOptions options = generator_;
  options.deny = packetArguments_.deny();
  PolicyMapPackets::PacketGenerator generator(subjects, options);
  for (std::uint64_t left = generator.hasPackets() ? generated_ : 0; left != 0;) {
    auto const [packet, times] = generator.next();
    std::uint64_t const taken = std::min<std::uint64_t>(times, left);
    simulator.take(packet, taken);
    left -= taken;
  }
}

}  // namespace lab
