// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared by the tests of the test kit: labs on texts.

#include "testkit/Lab.h"
#include "testkit/Printers.h"
#include "testkit/Problems.h"
#include "testkit/text/RuleConversion.h"

#include <string>
#include <vector>

namespace PolicyMapTestKit::test {

using namespace Text;

inline void load(Lab& lab, std::string text, Reading reading = Reading::strict) {
  lab.load(SourceText("t", std::move(text)), reading);
}

// what() of the InputError that loading throws; "no error" if it throws none.
inline std::string errorOfLoading(Lab& lab, std::string text) {
  try {
    load(lab, std::move(text));
  } catch (InputError const& error) {
    return error.what();
  }
  return "no error";
}

// Class P on list P with one rule, in policy-map P at Ethernet1.
inline std::string const simplePolicy = "ip access-list P\n"
                                        " permit tcp any any eq 80\n"
                                        "class-map match-any P\n"
                                        " match access-group P\n"
                                        "policy-map P\n"
                                        " class P\n"
                                        "  set action1 1\n"
                                        "interface Ethernet1\n"
                                        " service-policy input P\n";
// The same with a second rule, whose range of ports is two sub-rules.
inline std::string const portRange = simplePolicy + "ip access-list P\n"
                                                    " permit udp any any range 5004 5008\n";

inline Record recordOf(Lab const& lab, std::string const& policy,
                       PolicyMap::ClassMapMatchOption option = PolicyMap::ClassMapMatchOption::ipv4,
                       std::string const& direction = "input") {
  return lab.record(policy, direction, option);
}

// "CLASS LIST NUMBER MATCH" of each rule, in order.
inline std::vector<std::string> rulesOf(Record const& record) {
  std::vector<std::string> rules;
  for (RuleRecord const& rule : record.rules) {
    rules.push_back(rule.key.className().stdString() + " " + rule.key.aclName().stdString() + " " +
                    std::to_string(rule.key.seqno()) + " " + describe(rule.match));
  }
  return rules;
}

inline std::vector<std::string> interfacesOf(Record const& record) {
  std::vector<std::string> names;
  for (Vorel::IntfId const intf : record.interfaces) {
    names.push_back(intf.name().stdString());
  }
  return names;
}

inline std::vector<std::string> problemsOf(Lab const& lab) {
  std::vector<std::string> texts;
  for (Problem const& problem : findProblems(lab)) {
    texts.push_back(toText(problem));
  }
  return texts;
}

}  // namespace PolicyMapTestKit::test
