// SPDX-License-Identifier: Apache-2.0
#include "Acl/Words.h"

#include <array>

namespace Acl {
namespace {

constexpr std::array<std::string_view, 8> flagNames{"fin", "syn", "rst", "psh",
                                                    "ack", "urg", "ece", "cwr"};

}  // namespace

void say(Words& words, std::string_view /*label*/, TcpFlags flags) {
  for (unsigned bit = 0; bit < flagNames.size(); ++bit) {
    if ((flags.mask() >> bit & 1U) != 0) {
      bool const set = (flags.value() >> bit & 1U) != 0;
      words.add((set ? "+" : "-") + std::string(flagNames[bit]));
    }
  }
}

}  // namespace Acl
