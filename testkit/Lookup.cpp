// SPDX-License-Identifier: Apache-2.0
#include "testkit/Lookup.h"

#include <algorithm>
#include <numeric>

namespace PolicyMapTestKit {

namespace {

// The number of letters to insert, remove or change.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i != a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j != b.size(); ++j) {
      std::size_t const change = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({row[j] + 1, diagonal + 1, change});
    }
  }
  return row.back();
}

std::string lookupText(std::string_view what, std::string_view wanted,
                       std::vector<std::string> const& known) {
  std::string text = "no " + std::string(what) + " '" + std::string(wanted) + "'";
  if (known.empty()) {
    return text + "; there is none at all";
  }
  std::vector<std::string> const nearest = nearestNames(wanted, known);
  for (std::string const& name : nearest) {
    text.append(&name == &nearest.front() ? "; nearest: '" : ", '").append(name).append("'");
  }
  return text + (nearest.size() < known.size() ? ", of " + std::to_string(known.size()) : "");
}

}  // namespace

std::vector<std::string> nearestNames(std::string_view wanted, std::vector<std::string> known,
                                      std::size_t most) {
  std::stable_sort(known.begin(), known.end(), [&](auto const& a, auto const& b) {
    return distance(a, wanted) < distance(b, wanted);
  });
  known.resize(std::min(known.size(), most));
  return known;
}

LookupError::LookupError(std::string_view what, std::string_view wanted,
                         std::vector<std::string> const& known)
    : std::out_of_range(lookupText(what, wanted, known)) {}

LookupError::~LookupError() = default;

}  // namespace PolicyMapTestKit
