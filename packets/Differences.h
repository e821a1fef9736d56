// SPDX-License-Identifier: Apache-2.0
#pragma once

// Differences: the packets that two sides treat differently, found among all packets of an option.

#include "packets/Export.h"
#include "packets/PacketSet.h"
#include "packets/Subject.h"
#include "packets/engine/PairSearch.h"
#include "packets/space/Packet.h"
#include "testkit/text/Json.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMapPackets {

enum class Verdict : std::uint8_t {
  same,           // for every packet
  different,      // at least for the packets that are shown
  undecided,      // the budget is spent, and no difference was found
  notProgrammed,  // or not as configured, for a reason that the lab knows
};
// "the same", "different", "undecided", "not programmed".
[[nodiscard]] POLICYMAPPACKETS_API std::string_view toText(Verdict verdict);

// `different` if one result is; otherwise `undecided` if one is; otherwise `same`.
template <class Results>
[[nodiscard]] Verdict worstOf(Results const& results) {
  Verdict worst = Verdict::same;
  for (auto const& result : results) {
    if (result.verdict == Verdict::different) {
      return Verdict::different;
    }
    worst = result.verdict == Verdict::undecided ? Verdict::undecided : worst;
  }
  return worst;
}

struct SearchOptions {
  Selection selection = {};
  DenyReading deny = DenyReading::nextClass;
  // Steps of the search for each policy and option.
  std::uint64_t budget = Budget::usual;
  // The number of differences that are shown; all are counted.
  std::size_t first = 1;
  // Packets that are not compared.
  std::vector<PacketSet> except = {};
};

// Packets that the same two rules decide differently.
struct Difference {
  Packet packet;       // the smallest
  std::string around;  // packets that are treated the same, as the match of a rule
  Count packets;       // that the two rules decide
  // What decides. None: no rule.
  std::optional<DecidingRule> one;
  std::optional<DecidingRule> other;
  Treatment oneAs;
  Treatment otherAs;
};

struct POLICYMAPPACKETS_API Differences {
  // The first ones, by their packets.
  std::vector<Difference> differences = {};
  // Of all differences. A lower bound if the budget is spent.
  Count packets = {};
  bool isSpent = false;
  std::size_t pairs = 0;
  // By class, of one side and of the other; empty for no class.
  std::map<std::pair<std::string, std::string>, Count> moved = {};

  // different, undecided or the same.
  [[nodiscard]] Verdict verdictOfSearch() const;
};

// Two subjects of the same option, which may be the same.
struct Compared {
  Subject const& subject;
  Said said;
};
[[nodiscard]] POLICYMAPPACKETS_API Differences differencesOf(Compared const& one,
                                                             Compared const& other,
                                                             SearchOptions const& options);

// The names of the two sides in texts.
struct SideNames {
  std::string_view one;
  std::string_view other;
};
// "2^150 packets" and "1 packet".
[[nodiscard]] POLICYMAPPACKETS_API std::string packetsText(Count const& count);
// "class web", "no class".
[[nodiscard]] POLICYMAPPACKETS_API std::string classText(std::string const& name);
// Each difference with its packet, rules and set, in lines that begin with a line feed.
POLICYMAPPACKETS_API void printEach(std::ostream& out, Differences const& found,
                                    SideNames const& names);
// Adds as far as there are any "packets", "log2Packets", "atLeast", "pairs", "moved" and
// "differences", whose members begin with the names of the sides. Counts are texts: they exceed the
// numbers of JSON.
POLICYMAPPACKETS_API void addTo(PolicyMapTestKit::Text::Json& json, Differences const& found,
                                SideNames const& names);
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(DecidingRule const& rule);
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(Treatment const& treatment);

}  // namespace PolicyMapPackets
