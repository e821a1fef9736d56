// SPDX-License-Identifier: Apache-2.0
#pragma once

// Addresses of 4 (IPv4), 6 (MAC) and 16 (IPv6) bytes in network order, and their text forms.

#include "PolicyMapExport.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Ip {

// Returns "10.1.2.3", "0123.4567.89ab" or, without the longest run of zeros, "2001:db8::1".
POLICYMAP_API std::string addressText(std::span<std::uint8_t const> bytes);

// Parses an address of `bytes.size()` bytes. Also accepts "01:23:45:67:89:ab" and hyphens for MAC,
// and "::ffff:10.1.2.3" for IPv6. Returns false for any other text, including decimal parts with a
// leading zero ("010.1.2.3"); `bytes` is then unspecified.
POLICYMAP_API bool readAddress(std::string_view text, std::span<std::uint8_t> bytes);

// Sets the first `length` bits and clears the others.
POLICYMAP_API void prefixMask(std::size_t length, std::span<std::uint8_t> mask);

// Number of leading bits of a mask; -1 if it has holes.
POLICYMAP_API int prefixLength(std::span<std::uint8_t const> mask);

// Parses the decimal number after a '/', at most `highest`. Returns false for any other text.
POLICYMAP_API bool readPrefixLength(std::string_view text, std::size_t highest,
                                    std::size_t& length);

}  // namespace Ip
