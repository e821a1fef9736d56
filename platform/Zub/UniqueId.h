// SPDX-License-Identifier: Apache-2.0
#pragma once

// UniqueId: a text that identifies something.

#include "Kor/KorType.h"
#include "Kor/Strep.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"

#include <compare>
#include <cstdint>
#include <ostream>
#include <string_view>
#include <tuple>
#include <utility>

namespace Zub {

class POLICYMAP_API UniqueId {
 public:
  static constexpr std::string_view korTypeName = "Zub::UniqueId";
  static constexpr auto korFields() {
    return std::tuple(Kor::field("value", &UniqueId::value, &UniqueId::valueIs,
                                 "text that identifies something; empty: nothing"));
  }

  // Identifies nothing.
  UniqueId() = default;
  explicit UniqueId(Kor::String value) : value_(std::move(value)) {}
  // Returns an identifier that no earlier call has returned: "id-1", "id-2", … in every process.
  [[nodiscard]] static UniqueId next();

  [[nodiscard]] Kor::String value() const { return value_; }

  [[nodiscard]] bool operator!() const { return value_.empty(); }
  friend bool operator==(UniqueId const&, UniqueId const&) = default;
  friend std::strong_ordering operator<=>(UniqueId const&, UniqueId const&) = default;
  [[nodiscard]] std::uint32_t hash() const { return value_.hash(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  friend std::ostream& operator<<(std::ostream& out, UniqueId const& id) {
    return out << Kor::valueToStrep(id);
  }

 private:
  void valueIs(Kor::String const& value) { value_ = value; }

  Kor::String value_;
};

}  // namespace Zub
