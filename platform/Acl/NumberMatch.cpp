// SPDX-License-Identifier: Apache-2.0
#include "Acl/NumberMatch.h"

#include "Acl/RangeCheck.h"
#include "Kor/Exception.h"

namespace Acl {
namespace {

constexpr std::array<std::string_view, 6> opTexts{"any", "eq", "neq", "lt", "gt", "range"};
constexpr Kor::EnumNames opNames{"MatchOp", opTexts.data(), opTexts.size()};

}  // namespace

Kor::KorType* korEnumType(MatchOp /*any*/) {
  static Kor::KorType type("Acl::MatchOp", opNames);
  return &type;
}

Kor::String valueToStrep(MatchOp op) {
  return Kor::enumToStrep(opNames, static_cast<std::int32_t>(op));
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, MatchOp& op) {
  std::int32_t const number = Kor::sequenceToEnum(it, end, opNames);
  op = static_cast<MatchOp>(inRange("MatchOp", number, 0, opTexts.size() - 1));
}

std::ostream& operator<<(std::ostream& out, MatchOp op) {
  return out << Kor::enumToText(opNames, static_cast<std::int32_t>(op));
}

template <class Traits>
NumberMatch<Traits>::NumberMatch(MatchOp op, std::int64_t low, std::int64_t high) {
  if (op == MatchOp::any) {
    return;
  }
  std::string const type(Kor::shortTypeName(korTypeName));
  op_ = op;
  low_ = static_cast<Number>(inRange(type + "::low", low, 0, highest));
  high_ = low_;
  if (op == MatchOp::range) {
    high_ = static_cast<Number>(inRange(type + "::high", high, 0, highest));
    if (high_ < low_) {
      throw Kor::RangeException(type + "::high < low not allowed");
    }
  }
}

template <class Traits>
typename NumberMatch<Traits>::Ranges NumberMatch<Traits>::ranges() const {
  constexpr auto last = static_cast<Number>(highest);
  bool const below = op_ == MatchOp::lt || op_ == MatchOp::neq;
  bool const above = op_ == MatchOp::gt || op_ == MatchOp::neq;
  Ranges ranges;
  if (op_ == MatchOp::any) {
    ranges.add({0, last});
  }
  if (op_ == MatchOp::eq || op_ == MatchOp::range) {
    ranges.add({low_, high_});
  }
  if (below && low_ > 0) {
    ranges.add({0, static_cast<Number>(low_ - 1)});
  }
  if (above && low_ < last) {
    ranges.add({static_cast<Number>(low_ + 1), last});
  }
  return ranges;
}

template <class Traits>
std::string NumberMatch<Traits>::describe() const {
  if (isAny()) {
    return {};
  }
  std::string text(opTexts[static_cast<std::size_t>(op_)]);
  text.append(" ").append(std::to_string(low_));
  return op_ == MatchOp::range ? text + " " + std::to_string(high_) : text;
}

template <class Traits>
Kor::KorType* NumberMatch<Traits>::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

template class NumberMatch<PortMatchTraits>;
template class NumberMatch<TtlMatchTraits>;

}  // namespace Acl
