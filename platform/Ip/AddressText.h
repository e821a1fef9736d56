// SPDX-License-Identifier: Apache-2.0
#pragma once

// Addresses of 4 (IPv4), 6 (MAC) and 16 (IPv6) bytes in network order, and their notations.

#include "PolicyMapExport.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Ip {

/// "10.1.2.3", "0123.4567.89ab" or, with the longest run of zeros left out, "2001:db8::1".
POLICYMAP_API std::string addressText(std::span<std::uint8_t const> bytes);

/// Reads an address of as many bytes; a MAC address also as "01:23:45:67:89:ab" or with hyphens, an
/// IPv6 one also as "::ffff:10.1.2.3". False, with `bytes` unspecified, when `text` is anything
/// else, which a decimal part with a leading zero is: "010.1.2.3".
POLICYMAP_API bool readAddress(std::string_view text, std::span<std::uint8_t> bytes);

/// Sets the first `length` bits and clears the others.
POLICYMAP_API void prefixMask(std::size_t length, std::span<std::uint8_t> mask);

/// Number of leading bits of a mask, -1 when it has holes.
POLICYMAP_API int prefixLength(std::span<std::uint8_t const> mask);

/// Reads the decimal number behind a '/', at most `highest`. False when `text` is anything else.
POLICYMAP_API bool readPrefixLength(std::string_view text, std::size_t highest,
                                    std::size_t& length);

}  // namespace Ip
