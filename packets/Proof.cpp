// SPDX-License-Identifier: Apache-2.0
#include "packets/Proof.h"

#include "packets/hardware/SubRuleFindings.h"

#include <sstream>

namespace PolicyMapPackets {

Proof prove(Subject const& subject, SearchOptions const& options) {
  Proof proof;
  proof.subject = subject.name();
  proof.findings = subRuleFindings(subject.recorded);
  if (!subject.obstacle.empty()) {
    proof.verdict = Verdict::notProgrammed;
    proof.reason = subject.obstacle;
    return proof;
  }
  static_cast<Differences&>(proof) =
      differencesOf({subject, Said::byRecords}, {subject, Said::byConfiguration}, options);
  proof.verdict = proof.verdictOfSearch();
  return proof;
}

std::vector<Proof> proofsOf(std::vector<Subject> const& subjects, SearchOptions const& options) {
  std::vector<Proof> proofs;
  for (Subject const& subject : subjects) {
    if (subject.hasRules()) {
      proofs.push_back(prove(subject, options));
      if (subject.option == PolicyMap::ClassMapMatchOption::mac) {
        proofs.back().twoClasses = twoClasses(subject, subjects, options);
      }
    }
  }
  return proofs;
}

std::vector<Proof> prove(PolicyMapTestKit::Lab const& lab, SearchOptions const& options) {
  return proofsOf(subjectsOf(lab, options.selection), options);
}

std::vector<std::string> unproven(PolicyMapTestKit::Lab const& lab) {
  std::vector<std::string> texts;
  for (Proof const& proof : prove(lab)) {
    if (proof.verdict == Verdict::different || proof.verdict == Verdict::undecided) {
      std::ostringstream text;
      text << proof;
      texts.push_back(text.str());
    }
  }
  return texts;
}

}  // namespace PolicyMapPackets
