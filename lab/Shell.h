// SPDX-License-Identifier: Apache-2.0
// The language of `policymap-lab shell`: one line builds, reads, writes or calls objects by name.
//
//   helper = PolicyMapTest::AclHelper(True, False)     builds, and keeps under a name
//   helper.commitError = 'table full'                  writes
//   helper.testData[key].commitCount                   reads
//   helper.createPolicy(data, 'ipv4')                  calls
//   del helper.testData[key]                           takes a member out, or forgets a name
//   run, advance 5, objects, types, types NAME, help   commands
//
// Values are written as they print: numbers, float('inf'), texts, True, False, None, [lists],
// Value(…), Ptr(…).
#pragma once

#include "lab/Console.h"

#include <Kor/ByName.h>

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

/// A line that cannot be understood. what() says where, with the 1-based column.
class ShellError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

class Shell {
 public:
  explicit Shell(Console const& console) : console_(console) {}

  /// Does what the line says and prints what it answers. Raises ShellError and the exceptions of
  /// the generic interface; a line that raises one has changed nothing, unless the function that it
  /// called has.
  void execute(std::string const& written);
  /// Does the line end the session? What reads the lines must see to it.
  [[nodiscard]] static bool quits(std::string_view line);
  /// The names that can stand at the end of the line instead of the beginning of a name that is
  /// there: commands, kept objects and types, or behind a dot the attributes of what is before it.
  [[nodiscard]] std::vector<std::string> completions(std::string_view line) const;

 private:
  class Parser;

  bool carriedOut(std::string_view line);
  bool kept(std::string_view line);
  void del(std::string_view line, std::size_t start);
  void advance(std::string_view line, std::size_t start);
  void types(std::string_view line, std::size_t start);
  void print(Kor::GenericRef const& value);
  void print(Kor::GenericPlace const& place);
  void printObjects() const;

  Console console_;
  std::map<std::string, Kor::GenericRef, std::less<>> objects_;
};

}  // namespace lab
