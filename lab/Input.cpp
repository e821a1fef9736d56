// SPDX-License-Identifier: Apache-2.0
#include "lab/Input.h"

#include <array>
#include <fstream>
#include <iostream>

namespace lab {

SourceText readInput(std::string const& file) {
  if (file != standardInput) {
    return SourceText::fromFile(file);
  }
  std::string const name = "standard input";
  std::string content;
  std::array<char, 65536> block{};
  do {
    std::cin.read(block.data(), block.size());
    content.append(block.data(), static_cast<std::size_t>(std::cin.gcount()));
    if (content.size() > SourceText::largestFile) {
      throw InputError({std::make_shared<std::string const>(name), 0, 0},
                       "at most " + std::to_string(SourceText::largestFile) + " bytes",
                       "more of them");
    }
  } while (std::cin);
  return {name, std::move(content)};
}

void writeOutput(Console const& console, std::string const& file,
                 std::function<void(std::ostream&)> const& write) {
  if (file == standardInput) {
    write(console.out);
    return;
  }
  std::ofstream out(file, std::ios::binary);
  write(out);
  if (!out.flush()) {
    throw UsageError(file + " cannot be written");
  }
}

}  // namespace lab
