// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Address.h"

#include "testkit/text/Lexer.h"

#include <algorithm>
#include <charconv>

namespace PolicyMapTestKit::Text {

namespace {

// The longest address text: eight groups with separators, the last one in IPv4 notation.
constexpr std::size_t longestAddress = 45;

// Removes and returns the text before the next `separator`, or all of `rest` if there is none.
std::string_view cutBefore(std::string_view& rest, char separator) noexcept {
  std::size_t const end = std::min(rest.find(separator), rest.size());
  std::string_view const part = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return part;
}

bool parseHexGroup(std::string_view text, std::size_t fewest, std::size_t most,
                   unsigned& value) noexcept {
  if (text.size() < fewest || text.size() > most) {
    return false;
  }
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return error == std::errc{} && end == text.data() + text.size();
}

bool parseIp4(std::string_view text, std::uint8_t* bytes) noexcept {
  constexpr unsigned most = 255;
  std::size_t index = 0;
  std::size_t digits = 0;
  unsigned value = 0;
  for (char const character : text) {
    if (character == '.' && digits != 0 && index != 3) {
      bytes[index++] = static_cast<std::uint8_t>(value);
      digits = 0;
      value = 0;
      continue;
    }
    // Elsewhere a leading zero means octal, so neither interpretation is safe.
    bool const leadingZero = digits != 0 && value == 0;
    auto const digit = static_cast<unsigned char>(character - '0');
    if (digit > 9 || leadingZero) {
      return false;
    }
    value = value * 10 + digit;
    if (value > most) {
      return false;
    }
    ++digits;
  }
  bytes[index] = static_cast<std::uint8_t>(value);
  return index == 3 && digits != 0;
}

// Parses the groups on one side of "::" into `bytes`, at most 16. Returns -1 if they are malformed.
int parseIp6Groups(std::string_view text, AddressBytes& bytes) noexcept {
  std::size_t used = 0;
  if (text.empty()) {
    return 0;
  }
  for (bool more = true; more;) {
    std::size_t const colon = text.find(':');
    more = colon != std::string_view::npos;
    std::string_view const group = text.substr(0, colon);
    unsigned value = 0;
    if (!more && group.find('.') != std::string_view::npos) {
      bool const fits = used + 4 <= bytes.size() && parseIp4(group, bytes.data() + used);
      return fits ? static_cast<int>(used) + 4 : -1;
    }
    if (used + 2 > bytes.size() || !parseHexGroup(group, 1, 4, value)) {
      return -1;
    }
    bytes[used++] = static_cast<std::uint8_t>(value >> 8U);
    bytes[used++] = static_cast<std::uint8_t>(value & 0xffU);
    text.remove_prefix(more ? colon + 1 : text.size());
  }
  return static_cast<int>(used);
}

bool parseIp6(std::string_view text, AddressBytes& bytes) noexcept {
  std::size_t const gap = text.find("::");
  AddressBytes head{};
  AddressBytes tail{};
  int const headSize = parseIp6Groups(text.substr(0, gap), head);
  if (gap == std::string_view::npos) {
    bytes = head;
    return headSize == 16;
  }
  bool const dottedHead = text.substr(0, gap).find('.') != std::string_view::npos;
  int const tailSize = parseIp6Groups(text.substr(gap + 2), tail);
  // The gap replaces at least one group of zeros.
  if (dottedHead || headSize < 0 || tailSize < 0 || headSize + tailSize > 14) {
    return false;
  }
  std::copy_n(tail.begin(), tailSize, head.end() - tailSize);
  bytes = head;
  return true;
}

bool parseMac(std::string_view text, AddressBytes& bytes) noexcept {
  bool const dotted = text.find('.') != std::string_view::npos;
  char const separator = dotted ? '.' : text.find('-') != std::string_view::npos ? '-' : ':';
  std::size_t const groups = dotted ? 3 : 6;
  std::size_t const width = 6 / groups;
  if (std::count(text.begin(), text.end(), separator) != static_cast<std::ptrdiff_t>(groups) - 1) {
    return false;
  }
  for (std::size_t group = 0; group != groups; ++group) {
    unsigned value = 0;
    std::size_t const fewest = dotted ? 4 : 1;
    if (!parseHexGroup(cutBefore(text, separator), fewest, 2 * width, value)) {
      return false;
    }
    bytes[group * width] = static_cast<std::uint8_t>(dotted ? value >> 8U : value);
    if (dotted) {
      bytes[group * width + 1] = static_cast<std::uint8_t>(value & 0xffU);
    }
  }
  return true;
}

}  // namespace

Address maskedAddress(AddressBytes const& value, AddressBytes const& mask) noexcept {
  Address address{value, mask};
  for (std::size_t index = 0; index != mask.size(); ++index) {
    address.value[index] = static_cast<std::uint8_t>(value[index] & mask[index]);
  }
  return address;
}

AddressBytes prefixMask(std::size_t length) noexcept {
  AddressBytes mask{};
  std::fill_n(mask.begin(), length / 8, std::uint8_t{0xff});
  if (length % 8 != 0) {
    mask[length / 8] = static_cast<std::uint8_t>(0xff00U >> (length % 8));
  }
  return mask;
}

AddressBytes invertedBits(Family family, AddressBytes const& bytes) noexcept {
  AddressBytes inverted{};
  std::transform(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(addressSize(family)),
                 inverted.begin(),
                 [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte & 0xff); });
  return inverted;
}

bool maskLength(AddressBytes const& mask, std::uint8_t& length) noexcept {
  for (std::uint8_t candidate = 0; candidate <= 32; ++candidate) {
    if (mask == prefixMask(candidate)) {
      length = candidate;
      return true;
    }
  }
  return false;
}

bool parseAddress(Family family, std::string_view text, AddressBytes& bytes) noexcept {
  if (text.empty() || text.size() > longestAddress) {
    return false;
  }
  AddressBytes parsed{};
  bool const good = family == Family::ip4   ? parseIp4(text, parsed.data())
                    : family == Family::ip6 ? parseIp6(text, parsed)
                                            : parseMac(text, parsed);
  if (good) {
    bytes = parsed;
  }
  return good;
}

bool parsePrefix(Family family, std::string_view text, AddressBytes& bytes,
                 std::uint8_t& length) noexcept {
  std::size_t const slash = text.find('/');
  std::uint64_t value = 0;
  if (slash == std::string_view::npos ||
      !parseNumber(text.substr(slash + 1), 0, addressSize(family) * 8, value) ||
      !parseAddress(family, text.substr(0, slash), bytes)) {
    return false;
  }
  length = static_cast<std::uint8_t>(value);
  return true;
}

}  // namespace PolicyMapTestKit::Text
