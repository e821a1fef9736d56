// SPDX-License-Identifier: Apache-2.0
#include "lab/TestSource.h"

#include "lab/Console.h"
#include "lab/Faults.h"
#include "lab/LabArguments.h"
#include "lab/RunVerb.h"
#include "testkit/runs/RunFile.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

namespace lab {

namespace {

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// C++ -------------------------------------------------------------------------------------------

// A literal that may have several lines.
std::string cppText(std::string const& text) {
  bool const isPlain = text.find_first_of("\n\"\\") == std::string::npos;
  if (isPlain) {
    return "\"" + text + "\"";
  }
  std::string delimiter;
  while (text.find(")" + delimiter + "\"") != std::string::npos) {
    delimiter += 'x';
  }
  return "R\"" + delimiter + "(" + text + ")" + delimiter + "\"";
}

std::string cppName(std::string const& name) {
  std::string result;
  bool begins = true;
  for (char const c : name) {
    if (isWordCharacter(c)) {
      result += begins ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    begins = !isWordCharacter(c);
  }
  return "Run" + result;
}

std::string cppKind(Step::Kind kind) {
  return "Step::Kind::" + std::string(nameOf(kind));
}

char const* cppReading(Reading reading) {
  return reading == Reading::strict    ? "strict"
         : reading == Reading::lenient ? "lenient"
                                       : "widening";
}

std::string cppStep(Step const& step) {
  std::ostringstream out;
  switch (step.kind) {
  case Step::Kind::load:
    if (step.reading) {
      out << "{.kind = " << cppKind(step.kind) << ", .name = " << cppText(step.name)
          << ", .text = " << cppText(step.text)
          << ", .reading = Text::Reading::" << cppReading(*step.reading) << "}";
      break;
    }
    out << "Step::load(" << cppText(step.name) << ", " << cppText(step.text) << ")";
    break;
  case Step::Kind::faults: out << "Step::faults(" << cppText(step.text) << ")"; break;
  case Step::Kind::advance: out << "Step::advance(" << step.seconds << ")"; break;
  case Step::Kind::rules:
    out << "{.kind = " << cppKind(step.kind) << ", .name = " << cppText(step.name)
        << ", .text = " << cppText(step.text) << ", .layout = {" << step.layout.classes << ", "
        << step.layout.interfaces << "}";
    if (step.portRanges == PortRanges::onAnyProtocol) {
      out << ", .portRanges = Text::PortRanges::onAnyProtocol";
    }
    out << "}";
    break;
  default:
    out << "{.kind = " << cppKind(step.kind);
    if (!step.text.empty()) {
      out << ", .text = " << cppText(step.text);
    }
    if (step.times != 1) {
      out << ", .times = " << step.times;
    }
    out << "}";
  }
  return out.str();
}

void writeCppOptions(std::ostream& out, LabOptions const& options) {
  LabOptions const usual;
  out << "  LabOptions options;\n";
  for (LabSwitch const& each : labSwitches()) {
    if (options.*each.value != usual.*each.value) {
      out << "  options." << each.name << " = " << (options.*each.value ? "true" : "false")
          << ";\n";
    }
  }
  if (options.asyncDelay) {
    out << "  options.asyncDelay = " << *options.asyncDelay << ";\n";
  }
  for (Fault const& fault : options.faults) {
    out << "  options.faults.push_back({" << cppText(fault.name) << ", " << cppText(fault.text)
        << "});\n";
  }
  if (options.plan != FaultPlan()) {
    out << "  options.plan = parseFaultPlan(" << cppText(toText(options.plan)) << ");\n";
  }
  for (StrictnessSwitch const& each : strictnessSwitches()) {
    if (options.strictness.*each.value != usual.strictness.*each.value) {
      out << "  options.strictness." << each.name << " = "
          << (options.strictness.*each.value ? "true" : "false") << ";\n";
    }
  }
  if (std::string const actions = options.actions.text(); !actions.empty()) {
    out << "  options.actions = Text::ActionMapping(Text::SourceText(\"actions\", "
        << cppText(actions) << "));\n";
  }
}

void writeCppList(std::ostream& out, std::vector<std::string> const& texts) {
  for (std::string const& text : texts) {
    out << "      " << cppText(text) << ",\n";
  }
}

// The command line --------------------------------------------------------------------------------

struct CommandLine {
  std::vector<std::string> arguments;
  std::map<std::string, std::string> files;  // content by name
};

// A name for the content, which differs from those of other contents.
std::string fileFor(CommandLine& line, std::string const& name, std::string content) {
  std::string plain = name.substr(name.find_last_of('/') + 1);
  std::replace_if(
      plain.begin(), plain.end(),
      [](char c) { return !isWordCharacter(c) && c != '.' && c != '_' && c != '-'; }, '-');
  if (plain.empty() || !isWordCharacter(plain.front())) {
    plain.insert(0, "file");
  }
  if (!content.ends_with('\n')) {
    content += '\n';
  }
  std::string unique = plain;
  for (int number = 2; line.files.contains(unique) && line.files[unique] != content; ++number) {
    unique = std::to_string(number) + "-" + plain;
  }
  line.files[unique] = std::move(content);
  return unique;
}

std::string inOneLine(std::string text) {
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
    text.replace(at, 1, "; ");
  }
  return text;
}

void addStep(CommandLine& line, Step const& step, bool isFirst) {
  auto& arguments = line.arguments;
  if (step.kind == Step::Kind::rules) {
    if (!isFirst) {
      throw UsageError("a filter set after other steps cannot be a command line");
    }
    arguments.insert(arguments.end(), {"--rules", fileFor(line, step.name, step.text), "--classes",
                                       std::to_string(step.layout.classes), "--interfaces",
                                       std::to_string(step.layout.interfaces)});
    if (step.portRanges == PortRanges::onAnyProtocol) {
      arguments.emplace_back("--ports-on-any-protocol");
    }
    return;
  }
  if (step.reading) {
    throw UsageError(toText(step) + " in a reading of its own cannot be a command line");
  }
  if (step.kind == Step::Kind::load) {
    std::string const file = fileFor(line, step.name, step.text);
    if (isFirst) {
      arguments.push_back(file);
    } else {
      arguments.insert(arguments.end(), {"--then", "load " + file});
    }
    return;
  }
  if (step.kind == Step::Kind::advance) {
    constexpr std::string_view word = "advance ";
    arguments.insert(arguments.end(), {"--advance", toText(step).substr(word.size())});
    return;
  }
  arguments.insert(arguments.end(), {"--then", inOneLine(toText(step))});
}

CommandLine commandLineOf(Script const& script) {
  CommandLine line;
  line.arguments = {"run"};
  for (std::string& flag : LabArguments::flagsOf(script.options, script.reading)) {
    line.arguments.push_back(std::move(flag));
  }
  auto& arguments = line.arguments;
  LabOptions const& options = script.options;
  if (options.strictness != Strictness()) {
    throw UsageError("a strictness other than the usual one cannot be a command line");
  }
  if (std::string const actions = options.actions.text(); !actions.empty()) {
    arguments.insert(arguments.end(), {"--actions", fileFor(line, "actions", actions)});
  }
  for (Fault const& fault : options.faults) {
    arguments.insert(arguments.end(), {"--inject", fault.name + "=" + fault.text});
  }
  if (options.plan != FaultPlan()) {
    arguments.insert(arguments.end(), {"--faults", inOneLine(toText(options.plan))});
  }
  bool isFirst = true;
  bool loads = false;
  for (Step const& step : script.steps) {
    bool const isLoad = step.kind == Step::Kind::load || step.kind == Step::Kind::rules;
    if (!loads && step.kind == Step::Kind::faults) {
      arguments.insert(arguments.end(), {"--faults", inOneLine(step.text)});
      continue;
    }
    if (!loads && !isLoad) {
      throw UsageError(toText(step) + " before anything is loaded cannot be a command line");
    }
    loads = true;
    isFirst = isFirst && isLoad;
    addStep(line, step, isFirst);
  }
  if (!loads) {
    throw UsageError("a run that loads nothing cannot be a command line");
  }
  arguments.insert(arguments.end(), {"--json", "--journal", "json"});
  return line;
}

// A new folder that is the current one for as long as it exists.
class TemporaryFolder {
 public:
  TemporaryFolder() : before_(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "policymap-lab-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), name);
    }
    folder_ = name;
    std::filesystem::current_path(folder_);
  }
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
    std::filesystem::remove_all(folder_, ignored);
  }

