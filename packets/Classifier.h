// SPDX-License-Identifier: Apache-2.0
#pragma once

// Classifier: which class of a policy gets a packet of one space, and which line decides it.
//
// A policy is an ordered list of classes; the first one that takes a packet gets it. A class has a
// condition: a list, whose first line that matches permits or denies; any of several conditions; or
// all of them. Conditions are decided for whole boxes, in three values: they hold for all packets
// of the box, for none, or it has to be cut first.

#include "packets/Box.h"
#include "packets/Export.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace PolicyMapPackets {

struct Treatment {
  std::string className;               // empty: no class takes the packet
  std::vector<std::uint64_t> actions;  // the values of action1, action2, ...

  bool operator==(Treatment const&) const = default;
};

struct Line {
  Treatment treatment;  // of the packets that it permits
  std::string name;     // "A 10", or "10" of a rule of the class-map itself
  std::string text;     // "deny tcp any any eq 80"
  bool permits = true;
};

// A box of a line, in the order of lines.
struct ListEntry {
  Box box;
  std::size_t line;  // of Classifier::lines
  bool permits;
};

struct Condition {
  enum class Kind : std::uint8_t { list, any, all };

  Kind kind = Kind::list;
  std::vector<ListEntry> entries;  // of a list
  std::vector<Condition> parts;    // of the other kinds; `any` and `all` of none hold for no packet
};

// Whether something holds for all packets of a box: true, false, or a box at which to cut it.
struct Verdict {
  std::optional<bool> holds;
  Box const* cut = nullptr;

  static Verdict of(bool holds) { return {holds, nullptr}; }
  static Verdict at(Box const& box) { return {std::nullopt, &box}; }
};

// A place where a packet may be decided: a permitting entry of a list, or after all classes.
struct Candidate {
  std::size_t classNumber = 0;       // classes.size(): no class
  std::vector<std::size_t> path;     // from the condition of the class to the list
  ListEntry const* entry = nullptr;  // null: no class
};

class POLICYMAPPACKETS_API Classifier {
 public:
  explicit Classifier(Space const& space) : space_(&space) {}

  // What makes it up. Not to be changed once it is asked for something.
  std::vector<Line> lines;
  std::vector<Condition> classes;

  [[nodiscard]] Space const& space() const { return *space_; }
  // All of them; the last one is that of no class.
  [[nodiscard]] std::vector<Candidate> candidates() const;
  // Whether all packets of the box are decided at the candidate, whose entry contains the box.
  [[nodiscard]] Verdict decides(Candidate const& candidate, Box const& box) const;
  [[nodiscard]] Treatment const& treatment(Candidate const& candidate) const;
  [[nodiscard]] Line const* line(Candidate const& candidate) const {
    return candidate.entry == nullptr ? nullptr : &lines.at(candidate.entry->line);
  }
  // The lines that match a packet and do not let its class take it, and the one that does, in
  // order.
  [[nodiscard]] std::vector<Line const*> way(Box const& packet) const;

 private:
  Space const* space_;
};

}  // namespace PolicyMapPackets
