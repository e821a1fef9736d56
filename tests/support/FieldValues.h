// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values for the fields of rules, by type, for tests that iterate over the tables of fields.

#include <Acl/TcpFlags.h>

#include <concepts>
#include <type_traits>
#include <utility>

namespace TestSupport {

// A match on numbers such as ports.
template <class Value>
concept MatchOnNumbers = requires {
  typename Value::Range;
};

template <class Value>
concept MatchOnAddresses = requires {
  typename Value::Bytes;
};

// Two values that differ from the default. No packet matches both, except for a flag, which has
// only one such value.
template <class Value>
std::pair<Value, Value> twoValues() {
  if constexpr (std::is_same_v<Value, bool>) {
    return {true, true};
  } else if constexpr (std::is_same_v<Value, Acl::TcpFlags>) {
    return {{2, 2}, {0, 2}};
  } else if constexpr (MatchOnNumbers<Value>) {
    return {Value::eq(1), Value::eq(2)};
  } else if constexpr (MatchOnAddresses<Value>) {
    typename Value::Bytes one{};
    typename Value::Bytes two{};
    one.back() = 1;
    two.back() = 2;
    return {Value::host(one), Value::host(two)};
  } else {
    return {Value(1), Value(2)};
  }
}

}  // namespace TestSupport