 private:
  std::filesystem::path before_;
  std::filesystem::path folder_;
};

struct Printed {
  std::string out;
  int status = 0;
};

Printed runIn(CommandLine const& line) {
  TemporaryFolder const folder;
  for (auto const& [name, content] : line.files) {
    std::ofstream(name, std::ios::binary) << content;
  }
  std::ostringstream out;
  std::ostringstream err;
  CLI::App program;
  RunVerb verb(program, RunVerb::Output::records);
  std::vector<std::string> reversed(line.arguments.rbegin(), line.arguments.rend());
  program.parse(std::move(reversed));
  ExitStatus const status = verb.run({out, err, {}, false});
  return {out.str(), static_cast<int>(status)};
}

std::string shellText(std::string const& text) {
  bool const isPlain = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return isWordCharacter(c) || c == '.' || c == '_' || c == '-' || c == '=' || c == '/';
  });
  if (isPlain) {
    return text;
  }
  std::string quoted = "'";
  for (char const c : text) {
    quoted += c == '\'' ? "'\\''" : std::string(1, c);
  }
  return quoted + "'";
}

void writeShellFile(std::ostream& out, std::string const& name, std::string const& content) {
  std::string end = "END_OF_FILE";
  while (("\n" + content).find("\n" + end + "\n") != std::string::npos) {
    end += '_';
  }
  out << "cat >" << shellText(name) << " <<'" << end << "'\n" << content << end << "\n\n";
}

