// SPDX-License-Identifier: Apache-2.0
#include "lab/PacketVerbs.h"

#include "lab/Console.h"
#include "lab/PacketJson.h"
#include "testkit/runs/ScriptRun.h"

#include <Kor/Exception.h>

#include <cstdint>

namespace lab {

PacketArguments::PacketArguments(CLI::App& command) : lab(command) {
  lab.addInputOptions();
  char const* const group = "Packets";
  command.add_option("--at", at_, "Only policies at this interface")
      ->type_name("INTF")
      ->group(group);
  command.add_option("--policy", policy_, "Only this policy-map")->type_name("NAME")->group(group);
  command.add_option("--option", option_, "Only this match option")
      ->type_name("OPTION")
      ->check(CLI::IsMember({"ipv4", "ipv6"}))
      ->group(group);
  command
      .add_option("--deny", deny_,
                  "What a rule that denies does to packets: they leave\nthe class, no class takes "
                  "them, or the rule is an entry\nlike any other")
      ->type_name("READING")
      ->check(CLI::IsMember({"next-class", "stop", "entry"}))
      ->capture_default_str()
      ->group(group);
  command.add_flag("--json", json, "Print JSON")->group(group);
  lab.addHelperOptions();
  lab.addMachineOptions();
}

Packets::Deny PacketArguments::deny() const {
  return deny_ == "stop"    ? Packets::Deny::stop
         : deny_ == "entry" ? Packets::Deny::entry
                            : Packets::Deny::nextClass;
}

template <class Use>
ExitStatus PacketArguments::withLab(Use const& use) const {
  lab.check(0);
  LabOptions options = lab.readOptions();
  options.journal = SIZE_MAX;
  ScriptRun run(options, lab.reading());
  for (Step const& step : lab.readInputs()) {
    run.perform(step);
  }
  Packets::Selection selection;
  selection.policyMap = policy_;
  if (at_) {
    try {
      selection.intf = Vorel::IntfId(Kor::String(*at_));
    } catch (Kor::RangeException const& error) {
      throw UsageError(std::string("--at: ") + error.what());
    }
  }
  if (!option_.empty()) {
    selection.option = option_ == "ipv6" ? PolicyMap::ClassMapMatchOption::ipv6
                                         : PolicyMap::ClassMapMatchOption::ipv4;
  }
  return use(run.lab(), selection);
}

TraceVerb::TraceVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "trace", "What the records and the configuration do to one packet,\nwhich is the last "
                   "argument: 'tcp 10.0.0.1:4000 > 192.0.2.80:80'")),
      arguments_(*command_) {}

ExitStatus TraceVerb::run(Console const& console) {
  Packets::Packet const packet(arguments_.lab.takeLastInput("PACKET"));
  return arguments_.withLab([&](Lab const& lab, Packets::Selection const& selection) {
    std::vector<Packets::Trace> const traces = trace(lab, packet, selection, arguments_.deny());
    if (arguments_.json) {
      console.out << jsonOf(packet, traces).text() << "\n";
    } else if (traces.empty()) {
      console.out << "no policy\n";
    }
    bool same = true;
    for (Packets::Trace const& each : traces) {
      same = same && each.unknown.empty() && each.same();
      if (!arguments_.json) {
        console.out << each;
      }
    }
    return same ? ExitStatus::success : ExitStatus::notProgrammed;
  });
}

ProveVerb::ProveVerb(CLI::App& program)
    : command_(
          program.add_subcommand("prove", "Whether the records treat all packets as configured")),
      arguments_(*command_) {
  command_
      ->add_option("--steps", limits_.steps,
                   "Search at most this long; what is not decided then is\nundecided")
      ->type_name("N")
      ->capture_default_str()
      ->group("Packets");
}

ExitStatus ProveVerb::run(Console const& console) {
  return arguments_.withLab([&](Lab const& lab, Packets::Selection const& selection) {
    std::vector<Packets::Proof> const proofs = prove(lab, selection, {arguments_.deny(), limits_});
    if (arguments_.json) {
      console.out << jsonOf(proofs).text() << "\n";
    } else if (proofs.empty()) {
      console.out << "no policy\n";
    }
    bool same = true;
    bool complete = true;
    for (Packets::Proof const& each : proofs) {
      same = same && each.unknown.empty() && each.differences.empty();
      complete = complete && each.complete;
      if (!arguments_.json) {
        console.out << each;
      }
    }
    return !same       ? ExitStatus::notProgrammed
           : !complete ? ExitStatus::undecided
                       : ExitStatus::success;
  });
}

}  // namespace lab
