// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/Recovery.h"

#include "testkit/Difference.h"
#include "testkit/Printing.h"
#include "testkit/Statuses.h"
#include "testkit/faults/ActivePlan.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

namespace PolicyMapTestKit {

namespace {

// Longer than the longest wait between two tries, and than that for a result.
constexpr std::chrono::seconds patience{200};
// A lab that waits for more results has no end.
constexpr std::size_t mostResults = 100000;

constexpr std::array<std::string_view, 9> kindNames{"record",       "status",  "pending",
                                                    "notification", "finding", "assertion",
                                                    "exception",    "unmet",   "other"};

std::string nameOf(StatusRow const& row) {
  return row.policy + "/" + row.direction + " " + toText(row.option);
}

Snapshot withoutHistory(Snapshot const& snapshot) {
  std::vector<Record> records;
  for (Record const& record : snapshot) {
    bool const isEmpty = !record.created && record.rules.empty() && record.interfaces.empty();
    if (!isEmpty) {
      records.push_back(record);
      records.back().createCount = 1;
      records.back().commitCount = 1;
      records.back().beginUpdateActionCount = 0;
      records.back().endUpdateActionCount = 0;
    }
  }
  return Snapshot(std::move(records));
}

std::string lineOf(StatusRow const& row) {
  std::string line = nameOf(row) + (row.programmed ? ": programmed" : ": not programmed");
  char const* separator = " at ";
  for (Vorel::IntfId const intf : row.interfaces) {
    line.append(std::exchange(separator, ", ")).append(intf.name().stdString());
  }
  if (!row.error.empty()) {
    line.append(": ").append(row.error);
  }
  return line;
}

Irregularity wronglyProgrammed(StatusRow const& row) {
  return {Irregularity::Kind::status,
          "status of " + nameOf(row) +
              (row.programmed ? ": programmed, which it is not" : ": not programmed, which it is")};
}

template <class Visit>
void forEachClass(Lab const& lab, Visit const& visit) {
  for (auto const& policy : lab.status()->policyMapStatusIteratorConst()) {
    for (auto const& each : policy.value()->classMapStatusIteratorConst()) {
      visit("class " + describe(policy.key()) + " " + each.key().stdString(), *each.value());
    }
  }
}

// An injected text names the call that failed. False if the failure is not that of this call.
bool isOfInjectedCall(PolicyMap::PolicyFailure const& failure, std::string const& policy,
                      PolicyMap::ClassMapMatchOption option) {
  std::string const text = failure.error().stdString();
  constexpr std::string_view at = " at ";
  std::size_t const begin = text.find(at);
  if (!text.starts_with("injected #") || begin == std::string::npos) {
    return true;
  }
  std::string const call = text.substr(begin + at.size());
  std::string const operation = failure.operation().stdString() + "(" + policy;
  std::string what;
  if (!failure.className().empty()) {
    what += " " + failure.className().stdString();
  }
  if (!(!failure.rule())) {
    what += " " + nameOfRule(failure.rule());
  }
  std::string const ofOption = operation + " " + toText(option) + what;
  bool const isOfInterface = failure.operation().view().find("Intf") != std::string_view::npos;
  return call == ofOption + ")" || call == operation + what + ")" ||
         (isOfInterface && call.starts_with(ofOption + " "));
}

// The lines of `some` that are not in `others`; both are sorted.
std::vector<std::string> without(std::vector<std::string> const& some,
                                 std::vector<std::string> const& others) {
  std::vector<std::string> rest;
  std::set_difference(some.begin(), some.end(), others.begin(), others.end(),
                      std::back_inserter(rest));
  return rest;
}

Reference referenceOf(Lab const& lab, Snapshot const& records, std::vector<StatusRow> const& rows) {
  Reference reference{withoutHistory(records), {}};
  for (StatusRow const& row : rows) {
    // The failure of a removal stays until the next change.
    bool const failedRemoval = !row.programmed && !row.operation.empty();
    if (!failedRemoval) {
      reference.statuses.push_back(lineOf(row));
    }
  }
  forEachClass(lab, [&](std::string const& name, PolicyMap::ClassMapStatus const& status) {
    std::string const error = status.error().stdString();
    reference.statuses.push_back(name +
                                 (status.programmed() ? ": programmed" : ": not programmed") +
                                 (error.empty() ? "" : ": " + error));
  });
  std::sort(reference.statuses.begin(), reference.statuses.end());
  return reference;
}

// Why rules of this option cannot be at an interface; empty if they can.
std::string_view obstacleOf(PolicyMap::ClassMapMatchOption option, Vorel::IntfId intf,
                            Text::InterfaceSettings const& settings) {
  using Option = PolicyMap::ClassMapMatchOption;
  if (settings.shutdown) {
    return "is shut down";
  }
  bool const hasAddress = !settings.ip4.empty() || !settings.ip6.empty();
  bool const isSwitched = settings.switchport.value_or(!hasAddress);
  if (settings.channelGroup || intf.isManagement() || isSwitched) {
    return {};
  }
  if (option == Option::ipv4 && settings.ip4.empty()) {
    return "has no IPv4 address";
  }
  if (option == Option::ipv6 && settings.ip6.empty()) {
    return "has no IPv6 address";
  }
  return option == Option::mac && !intf.isPhysical() ? "is routed and not physical"
                                                     : std::string_view();
}

// Collects what is irregular in one lab.
class Comparison {
 public:
  explicit Comparison(Lab& lab)
      : lab_(lab),
        records_(lab.snapshot()),
        rows_(readStatuses(lab)),
        now_(referenceOf(lab, records_, rows_)) {}

