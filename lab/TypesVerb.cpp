// SPDX-License-Identifier: Apache-2.0
#include "lab/TypesVerb.h"

#include "lab/Kit.h"
#include "lab/TypeListing.h"
#include "testkit/text/ShownText.h"

#include <Kor/ByName.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace lab {

namespace {

using Types = std::vector<Kor::KorType const*>;

void writePages(std::filesystem::path const& folder, Types const& types) {
  std::error_code failed;
  std::filesystem::create_directories(folder, failed);
  for (auto const& [file, text] : referencePages(types)) {
    std::ofstream out(folder / file, std::ios::binary);
    if (!(out << text).flush()) {
      throw UsageError((folder / file).string() + " cannot be written");
    }
  }
}

}  // namespace

TypesVerb::TypesVerb(CLI::App& program)
    : command_(program.add_subcommand("types", "List the types and attributes that can be reached\n"
                                               "by name")) {
  command_->add_option("name", name_, "One type, qualified or not, with its attributes")
      ->type_name("NAME");
  CLI::Option* const json = command_->add_flag("--json", json_, "Print one JSON object");
  command_->add_option("--markdown", folder_, "Write reference pages into this folder")
      ->type_name("FOLDER")
      ->excludes(json);
}

ExitStatus TypesVerb::run(Console const& console) {
  Types types;
  try {
    types = name_.empty() ? Kor::KorType::all() : typesNamed(name_);
  } catch (Kor::RangeException const& error) {
    throw UsageError(shortened(error.what()));
  }
  if (!folder_.empty()) {
    writePages(folder_, types);
  } else if (json_) {
    console.out << typesAsJson(types).text(2) << "\n";
  } else if (name_.empty()) {
    printTypes(types, console);
  } else {
    for (Kor::KorType const* const type : types) {
      printType(*type, console);
    }
  }
  return ExitStatus::success;
}

}  // namespace lab
