// SPDX-License-Identifier: Apache-2.0
#pragma once

// The trace line of a helper operation: its signature, then its arguments by name.
//
//   traceOperation("Kor::String", "commitPolicy", Traced{"policyData", policyData},
//                  Traced{"matchOption", matchOption});

#include "records/Trace.h"

#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/ClassMapSmCommonData.h>
#include <PolicyMap/PolicyMapSmCommonData.h>
#include <PolicyMap/SubRuleData.h>

#include <ostream>
#include <string_view>
#include <tuple>
#include <utility>

namespace PolicyMapTest {

// A named argument; `value` must outlive it. Prints only the value: the data of a policy as its
// key, the data of a class as its name, null data as "None".
template <class T>
struct Traced {
  std::string_view name;
  T const& value;

  friend std::ostream& operator<<(std::ostream& out, Traced const& traced) {
    if constexpr (requires { traced.value->policyKey(); }) {
      return traced.value ? out << traced.value->policyKey() : out << "None";
    } else if constexpr (requires { traced.value->name(); }) {
      return traced.value ? out << traced.value->name() : out << "None";
    } else {
      return out << traced.value;
    }
  }
};
template <class T>
Traced(char const*, T const&) -> Traced<T>;

// The spelling of an argument's type in the signature. A type without a spelling does not compile.
template <class T>
inline constexpr std::string_view tracedType = T::noSpelling;
template <>
inline constexpr std::string_view tracedType<PolicyMap::PolicyMapSmCommonData::PtrConst> =
    "const PolicyMap::PolicyMapSmCommonData::PtrConst&";
template <>
inline constexpr std::string_view tracedType<PolicyMap::ClassMapSmCommonData::PtrConst> =
    "const PolicyMap::ClassMapSmCommonData::PtrConst&";
template <>
inline constexpr std::string_view tracedType<PolicyMap::ClassMapMatchOption> =
    "PolicyMap::ClassMapMatchOption";
template <>
inline constexpr std::string_view tracedType<PolicyMap::AclRuleKey> =
    "const PolicyMap::AclRuleKey&";
template <>
inline constexpr std::string_view tracedType<PolicyMap::SubRuleData> =
    "const PolicyMap::SubRuleData&";
template <>
inline constexpr std::string_view tracedType<Vorel::IntfId> = "Vorel::IntfId";

template <class... T>
struct OperationLine {
  std::string_view result;
  std::string_view operation;
  std::tuple<Traced<T> const&...> arguments;

  friend std::ostream& operator<<(std::ostream& out, OperationLine const& line) {
    out << "virtual " << line.result << " PolicyMapTest::AclHelper::" << line.operation << "(";
    std::string_view separator;
    auto const writeType = [&]<class Value>(Traced<Value> const& /*argument*/) {
      out << std::exchange(separator, ", ") << tracedType<Value>;
    };
    auto const writeValue = [&](auto const& argument) {
      out << std::exchange(separator, ", ") << argument.name << "=" << argument;
    };
    std::apply([&](auto const&... argument) { (writeType(argument), ...); }, line.arguments);
    out << "): ";
    separator = {};
    std::apply([&](auto const&... argument) { (writeValue(argument), ...); }, line.arguments);
    return out;
  }
};

// Inlined, so that the arguments are only put together if the line is written.
template <class... T>
[[gnu::always_inline]] inline void traceOperation(std::string_view result,
                                                  std::string_view operation,
                                                  Traced<T> const&... arguments) {
  KOR_TRACE_LINE(traceHandle(), 8, (OperationLine<T...>{result, operation, {arguments...}}));
}

}  // namespace PolicyMapTest
