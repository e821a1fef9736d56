// SPDX-License-Identifier: Apache-2.0
#include "lab/ShellVerb.h"

#include "lab/Prompt.h"
#include "lab/Shell.h"

#include <Kor/EventLoop.h>

#include <iostream>
#include <unistd.h>

namespace lab {

namespace {

ExitStatus runPrompt(Console const& console) {
  Shell shell(console);
  Prompt prompt("> ", [&](std::string_view line) { return shell.completions(line); });
  console.out << "Objects by name; `help` shows how.\n" << std::flush;
  while (std::optional<std::string> const line = prompt.next()) {
    if (*line == "quit") {
      break;
    }
    try {
      shell.execute(*line);
    } catch (std::exception const& error) {
      console.err << tinted(console.style, Tint::bad, error.what()) << "\n";
    }
    console.out << std::flush;
  }
  return ExitStatus::success;
}

}  // namespace

ShellVerb::ShellVerb(CLI::App& program)
    : command_(program.add_subcommand("shell", "Build, read, write and call objects by name, at a\n"
                                               "prompt or from a script on standard input")) {}

ExitStatus ShellVerb::run(Console const& console) {
  Kor::EventLoop::global().virtualTimeIs(true);
  return isatty(STDIN_FILENO) == 1 ? runPrompt(console) : runScript(std::cin, console);
}

ExitStatus runScript(std::istream& script, Console const& console) {
  Shell shell(console);
  std::string line;
  for (std::size_t number = 1; std::getline(script, line); ++number) {
    if (line == "quit") {
      break;
    }
    try {
      shell.execute(line);
    } catch (std::exception const& error) {
      console.out.flush();
      console.err << "line " << number << ": " << error.what() << "\n";
      return ExitStatus::badInput;
    }
  }
  return ExitStatus::success;
}

}  // namespace lab
