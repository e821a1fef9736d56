// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <array>
#include <cstdint>
#include <ostream>

namespace PolicyMap {

// The kind of traffic that a class-map matches, which selects the hardware table of its rules.
// Every signed 32-bit value is accepted; four are in use.
enum class ClassMapMatchOption : std::int32_t { ipv4 = 0, ipv6 = 1, mac = 2, mpls = 3 };

inline constexpr std::array<ClassMapMatchOption, 4> allMatchOptions{
    ClassMapMatchOption::ipv4, ClassMapMatchOption::ipv6, ClassMapMatchOption::mac,
    ClassMapMatchOption::mpls};

POLICYMAP_API Kor::KorType* korEnumType(ClassMapMatchOption /*any*/);
// 'ipv4', 'ipv6', 'mac', 'mpls'; any other value as a decimal number.
POLICYMAP_API Kor::String8 valueToStrep(ClassMapMatchOption option);
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   ClassMapMatchOption& option);
// Prints the name without quotes, or the number.
POLICYMAP_API std::ostream& operator<<(std::ostream& out, ClassMapMatchOption option);

}  // namespace PolicyMap
