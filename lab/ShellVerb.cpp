// SPDX-License-Identifier: Apache-2.0
#include "lab/ShellVerb.h"

#include "lab/Prompt.h"

#include <Kor/EventLoop.h>

#include <cstdio>
#include <fstream>
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
                                               "prompt or from a script")) {
  command_->add_option("files", files_, "Scripts; without one, standard input")->type_name("FILE");
}

ExitStatus ShellVerb::run(Console const& console) {
  Kor::EventLoop::global().virtualTimeIs(true);
  if (files_.empty()) {
    if (isatty(STDIN_FILENO) == 1) {
      return runPrompt(console);
    }
    ExitStatus const status = runScript(std::cin, console);
    if (std::ferror(stdin) != 0) {
      throw UsageError("standard input cannot be read");
    }
    return status;
  }
  Shell shell(console);
  for (std::string const& file : files_) {
    std::ifstream script(file);
    ExitStatus const status = runScript(shell, script, file + ": ", console);
    if (!script.is_open() || script.bad()) {
      throw UsageError(file + " cannot be read");
    }
    if (status != ExitStatus::success) {
      return status;
    }
  }
  return ExitStatus::success;
}

ExitStatus runScript(std::istream& script, Console const& console) {
  Shell shell(console);
  return runScript(shell, script, "", console);
}

ExitStatus runScript(Shell& shell, std::istream& script, std::string const& name,
                     Console const& console) {
  std::string line;
  for (std::size_t number = 1; std::getline(script, line); ++number) {
    if (line == "quit") {
      break;
    }
    try {
      shell.execute(line);
    } catch (std::exception const& error) {
      console.out.flush();
      console.err << name << "line " << number << ": " << error.what() << "\n";
      return ExitStatus::badInput;
    }
  }
  return ExitStatus::success;
}

}  // namespace lab
