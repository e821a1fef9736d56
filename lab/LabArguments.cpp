// SPDX-License-Identifier: Apache-2.0
#include "lab/LabArguments.h"

#include "lab/Console.h"
#include "lab/Faults.h"
#include "lab/Input.h"

#include <algorithm>
#include <array>

namespace lab {

namespace {

constexpr std::size_t mostClasses = 1000000;
constexpr std::size_t mostInterfaces = 65535;

// A flag that inverts the default of an option of the lab.
struct Flag {
  char const* name;
  bool LabOptions::*value;
  char const* text;
};
constexpr std::array inputFlags{
    Flag{"--no-access-groups", &LabOptions::accessGroups,
         "Leave out access lists that are attached by themselves"},
};
constexpr std::array hardwareFlags{
    Flag{"--update-action", &LabOptions::updateAction,
         "Change actions of programmed rules in place"},
    Flag{"--expand-port-channels", &LabOptions::expandPortChannels,
         "Program the members of port-channels"},
    Flag{"--sub-rules-for-ports", &LabOptions::subRulesForPorts,
         "Split port ranges into sub-rules, without range checkers"},
    Flag{"--reprogram-on-intf-change", &LabOptions::reprogramOnIntfChange,
         "Program a policy again when its interfaces change"},
    Flag{"--no-deny-rules", &LabOptions::denyRules, "No deny rules"},
    Flag{"--no-ttl", &LabOptions::ttl, "No match on TTL"},
    Flag{"--only-ttl-eq", &LabOptions::onlyTtlEq, "A match on TTL must be for one value"},
    Flag{"--no-ack-or-rst", &LabOptions::ackOrRst, "No match on ACK or RST"},
    Flag{"--no-established", &LabOptions::established, "No match on established"},
};
constexpr std::array servedFlags{
    Flag{"--no-l2", &LabOptions::layer2, "No policies on layer-2 interfaces"},
    Flag{"--no-l3", &LabOptions::layer3, "No policies on layer-3 interfaces"},
    Flag{"--no-mgmt", &LabOptions::management, "No policies on management interfaces"},
    Flag{"--no-ip-acl", &LabOptions::ipLists, "No IPv4 rules"},
    Flag{"--no-ip6-acl", &LabOptions::ip6Lists, "No IPv6 rules"},
    Flag{"--no-mac-acl", &LabOptions::macLists, "No MAC rules"},
};
constexpr std::array orderFlags{
    Flag{"--async", &LabOptions::async, "Commits and interface operations wait for a trigger"},
    Flag{"--pseudo-async", &LabOptions::pseudoAsync,
         "Results are asynchronous, but available immediately"},
};

}  // namespace

template <class Flags>
void LabArguments::addFlags(Flags const& flags, char const* group) {
  command_.option_defaults()->group(group);
  for (Flag const& flag : flags) {
    bool& value = options_.*flag.value;
    command_.add_flag_callback(
        flag.name, [&value, usual = value] { value = !usual; }, flag.text);
  }
}

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
  addFlags(inputFlags, group);
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

void LabArguments::addHelperOptions() {
  addFlags(hardwareFlags, "What the hardware can do");
}

void LabArguments::addOrderOptions(char const* group) {
  addFlags(orderFlags, group);
}

void LabArguments::addMachineOptions() {
  addFlags(servedFlags, "What is served");
}

std::vector<std::string> LabArguments::flagsOf(LabOptions const& options, Reading reading) {
  std::vector<std::string> flags;
  LabOptions const usual;
  auto const add = [&](auto const& some) {
    for (Flag const& flag : some) {
      if (options.*flag.value != usual.*flag.value) {
        flags.emplace_back(flag.name);
      }
    }
  };
  add(inputFlags);
  add(hardwareFlags);
  add(servedFlags);
  add(orderFlags);
  if (options.asyncDelay) {
    flags.insert(flags.end(), {"--async-delay", std::to_string(*options.asyncDelay)});
  }
  if (reading != Reading::strict) {
    flags.emplace_back("--lenient");
  }
  if (reading == Reading::widening) {
    flags.emplace_back("--widen");
  }
  return flags;
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

std::string LabArguments::takeLastInput(char const* what) {
  if (files_.empty()) {
    throw UsageError(std::string(what) + " is required");
  }
  std::string last = std::move(files_.back());
  files_.pop_back();
  return last;
}

std::vector<Step> LabArguments::readInputs() const {
  std::vector<Step> steps;
  for (std::string const& file : files_) {
    steps.push_back(withContent({.kind = Step::Kind::load, .name = file}));
  }
  if (!rulesFile_.empty()) {
    SourceText const source = readInput(rulesFile_);
    steps.push_back({.kind = Step::Kind::rules,
                     .name = *source.name(),
                     .text = std::string(source.content()),
                     .layout = layout_,
                     .portRanges = portsOnAnyProtocol_ ? PortRanges::onAnyProtocol
                                                       : PortRanges::onPortProtocols});
  }
  return steps;
}

std::string LabArguments::title() const {
  std::string const first = files_.empty() ? rulesFile_ : files_.front();
  return first.substr(first.find_last_of('/') + 1);
}

LabOptions LabArguments::readOptions() const {
  LabOptions options = options_;
  if (!actionsFile_.empty()) {
    options.actions = Text::ActionMapping(readInput(actionsFile_));
  }
  return options;
}

}  // namespace lab
