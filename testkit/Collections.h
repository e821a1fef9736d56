// SPDX-License-Identifier: Apache-2.0
#pragma once

// The members of a collection attribute as standard containers, for loops, comparisons and the
// container matchers of Google Mock. The order is that of the iterator, which is the same in every
// run but has no meaning.
//
//   EXPECT_THAT(keysOf(record->intfIteratorConst()), UnorderedElementsAre(ethernet1, ethernet2));
//   EXPECT_THAT(entriesOf(record->ruleAction1IteratorConst()), Each(Pair(_, 7)));

#include <type_traits>
#include <utility>
#include <vector>

namespace PolicyMapTestKit {

template <class Iterator>
[[nodiscard]] auto keysOf(Iterator const& iterator) {
  std::vector<std::decay_t<decltype(iterator.key())>> keys;
  for (auto const& entry : iterator) {
    keys.push_back(entry.key());
  }
  return keys;
}

// Pairs of key and value; for owned objects, the value is a pointer to the object.
template <class Iterator>
[[nodiscard]] auto entriesOf(Iterator const& iterator) {
  std::vector<
      std::pair<std::decay_t<decltype(iterator.key())>, std::decay_t<decltype(iterator.value())>>>
      entries;
  for (auto const& entry : iterator) {
    entries.emplace_back(entry.key(), entry.value());
  }
  return entries;
}

}  // namespace PolicyMapTestKit
