// SPDX-License-Identifier: Apache-2.0
#pragma once

// The line in which a rule describes itself, as in a configuration.

#include "Acl/NumberMatch.h"
#include "Acl/OptionalNumber.h"
#include "Acl/TcpFlags.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Acl {

// Builds the line of a rule: words separated by single blanks. Empty words are ignored.
class Words {
 public:
  explicit Words(bool permit) : text_(permit ? "permit" : "deny") {}

  void add(std::string_view word) {
    if (!word.empty()) {
      text_.append(" ").append(word);
    }
  }
  void add(std::string_view name, OptionalNumber number) {
    if (number) {
      add(name);
      add(std::to_string(*number));
    }
  }
  void addIf(bool present, std::string_view word) { add(present ? word : std::string_view()); }

  [[nodiscard]] std::string text() const { return text_; }

 private:
  std::string text_;
};

// Appends what the line says of a field, by the type of the field; nothing if it matches any
// packet.
inline void say(Words& words, std::string_view label, bool condition) {
  words.addIf(condition, label);
}
inline void say(Words& words, std::string_view label, OptionalNumber number) {
  words.add(label, number);
}
// An identifier, 0 for any.
inline void say(Words& words, std::string_view label, std::uint32_t identifier) {
  words.add(label, identifier == 0 ? OptionalNumber() : OptionalNumber(identifier));
}
inline void say(Words& words, std::string_view label, TtlMatch const& ttl) {
  words.addIf(!ttl.isAny(), label);
  words.add(ttl.describe());
}
// Without the label: "+syn -ack".
void say(Words& words, std::string_view label, TcpFlags flags);

// One field of a filter as the line says it.
template <class Filter>
struct Option {
  std::string_view field;
  std::string_view label;
  void (*add)(Words& words, std::string_view label, Filter const& filter);
};
template <class Filter, auto get>
constexpr Option<Filter> option(std::string_view field, std::string_view label) {
  return {field, label, [](Words& words, std::string_view said, Filter const& filter) {
            say(words, said, (filter.*get)());
          }};
}

// The fields that are said after the addresses, in the order of the line.
template <class Filter, std::size_t count>
using Options = std::array<Option<Filter>, count>;

template <class Filter, std::size_t count>
constexpr bool says(Options<Filter, count> const& options, std::string_view field) {
  for (auto const& known : options) {
    if (known.field == field) {
      return true;
    }
  }
  return false;
}
template <class Filter, std::size_t count>
void say(Words& words, Options<Filter, count> const& options, Filter const& filter) {
  for (auto const& said : options) {
    said.add(words, said.label, filter);
  }
}

}  // namespace Acl
