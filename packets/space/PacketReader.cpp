// SPDX-License-Identifier: Apache-2.0
#include "packets/space/FieldWords.h"
#include "packets/space/Packet.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/PortNames.h"
#include "testkit/text/RuleParser.h"

#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::Family;
using PolicyMapTestKit::Text::Lexer;
using PolicyMapTestKit::Text::SyntaxFailure;
using PolicyMapTestKit::Text::Token;

// An address, with a port for the protocols that have ports.
struct Endpoint {
  Packet::Address address{};
  std::optional<Family> family;
};

// Reads the words first and chooses the slice when all are known: the last word may say that the
// packet is a later fragment.
class Reader {
 public:
  explicit Reader(std::string_view text) : lexer_(text) {}

  Packet read() {
    isMac_ = lexer_.accept(macWord);
    if (!isMac_) {
      readProtocol();
    }
    Endpoint const source = readEndpoint(FieldId::sourcePort);
    if (!lexer_.accept(">")) {
      lexer_.fail("'>' between the addresses");
    }
    Endpoint const destination = readEndpoint(FieldId::destinationPort);
    while (!lexer_.peek().atEnd()) {
      readOption();
    }
    resolveProtocol();
    Packet packet(sliceId());
    if (packet.slice().has(FieldId::protocol)) {
      packet.fieldIs(FieldId::protocol, protocol_);
    }
    packet.addressIs(packet.slice().source(), source.address);
    packet.addressIs(packet.slice().destination(), destination.address);
    for (auto const& [field, value] : said_) {
      put(packet, field, value);
    }
    return packet;
  }

 private:
  struct Said {
    std::uint32_t value = 0;
    Token word;
  };

  // The family is known only with the addresses, and "icmp" depends on it.
  void readProtocol() {
    if (lexer_.accept("ipv6")) {
      family_ = Family::ip6;
    } else if (lexer_.accept("ip") || lexer_.accept("ipv4")) {
      family_ = Family::ip4;
    }
    Token const word = lexer_.peek();
    std::uint64_t number = 0;
    bool const isKnown = PolicyMapTestKit::Text::parseNumber(word.text, 0, 255, number) ||
                         PolicyMapTestKit::Text::protocolNumber(Family::ip4, word.text).has_value();
    if (isKnown) {
      protocolWord_ = lexer_.next();
    } else if (!family_) {
      lexer_.fail("a protocol, ip, ipv6 or mac");
    }
  }

  void resolveProtocol() {
    Family const family = family_.value_or(Family::ip4);
    std::uint64_t number = 0;
    if (auto const named = PolicyMapTestKit::Text::protocolNumber(family, protocolWord_.text)) {
      number = *named;
    } else {
      PolicyMapTestKit::Text::parseNumber(protocolWord_.text, 0, 255, number);
    }
    protocol_ = static_cast<std::uint8_t>(number);
  }

  // "10.0.0.1:80", "2001:db8::1" or "[2001:db8::1]:80"; nothing before ">" or at the end.
  Endpoint readEndpoint(FieldId portField) {
    Endpoint endpoint;
    Token const word = lexer_.peek();
    if (word.atEnd() || word.is(">")) {
      lexer_.fail("an address");
    }
    std::string_view host = word.text;
    std::string_view port;
    if (!isMac_) {
      std::size_t const colon = portColon(host);
      if (colon != std::string_view::npos) {
        port = host.substr(colon + 1);
        host = host.substr(0, colon);
      }
      bool const isBracketed = host.starts_with('[') && host.ends_with(']');
      if (isBracketed && host.find(':') != std::string_view::npos) {
        host = host.substr(1, host.size() - 2);
      }
    }
    endpoint.family = familyOf(host, endpoint.address);
    if (!endpoint.family || (family_ && *family_ != *endpoint.family)) {
      lexer_.fail(expectedAddress());
    }
    family_ = endpoint.family;
    if (port.data() != nullptr) {
      said_[portField] = {readPort(port), word};
    }
    lexer_.next();
    return endpoint;
  }

  // Where the port begins: after brackets, or after the only colon.
  static std::size_t portColon(std::string_view host) {
    std::size_t const colon = host.rfind(':');
    bool const isPort = colon != std::string_view::npos && colon != 0 &&
                        (host[colon - 1] == ']' || host.find(':') == colon);
    return isPort ? colon : std::string_view::npos;
  }

  [[nodiscard]] std::optional<Family> familyOf(std::string_view host,
                                               Packet::Address& address) const {
    using PolicyMapTestKit::Text::parseAddress;
    if (isMac_) {
      return parseAddress(Family::mac, host, address) ? std::optional(Family::mac) : std::nullopt;
    }
    if (parseAddress(Family::ip4, host, address)) {
      return Family::ip4;
    }
    return parseAddress(Family::ip6, host, address) ? std::optional(Family::ip6) : std::nullopt;
  }

  [[nodiscard]] std::string expectedAddress() const {
    if (isMac_) {
      return "a MAC address";
    }
    return !family_                  ? "an IPv4 or IPv6 address"
           : *family_ == Family::ip4 ? "an IPv4 address"
                                     : "an IPv6 address";
  }

