// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Kor {

// The record of one model type. One per type and process, made on first use by T::_fwkType(), alive
// until the process ends; records compare by address.
class KOR_API KorType {
 public:
  // `name` is the qualified name, a literal. `base` is null for a root and for a value type.
  KorType(std::string_view name, KorType const* base);
  KorType(KorType const&) = delete;
  KorType& operator=(KorType const&) = delete;

  [[nodiscard]] std::string_view name() const { return name_; }
  // The name behind the last "::".
  [[nodiscard]] std::string_view shortName() const;
  [[nodiscard]] KorType const* base() const { return base_; }
  // Inheritance level: 0 for a root and for a value type.
  [[nodiscard]] std::uint32_t level() const { return level_; }

  // Whether this type is `other` or derives from it. Constant time.
  [[nodiscard]] bool isA(KorType const* other) const {
    return level_ >= other->level_ && lineage_[other->level_] == other;
  }

 private:
  static constexpr std::size_t deepest = 8;

  std::string_view name_;
  KorType const* base_;
  std::uint32_t level_;
  std::array<KorType const*, deepest> lineage_{};  // by level, this type last
};

}  // namespace Kor
