// SPDX-License-Identifier: Apache-2.0
#include "lab/Program.h"

#include "lab/RunVerb.h"
#include "lab/ShellVerb.h"
#include "lab/SourceText.h"
#include "lab/TypesVerb.h"

namespace lab {

namespace {

ExitStatus fail(Console const& console, std::string_view message) {
  console.err << "policymap-lab: " << message << "\n";
  return ExitStatus::badInput;
}

ExitStatus runVerb(std::vector<std::unique_ptr<Verb>> const& verbs, Console const& console) {
  for (std::unique_ptr<Verb> const& verb : verbs) {
    if (verb->command().parsed()) {
      return verb->run(console);
    }
  }
  return ExitStatus::success;
}

}  // namespace

std::vector<std::unique_ptr<Verb>> makeVerbs(CLI::App& program) {
  std::vector<std::unique_ptr<Verb>> verbs;
  verbs.push_back(std::make_unique<RunVerb>(program));
  verbs.push_back(std::make_unique<TypesVerb>(program));
  verbs.push_back(std::make_unique<ShellVerb>(program));
  return verbs;
}

ExitStatus runProgram(int argc, char const* const* argv, Console const& console) {
  CLI::App program("Programs policies on test doubles and shows what was recorded.",
                   "policymap-lab");
  program.require_subcommand(1);
  program.get_formatter()->column_width(36);
  std::vector<std::unique_ptr<Verb>> const verbs = makeVerbs(program);
  try {
    program.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    // Asking for help is one of them.
    bool const asked = program.exit(error, console.out, console.err) == 0;
    return asked ? ExitStatus::success : ExitStatus::badInput;
  }
  try {
    ExitStatus const status = runVerb(verbs, console);
    if (!console.out.flush()) {
      return fail(console, "the output cannot be written");
    }
    return status;
  } catch (InputError const& error) {
    console.out.flush();
    return fail(console, error.what());
  } catch (UsageError const& error) {
    return fail(console, error.what());
  }
}

}  // namespace lab
