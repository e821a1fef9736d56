// SPDX-License-Identifier: Apache-2.0
#pragma once

// The language of `policymap-lab shell`. Each line creates, reads, writes or calls objects by name:
//
//   helper = PolicyMapTest::AclHelper(True, False)     creates an object and names it
//   helper.commitError = 'table full'                  writes
//   helper.testData[key].commitCount                   reads
//   helper.createPolicy(data, 'ipv4')                  calls
//   del helper.testData[key]                           removes a member, or a name
//   load edge.cfg                                      programs policy text
//   run, advance 5, objects, types, types NAME, help   commands
//
// Values are written as they print: numbers, float('inf'), texts, True, False, None, [lists],
// Value(…), Ptr(…).

#include "lab/Console.h"
#include "lab/Kit.h"
#include "testkit/Lab.h"

#include <Kor/ByName.h>

#include <cstddef>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

// An invalid line. what() gives the 1-based column and the reason.
class ShellError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

class Shell {
 public:
  explicit Shell(Console const& console) : console_(console) {}

  // Executes the line and prints its result. Raises ShellError and the exceptions of the generic
  // interface. A line that raises has changed nothing, except what a called function has changed.
  void execute(std::string const& written);
  // True if the line ends the session. The caller must check it; execute() does not.
  [[nodiscard]] static bool quits(std::string_view line);
  // Completions of the name at the end of the line: commands, named objects and types, or after a
  // dot the attributes of the expression before it.
  [[nodiscard]] std::vector<std::string> completions(std::string_view line) const;

 private:
  class Parser;

  bool carriedOut(std::string_view line);
  bool kept(std::string_view line);
  void del(std::string_view line, std::size_t start);
  void advance(std::string_view line, std::size_t start);
  void load(std::string_view line, std::size_t start);
  void runDue();
  void types(std::string_view line, std::size_t start);
  void print(Kor::GenericRef const& value);
  void print(Kor::GenericPlace const& place);
  void printObjects() const;

  Console console_;
  std::unique_ptr<Lab> lab_;  // from the first `load` on
  std::map<std::string, Kor::GenericRef, std::less<>> objects_;
};

}  // namespace lab
