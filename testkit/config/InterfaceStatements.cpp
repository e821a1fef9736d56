// SPDX-License-Identifier: Apache-2.0
// The statements about interfaces, zones and port-channels.

#include "testkit/config/StatementEditor.h"
#include "testkit/text/Lexer.h"

#include <Kor/Exception.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

namespace {

// How some dialects write kinds of interfaces.
struct KindSpelling {
  std::string_view spelling;  // in lower case
  std::string_view kind;
};
constexpr std::array kindSpellings{
    KindSpelling{"mgmteth", "Management"},
    KindSpelling{"tunnel-ip", "Tunnel"},
    KindSpelling{"lag", "PortChannel"},
};

// The name in its usual spelling: "Serial0/1/0:0" is "Serial0/1/0/0", and the names of cards are
// no part of the numbers of "MgmtEth0/RSP0/CPU0/0".
std::string usualName(std::string const& written) {
  std::size_t const kindEnd = std::min(written.find_first_of("0123456789"), written.size());
  std::string const kind = Text::lowerCase(std::string_view(written).substr(0, kindEnd));
  if (kind.empty()) {
    return "Ethernet" + written;
  }
  std::string name = written.substr(0, kindEnd);
  bool withCards = false;
  for (KindSpelling const& each : kindSpellings) {
    if (kind == each.spelling) {
      name = each.kind;
      withCards = each.spelling == "mgmteth";
    }
  }
  for (char const c : std::string_view(written).substr(kindEnd)) {
    bool const ofCard = withCards && !isDigit(c) && c != '/';
    if (!ofCard) {
      name.push_back(c == ':' ? '/' : c);
    }
  }
  return name;
}

}  // namespace

std::optional<Vorel::IntfId> StatementEditor::knownIntf(Name const& name) const {
  auto const portChannel = settings_.barePortChannels.find(name.text);
  if (portChannel != settings_.barePortChannels.end()) {
    return portChannel->second;
  }
  try {
    return Vorel::IntfId(Kor::String(usualName(name.text)));
  } catch (Kor::RangeException const&) {
    return std::nullopt;
  }
}

Vorel::IntfId StatementEditor::intfOf(Name const& name) const {
  std::optional<Vorel::IntfId> const intf = knownIntf(name);
  if (!intf) {
    fail("an interface name such as Ethernet3/1, PortChannel7 or Vlan10", name, "interface (name)");
  }
  return *intf;
}

InterfaceSettings& StatementEditor::interfaceOf(Name const& name) {
  auto const place = settings_.elsewhere.find(name.text);
  return place != settings_.elsewhere.end() ? place->second : settings_.interfaces[intfOf(name)];
}

void StatementEditor::apply(InterfaceOpen const& body) {
  std::string const& written = body.interface.text;
  std::optional<Vorel::IntfId> const intf = knownIntf(body.interface);
  if (!intf && body.orElsewhere) {
    settings_.elsewhere.try_emplace(written);
    return;
  }
  auto const [interface, isNew] = settings_.interfaces.try_emplace(intfOf(body.interface));
  if (isNew && interface->first.name().view() != written) {
    interface->second.written = written;
  }
}

void StatementEditor::apply(PlaceOpen const& body) {
  settings_.elsewhere.try_emplace(body.place.text);
}

void StatementEditor::apply(InterfaceRemove const& body) {
  // With the places on it.
  std::string const& name = body.interface.text;
  std::erase_if(settings_.elsewhere,
                [&](auto const& place) { return place.first.starts_with(name + " "); });
  if (settings_.elsewhere.erase(name) != 0) {
    return;
  }
  if (settings_.interfaces.erase(intfOf(body.interface)) == 0) {
    failAbsent("an interface", body.interface);
  }
}

void StatementEditor::apply(InterfaceAddress const& body) {
  InterfaceSettings& interface = interfaceOf(body.interface);
  auto& addresses = body.family == Family::ip4 ? interface.ip4 : interface.ip6;
  if (!body.prefix) {
    addresses.clear();
  } else if (body.remove) {
    if (!addresses.erase(*body.prefix)) {
      fail("an address of interface " + body.interface.text, textOf(*body.prefix, body.family),
           "no address (absent)");
    }
  } else if (body.secondary || body.family == Family::ip6) {
    addresses.addSecondary(*body.prefix);
  } else {
    addresses.addPrimary(*body.prefix);
  }
}

std::string StatementEditor::textOf(InterfacePrefix const& prefix, Family family) {
  Kor::String const text = family == Family::ip4 ? interfaceAddress<::Ip::Address>(prefix).text()
                                                 : interfaceAddress<::Ip6::Address>(prefix).text();
  return text.stdString();
}

void StatementEditor::apply(InterfaceSwitchport const& body) {
  interfaceOf(body.interface).switchport = body.on;
}

void StatementEditor::apply(InterfaceShutdown const& body) {
  interfaceOf(body.interface).shutdown = body.on;
}