  std::vector<Irregularity> with(Reference const& reference) {
    for (Change const& change : difference(reference.records, now_.records)) {
      find(Irregularity::Kind::record, change.describe());
    }
    compareStatuses(reference);
    for (Record const& record : records_) {
      if (record.created && (record.dirty || record.createCount == 0 || record.commitCount == 0)) {
        find(Irregularity::Kind::record,
             record.name() + " is created, but not committed, or not counted");
      }
    }
    if (lab_.eventLoop().pending() != 0) {
      find(Irregularity::Kind::pending, "something is still to be done");
    }
    interfacesOfRecords();
    statusesOfRecords();
    classesOfRecords();
    return std::move(found_);
  }

 private:
  void find(Irregularity::Kind kind, std::string text) {
    found_.push_back({kind, std::move(text)});
  }

  void compareStatuses(Reference const& reference) {
    for (std::string const& line : without(now_.statuses, reference.statuses)) {
      find(Irregularity::Kind::status, "status of " + line + ", unlike in a new lab");
    }
    for (std::string const& line : without(reference.statuses, now_.statuses)) {
      find(Irregularity::Kind::status, "no status of " + line);
    }
  }

  // A core that programs wrong interfaces does so in a new lab, too: the configuration decides.
  void interfacesOfRecords() {
    auto const& interfaces = lab_.configuration().settings().interfaces;
    for (Record const& record : now_.records) {
      for (Vorel::IntfId const intf : record.interfaces) {
        auto const found = interfaces.find(intf);
        std::string_view const obstacle =
            found == interfaces.end() ? "" : obstacleOf(record.option, intf, found->second);
        if (!obstacle.empty()) {
          find(Irregularity::Kind::record, record.name() + " is programmed at " +
                                               intf.name().stdString() + ", which " +
                                               std::string(obstacle));
        }
      }
    }
  }

  // Every record that is created has a status that says so, and no other has.
  void statusesOfRecords() {
    std::map<std::string, Record const*> created;
    for (Record const& record : now_.records) {
      created.emplace(record.name(), &record);
    }
    for (StatusRow const& row : rows_) {
      auto const found = created.find(nameOf(row));
      bool const isCreated = found != created.end();
      if (row.programmed != isCreated) {
        found_.push_back(wronglyProgrammed(row));
      }
      if (isCreated && (!row.error.empty() || row.interfaces != found->second->interfaces ||
                        !row.timeProgrammed)) {
        find(Irregularity::Kind::status,
             "status of " + nameOf(row) +
                 ": not that of a policy that is programmed at its interfaces" +
                 (row.error.empty() ? "" : ": " + row.error));
      }
      created.erase(nameOf(row));
    }
    for (auto const& [name, record] : created) {
      find(Irregularity::Kind::status, "status of " + name + " does not exist");
    }
  }

