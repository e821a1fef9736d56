// SPDX-License-Identifier: Apache-2.0
#include "lab/CompareVerb.h"

#include "packets/SelectionWords.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace lab {

namespace {

using PolicyMapPackets::Subject;

// A policy-map may be attached on one side only.
class Subjects {
 public:
  explicit Subjects(PolicyMapPackets::Selection const& selection) : selection_(selection) {}

  std::vector<Subject> of(Lab const& loaded) {
    try {
      auto subjects = subjectsOf(loaded, selection_);
      isKnown_ = true;
      return subjects;
    } catch (LookupError const& error) {
      unknown_.emplace(error);
      return {};
    }
  }
  // Throws if neither lab has it.
  void check() const {
    if (!isKnown_ && unknown_) {
      throw LookupError(*unknown_);
    }
  }

 private:
  PolicyMapPackets::Selection const& selection_;
  bool isKnown_ = false;
  std::optional<LookupError> unknown_;
};

}  // namespace

CompareVerb::CompareVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "compare", "Load two configurations, the second from the last file, and show\nwhich "
                     "packets the second treats otherwise")),
      arguments_(*command_),
      packetArguments_(*command_) {
  arguments_.addInputOptions();
  command_
      ->add_flag(
          "--edit", isEdit_,
          "The last file is an edit of those before: in a list,\n'no 10' removes the entry 10")
      ->group(PacketArguments::group);
  command_
      ->add_option_function<std::string>(
          "--of", [this](std::string const& word) { said_ = *PolicyMapPackets::saidOf(word); },
          "What is compared: what is programmed (default), or what is\nconfigured")
      ->type_name("records|configuration")
      ->check(CLI::IsMember(textsOf(PolicyMapPackets::saidWords)))
      ->group(PacketArguments::group);
  packetArguments_.addSearchOptions();
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

ExitStatus CompareVerb::run(Console const& console) {
  arguments_.check(0);
  PolicyMapPackets::SearchOptions const options = packetArguments_.searchOptions();
  std::vector<Step> first = arguments_.readInputs();
  if (first.size() < 2) {
    throw UsageError("compare needs two files");
  }
  std::vector<Step> second;
  if (isEdit_) {
    second = first;
  } else {
    second.push_back(first.back());
  }
  first.pop_back();
  std::unique_ptr<Lab> const before = labAfter(arguments_, first);
  std::unique_ptr<Lab> const after = labAfter(arguments_, second);
  std::vector<PolicyMapPackets::PacketChange> const found = asked([&] {
    Subjects subjects(options.selection);
    std::vector<Subject> const ofBefore = subjects.of(*before);
    std::vector<Subject> const ofAfter = subjects.of(*after);
    subjects.check();
    return packetChanges(ofBefore, ofAfter, said_, options);
  });
  return printResults(console, packetArguments_.json(), "changes", found,
                      "no attached policy has rules");
}

}  // namespace lab
