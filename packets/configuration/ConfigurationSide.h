// SPDX-License-Identifier: Apache-2.0
#pragma once

// ConfigurationSide: a configured policy as an evaluator of regions in three-valued logic: a region
// is in a class, is not, or is cut by a line. A packet is the smallest region.

#include "packets/Export.h"
#include "packets/configuration/ConfiguredPolicy.h"
#include "packets/engine/Side.h"
#include "packets/engine/Treatments.h"

#include <optional>
#include <vector>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API ConfigurationSide final : public Side {
 public:
  // The policy must outlive the side.
  ConfigurationSide(Slice const& slice, ConfiguredPolicy const& policy, Treatments& treatments);

  [[nodiscard]] Outcome decide(Box const& region,
                               std::span<LineIndex const> relevant) const override;

  // The rules of all lines, in order; the same for every slice.
  [[nodiscard]] std::size_t rules() const { return rules_.size(); }
  [[nodiscard]] ConfiguredRule const& rule(std::uint32_t number) const { return *rules_[number]; }

 private:
  // A part of the tree that has the lines from `begin` to `end`, and its parts.
  struct Node {
    MatchTree::Kind kind = MatchTree::Kind::any;
    LineIndex begin = 0;
    LineIndex end = 0;
    std::vector<Node> parts;
  };
  struct Building;
  using Lines = std::span<LineIndex const>;

  static Node build(MatchTree const& tree, Building& building, bool isCandidate, bool isPlain);
  static void addList(MatchTree const& tree, Building& building, bool isCandidate, bool isPlain);

  // None: no packet of the region is in it. `relevant` are lines of the node.
  [[nodiscard]] std::optional<Outcome> evaluate(Node const& node, Box const& region,
                                                Lines relevant) const;
  [[nodiscard]] std::optional<Outcome> evaluateList(Box const& region, Lines relevant) const;
  [[nodiscard]] std::optional<Outcome> evaluateAny(Node const& node, Box const& region,
                                                   Lines relevant) const;
  [[nodiscard]] std::optional<Outcome> evaluateAll(Node const& node, Box const& region,
                                                   Lines relevant) const;

  std::vector<Node> classes_;
  std::vector<ConfiguredRule const*> rules_;
};

}  // namespace PolicyMapPackets
