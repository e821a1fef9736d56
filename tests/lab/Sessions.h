// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared by the tests of the program: sessions on texts, and runs of the whole program.

#include "lab/Problems.h"
#include "lab/Program.h"
#include "lab/Records.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lab::test {

inline void load(Session& session, std::string text, Reading reading = Reading::strict) {
  session.load(SourceText("t", std::move(text)), reading);
}

// what() of the InputError that loading throws; "no error" if it throws none.
inline std::string errorOfLoading(Session& session, std::string text) {
  try {
    load(session, std::move(text));
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

// The record of a policy. Fails the test if there is none.
inline PolicyRecord recordOf(
    Session const& session, std::string const& policy,
    PolicyMap::ClassMapMatchOption option = PolicyMap::ClassMapMatchOption::ipv4,
    std::string const& direction = "input") {
  for (PolicyRecord const& record : readRecords(session)) {
    if (record.policy == policy && record.option == option && record.direction == direction) {
      return record;
    }
  }
  ADD_FAILURE() << "no record of " << policy;
  return {};
}

// "CLASS LIST NUMBER MATCH" of each rule, in order.
inline std::vector<std::string> rulesOf(PolicyRecord const& record) {
  std::vector<std::string> rules;
  for (RuleRecord const& rule : record.rules) {
    rules.push_back(rule.key.className().stdString() + " " + rule.key.aclName().stdString() + " " +
                    std::to_string(rule.key.seqno()) + " " + describe(rule.match));
  }
  return rules;
}

inline std::vector<std::string> interfacesOf(PolicyRecord const& record) {
  std::vector<std::string> names;
  for (Vorel::IntfId const intf : record.interfaces) {
    names.push_back(intf.name().stdString());
  }
  return names;
}

inline std::vector<std::string> problemsOf(Session const& session) {
  std::vector<std::string> texts;
  for (Problem const& problem : findProblems(session)) {
    texts.push_back(toText(problem));
  }
  return texts;
}

// The output and exit status of a run of the program.
struct Outcome {
  ExitStatus status{};
  std::string out;
  std::string err;

  nlohmann::ordered_json json() const { return nlohmann::ordered_json::parse(out); }
};

// Runs the program in this process.
inline Outcome runLab(std::vector<std::string> const& arguments, TextStyle style = {}) {
  std::vector<char const*> argv{"policymap-lab"};
  for (std::string const& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  std::ostringstream out;
  std::ostringstream err;
  ExitStatus const status =
      runProgram(static_cast<int>(argv.size()), argv.data(), Console{out, err, style, false});
  return {status, out.str(), err.str()};
}

// A folder of input files that is removed after the test.
class InputFiles : public testing::Test {
 protected:
  InputFiles() {
    std::string pattern = (std::filesystem::temp_directory_path() / "lab-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~InputFiles() override { std::filesystem::remove_all(folder_); }

  // Writes a file and returns its path.
  std::string file(std::string const& name, std::string const& text) const {
    std::string const path = (folder_ / name).string();
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  std::string folder() const { return folder_.string(); }

 private:
  std::filesystem::path folder_;
};

}  // namespace lab::test
