// SPDX-License-Identifier: Apache-2.0
#pragma once

// The words of a fault plan, for those who read and those who write it.

#include "testkit/faults/FaultPlan.h"

#include <array>
#include <string_view>

namespace PolicyMapTestKit::FaultWords {

template <class Value>
struct Word {
  Value value;
  std::string_view word;
};

inline constexpr std::array occurrences{
    Word<Occurrence::Kind>{Occurrence::Kind::nth, "nth"},
    Word<Occurrence::Kind>{Occurrence::Kind::first, "first"},
    Word<Occurrence::Kind>{Occurrence::Kind::from, "from"},
    Word<Occurrence::Kind>{Occurrence::Kind::every, "every"},
};

inline constexpr std::array effects{
    Word<FaultEffect>{FaultEffect::before, "before"},
    Word<FaultEffect>{FaultEffect::after, "after"},
    Word<FaultEffect>{FaultEffect::throws, "throws"},
    Word<FaultEffect>{FaultEffect::hold, "hold"},
    Word<FaultEffect>{FaultEffect::drop, "drop"},
    Word<FaultEffect>{FaultEffect::duplicate, "duplicate"},
    Word<FaultEffect>{FaultEffect::delay, "delay"},
};

struct Limit {
  std::string_view word;
  std::optional<std::uint64_t> Capacity::*limit;
};
inline constexpr std::array limits{
    Limit{"rules", &Capacity::rules},
    Limit{"rules-per-policy", &Capacity::rulesPerPolicy},
    Limit{"range-checkers", &Capacity::rangeCheckers},
    Limit{"interfaces-per-policy", &Capacity::interfacesPerPolicy},
    Limit{"policies", &Capacity::policies},
};

// The word of a value; empty if it has none.
constexpr std::string_view of(Occurrence::Kind kind) {
  for (auto const& each : occurrences) {
    if (each.value == kind) {
      return each.word;
    }
  }
  return {};
}
constexpr std::string_view of(FaultEffect effect) {
  for (auto const& each : effects) {
    if (each.value == effect) {
      return each.word;
    }
  }
  return {};
}

constexpr bool isAboutResults(FaultEffect effect) {
  return effect == FaultEffect::hold || effect == FaultEffect::drop ||
         effect == FaultEffect::duplicate || effect == FaultEffect::delay;
}

}  // namespace PolicyMapTestKit::FaultWords
