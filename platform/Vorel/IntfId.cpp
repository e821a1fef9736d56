// SPDX-License-Identifier: Apache-2.0
#include "Vorel/IntfId.h"

#include "Kor/Hash.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace Vorel {
namespace {

constexpr std::size_t mostNumbers = 4;

// The naming rules of a kind.
struct KindTraits {
  std::string_view name;      // as it prints
  std::string_view spelling;  // in lower case, without hyphens
  std::string_view otherSpelling;
  std::uint32_t lowest;  // of its numbers
  std::uint32_t highest;
  std::size_t mostNumbers;
  bool physical;
  bool hasSubIntfs;
};

constexpr std::uint32_t slot = 65535;
constexpr std::uint32_t logical = 2147483647;

// Indexed by IntfKind.
constexpr std::array<KindTraits, 25> kinds{{
    {"", "", "", 0, 0, 0, false, false},
    {"Ethernet", "ethernet", "", 0, slot, mostNumbers, true, true},
    {"FastEthernet", "fastethernet", "", 0, slot, mostNumbers, true, true},
    {"GigabitEthernet", "gigabitethernet", "gige", 0, slot, mostNumbers, true, true},
    {"TenGigabitEthernet", "tengigabitethernet", "tengige", 0, slot, mostNumbers, true, true},
    {"TwentyFiveGigE", "twentyfivegige", "twentyfivegigabitethernet", 0, slot, mostNumbers, true,
     true},
    {"FortyGigabitEthernet", "fortygigabitethernet", "fortygige", 0, slot, mostNumbers, true, true},
    {"HundredGigE", "hundredgige", "hundredgigabitethernet", 0, slot, mostNumbers, true, true},
    {"Serial", "serial", "", 0, slot, mostNumbers, true, true},
    {"PortChannel", "portchannel", "bundleether", 0, slot, 1, false, true},
    {"Vlan", "vlan", "", 1, 4094, 1, false, false},
    {"Management", "management", "mgmt", 0, slot, mostNumbers, false, false},
    {"Loopback", "loopback", "", 0, logical, 1, false, false},
    {"Tunnel", "tunnel", "", 0, logical, 1, false, false},
    {"BDI", "bdi", "", 1, slot, 1, false, false},
    {"TwoGigabitEthernet", "twogigabitethernet", "", 0, slot, mostNumbers, true, true},
    {"FiveGigabitEthernet", "fivegigabitethernet", "fivegige", 0, slot, mostNumbers, true, true},
    {"FourHundredGigE", "fourhundredgige", "", 0, slot, mostNumbers, true, true},
    {"AppGigabitEthernet", "appgigabitethernet", "", 0, slot, mostNumbers, true, true},
    {"BVI", "bvi", "", 1, slot, 1, false, false},
    {"Multilink", "multilink", "", 0, logical, mostNumbers, false, true},
    {"Dialer", "dialer", "", 0, logical, 1, false, false},
    {"Cellular", "cellular", "", 0, slot, mostNumbers, false, true},
    {"Virtual-Template", "virtualtemplate", "", 0, logical, 1, false, false},
    {"Null", "null", "", 0, slot, 1, false, false},
}};

KindTraits const& traitsOf(IntfKind kind) {
  return kinds[static_cast<std::size_t>(kind)];
}

// The identity of an interface. Unused numbers are 0.
struct Shape {
  IntfKind kind = IntfKind::none;
  std::uint8_t count = 0;
  std::array<std::uint32_t, mostNumbers> numbers{};
  std::uint32_t subIntf = 0;

  bool operator==(Shape const&) const = default;

  [[nodiscard]] std::uint32_t hash() const {
    std::uint32_t hash = Kor::hashOf(kind);
    for (std::size_t i = 0; i < count; ++i) {
      hash = Kor::hashCombine(hash, numbers[i]);
    }
    return Kor::hashCombine(hash, subIntf);
  }
  [[nodiscard]] std::string name() const {
    std::string name(traitsOf(kind).name);
    for (std::size_t i = 0; i < count; ++i) {
      name.append(i == 0 ? "" : "/").append(std::to_string(numbers[i]));
    }
    return subIntf == 0 ? name : name + "." + std::to_string(subIntf);
  }
};

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isLetter(char c) {
  return lowerCase(c) >= 'a' && lowerCase(c) <= 'z';
}

// The kind that `word`, in lower case, names or abbreviates; none if unknown or ambiguous.
IntfKind kindOf(std::string_view word) {
  auto const begins = [&](std::string_view spelling) { return spelling.starts_with(word); };
  IntfKind found = IntfKind::none;
  if (word.size() < 2) {
    return found;
  }
  for (std::size_t i = 1; i < kinds.size(); ++i) {
    auto const kind = static_cast<IntfKind>(i);
    if (word == kinds[i].spelling || word == kinds[i].otherSpelling) {
      return kind;
    }
    bool const abbreviates = kind <= IntfKind::bdi;
    if (abbreviates && (begins(kinds[i].spelling) || begins(kinds[i].otherSpelling))) {
      if (found != IntfKind::none) {
        return IntfKind::none;
      }
      found = kind;
    }
  }
  return found;
}

// Parses a name from left to right. Returns nothing if it is invalid.
class NameReader {
 public:
  explicit NameReader(std::string_view name) : rest_(name) {}

