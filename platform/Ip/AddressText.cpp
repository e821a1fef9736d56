// SPDX-License-Identifier: Apache-2.0
#include "Ip/AddressText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>

namespace Ip {
namespace {

constexpr std::size_t ipSize = 4;
constexpr std::size_t macSize = 6;
constexpr std::size_t groups = 8;  // of two bytes in an IPv6 address

using Groups = std::array<std::uint16_t, groups>;

void appendHex(std::string& text, unsigned value, std::size_t leastDigits) {
  std::array<char, 8> digits{};
  auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
  auto const count = static_cast<std::size_t>(end - digits.data());
  text.append(leastDigits > count ? leastDigits - count : 0, '0').append(digits.data(), count);
}

// Parses the whole text as a number of at most `mostDigits` digits.
template <class Number>
bool readWhole(std::string_view text, int base, std::size_t mostDigits, Number& number) {
  if (text.empty() || text.size() > mostDigits) {
    return false;
  }
  auto const [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc() && stop == text.data() + text.size();
}

// Removes and returns the part before the first `separator`, or all if there is none.
std::string_view cut(std::string_view& text, char separator) {
  auto const at = text.find(separator);
  std::string_view const part = text.substr(0, at);
  text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
  return part;
}

// IPv4

std::string ipText(std::span<std::uint8_t const> bytes) {
  std::array<char, 4 * ipSize> text{};
  char* end = text.data();
  for (std::uint8_t const byte : bytes) {
    end = std::to_chars(end, text.data() + text.size(), byte).ptr;
    *end++ = '.';
  }
  return {text.data(), end - 1};
}

bool readIp(std::string_view text, std::span<std::uint8_t> bytes) {
  if (std::count(text.begin(), text.end(), '.') != 3) {
    return false;
  }
  return std::all_of(bytes.begin(), bytes.end(), [&](std::uint8_t& byte) {
    std::string_view const part = cut(text, '.');
    // Elsewhere a leading zero means octal, so neither interpretation is safe.
    bool const leadingZero = part.size() > 1 && part.front() == '0';
    return !leadingZero && readWhole(part, 10, 3, byte);
  });
}

// MAC

std::string macText(std::span<std::uint8_t const> bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text.append(i == 2 || i == 4 ? "." : "");
    appendHex(text, bytes[i], 2);
  }
  return text;
}

bool readMac(std::string_view text, std::span<std::uint8_t> bytes) {
  // "0123.4567.89ab" has 14 characters, "01:23:45:67:89:ab" has 17.
  bool const dotted = text.size() == 14;
  char const separator = dotted ? '.' : text.find('-') == std::string_view::npos ? ':' : '-';
  std::size_t const digits = dotted ? 4 : 2;
  if (text.size() != (dotted ? 14U : 17U)) {
    return false;
  }
  std::size_t i = 0;
  while (i < bytes.size()) {
    std::string_view group = cut(text, separator);
    if (group.size() != digits) {
      return false;
    }
    for (; !group.empty(); group.remove_prefix(2)) {
      if (!readWhole(group.substr(0, 2), 16, 2, bytes[i++])) {
        return false;
      }
    }
  }
  return true;
}

// IPv6

struct Run {
  std::size_t first = 0;
  std::size_t length = 0;
};

// The longest run of at least two zero groups, the first of equals; empty if there is none.
Run longestZeros(Groups const& address) {
  Run longest;
  Run run;
  for (std::size_t i = 0; i < groups; ++i) {
    run = address[i] != 0 ? Run{i + 1, 0} : Run{run.first, run.length + 1};
    if (run.length >= 2 && run.length > longest.length) {
      longest = run;
    }
  }
  return longest;
}

std::string ip6Text(std::span<std::uint8_t const> bytes) {
  Groups address{};
  for (std::size_t i = 0; i < groups; ++i) {
    address[i] = static_cast<std::uint16_t>((bytes[2 * i] << 8) | bytes[2 * i + 1]);
  }
  Run const zeros = longestZeros(address);
  std::string text;
  for (std::size_t i = 0; i < groups;) {
    if (zeros.length != 0 && i == zeros.first) {
      text.append("::");
      i += zeros.length;
      continue;
    }
    text.append(text.empty() || text.back() == ':' ? "" : ":");
    appendHex(text, address[i++], 1);
  }
  return text;
}

// Parses groups joined by ':', the last one optionally an IPv4 address. An empty text has no
// groups.
bool readGroups(std::string_view text, Groups& address, std::size_t& count) {
  count = 0;
  while (!text.empty()) {
    bool const last = text.find(':') == std::string_view::npos;
    std::string_view const group = cut(text, ':');
    std::array<std::uint8_t, ipSize> ip{};
    if (last && count + 2 <= groups && readIp(group, ip)) {
      address[count++] = static_cast<std::uint16_t>((ip[0] << 8) | ip[1]);
      address[count++] = static_cast<std::uint16_t>((ip[2] << 8) | ip[3]);
    } else if (count == groups || !readWhole(group, 16, 4, address[count++])) {
      return false;
    }
    if (!last && text.empty()) {
      return false;  // a ':' without a group after it
    }
  }
  return true;
}

bool readIp6(std::string_view text, std::span<std::uint8_t> bytes) {
  Groups head{};
  Groups tail{};
  std::size_t headCount = 0;
  std::size_t tailCount = 0;
  auto const gap = text.find("::");
  if (!readGroups(text.substr(0, gap), head, headCount)) {
    return false;
  }
  if (gap == std::string_view::npos) {
    if (headCount != groups) {
      return false;
    }
  } else if (text.substr(0, gap).find('.') != std::string_view::npos ||
             !readGroups(text.substr(gap + 2), tail, tailCount) ||
             headCount + tailCount >= groups) {
    return false;
  }
  std::copy_n(tail.begin(), tailCount, head.end() - static_cast<std::ptrdiff_t>(tailCount));
  for (std::size_t i = 0; i < groups; ++i) {
    bytes[2 * i] = static_cast<std::uint8_t>(head[i] >> 8);
    bytes[2 * i + 1] = static_cast<std::uint8_t>(head[i] & 0xff);
  }
  return true;
}

}  // namespace

std::string addressText(std::span<std::uint8_t const> bytes) {
  switch (bytes.size()) {
  case ipSize: return ipText(bytes);
  case macSize: return macText(bytes);
  default: return ip6Text(bytes);
  }
}

bool readAddress(std::string_view text, std::span<std::uint8_t> bytes) {
  switch (bytes.size()) {
  case ipSize: return readIp(text, bytes);
  case macSize: return readMac(text, bytes);
  default: return readIp6(text, bytes);
  }
}

void prefixMask(std::size_t length, std::span<std::uint8_t> mask) {
  for (std::uint8_t& byte : mask) {
    std::size_t const bits = std::min<std::size_t>(length, 8);
    byte = static_cast<std::uint8_t>(0xff00U >> bits);
    length -= bits;
  }
}

int prefixLength(std::span<std::uint8_t const> mask) {
  int length = 0;
  bool ended = false;
  for (std::uint8_t const byte : mask) {
    int const ones = std::countl_one(byte);
    if (std::popcount(byte) != ones || (ended && ones != 0)) {
      return -1;
    }
    length += ones;
    ended = ones != 8;
  }
  return length;
}

bool readPrefixLength(std::string_view text, std::size_t highest, std::size_t& length) {
  return readWhole(text, 10, 3, length) && length <= highest;
}

}  // namespace Ip
