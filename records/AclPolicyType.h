// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/Export.h"

#include <Kor/Strep.h>
#include <PolicyMap/ClassMapMatchOption.h>
#include <PolicyMap/PolicyMapSmKey.h>

#include <cstdint>
#include <ostream>

namespace PolicyMapTest {

// The key of a record: which policy-map machine programs the policy, and for which match option. An
// immutable value.
class POLICYMAPTEST_API AclPolicyType final {
 public:
  // Empty key, option 0.
  AclPolicyType() = default;
  AclPolicyType(PolicyMap::PolicyMapSmKey policyKey, PolicyMap::ClassMapMatchOption option)
      : policyKey_(std::move(policyKey)), option_(option) {}
  // Reads one text form and moves `it` past the form and any white space after it. Attributes may
  // be in any order; the last of repeated ones counts, and missing ones keep their default. Raises
  // Kor::RangeException if the text is not valid.
  AclPolicyType(Kor::String8::IteratorConst& it, Kor::String8::IteratorConst const& end);

  [[nodiscard]] PolicyMap::PolicyMapSmKey const& policyKey() const { return policyKey_; }
  [[nodiscard]] PolicyMap::ClassMapMatchOption option() const { return option_; }

  // The same key made of parts that exist elsewhere, for look-ups.
  struct View {
    PolicyMap::PolicyMapSmKey const& policyKey;
    PolicyMap::ClassMapMatchOption option;

    [[nodiscard]] std::uint32_t hash() const {
      return hashOfParts(policyKey.first().hash(), policyKey.second().hash(), option);
    }
    friend bool operator==(AclPolicyType const& key, View const& view) {
      return key.option() == view.option && key.policyKey() == view.policyKey;
    }
  };

  // The hash used by collections, before they reverse its bits.
  [[nodiscard]] std::uint32_t hash() const { return View{policyKey_, option_}.hash(); }
  // Computed from the hashes of the key's two texts. Keys that differ only in `option` have
  // adjacent hashes, so their reversed hashes differ in the top bits and land in different buckets.
  [[nodiscard]] static constexpr std::uint32_t hashOfParts(std::uint32_t first,
                                                           std::uint32_t second,
                                                           PolicyMap::ClassMapMatchOption option) {
    std::uint32_t const spread = (first ^ second) * 9;
    std::uint32_t const mixed = spread ^ (spread >> 11);
    return mixed + (mixed << 15) + static_cast<std::uint32_t>(option);
  }

  // Ordered by key, then by option as a signed number.
  bool operator==(AclPolicyType const& other) const {
    return policyKey_ == other.policyKey_ && option_ == other.option_;
  }
  bool operator<(AclPolicyType const& other) const {
    return policyKey_ < other.policyKey_ ||
           (policyKey_ == other.policyKey_ && option_ < other.option_);
  }
  bool operator!=(AclPolicyType const& other) const { return !(*this == other); }
  bool operator>=(AclPolicyType const& other) const { return !(*this < other); }
  bool operator<=(AclPolicyType const& other) const { return !(other < *this); }
  bool operator>(AclPolicyType const& other) const { return !(*this <= other); }
  // True only for the default value.
  bool operator!() const { return *this == AclPolicyType(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] virtual Kor::KorType const* fwkType() const;

 private:
  PolicyMap::PolicyMapSmKey policyKey_;
  PolicyMap::ClassMapMatchOption option_{};
};

// Value('PolicyMapTest::AclPolicyType', ** {'policyKey': Value(...), 'option': 'ipv4'})
POLICYMAPTEST_API Kor::String8 valueToStrep(AclPolicyType const& type);
// Writes the text form and ignores the stream's width and flags.
POLICYMAPTEST_API std::ostream& operator<<(std::ostream& out, AclPolicyType const& type);

}  // namespace PolicyMapTest