void writeShell(std::ostream& out, std::string const& name, CommandLine const& line,
                Printed const& printed) {
  out << "#!/usr/bin/env bash\n"
         "# Made of "
      << name
      << ": runs policymap-lab, and expects what it printed then.\n"
         "# POLICYMAP_LAB is the program; without it, it is searched in PATH.\n"
         "set -euo pipefail\n"
         "lab=$(realpath \"$(command -v \"${POLICYMAP_LAB:-policymap-lab}\")\")\n"
         "folder=$(mktemp -d)\n"
         "trap 'rm -rf \"$folder\"' EXIT\n"
         "cd \"$folder\"\n\n";
  for (auto const& [file, content] : line.files) {
    writeShellFile(out, file, content);
  }
  writeShellFile(out, "expected", printed.out);
  out << "status=0\n\"$lab\"";
  for (std::string const& argument : line.arguments) {
    out << " " << shellText(argument);
  }
  out << " >printed || status=$?\ndiff expected printed\nif [[ $status != " << printed.status
      << " ]]; then\n  echo \"the exit status is $status, not " << printed.status
      << "\" >&2\n  exit 1\nfi\n";
}

std::string pythonText(std::string const& text) {
  bool const isRaw = text.find("\"\"\"") == std::string::npos &&
                     text.find_first_of("\\\r") == std::string::npos && text.ends_with('\n');
  // A JSON text is a Python literal, too.
  return isRaw && std::count(text.begin(), text.end(), '\n') > 1 ? "\"\"\"\\\n" + text + "\"\"\""
                                                                 : Json(text).text();
}

