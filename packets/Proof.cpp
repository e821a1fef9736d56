// SPDX-License-Identifier: Apache-2.0
#include "packets/Proof.h"

#include "packets/Configured.h"
#include "testkit/Explanations.h"
#include "testkit/Printing.h"

#include <PolicyMap/PolicyMapTypeConfig.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyMapSmKey;
using PolicyMapTestKit::Lab;

std::set<PolicyMapSmKey> attachedPolicies(Lab const& lab, Selection const& selection) {
  std::set<PolicyMapSmKey> policies;
  for (auto const& entry : lab.policyMaps()->servicePolicyIteratorConst()) {
    bool const isSelected =
        (!selection.intf || *selection.intf == entry.key().intf()) &&
        (selection.policyMap.empty() || selection.policyMap == entry.value().view());
    if (isSelected) {
      policies.emplace(entry.value(), entry.key().direction());
    }
  }
  return policies;
}

bool hasEntries(Classifier const& classifier) {
  std::vector<Candidate> const all = classifier.candidates();
  return all.size() > 1;  // besides that of no class
}

// Calls function(policy, classifiers of the configuration by space) for what is selected, and has
// rules or a record.
template <class Function>
void forEachSelected(Lab const& lab, Selection const& selection, Function const& function) {
  for (PolicyMapSmKey const& policy : attachedPolicies(lab, selection)) {
    for (ClassMapMatchOption const option :
         {ClassMapMatchOption::ipv4, ClassMapMatchOption::ipv6}) {
      if (selection.option && *selection.option != option) {
        continue;
      }
      std::vector<Classifier> wanted;
      for (Space const& space : spacesOf(option)) {
        wanted.push_back(configured(lab, Kor::Name(policy.first()), space));
      }
      RecordedPolicy const known = recordedPolicy(lab, policy, option);
      if (known.unknown.empty() || std::any_of(wanted.begin(), wanted.end(), hasEntries)) {
        function(known, wanted);
      }
    }
  }
}

// The explanation of what is not programmed, without the policy's name.
std::string whyUnknown(Lab const& lab, RecordedPolicy const& known) {
  std::string const head = PolicyMapTestKit::describe(known.policy) + " " +
                           PolicyMapTestKit::toText(known.option) + ": ";
  for (std::string const& line : lab.explain(known.policy.first().view()).lines()) {
    if (!known.created && line.starts_with(head)) {
      return line.substr(head.size());
    }
  }
  return known.unknown;
}

}  // namespace

std::vector<Proof> prove(Lab const& lab, Selection const& selection, ProofOptions const& options) {
  std::vector<Proof> proofs;
  forEachSelected(
      lab, selection, [&](RecordedPolicy const& known, std::vector<Classifier> const& wanted) {
        Proof proof{known.policy, known.option, {}, {}, true};
        if (!known.unknown.empty()) {
          proof.unknown = whyUnknown(lab, known);
          proofs.push_back(std::move(proof));
          return;
        }
        for (Classifier const& configuration : wanted) {
          Comparison found = compare(recorded(lab, known, configuration.space(), options.deny),
                                     configuration, options.limits);
          proof.complete = proof.complete && found.complete;
          std::move(found.differences.begin(), found.differences.end(),
                    std::back_inserter(proof.differences));
        }
        proofs.push_back(std::move(proof));
      });
  return proofs;
}

std::vector<Trace> trace(Lab const& lab, Packet const& packet, Selection const& selection,
                         Deny deny) {
  std::vector<Trace> traces;
  Selection ofPacket = selection;
  ofPacket.option = packet.box().space().option;
  forEachSelected(lab, ofPacket,
                  [&](RecordedPolicy const& known, std::vector<Classifier> const& wanted) {
                    Trace one{known.policy, known.option, {}, {}, {}, {}, {}, {}};
                    Classifier const& configuration =
                        wanted.at(static_cast<std::size_t>(packet.box().space().header));
                    Fate const said = fateOf(configuration, packet.box());
                    one.byConfiguration = said.treatment;
                    if (Line const* const line = configuration.line(said.candidate)) {
                      one.configured = *line;
                    }
                    if (!known.unknown.empty()) {
                      one.unknown = whyUnknown(lab, known);
                    } else {
                      Classifier const records = recorded(lab, known, configuration.space(), deny);
                      for (Line const* const line : records.way(packet.box())) {
                        one.recorded.push_back(*line);
                      }
                      one.byRecords = fateOf(records, packet.box()).treatment;
                      one.alike = alike(records, configuration, packet.box());
                    }
                    traces.push_back(std::move(one));
                  });
  return traces;
}

}  // namespace PolicyMapPackets
