// SPDX-License-Identifier: Apache-2.0
#include "lab/ShellVerb.h"

#include "lab/Input.h"
#include "lab/Kit.h"
#include "lab/Prompt.h"
#include "lab/Trial.h"
#include "testkit/text/ShownText.h"
#include "testkit/text/SourceText.h"

#include <Kor/Assert.h>
#include <Kor/EventLoop.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <unistd.h>
#include <utility>

namespace lab {

namespace {

constexpr std::size_t longestLine = std::size_t{1} << 20U;

// The message of an exception, safe for the terminal.
std::string messageOf(std::exception const& error) {
  return shownText(shortened(error.what()));
}

// The lines of a script, with a limit on their length.
class ScriptLines {
 public:
  explicit ScriptLines(std::istream& script) : script_(script), buffer_(longestLine + 1) {}

  std::size_t number() const { return number_; }
  std::string_view line() const { return line_; }
  // Returns false at the end. Raises ShellError for a line of more than `longestLine` bytes.
  bool next() {
    script_.getline(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    auto size = static_cast<std::size_t>(script_.gcount());
    if (script_.fail() && size == 0) {
      return false;
    }
    ++number_;
    if (script_.fail()) {
      throw ShellError("expected a line of at most " + std::to_string(longestLine) + " bytes");
    }
    size -= script_.eof() ? 0 : 1;  // the line feed
    line_ = std::string_view(buffer_.data(), size);
    if (number_ == 1) {
      line_ = withoutByteOrderMark(line_);
    }
    return true;
  }

 private:
  std::istream& script_;
  std::vector<char> buffer_;
  std::string_view line_;
  std::size_t number_ = 0;
};

// While it exists, an assertion ends the process like a failing script line.
class ScriptAssertions {
 public:
  ScriptAssertions(std::string const& name, ScriptLines const& lines, Console const& console)
      : name_(name),
        lines_(lines),
        console_(console),
        outer_(std::exchange(current_, this)),
        before_(Kor::assertionHandlerIs(end)) {}
  ScriptAssertions(ScriptAssertions const&) = delete;
  ScriptAssertions& operator=(ScriptAssertions const&) = delete;
  ~ScriptAssertions() {
    Kor::assertionHandlerIs(before_);
    current_ = outer_;
  }

  ExitStatus fail(std::string_view message) const {
    console_.out.flush();
    console_.err << shownText(name_) << "line " << lines_.number() << ": " << message << "\n"
                 << std::flush;
    return ExitStatus::badInput;
  }

 private:
  // Skips the destructors of static objects, which could access the broken state.
  static void end(Kor::AssertionFailure const& failure) {
    std::_Exit(static_cast<int>(current_->fail(shownText(toText(failure)))));
  }

  static ScriptAssertions* current_;

  std::string const& name_;
  ScriptLines const& lines_;
  Console const& console_;
  ScriptAssertions* outer_;
  Kor::AssertionHandler before_;
};

ScriptAssertions* ScriptAssertions::current_ = nullptr;

// While it exists, Ctrl-C does not end this process. It ends the copy in which a line is tried.
class InterruptsIgnored {
 public:
  InterruptsIgnored() : before_(std::signal(SIGINT, SIG_IGN)) {}
  InterruptsIgnored(InterruptsIgnored const&) = delete;
  InterruptsIgnored& operator=(InterruptsIgnored const&) = delete;
  ~InterruptsIgnored() { std::signal(SIGINT, before_); }

 private:
  void (*before_)(int);
};

ExitStatus runTerminal(Console const& console) {
  InterruptsIgnored const interrupts;
  Shell shell(console);
  Prompt prompt("> ", [&](std::string_view line) {
    std::vector<std::string> found;
    auto const complete = [&] { found = shell.completions(line); };
    if (endOf(complete).empty()) {
      complete();
    }
    return found;
  });
  std::string const file =
      historyFile([](char const* name) -> char const* { return std::getenv(name); });
  if (!file.empty()) {
    prompt.loadHistory(file);
  }
  console.out << "Objects by name; `help` shows how.\n" << std::flush;
  ExitStatus const status = runPrompt(
      shell, [&] { return prompt.next(); }, console);
  if (!file.empty() && !prompt.saveHistory(file)) {
    console.err << "policymap-lab: the history cannot be written to " << shownText(file) << "\n";
  }
  return status;
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
      return runTerminal(console);
    }
    ExitStatus const status = runScript(std::cin, console);
    if (std::ferror(stdin) != 0) {
      throw UsageError("standard input cannot be read");
    }
    return status;
  }
  Shell shell(console);
  for (std::string const& file : files_) {
    if (file == standardInput) {
      ExitStatus const status = runScript(shell, std::cin, "standard input: ", console);
      if (status != ExitStatus::success) {
        return status;
      }
      continue;
    }
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
  ScriptLines lines(script);
  ScriptAssertions const assertions(name, lines, console);
  try {
    while (lines.next() && !Shell::quits(lines.line())) {
      shell.execute(std::string(lines.line()));
    }
  } catch (std::exception const& error) {
    return assertions.fail(messageOf(error));
  }
  return ExitStatus::success;
}

ExitStatus runPrompt(Shell& shell, NextLine const& next, Console const& console) {
  auto const tell = [&](std::string const& message) {
    console.err << tinted(console.style, Tint::bad, message) << "\n";
  };
  for (auto line = next(); line && !Shell::quits(*line); line = next()) {
    try {
      auto const action = [&] { shell.execute(*line); };
      std::string const end = endOf(action);
      if (end.empty()) {
        action();
      } else {
        tell(end);
      }
    } catch (std::exception const& error) {
      tell(messageOf(error));
    }
    console.out << std::flush;
  }
  return ExitStatus::success;
}

}  // namespace lab