  std::uint32_t readPort(std::string_view port) const {
    std::uint64_t number = 0;
    if (PolicyMapTestKit::Text::parseNumber(port, 0, 65535, number)) {
      return static_cast<std::uint32_t>(number);
    }
    std::uint8_t const protocol =
        PolicyMapTestKit::Text::protocolNumber(Family::ip4, protocolWord_.text).value_or(0);
    auto const named = PolicyMapTestKit::Text::portNumber(protocol, port);
    if (!named) {
      lexer_.fail("port 0-65535 or a port name after ':'");
    }
    return *named;
  }

  void readOption() {
    Token const word = lexer_.next();
    if (word.is(fragmentWord)) {
      fragment_ = word;
      return;
    }
    for (std::size_t bit = 0; bit != flagWords.size(); ++bit) {
      if (word.is(flagWords[bit])) {
        Said& flags = said_.try_emplace(FieldId::tcpFlags, Said{0, word}).first->second;
        flags.value |= std::uint32_t{1} << bit;
        return;
      }
    }
    for (FieldWord const& each : fieldWords) {
      if (word.is(each.word)) {
        if (said_.contains(each.field)) {
          throw SyntaxFailure{"'" + std::string(each.word) + "' once", word};
        }
        said_[each.field] = {readValue(each), word};
        return;
      }
    }
    throw SyntaxFailure{"a TCP flag, a field such as dscp, or '" + std::string(fragmentWord) + "'",
                        word};
  }

  std::uint32_t readValue(FieldWord const& field) {
    if (field.field == FieldId::dscp) {
      if (auto const named = PolicyMapTestKit::Text::dscpNumber(lexer_.peek().text)) {
        lexer_.next();
        return *named;
      }
    }
    if (field.field == FieldId::ethertype) {
      if (auto const type = PolicyMapTestKit::Text::acceptEtherType(lexer_)) {
        return *type;
      }
    }
    return static_cast<std::uint32_t>(
        PolicyMapTestKit::Text::takeNumber(lexer_, field.word, 0, field.highest));
  }

  [[nodiscard]] SliceId sliceId() const {
    if (isMac_) {
      return macSlice();
    }
    SliceId const first = family_ == Family::ip6 ? SliceId::tcp6 : SliceId::tcp4;
    auto const of = [first](SliceId slice) {
      return static_cast<SliceId>(static_cast<unsigned>(first) + static_cast<unsigned>(slice));
    };
    if (!fragment_.atEnd()) {
      return of(SliceId::fragment4);
    }
    for (SliceId const slice : {SliceId::tcp4, SliceId::udp4, SliceId::sctp4, SliceId::icmp4}) {
      if (Slice::of(of(slice)).protocol() == protocol_) {
        return of(slice);
      }
    }
    return of(SliceId::other4);
  }

  [[nodiscard]] SliceId macSlice() const {
    bool const isTagged = said_.contains(FieldId::vlan) || said_.contains(FieldId::cos);
    if (said_.contains(FieldId::mplsInnerLabel)) {
      return isTagged ? SliceId::taggedLabels : SliceId::labels;
    }
    if (said_.contains(FieldId::mplsLabel) || said_.contains(FieldId::mplsExperimental)) {
      return isTagged ? SliceId::taggedLabel : SliceId::label;
    }
    return isTagged ? SliceId::tagged : SliceId::untagged;
  }

  static void put(Packet& packet, FieldId field, Said const& said) {
    Slice const& slice = packet.slice();
    if (!slice.has(field)) {
      throw SyntaxFailure{"only fields that such a packet has", said.word};
    }
    packet.fieldIs(field, said.value);
    for (Box const& box : possible(slice)) {
      Slice::Place const place = slice.place(field);
      if (contains(box[place.first], packet.box()[place.first],
                   place.first < slice.ternaryLanes())) {
        return;
      }
    }
    throw SyntaxFailure{"a value that such a packet may have", said.word};
  }

  Lexer lexer_;
  bool isMac_ = false;
  std::optional<Family> family_;
  Token protocolWord_;
  std::uint8_t protocol_ = 0;
  Token fragment_;
  std::map<FieldId, Said> said_;
};

Packet readAt(std::string_view text, PolicyMapTestKit::Text::FileName const& file,
              std::uint32_t line) {
  try {
    return Reader(text).read();
  } catch (SyntaxFailure const& failure) {
    throw InputError({file, line, failure.found.column}, failure.expected, failure.found.text);
  }
}

}  // namespace

Packet readPacket(std::string_view text) {
  static auto const name = std::make_shared<std::string const>("packet");
  return readAt(text, name, 1);
}

std::vector<Packet> readPackets(PolicyMapTestKit::Text::SourceText const& text) {
  std::vector<Packet> packets;
  PolicyMapTestKit::Text::LineReader reader(text);
  while (reader.next()) {
    std::size_t const first = reader.line().find_first_not_of(" \t");
    if (first != std::string_view::npos && reader.line()[first] != '#' &&
        reader.line()[first] != '!') {
      packets.push_back(readAt(reader.line(), text.name(), reader.number()));
    }
  }
  return packets;
}

}  // namespace PolicyMapPackets
