// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Ptr.h"
#include "Kor/PtrInterface.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Acl {

// An immutable snapshot of the rules of an access list, by ascending sequence number.
template <class Rule>
class AclRules final : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<AclRules>;
  using PtrConst = Kor::Ptr<AclRules const>;
  using Entry = std::pair<std::uint32_t, Rule>;

  // `rules` may be in any order, but each number at most once.
  explicit AclRules(std::vector<Entry> rules) : rules_(std::move(rules)) {
    std::sort(rules_.begin(), rules_.end(),
              [](Entry const& a, Entry const& b) { return a.first < b.first; });
    denies_ = std::any_of(rules_.begin(), rules_.end(),
                          [](Entry const& entry) { return !entry.second.permit(); });
  }

  [[nodiscard]] std::vector<Entry> const& rules() const { return rules_; }
  [[nodiscard]] std::size_t size() const { return rules_.size(); }
  [[nodiscard]] bool empty() const { return rules_.empty(); }
  // Whether any rule denies.
  [[nodiscard]] bool denies() const { return denies_; }
  [[nodiscard]] auto begin() const { return rules_.begin(); }
  [[nodiscard]] auto end() const { return rules_.end(); }

  // The rule of that number, null if there is none.
  [[nodiscard]] Rule const* rule(std::uint32_t seq) const {
    auto const at =
        std::lower_bound(rules_.begin(), rules_.end(), seq,
                         [](Entry const& entry, std::uint32_t s) { return entry.first < s; });
    return at == rules_.end() || at->first != seq ? nullptr : &at->second;
  }

 private:
  std::vector<Entry> rules_;
  bool denies_ = false;
};

}  // namespace Acl
