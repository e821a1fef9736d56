// SPDX-License-Identifier: Apache-2.0
#include "lab/Program.h"

#include "lab/CompareVerb.h"
#include "lab/ExploreVerb.h"
#include "lab/GenerateVerb.h"
#include "lab/Kit.h"
#include "lab/MergeVerb.h"
#include "lab/PacketVerbs.h"
#include "lab/RunFileVerbs.h"
#include "lab/RunVerb.h"
#include "lab/ShellVerb.h"
#include "lab/SimulateVerb.h"
#include "lab/SweepVerb.h"
#include "lab/TypesVerb.h"
#include "testkit/text/ShownText.h"
#include "testkit/text/SourceText.h"

#include <Kor/Trace.h>

#include <utility>

namespace lab {

namespace {

ExitStatus fail(Console const& console, std::string_view message) {
  console.err << "policymap-lab: " << shownText(message) << "\n";
  return ExitStatus::badInput;
}

// Returns `status`, or reports an error if the output could not be written.
ExitStatus finished(Console const& console, ExitStatus status) {
  return console.out.flush() ? status : fail(console, "the output cannot be written");
}

// The default message, with the text of the command line made safe for the terminal.
std::string failureMessage(CLI::App const* program, CLI::Error const& error) {
  std::string const usual = CLI::FailureMessage::simple(program, error);
  std::size_t const size = std::string_view(error.what()).size();
  return shownText(error.what()) + usual.substr(size);
}

// While it exists, trace lines are written to the console's `err`, safe for the terminal. At its
// end, tracing is off.
class ShownTraces {
 public:
  explicit ShownTraces(Console const& console)
      : before_(Kor::traceSinkIs(
            [&err = console.err](std::string_view source, int level, std::string_view text) {
              err << source << "/" << level << ": " << shownText(text) << "\n";
            })) {}
  ShownTraces(ShownTraces const&) = delete;
  ShownTraces& operator=(ShownTraces const&) = delete;
  ~ShownTraces() {
    Kor::traceLevelIs("*", 0);
    Kor::traceSinkIs(std::move(before_));
  }

 private:
  Kor::TraceSink before_;
};

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
  verbs.push_back(std::make_unique<RunVerb>(program, RunVerb::Output::records));
  verbs.push_back(std::make_unique<RunVerb>(program, RunVerb::Output::explanations));
  verbs.push_back(std::make_unique<TraceVerb>(program));
  verbs.push_back(std::make_unique<ProveVerb>(program));
  verbs.push_back(std::make_unique<CompareVerb>(program));
  verbs.push_back(std::make_unique<UnusedVerb>(program));
  verbs.push_back(std::make_unique<SimulateVerb>(program));
  verbs.push_back(std::make_unique<SweepVerb>(program));
  verbs.push_back(std::make_unique<MergeVerb>(program));
  verbs.push_back(std::make_unique<ExploreVerb>(program));
  verbs.push_back(std::make_unique<ReplayVerb>(program));
  verbs.push_back(std::make_unique<MinimiseVerb>(program));
  verbs.push_back(std::make_unique<ExportVerb>(program));
  verbs.push_back(std::make_unique<GenerateVerb>(program));
  verbs.push_back(std::make_unique<TypesVerb>(program));
  verbs.push_back(std::make_unique<ShellVerb>(program));
  return verbs;
}

ExitStatus runProgram(int argc, char const* const* argv, Console const& console) {
  CLI::App program("Programs policies on test doubles and shows what was recorded.",
                   "policymap-lab");
  program.require_subcommand(1);
  program.set_version_flag("--version", "policymap-lab " POLICYMAPLAB_VERSION);
  program.get_formatter()->column_width(36);
  program.failure_message(failureMessage);
  std::vector<std::unique_ptr<Verb>> const verbs = makeVerbs(program);
  ShownTraces const traces(console);
  try {
    program.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    // A request for help or for the version is also raised as an error.
    bool const asked = program.exit(error, console.out, console.err) == 0;
    return asked ? finished(console, ExitStatus::success) : ExitStatus::badInput;
  }
  try {
    return finished(console, runVerb(verbs, console));
  } catch (InputError const& error) {
    console.out.flush();
    return fail(console, error.what());
  } catch (UsageError const& error) {
    return fail(console, error.what());
  }
}

}  // namespace lab
