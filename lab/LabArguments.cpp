// SPDX-License-Identifier: Apache-2.0
#include "lab/LabArguments.h"

#include "lab/Console.h"
#include "lab/Input.h"
#include "lab/TextLayout.h"

#include <algorithm>

namespace lab {

namespace {

constexpr std::size_t mostClasses = 1000000;
constexpr std::size_t mostInterfaces = 65535;

}  // namespace

LabArguments::LabArguments(CLI::App& command) : command_(command) {}

void LabArguments::addInputOptions() {
  char const* const group = "Input";
  CLI::Option* const files =
      command_.add_option("files", files_, "Policy text")->type_name("FILE")->group(group);
  CLI::Option* const lenient =
      command_.add_flag("--lenient", lenient_, "Skip and count lines that are not understood")
          ->group(group);
  command_
      .add_flag("--widen", widen_,
                "With --lenient: a class that loses a condition matches more,\ninstead of nothing")
      ->group(group)
      ->needs(lenient);
  command_
      .add_flag_callback(
          "--no-access-groups", [this] { options_.accessGroups = false; },
          "Leave out access lists that are attached by themselves")
      ->group(group);
  command_
      .add_option("--actions", actionsFile_,
                  "What lines of classes become: lines such as\n\"police = action1\"")
      ->type_name("FILE")
      ->group(group);
  CLI::Option* const rules =
      command_.add_option("--rules", rulesFile_, "A filter set in the ClassBench line format")
          ->type_name("FILE")
          ->group(group)
          ->excludes(files)
          ->excludes(lenient);
  command_
      .add_option("--classes", layout_.classes, "Split the filter set into this number of classes")
      ->type_name("K")
      ->check(CLI::Range(std::size_t{1}, mostClasses))
      ->capture_default_str()
      ->group(group)
      ->needs(rules);
  command_
      .add_option("--interfaces", layout_.interfaces,
                  "Attach the filter set to this number of interfaces")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, mostInterfaces))
      ->capture_default_str()
      ->group(group)
      ->needs(rules);
  command_
      .add_flag("--ports-on-any-protocol", portsOnAnyProtocol_,
                "Accept port ranges on protocols without ports")
      ->group(group)
      ->needs(rules);
}

void LabArguments::addSwitch(std::string const& name, bool& value, std::string const& text) {
  bool const usual = value;
  command_.add_flag_callback(
      name, [&value, usual] { value = !usual; }, text);
}

void LabArguments::addHelperOptions() {
  command_.option_defaults()->group("What the hardware can do");
  addSwitch("--update-action", options_.updateAction,
            "Change actions of programmed rules in place");
  addSwitch("--expand-port-channels", options_.expandPortChannels,
            "Program the members of port-channels");
  addSwitch("--sub-rules-for-ports", options_.subRulesForPorts,
            "Split port ranges into sub-rules, without range checkers");
  addSwitch("--reprogram-on-intf-change", options_.reprogramOnIntfChange,
            "Program a policy again when its interfaces change");
  addSwitch("--no-deny-rules", options_.denyRules, "No deny rules");
  addSwitch("--no-ttl", options_.ttl, "No match on TTL");
  addSwitch("--only-ttl-eq", options_.onlyTtlEq, "A match on TTL must be for one value");
  addSwitch("--no-ack-or-rst", options_.ackOrRst, "No match on ACK or RST");
  addSwitch("--no-established", options_.established, "No match on established");
}

void LabArguments::addMachineOptions() {
  command_.option_defaults()->group("What is served");
  addSwitch("--no-l2", options_.layer2, "No policies on layer-2 interfaces");
  addSwitch("--no-l3", options_.layer3, "No policies on layer-3 interfaces");
  addSwitch("--no-mgmt", options_.management, "No policies on management interfaces");
  addSwitch("--no-ip-acl", options_.ipLists, "No IPv4 rules");
  addSwitch("--no-ip6-acl", options_.ip6Lists, "No IPv6 rules");
  addSwitch("--no-mac-acl", options_.macLists, "No MAC rules");
}

void LabArguments::check(std::ptrdiff_t alsoReads) const {
  if (files_.empty() && rulesFile_.empty()) {
    throw UsageError("a FILE or --rules FILE is required");
  }
  auto reads = alsoReads + std::count(files_.begin(), files_.end(), standardInput);
  reads += rulesFile_ == standardInput ? 1 : 0;
  reads += actionsFile_ == standardInput ? 1 : 0;
  if (reads > 1) {
    throw UsageError("-: standard input can be read only once");
  }
}

FilterSet LabArguments::readRules() const {
  FilterSet set =
      readFilterSet(readInput(rulesFile_),
                    portsOnAnyProtocol_ ? PortRanges::onAnyProtocol : PortRanges::onPortProtocols);
  if (layout_.classes > std::max<std::size_t>(set.rules.size(), 1)) {
    throw UsageError("--classes: " + std::to_string(layout_.classes) + " is more than the " +
                     counted(set.rules.size(), "rule") + " of " + rulesFile_);
  }
  return set;
}

LabOptions LabArguments::readOptions() const {
  LabOptions options = options_;
  if (!actionsFile_.empty()) {
    options.actions = Text::ActionMapping(readInput(actionsFile_));
  }
  return options;
}

}  // namespace lab