  std::optional<Shape> read() {
    Shape shape;
    shape.kind = kindOf(kindWord());
    KindTraits const& traits = traitsOf(shape.kind);
    do {
      auto const number = readNumber(traits.lowest, traits.highest);
      if (!number || shape.count == traits.mostNumbers) {
        return std::nullopt;
      }
      shape.numbers[shape.count++] = *number;
    } while (take('/'));
    if (traits.hasSubIntfs && take('.')) {
      auto const number = readNumber(1, 0xffffffffU);
      if (!number) {
        return std::nullopt;
      }
      shape.subIntf = *number;
    }
    return rest_.empty() ? std::optional(shape) : std::nullopt;
  }

 private:
  // The leading letters in lower case, without the hyphens between them. Skips blanks after them.
  std::string kindWord() {
    std::string word;
    while (!rest_.empty() && !isDigit(rest_.front()) && rest_.front() != ' ') {
      bool const joins =
          rest_.front() == '-' && !word.empty() && rest_.size() > 1 && isLetter(rest_[1]);
      if (!joins) {
        word.push_back(lowerCase(rest_.front()));
      }
      rest_.remove_prefix(1);
    }
    while (take(' ')) {
    }
    return word;
  }

  std::optional<std::uint32_t> readNumber(std::uint32_t lowest, std::uint32_t highest) {
    std::uint32_t number = 0;
    auto const [stop, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
    if (error != std::errc() || number < lowest || number > highest) {
      return std::nullopt;
    }
    rest_.remove_prefix(static_cast<std::size_t>(stop - rest_.data()));
    return number;
  }

  bool take(char c) {
    if (rest_.empty() || rest_.front() != c) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view rest_;
};

// All interfaces named so far. Index 0 is no interface.
class Table {
 public:
  struct Row {
    Shape shape;
    std::uint32_t hash;
    Kor::String name;
  };

  // Never destroyed: an IntfId may be used until the very end of the process.
  static Table& instance() {
    static Table& table = *new Table();
    return table;
  }

  [[nodiscard]] Row const& row(std::uint32_t index) const { return rows_[index]; }

  std::uint32_t indexOf(Shape const& shape) {
    auto const next = static_cast<std::uint32_t>(rows_.size());
    auto const [at, isNew] = indexes_.emplace(shape, next);
    if (isNew) {
      rows_.push_back({shape, shape.hash(), shape.name()});
    }
    return at->second;
  }

 private:
  struct HashShape {
    std::size_t operator()(Shape const& shape) const { return shape.hash(); }
  };

  Table() { indexOf(Shape()); }

  std::deque<Row> rows_;
  std::unordered_map<Shape, std::uint32_t, HashShape> indexes_;
};

Table::Row const& rowOf(std::uint32_t index) {
  return Table::instance().row(index);
}

std::string notAName(Kor::String const& name) {
  return "IntfId: '" + name.stdString() + "' is not an interface name";
}

}  // namespace

IntfId::IntfId(Kor::String const& name) {
  auto const shape = NameReader(name.view()).read();
  if (!shape) {
    throw Kor::RangeException(notAName(name));
  }
  index_ = Table::instance().indexOf(*shape);
}

IntfKind IntfId::kind() const {
  return rowOf(index_).shape.kind;
}

bool IntfId::isPhysical() const {
  return traitsOf(kind()).physical;
}

std::span<std::uint32_t const> IntfId::numbers() const {
  Shape const& shape = rowOf(index_).shape;
  return {shape.numbers.data(), shape.count};
}

std::uint32_t IntfId::subIntf() const {
  return rowOf(index_).shape.subIntf;
}

IntfId IntfId::parent() const {
  Shape shape = rowOf(index_).shape;
  shape.subIntf = 0;
  IntfId parent;
  parent.index_ = Table::instance().indexOf(shape);
  return parent;
}

Kor::String IntfId::name() const {
  return rowOf(index_).name;
}

std::uint32_t IntfId::hash() const {
  return rowOf(index_).hash;
}

std::strong_ordering IntfId::compare(IntfId a, IntfId b) {
  if (a == b) {
    return std::strong_ordering::equal;
  }
  Shape const& left = rowOf(a.index_).shape;
  Shape const& right = rowOf(b.index_).shape;
  if (auto const order = left.kind <=> right.kind; std::is_neq(order)) {
    return order;
  }
  // Ethernet3 before Ethernet3/0: a prefix comes first.
  auto const numbers = std::lexicographical_compare_three_way(
      left.numbers.begin(), left.numbers.begin() + left.count, right.numbers.begin(),
      right.numbers.begin() + right.count);
  return std::is_neq(numbers) ? numbers : left.subIntf <=> right.subIntf;
}

Kor::KorType* IntfId::_fwkType() {
  static Kor::KorType type("Vorel::IntfId", nullptr);
  return &type;
}

Kor::String valueToStrep(IntfId intf) {
  return Kor::valueToStrep(intf.name());
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, IntfId& intf) {
  Kor::skipSpace(it, end);
  std::size_t const column = it.position();
  Kor::String name;
  Kor::sequenceToValue(it, end, name);
  if (name.empty()) {
    intf = IntfId();
    return;
  }
  try {
    intf = IntfId(name);
  } catch (Kor::RangeException const& error) {
    throw Kor::RangeException(error.text() + " at column " + std::to_string(column));
  }
}

}  // namespace Vorel
