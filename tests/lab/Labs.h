// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared by the tests of the program: runs of the whole program.

#include "lab/Kit.h"
#include "lab/Program.h"
#include "testkit/Labs.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lab::test {

using namespace PolicyMapTestKit::test;

// The output and exit status of a run of the program.
struct Outcome {
  ExitStatus status{};
  std::string out;
  std::string err;

  nlohmann::ordered_json json() const { return nlohmann::ordered_json::parse(out); }
};

// Runs the program in this process.
inline Outcome runLab(std::vector<std::string> const& arguments, TextStyle style = {}) {
  std::vector<char const*> argv{"policymap-lab"};
  for (std::string const& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  std::ostringstream out;
  std::ostringstream err;
  ExitStatus const status =
      runProgram(static_cast<int>(argv.size()), argv.data(), Console{out, err, style, false});
  return {status, out.str(), err.str()};
}

// A folder of input files that is removed after the test.
class InputFiles : public testing::Test {
 protected:
  InputFiles() {
    std::string pattern = (std::filesystem::temp_directory_path() / "lab-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~InputFiles() override { std::filesystem::remove_all(folder_); }

  // Writes a file and returns its path.
  std::string file(std::string const& name, std::string const& text) const {
    std::string const path = (folder_ / name).string();
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  std::string folder() const { return folder_.string(); }

 private:
  std::filesystem::path folder_;
};

}  // namespace lab::test
