// SPDX-License-Identifier: Apache-2.0
#pragma once

// PortMatch, TtlMatch: an operator with its numbers, e.g. `eq 80`, for one header field.

#include "Acl/Fields.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace Acl {

// `any` matches every number, and also packets without that field.
enum class MatchOp : std::uint8_t { any, eq, neq, lt, gt, range };

POLICYMAP_API Kor::KorType* korEnumType(MatchOp /*any*/);
POLICYMAP_API Kor::String valueToStrep(MatchOp op);
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   MatchOp& op);
// Writes the bare name.
POLICYMAP_API std::ostream& operator<<(std::ostream& out, MatchOp op);

// The numbers from `low` to `high`, inclusive.
template <class Number>
struct NumberRange {
  Number low = 0;
  Number high = 0;

  friend auto operator<=>(NumberRange const&, NumberRange const&) = default;
};

// Up to two ranges, ascending and not adjacent.
template <class Number>
class NumberRanges {
 public:
  // Appends a range. At most two.
  void add(NumberRange<Number> range) { ranges_[count_++] = range; }

  [[nodiscard]] std::size_t size() const { return count_; }
  [[nodiscard]] bool empty() const { return count_ == 0; }
  NumberRange<Number> const& operator[](std::size_t i) const { return ranges_[i]; }
  [[nodiscard]] NumberRange<Number> const* begin() const { return ranges_.data(); }
  [[nodiscard]] NumberRange<Number> const* end() const { return ranges_.data() + count_; }

 private:
  std::array<NumberRange<Number>, 2> ranges_{};
  std::size_t count_ = 0;
};

// An operator and its numbers. With `any`, low and high are 0; with an operator of one number, both
// are that number. Unused numbers are normalised, so they do not affect comparison. `eq 5` and
// `range 5 5` differ.
template <class Traits>
class POLICYMAP_API NumberMatch {
 public:
  using Number = typename Traits::Number;
  using Range = NumberRange<Number>;
  using Ranges = NumberRanges<Number>;
  static constexpr std::int64_t highest = Traits::highest;
  static constexpr std::string_view korTypeName = Traits::typeName;
  static constexpr auto korFields() {
    return std::tuple(Kor::field("op", &NumberMatch::op, &NumberMatch::opIs,
                                 "operator; any also matches packets without the field"),
                      Kor::field("low", &NumberMatch::low, &NumberMatch::lowIs,
                                 "number of the operator, or lowest number of a range; 0 for any"),
                      Kor::field("high", &NumberMatch::high, &NumberMatch::highIs,
                                 "highest number of a range; for other operators the same as low"));
  }

  // Matches any number.
  NumberMatch() = default;
  // `high` is used only with `range`. Raises RangeException "PortMatch::low < 0 or > 65535 not
  // allowed", for TtlMatch with its name and 255; the same for high, and "PortMatch::high < low not
  // allowed".
  NumberMatch(MatchOp op, std::int64_t low, std::int64_t high = 0);

  [[nodiscard]] static NumberMatch any() { return {}; }
  [[nodiscard]] static NumberMatch eq(std::int64_t n) { return {MatchOp::eq, n}; }
  [[nodiscard]] static NumberMatch neq(std::int64_t n) { return {MatchOp::neq, n}; }
  [[nodiscard]] static NumberMatch lt(std::int64_t n) { return {MatchOp::lt, n}; }
  [[nodiscard]] static NumberMatch gt(std::int64_t n) { return {MatchOp::gt, n}; }
  [[nodiscard]] static NumberMatch range(std::int64_t low, std::int64_t high) {
    return {MatchOp::range, low, high};
  }

  [[nodiscard]] MatchOp op() const { return op_; }
  [[nodiscard]] Number low() const { return low_; }
  [[nodiscard]] Number high() const { return high_; }
  [[nodiscard]] bool isAny() const { return op_ == MatchOp::any; }
  // The matching numbers; empty for `lt 0` and for `gt` the highest.
  [[nodiscard]] Ranges ranges() const;
  // True if ranges() is empty.
  [[nodiscard]] bool matchesNothing() const {
    return (op_ == MatchOp::lt && low_ == 0) || (op_ == MatchOp::gt && low_ == highest);
  }
  // The configuration syntax: "eq 80", "range 20 21"; empty for any.
  [[nodiscard]] std::string describe() const;

  [[nodiscard]] bool operator!() const { return isAny(); }
  friend auto operator<=>(NumberMatch const&, NumberMatch const&) = default;
  [[nodiscard]] std::uint32_t hash() const { return hashOfFields(*this); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  friend void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                              NumberMatch& match) {
    NumberMatch read;
    Kor::readValueFields(it, end, read);
    match = NumberMatch(read.op_, read.low_, read.high_);
  }

 private:
  void opIs(MatchOp op) { op_ = op; }
  void lowIs(Number low) { low_ = low; }
  void highIs(Number high) { high_ = high; }

  MatchOp op_ = MatchOp::any;
  Number low_ = 0;
  Number high_ = 0;
};

struct POLICYMAP_API PortMatchTraits {
  using Number = std::uint16_t;
  static constexpr std::int64_t highest = 65535;
  static constexpr std::string_view typeName = "Acl::PortMatch";
};
struct POLICYMAP_API TtlMatchTraits {
  using Number = std::uint8_t;
  static constexpr std::int64_t highest = 255;
  static constexpr std::string_view typeName = "Acl::TtlMatch";
};

using PortMatch = NumberMatch<PortMatchTraits>;
using TtlMatch = NumberMatch<TtlMatchTraits>;
using PortRange = PortMatch::Range;
using PortRanges = PortMatch::Ranges;

extern template class NumberMatch<PortMatchTraits>;
extern template class NumberMatch<TtlMatchTraits>;

}  // namespace Acl
