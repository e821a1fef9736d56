// SPDX-License-Identifier: Apache-2.0
// The statements about interfaces, zones and port-channels.

#include "testkit/config/StatementEditor.h"
#include "testkit/text/Lexer.h"

#include <Kor/Exception.h>

#include <algorithm>

namespace PolicyMapTestKit::Text {

Vorel::IntfId StatementEditor::intfOf(Name const& name) const {
  try {
    bool const bare = isDigit(name.text.front());
    auto const portChannel = settings_.barePortChannels.find(name.text);
    if (portChannel != settings_.barePortChannels.end()) {
      return portChannel->second;
    }
    return Vorel::IntfId(Kor::String((bare ? "Ethernet" : "") + name.text));
  } catch (Kor::RangeException const&) {
    fail("an interface name such as Ethernet3/1, PortChannel7 or Vlan10", name, "interface (name)");
  }
}

InterfaceSettings& StatementEditor::interfaceOf(Name const& name) {
  return settings_.interfaces[intfOf(name)];
}

void StatementEditor::apply(InterfaceOpen const& body) {
  interfaceOf(body.interface);
}

void StatementEditor::apply(InterfaceRemove const& body) {
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
  std::string& attached =
      interfaceOf(body.interface).policyMaps[static_cast<std::size_t>(body.direction)];
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
  std::string& list = interfaceOf(body.interface)
                          .accessGroups[static_cast<std::size_t>(body.direction)]
                                       [static_cast<std::size_t>(body.list.family)];
  if (body.remove && list != body.list.name.text) {
    fail(std::string("the list that is attached for ") + toText(body.direction), body.list.name,
         "no access-group (absent)");
  }
  list = body.remove ? "" : body.list.name.text;
}

void StatementEditor::apply(InterfaceZone const& body) {
  interfaceOf(body.interface).zone = body.remove ? "" : body.zone;
}

void StatementEditor::apply(ZonePairOpen const& body) {
  ZonePair& pair = settings_.zonePairs[body.zonePair.text];
  pair.source = body.source.empty() ? pair.source : body.source;
  pair.destination = body.destination.empty() ? pair.destination : body.destination;
}

void StatementEditor::apply(ZonePairRemove const& body) {
  if (settings_.zonePairs.erase(body.zonePair.text) == 0) {
    failAbsent("a zone-pair", body.zonePair);
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
  (body.family == Family::ip4 ? settings_.ipRouting : settings_.ip6Routing) = body.on;
}

}  // namespace PolicyMapTestKit::Text
