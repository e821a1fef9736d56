// SPDX-License-Identifier: Apache-2.0
#pragma once

// Side: what one reader, of the records or of the configuration, says about the packets of a slice.
//
// A side has lines in an order. A candidate decides packets; the other lines only take packets from
// candidates of the same list or class. Without a candidate that decides it, a packet gets nothing.
// What is decided about a packet depends only on the lines that contain it, and about a region only
// on the lines that overlap it.

#include "packets/Export.h"
#include "packets/space/Box.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace PolicyMapPackets {

// The index of a line; that of `nothing` is the number of lines.
using LineIndex = std::uint32_t;

// What becomes of a packet, as a number that is the same on both sides; see Treatments.
using TreatmentId = std::uint32_t;
inline constexpr TreatmentId noTreatment = 0;

// In the place of the number of a rule: none.
inline constexpr std::uint32_t noRule = ~std::uint32_t{0};

struct Line {
  Box box;
  std::uint32_t rule = 0;  // by the numbers of the reader
  std::uint32_t list =
      0;  // of the lines that may take packets from each other, from 0 without gaps
  TreatmentId treatment = noTreatment;  // of a candidate
  bool candidate = false;
  // The packets of a candidate are decided by it or by an earlier candidate, unless a line before
  // it in its list that is no candidate takes them.
  bool plain = false;
};

// What a side says about a region.
struct Outcome {
  // The line that decides all its packets, or `nothing`.
  LineIndex line = 0;
  // Otherwise a line that decides about some of its packets only.
  bool undecided = false;
};

class POLICYMAPPACKETS_API Side {
 public:
  explicit Side(Slice const& slice) : slice_(&slice) {}
  Side(Side const&) = delete;
  Side& operator=(Side const&) = delete;
  virtual ~Side() = default;

  [[nodiscard]] Slice const& slice() const { return *slice_; }
  [[nodiscard]] std::vector<Line> const& lines() const { return lines_; }
  // In the place of a line: no line decides.
  [[nodiscard]] LineIndex nothing() const { return static_cast<LineIndex>(lines_.size()); }
  [[nodiscard]] std::uint32_t lists() const { return lists_; }
  // Whether every candidate is plain and every line is a candidate.
  [[nodiscard]] bool isList() const { return isList_; }

  [[nodiscard]] TreatmentId treatment(LineIndex line) const {
    return line == nothing() ? noTreatment : lines_[line].treatment;
  }

  // `relevant` are the lines that overlap the region, in order. A line that is undecided overlaps
  // the region and does not contain it.
  [[nodiscard]] virtual Outcome decide(Box const& region,
                                       std::span<LineIndex const> relevant) const = 0;

 protected:
  // To be called when all lines are there.
  void linesAre(std::vector<Line> lines, std::uint32_t lists) {
    lines_ = std::move(lines);
    lists_ = lists;
    isList_ = true;
    for (Line const& line : lines_) {
      isList_ = isList_ && line.candidate && line.plain;
    }
  }

 private:
  Slice const* slice_;
  std::vector<Line> lines_;
  std::uint32_t lists_ = 0;
  bool isList_ = true;
};

}  // namespace PolicyMapPackets
