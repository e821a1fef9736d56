// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Hash.h"
#include "Kor/Strep.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"

#include <compare>
#include <tuple>

namespace PolicyMap {

// Identifies one policy-map machine: policy-map name (first) and direction (second), "input" or
// "output".
class POLICYMAP_API PolicyMapSmKey {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::PolicyMapSmKey";

  PolicyMapSmKey() = default;
  PolicyMapSmKey(Kor::String8 first, Kor::String8 second)
      : first_(std::move(first)), second_(std::move(second)) {}
  // Parses one text form and leaves `it` after it. Throws Kor::RangeException.
  PolicyMapSmKey(Kor::TextIterator& it, Kor::TextIterator const& end);

  [[nodiscard]] Kor::String8 const& first() const { return first_; }
  [[nodiscard]] Kor::String8 const& second() const { return second_; }
  void firstIs(Kor::String8 const& first) { first_ = first; }
  void secondIs(Kor::String8 const& second) { second_ = second; }

  [[nodiscard]] std::uint32_t hash() const {
    return Kor::hashCombine(first_.hash(), second_.hash());
  }
  // Ordered by first, then second.
  friend bool operator==(PolicyMapSmKey const&, PolicyMapSmKey const&) = default;
  friend std::strong_ordering operator<=>(PolicyMapSmKey const& a, PolicyMapSmKey const& b) {
    return std::tie(a.first_, a.second_) <=> std::tie(b.first_, b.second_);
  }
  // True for the default value.
  [[nodiscard]] bool operator!() const { return *this == PolicyMapSmKey(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    return std::tuple(Kor::field("first", &PolicyMapSmKey::first, &PolicyMapSmKey::firstIs,
                                 "name of the policy-map"),
                      Kor::field("second", &PolicyMapSmKey::second, &PolicyMapSmKey::secondIs,
                                 "direction, input or output"));
  }

 private:
  Kor::String8 first_;
  Kor::String8 second_;
};

}  // namespace PolicyMap