void writePython(std::ostream& out, std::string const& name, CommandLine const& line,
                 Printed const& printed) {
  out << "#!/usr/bin/env python3\n"
         "\"\"\"Made of "
      << name
      << ": runs policymap-lab, and expects what it printed then.\n\n"
         "POLICYMAP_LAB is the program; without it, it is searched in PATH.\n\"\"\"\n"
         "import json\nimport os\nimport pathlib\nimport shutil\nimport subprocess\n"
         "import tempfile\nimport unittest\n\n"
         "FILES = {\n";
  for (auto const& [file, content] : line.files) {
    out << "    " << Json(file).text() << ": " << pythonText(content) << ",\n";
  }
  out << "}\nARGUMENTS = [\n";
  for (std::string const& argument : line.arguments) {
    out << "    " << Json(argument).text() << ",\n";
  }
  out << "]\nSTATUS = " << printed.status << "\nPRINTED = [\n";
  std::istringstream lines(printed.out);
  for (std::string text; std::getline(lines, text);) {
    out << "    " << Json(text).text() << ",\n";
  }
  out << "]\n\n\n"
         "class RecordedRun(unittest.TestCase):\n"
         "    maxDiff = None\n\n"
         "    def test_prints_the_same(self):\n"
         "        lab = shutil.which(os.environ.get(\"POLICYMAP_LAB\", \"policymap-lab\"))\n"
         "        self.assertIsNotNone(lab, \"policymap-lab is neither in PATH nor named\")\n"
         "        with tempfile.TemporaryDirectory() as folder:\n"
         "            for name, content in FILES.items():\n"
         "                pathlib.Path(folder, name).write_text(content, encoding=\"utf-8\")\n"
         "            done = subprocess.run([os.path.abspath(lab), *ARGUMENTS], cwd=folder,\n"
         "                                  stdout=subprocess.PIPE, encoding=\"utf-8\", "
         "check=False)\n"
         "        self.assertEqual(done.stdout.splitlines(), PRINTED)\n"
         "        self.assertEqual(done.returncode, STATUS)\n"
         "        json.loads(done.stdout)\n\n\n"
         "if __name__ == \"__main__\":\n"
         "    unittest.main()\n";
}

}  // namespace

void writeCppTest(std::ostream& out, std::string const& name, Script const& script) {
  CaughtAssertions const assertions;
  LabOptions options = script.options;
  options.journal = SIZE_MAX;
  ScriptRun run(options, script.reading);
  bool isDone = true;
  out << "// Made of " << name << ": does what was done, and expects what happened then.\n"
      << "#include \"testkit/GoogleTest.h\"\n"
         "#include \"testkit/runs/ScriptRun.h\"\n\n"
         "#include <gmock/gmock.h>\n\n"
         "using namespace PolicyMapTestKit;\n\n"
         "TEST(Recorded, "
      << cppName(name) << ") {\n";
  writeCppOptions(out, script.options);
  out << "  options.journal = SIZE_MAX;\n"
         "  CaughtAssertions const assertions;\n"
         "  ScriptRun run(options, Text::Reading::"
      << cppReading(script.reading) << ");\n";
  for (std::size_t i = 0; isDone && i != script.steps.size(); ++i) {
    isDone = run.tryTo(script.steps[i]);
    out << (isDone ? "  run.perform(" : "  EXPECT_FALSE(run.tryTo(") << cppStep(script.steps[i])
        << (isDone ? ");\n" : "));\n");
  }
  run.end();
  out << "  run.end();\n";
  std::vector<std::string> found;
  for (Irregularity const& each : run.irregularities()) {
    found.push_back(each.text);
  }
  out << "\n  std::vector<std::string> irregular;\n"
         "  for (Irregularity const& each : run.irregularities()) {\n"
         "    irregular.push_back(each.text);\n"
         "  }\n";
  if (found.empty()) {
    out << "  EXPECT_THAT(irregular, testing::IsEmpty());\n";
  } else {
    out << "  EXPECT_EQ(irregular, (std::vector<std::string>{\n";
    writeCppList(out, found);
    out << "  }));\n";
  }
  out << "  EXPECT_EQ(run.lab().journal().lines(), (std::vector<std::string>{\n";
  writeCppList(out, run.lab().journal().lines());
  out << "  }));\n}\n";
}

void writeProgramTest(std::ostream& out, std::string const& name, Script const& script,
                      ProgramTest form) {
  CommandLine const line = commandLineOf(script);
  Printed const printed = runIn(line);
  if (form == ProgramTest::shell) {
    writeShell(out, name, line, printed);
  } else {
    writePython(out, name, line, printed);
  }
}

}  // namespace lab
