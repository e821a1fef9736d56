// SPDX-License-Identifier: Apache-2.0
#include "lab/Faults.h"

#include "lab/Verb.h"
#include "testkit/text/SourceText.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace lab {

Fault readFault(std::string_view argument) {
  auto const equals = argument.find('=');
  std::string const name(argument.substr(0, equals));
  std::vector<std::string> const known = faultNames();
  if (equals == std::string_view::npos ||
      std::find(known.begin(), known.end(), name) == known.end()) {
    std::string names;
    for (std::string const& one : known) {
      names.append(names.empty() ? "" : ", ").append(one);
    }
    throw UsageError("--inject: expected NAME=TEXT with one of " + names + ", found " +
                     excerpt(argument));
  }
  return {name, std::string(argument.substr(equals + 1))};
}

void perform(Lab& lab, Step const& step) {
  switch (step.kind) {
  case Step::Kind::clear: lab.clearFaults(); break;
  case Step::Kind::trigger: lab.trigger(); break;
  case Step::Kind::advance: lab.advance(std::chrono::duration<double>(step.seconds)); break;
  }
}

}  // namespace lab
