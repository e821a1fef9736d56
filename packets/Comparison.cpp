// SPDX-License-Identifier: Apache-2.0
#include "packets/Comparison.h"

#include <algorithm>
#include <utility>

namespace PolicyMapPackets {

namespace {

// The packets that a place can decide.
std::vector<Box> boxesOf(Candidate const& candidate, Space const& space) {
  return candidate.entry == nullptr ? wholeOf(space) : std::vector<Box>{candidate.entry->box};
}

std::optional<Line> copyOf(Line const* line) {
  return line == nullptr ? std::nullopt : std::optional(*line);
}

class Pairs {
 public:
  Pairs(Classifier const& before, Classifier const& after, std::uint64_t steps)
      : before_(before), after_(after), steps_(steps) {}

  Comparison compare() {
    std::vector<Place> const befores = placesOf(before_);
    std::vector<Place> const afters = placesOf(after_);
    for (Place const& before : befores) {
      for (Place const& after : afters) {
        if (before.treatment != after.treatment && canMeet(before, after)) {
          search(before.candidate, after.candidate);
        }
      }
    }
    std::stable_sort(found_.differences.begin(), found_.differences.end(),
                     [](Difference const& a, Difference const& b) {
                       return a.smallest.startsBefore(b.smallest);
                     });
    return std::move(found_);
  }

 private:
  struct Place {
    Candidate candidate;
    std::size_t treatment;  // equal numbers for equal treatments
  };

  std::vector<Place> placesOf(Classifier const& classifier) {
    std::vector<Place> places;
    for (Candidate& candidate : classifier.candidates()) {
      Treatment const& treatment = classifier.treatment(candidate);
      auto const found = std::find(treatments_.begin(), treatments_.end(), treatment);
      auto const number = static_cast<std::size_t>(found - treatments_.begin());
      if (found == treatments_.end()) {
        treatments_.push_back(treatment);
      }
      places.push_back({std::move(candidate), number});
    }
    return places;
  }

  static bool canMeet(Place const& before, Place const& after) {
    ListEntry const* const a = before.candidate.entry;
    ListEntry const* const b = after.candidate.entry;
    return a == nullptr || b == nullptr || a->box.overlaps(b->box);
  }

  void search(Candidate const& before, Candidate const& after) {
    std::vector<Box> open;
    for (Box const& a : boxesOf(before, before_.space())) {
      for (Box const& b : boxesOf(after, before_.space())) {
        if (std::optional<Box> both = a.intersection(b)) {
          open.push_back(*both);
        }
      }
    }
    std::optional<Difference> difference;
    while (!open.empty()) {
      if (steps_ == 0) {
        found_.complete = false;
        return;
      }
      --steps_;
      Box const box = open.back();
      open.pop_back();
      Verdict const first = before_.decides(before, box);
      if (first.holds == false) {
        continue;
      }
      Verdict const second = after_.decides(after, box);
      if (second.holds == false) {
        continue;
      }
      Box const* const cut = first.cut != nullptr ? first.cut : second.cut;
      if (cut == nullptr) {
        add(difference, before, after, box);
        continue;
      }
      std::vector<Box> const parts = box.without(*cut);
      open.insert(open.end(), parts.begin(), parts.end());
      open.push_back(*box.intersection(*cut));
    }
    if (difference) {
      found_.differences.push_back(*std::move(difference));
    }
  }

  void add(std::optional<Difference>& difference, Candidate const& before, Candidate const& after,
           Box const& box) const {
    if (!difference) {
      difference = Difference{copyOf(before_.line(before)),
                              copyOf(after_.line(after)),
                              before_.treatment(before),
                              after_.treatment(after),
                              box,
                              box.lowest(),
                              box.packets()};
      return;
    }
    difference->packets += box.packets();
    if (box.packets() > difference->where.packets()) {
      difference->where = box;
    }
    if (box.startsBefore(difference->smallest)) {
      difference->smallest = box.lowest();
    }
  }

  Classifier const& before_;
  Classifier const& after_;
  std::uint64_t steps_;
  std::vector<Treatment> treatments_;
  Comparison found_;
};

}  // namespace

Comparison compare(Classifier const& before, Classifier const& after,
                   ComparisonLimits const& limits) {
  return Pairs(before, after, limits.steps).compare();
}

Fate fateOf(Classifier const& classifier, Box const& packet) {
  std::vector<Candidate> const all = classifier.candidates();
  auto const decides = [&](Candidate const& each) {
    return (each.entry == nullptr || each.entry->box.contains(packet)) &&
           classifier.decides(each, packet).holds == true;
  };
  auto const found = std::find_if(all.begin(), all.end(), decides);  // one of them does
  return {*found, classifier.treatment(*found)};
}

Box alike(Classifier const& before, Classifier const& after, Box const& packet) {
  Candidate const first = fateOf(before, packet).candidate;
  Candidate const second = fateOf(after, packet).candidate;
  std::optional<Box> box;
  for (Box const& a : boxesOf(first, packet.space())) {
    for (Box const& b : boxesOf(second, packet.space())) {
      std::optional<Box> const both = a.intersection(b);
      box = both && both->contains(packet) ? both : box;
    }
  }
  while (true) {
    Verdict const one = before.decides(first, *box);
    Verdict const other = after.decides(second, *box);
    Box const* const cut = one.cut != nullptr ? one.cut : other.cut;
    if (cut == nullptr) {
      return *box;
    }
    std::vector<Box> parts = box->without(*cut);
    parts.push_back(*box->intersection(*cut));
    box = *std::find_if(parts.begin(), parts.end(),
                        [&](Box const& part) { return part.contains(packet); });
  }
}

}  // namespace PolicyMapPackets
