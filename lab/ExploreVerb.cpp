// SPDX-License-Identifier: Apache-2.0
#include "lab/ExploreVerb.h"

#include "lab/Input.h"
#include "lab/Progress.h"
#include "lab/RunFileVerbs.h"

#include <iomanip>
#include <stdexcept>

namespace lab {

namespace {

constexpr std::size_t mostSteps = 10000000;

void printWalk(Console const& console, std::uint64_t seed, WalkResult const& walk) {
  console.out << "seed " << seed << ": " << counted(walk.steps, "step") << ", "
              << counted(walk.edits, "edit") << " (" << walk.refused << " more invalid), "
              << counted(walk.faults, "planned fault") << " (" << walk.injected << " injected), "
              << counted(walk.checks, "check") << ", " << counted(walk.run.found.size(), "finding")
              << "\n";
}

}  // namespace

ExploreVerb::ExploreVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "explore", "Load as run does, then edit at random while calls fail, and look\n"
                     "whether all becomes as it is in a new lab")),
      arguments_(*command_) {
  arguments_.addInputOptions();
  char const* const group = "Walk";
  command_->add_option("--seed", options_.seed, "Which walk; the same seed gives the same walk")
      ->type_name("S")
      ->capture_default_str()
      ->group(group);
  command_->add_option("--steps", options_.steps, "Random steps of each walk")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, mostSteps))
      ->capture_default_str()
      ->group(group);
  command_->add_option("--walks", walks_, "This many walks, with the seeds S, S+1, ...")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, mostSteps))
      ->capture_default_str()
      ->group(group);
  command_
      ->add_option("--record", recordFile_,
                   "Write the shortened walk with the first finding to a file")
      ->type_name("FILE")
      ->group(group);
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

ExitStatus ExploreVerb::run(Console const& console) {
  arguments_.check(0);
  WalkOptions options = options_;
  options.begin = {arguments_.readOptions(), arguments_.reading(), arguments_.readInputs()};
  Progress progress(console.progress ? &console.err : nullptr);
  progress.begin("exploring", options.steps * walks_);
  for (std::size_t walked = 0; walked != walks_; ++walked, ++options.seed) {
    WalkResult result;
    try {
      result = walk(options, [&] { progress.step(); });
    } catch (std::invalid_argument const& error) {
      throw UsageError(error.what());
    }
    progress.clear();
    printWalk(console, options.seed, result);
    if (!result.run.found.empty()) {
      minimiseAndPrint(console, std::move(result.run.script), recordFile_);
      return ExitStatus::notProgrammed;
    }
  }
  return ExitStatus::success;
}

}  // namespace lab
