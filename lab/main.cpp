// SPDX-License-Identifier: Apache-2.0
#include "lab/Kit.h"
#include "lab/Program.h"
#include "testkit/text/ShownText.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>
#include <unistd.h>

namespace {

bool isSet(char const* variable) {
  char const* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// True if the file is a terminal that supports control sequences.
bool isTerminal(int file) {
  char const* const kind = std::getenv("TERM");
  return isatty(file) == 1 && kind != nullptr && std::string_view(kind) != "dumb";
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  lab::Console console{std::cout, std::cerr, {}, isTerminal(STDERR_FILENO), true};
  console.style.color = isTerminal(STDOUT_FILENO) && !isSet("NO_COLOR");
  try {
    return static_cast<int>(lab::runProgram(argc, argv, console));
  } catch (std::exception const& error) {
    std::cerr << "policymap-lab: " << lab::shownText(error.what()) << "\n";
    return static_cast<int>(lab::ExitStatus::badInput);
  }
}