  // A class is programmed exactly if a record has rules of it.
  void classesOfRecords() {
    std::set<std::string> programmed;
    for (Record const& record : now_.records) {
      for (RuleRecord const& rule : record) {
        programmed.insert("class " + record.policy + "/" + record.direction + " " +
                          rule.key.className().stdString());
      }
    }
    forEachClass(lab_, [&](std::string const& name, PolicyMap::ClassMapStatus const& status) {
      if (status.programmed() != programmed.contains(name)) {
        find(Irregularity::Kind::status, "status of " + name + ": not what the records have");
      }
    });
  }

  Lab& lab_;
  Snapshot records_;
  std::vector<StatusRow> rows_;
  Reference now_;
  std::vector<Irregularity> found_;
};

}  // namespace

std::string_view nameOf(Irregularity::Kind kind) {
  return kindNames[static_cast<std::size_t>(kind)];
}

std::optional<Irregularity::Kind> irregularityKindOf(std::string_view name) {
  auto const* const found = std::find(kindNames.begin(), kindNames.end(), name);
  return found == kindNames.end()
             ? std::nullopt
             : std::optional(static_cast<Irregularity::Kind>(found - kindNames.begin()));
}

Reference referenceOf(Lab const& lab) {
  return referenceOf(lab, lab.snapshot(), readStatuses(lab));
}

Reference referenceOf(Text::Settings const& settings, LabOptions const& options) {
  LabOptions plain = options;
  plain.async = false;
  plain.pseudoAsync = false;
  plain.asyncDelay = {};
  plain.faults.clear();
  plain.plan = {};
  plain.journal = 0;
  Lab lab(plain);
  lab.load(settings);
  return referenceOf(lab);
}

std::vector<Irregularity> compare(Lab& lab, Reference const& reference) {
  return Comparison(lab).with(reference);
}

void recover(Lab& lab, LabOptions const& options) {
  auto const isWaiting = [&] {
    std::vector<PolicyMap::Explanation> const all = PolicyMap::explain(*lab.machine());
    return std::any_of(all.begin(), all.end(), [](PolicyMap::Explanation const& each) {
      return each.state == PolicyMap::ProgrammingState::waiting;
    });
  };
  // Results that arrive only when they are asked for.
  bool const byTrigger = options.async && !options.asyncDelay && !options.pseudoAsync;
  auto const deliverResults = [&] {
    for (std::size_t i = 0; byTrigger && i != mostResults && isWaiting(); ++i) {
      lab.trigger();
    }
  };
  lab.clearFaults();
  lab.endPlans();
  lab.releaseAll();
  deliverResults();
  lab.advance(patience);
  deliverResults();
}

std::vector<Irregularity> checkStatuses(Lab const& lab) {
  std::vector<Irregularity> found;
  for (auto const& policy : lab.status()->policyMapStatusIteratorConst()) {
    PolicyMap::PolicyMapStatus const& status = *policy.value();
    for (PolicyMap::ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
      if (!status.programmed(option) &&
          (status.korTimeProgrammed(option) || !status.intfs(option).empty())) {
        found.push_back({Irregularity::Kind::status,
                         "status of " + describe(policy.key()) + " " + toText(option) +
                             ": time or interfaces of what is not programmed"});
      }
      PolicyMap::PolicyFailure const failure = status.failure(option);
      if (!isOfInjectedCall(failure, describe(policy.key()), option)) {
        found.push_back({Irregularity::Kind::status,
                         "failure of " + describe(policy.key()) + " " + toText(option) +
                             ": not of the call that failed: " + describe(failure)});
      }
    }
  }
  std::set<std::string> created;
  lab.forEachRecord(WithRules::no, [&](Record const& record) {
    if (record.created) {
      created.insert(record.name());
    }
  });
  for (StatusRow const& row : readStatuses(lab)) {
    if (row.programmed && !created.contains(nameOf(row))) {
      found.push_back(wronglyProgrammed(row));
    }
  }
  return found;
}

}  // namespace PolicyMapTestKit