void StatementEditor::apply(InterfaceChannelGroup const& body) {
  Vorel::IntfId const intf = intfOf(body.interface);
  InterfaceSettings& interface = settings_.interfaces[intf];
  if (body.bare) {
    auto const portChannel = settings_.barePortChannels.find(body.bare->text);
    if (portChannel == settings_.barePortChannels.end()) {
      failAbsent("a port-channel", *body.bare);
    }
    interface.channelGroup.reset();
    if (!body.remove) {
      interface.channelGroup = portChannel->second.numbers().front();
    }
    return;
  }
  if (body.remove) {
    if (body.group && interface.channelGroup != body.group) {
      fail("the channel-group of interface " + body.interface.text, std::to_string(*body.group),
           "no channel-group (absent)");
    }
    interface.channelGroup.reset();
    return;
  }
  if (!intf.isPhysical() || intf.isSubIntf()) {
    fail("a command for " + body.interface.text +
             ", which cannot join a channel-group: it is not a physical interface",
         statement_->subject.text, "channel-group (interface)");
  }
  interface.channelGroup = body.group;
}

void StatementEditor::apply(ServicePolicy const& body) {
  bool const isUsual = body.type.empty() || equalsKeyword(body.type, "qos");
  InterfaceSettings& interface = interfaceOf(body.interface);
  auto const direction = static_cast<std::size_t>(body.direction);
  std::string& attached =
      isUsual ? interface.policyMaps[direction] : interface.typedPolicyMaps[direction][body.type];
  if (!body.remove) {
    attached = body.policyMap->text;
    return;
  }
  if (body.policyMap && attached != body.policyMap->text) {
    fail(std::string("the policy-map that is attached for ") + toText(body.direction),
         *body.policyMap, "no service-policy (absent)");
  }
  attached.clear();
}

void StatementEditor::apply(InterfaceAccessGroup const& body) {
  std::map<std::uint32_t, std::string>& lists =
      interfaceOf(body.interface)
          .accessGroups[static_cast<std::size_t>(body.direction)]
                       [static_cast<std::size_t>(body.family)];
  if (!body.remove) {
    lists[body.priority] = body.list->text;
    return;
  }
  if (!body.list) {
    lists.clear();
    return;
  }
  auto const isIt = [&](auto const& each) { return each.second == body.list->text; };
  if (std::erase_if(lists, isIt) == 0) {
    fail(std::string("the list that is attached for ") + toText(body.direction), *body.list,
         "no access-group (absent)");
  }
}

void StatementEditor::apply(SkippedAttachment const& body) {
  interfaceOf(body.interface).skippedAttachments.insert(body.line);
}

void StatementEditor::apply(InterfaceZone const& body) {
  interfaceOf(body.interface).zone = body.remove ? "" : body.zone;
}

void StatementEditor::apply(ZonePairOpen const& body) {
  std::size_t const order = settings_.zonePairs.size();
  auto const [found, isNew] = settings_.zonePairs.try_emplace(body.zonePair.text);
  ZonePair& pair = found->second;
  pair.order = isNew ? order : pair.order;
  pair.source = body.source.empty() ? pair.source : body.source;
  pair.destination = body.destination.empty() ? pair.destination : body.destination;
}

void StatementEditor::apply(ZonePairRemove const& body) {
  auto const found = settings_.zonePairs.find(body.zonePair.text);
  if (found == settings_.zonePairs.end()) {
    failAbsent("a zone-pair", body.zonePair);
  }
  std::size_t const order = found->second.order;
  settings_.zonePairs.erase(found);
  for (auto& [name, pair] : settings_.zonePairs) {
    pair.order -= pair.order > order ? 1 : 0;
  }
}

void StatementEditor::apply(ZonePairPolicy const& body) {
  std::string& attached = settings_.zonePairs.at(body.zonePair.text).policyMap;
  attached = body.remove ? "" : body.policyMap->text;
}

void StatementEditor::apply(PortChannelName const& body) {
  std::string const& text = body.interface.text;
  if (settings_.barePortChannels.count(text) != 0) {
    return;
  }
  std::string number = text.substr(text.rfind('/') + 1);
  Vorel::IntfId intf = intfOf({"PortChannel" + number, body.interface.column});
  while (std::any_of(settings_.barePortChannels.begin(), settings_.barePortChannels.end(),
                     [&](auto const& known) { return known.second == intf; })) {
    number = std::to_string(intf.numbers().front() + 1);
    intf = intfOf({"PortChannel" + number, body.interface.column});
  }
  settings_.barePortChannels.emplace(text, intf);
}

void StatementEditor::apply(Routing const& body) {
  if (body.family == Family::ip4) {
    settings_.ipRouting = body.on;
  } else {
    settings_.ip6Routing = body.on;
  }
}

}  // namespace PolicyMapTestKit::Text
