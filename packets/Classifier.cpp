// SPDX-License-Identifier: Apache-2.0
#include "packets/Classifier.h"

namespace PolicyMapPackets {

namespace {

// The first entry that matches decides. Entries before it that overlap the box do not matter if
// they say the same.
Verdict holdsList(std::vector<ListEntry> const& entries, Box const& box) {
  Box const* permitted = nullptr;  // a part of the box
  Box const* denied = nullptr;
  for (ListEntry const& entry : entries) {
    if (!entry.box.overlaps(box)) {
      continue;
    }
    bool const isWhole = entry.box.contains(box);
    Box const*& same = entry.permits ? permitted : denied;
    Box const* const other = entry.permits ? denied : permitted;
    if (isWhole) {
      return other == nullptr ? Verdict::of(entry.permits) : Verdict::at(*other);
    }
    same = same == nullptr ? &entry.box : same;
  }
  return permitted == nullptr ? Verdict::of(false) : Verdict::at(*permitted);
}

Verdict holds(Condition const& condition, Box const& box) {
  if (condition.kind == Condition::Kind::list) {
    return holdsList(condition.entries, box);
  }
  if (condition.parts.empty()) {
    return Verdict::of(false);
  }
  // One part that holds is enough for `any`, one that does not for `all`.
  bool const enough = condition.kind == Condition::Kind::any;
  Verdict undecided = Verdict::of(!enough);
  for (Condition const& part : condition.parts) {
    Verdict const verdict = holds(part, box);
    if (verdict.holds == enough) {
      return verdict;
    }
    if (!verdict.holds && undecided.holds) {
      undecided = verdict;
    }
  }
  return undecided;
}

// Of several statements that must all be true: false if one is, or else where to cut.
class Both {
 public:
  // Returns false once it is known to be false.
  bool add(Verdict const& verdict, bool wanted) {
    if (!verdict.holds) {
      all_ = all_.holds ? verdict : all_;
    } else if (*verdict.holds != wanted) {
      all_ = Verdict::of(false);
      return false;
    }
    return true;
  }
  [[nodiscard]] Verdict const& verdict() const { return all_; }

 private:
  Verdict all_ = Verdict::of(true);
};

// Whether the entry is the first of its list that matches the box.
Verdict isFirst(std::vector<ListEntry> const& entries, ListEntry const& wanted, Box const& box) {
  Box const* before = nullptr;
  for (ListEntry const& entry : entries) {
    if (&entry == &wanted) {
      break;
    }
    if (!entry.box.overlaps(box)) {
      continue;
    }
    if (entry.box.contains(box)) {
      return Verdict::of(false);
    }
    before = before == nullptr ? &entry.box : before;
  }
  return before == nullptr ? Verdict::of(true) : Verdict::at(*before);
}

// Whether the entry at the end of the path decides that the condition holds.
Verdict decidesIn(Condition const& condition, Candidate const& candidate, std::size_t depth,
                  Box const& box) {
  if (condition.kind == Condition::Kind::list) {
    return isFirst(condition.entries, *candidate.entry, box);
  }
  std::size_t const own = candidate.path.at(depth);
  Both both;
  for (std::size_t i = 0; i != condition.parts.size(); ++i) {
    Condition const& part = condition.parts[i];
    bool const isAny = condition.kind == Condition::Kind::any;
    if (i == own) {
      if (!both.add(decidesIn(part, candidate, depth + 1, box), true)) {
        break;
      }
    } else if ((!isAny || i < own) && !both.add(holds(part, box), !isAny)) {
      break;
    }
  }
  return both.verdict();
}

// All parts of `all` match a packet that it takes, so those of the first one are enough.
void addCandidates(Condition const& condition, Candidate& at, std::vector<Candidate>& all) {
  if (condition.kind == Condition::Kind::list) {
    for (ListEntry const& entry : condition.entries) {
      if (entry.permits) {
        at.entry = &entry;
        all.push_back(at);
      }
    }
    return;
  }
  std::size_t const most = condition.kind == Condition::Kind::any ? condition.parts.size() : 1;
  for (std::size_t i = 0; i != condition.parts.size() && i != most; ++i) {
    at.path.push_back(i);
    addCandidates(condition.parts[i], at, all);
    at.path.pop_back();
  }
}

// The lines of the lists in a condition that are the first to match.
void addWay(Condition const& condition, Box const& packet, std::vector<Line> const& lines,
            std::vector<Line const*>& way) {
  for (ListEntry const& entry : condition.entries) {
    if (entry.box.contains(packet)) {
      way.push_back(&lines.at(entry.line));
      return;
    }
  }
  for (Condition const& part : condition.parts) {
    addWay(part, packet, lines, way);
    if (condition.kind == Condition::Kind::any && holds(part, packet).holds == true) {
      return;
    }
  }
}

}  // namespace

std::vector<Candidate> Classifier::candidates() const {
  std::vector<Candidate> all;
  for (std::size_t number = 0; number != classes.size(); ++number) {
    Candidate at{number, {}, nullptr};
    addCandidates(classes[number], at, all);
  }
  all.push_back({classes.size(), {}, nullptr});
  return all;
}

Verdict Classifier::decides(Candidate const& candidate, Box const& box) const {
  Both both;
  // The own class first, because its list most often tells.
  if (candidate.entry != nullptr &&
      !both.add(decidesIn(classes[candidate.classNumber], candidate, 0, box), true)) {
    return both.verdict();
  }
  for (std::size_t number = 0; number != candidate.classNumber; ++number) {
    if (!both.add(holds(classes[number], box), false)) {
      break;
    }
  }
  return both.verdict();
}

Treatment const& Classifier::treatment(Candidate const& candidate) const {
  static Treatment const none;
  return candidate.entry == nullptr ? none : lines.at(candidate.entry->line).treatment;
}

std::vector<Line const*> Classifier::way(Box const& packet) const {
  std::vector<Line const*> way;
  for (Condition const& each : classes) {
    addWay(each, packet, lines, way);
    if (holds(each, packet).holds == true) {
      break;
    }
  }
  return way;
}

}  // namespace PolicyMapPackets
