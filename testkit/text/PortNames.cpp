// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/PortNames.h"

#include "testkit/text/Lexer.h"

#include <Acl/Protocols.h>

namespace PolicyMapTestKit::Text {

namespace {

template <class Value>
struct Named {
  std::string_view name;
  Value value;
};

using NamedByte = Named<std::uint8_t>;
using NamedPort = Named<std::uint16_t>;
using NamedMessage = Named<IcmpMessage>;

// Those that rules do not print (see Acl/Protocols.h).
constexpr NamedByte furtherProtocols[] = {
    {"ah", 51},    {"egp", 8},    {"icmpv6", 58}, {"igp", 9},       {"igrp", 9},
    {"icmpv4", 1}, {"ipinip", 4}, {"ipip", 4},    {"isis", 124},    {"l2tp", 115},
    {"nos", 94},   {"pcp", 108},  {"rsvp", 46},   {"udplite", 136}, {"vrrp", 112},
};

constexpr NamedPort tcpPorts[] = {
    {"bgp", 179},
    {"chargen", 19},
    {"cmd", 514},
    {"daytime", 13},
    {"discard", 9},
    {"domain", 53},
    {"drip", 3949},
    {"echo", 7},
    {"exec", 512},
    {"finger", 79},
    {"ftp", 21},
    {"ftp-data", 20},
    {"gopher", 70},
    {"hostname", 101},
    {"http", 80},
    {"https", 443},
    {"ident", 113},
    {"imap", 143},
    {"imap4", 143},
    {"imaps", 993},
    {"connectedapps-plain", 15001},
    {"connectedapps-tls", 15002},
    {"ldp", 646},
    {"msdp", 639},
    {"onep-plain", 15001},
    {"onep-tls", 15002},
    {"ftpdata", 20},
    {"www-http", 80},
    {"irc", 194},
    {"kerberos", 88},
    {"klogin", 543},
    {"kshell", 544},
    {"ldap", 389},
    {"ldaps", 636},
    {"login", 513},
    {"lpd", 515},
    {"msrpc", 135},
    {"mysql", 3306},
    {"netbios-ssn", 139},
    {"nfs", 2049},
    {"nntp", 119},
    {"pim-auto-rp", 496},
    {"pop2", 109},
    {"pop3", 110},
    {"pop3s", 995},
    {"pptp", 1723},
    {"rsh", 514},
    {"rtsp", 554},
    {"sip", 5060},
    {"smtp", 25},
    {"sqlnet", 1521},
    {"ssh", 22},
    {"sunrpc", 111},
    {"syslog", 514},
    {"tacacs", 49},
    {"talk", 517},
    {"telnet", 23},
    {"time", 37},
    {"uucp", 540},
    {"whois", 43},
    {"www", 80},
};

constexpr NamedPort udpPorts[] = {
    {"bfd", 3784},       {"biff", 512},        {"bootpc", 68},       {"bootps", 67},
    {"discard", 9},      {"dnsix", 195},       {"domain", 53},       {"echo", 7},
    {"isakmp", 500},     {"kerberos", 88},     {"ldap", 389},        {"ldp", 646},
    {"mobile-ip", 434},  {"nameserver", 42},   {"netbios-dgm", 138}, {"netbios-ns", 137},
    {"netbios-ss", 139}, {"netbios-ssn", 139}, {"nfs", 2049},        {"non500-isakmp", 4500},
    {"ntp", 123},        {"pim-auto-rp", 496}, {"radius", 1812},     {"radius-acct", 1813},
    {"rip", 520},        {"ripng", 521},       {"ripv6", 521},       {"rtsp", 554},
    {"sip", 5060},       {"snmp", 161},        {"snmptrap", 162},    {"sunrpc", 111},
    {"syslog", 514},     {"tacacs", 49},       {"talk", 517},        {"tftp", 69},
    {"time", 37},        {"vxlan", 4789},      {"who", 513},         {"xdmcp", 177},
};

constexpr NamedByte dscps[] = {
    {"default", 0}, {"af11", 10}, {"af12", 12}, {"af13", 14}, {"af21", 18}, {"af22", 20},
    {"af23", 22},   {"af31", 26}, {"af32", 28}, {"af33", 30}, {"af41", 34}, {"af42", 36},
    {"af43", 38},   {"cs0", 0},   {"cs1", 8},   {"cs2", 16},  {"cs3", 24},  {"cs4", 32},
    {"cs5", 40},    {"cs6", 48},  {"cs7", 56},  {"ef", 46},   {"va", 44},   {"voice-admit", 44},
};

constexpr NamedByte precedences[] = {
    {"routine", 0},        {"priority", 1}, {"immediate", 2}, {"flash", 3},
    {"flash-override", 4}, {"critical", 5}, {"internet", 6},  {"network", 7},
};

constexpr auto anyCode = std::nullopt;

constexpr NamedMessage icmpMessages[] = {
    {"administratively-prohibited", {3, 13}},
    {"alternate-address", {6, anyCode}},
    {"conversion-error", {31, anyCode}},
    {"dod-host-prohibited", {3, 10}},
    {"dod-net-prohibited", {3, 9}},
    {"echo", {8, anyCode}},
    {"echo-reply", {0, anyCode}},
    {"general-parameter-problem", {12, 0}},
    {"host-isolated", {3, 8}},
    {"host-precedence-unreachable", {3, 14}},
    {"host-redirect", {5, 1}},
    {"host-tos-redirect", {5, 3}},
    {"host-tos-unreachable", {3, 12}},
    {"host-unknown", {3, 7}},
    {"host-unreachable", {3, 1}},
    {"information-reply", {16, anyCode}},
    {"information-request", {15, anyCode}},
    {"mask-reply", {18, anyCode}},
    {"mask-request", {17, anyCode}},
    {"mobile-redirect", {32, anyCode}},
    {"net-redirect", {5, 0}},
    {"net-tos-redirect", {5, 2}},
    {"net-tos-unreachable", {3, 11}},
    {"net-unreachable", {3, 0}},
    {"network-unknown", {3, 6}},
    {"no-room-for-option", {12, 2}},
    {"option-missing", {12, 1}},
    {"packet-too-big", {3, 4}},
    {"parameter-problem", {12, anyCode}},
    {"port-unreachable", {3, 3}},
    {"precedence-unreachable", {3, 15}},
    {"protocol-unreachable", {3, 2}},
    {"reassembly-timeout", {11, 1}},
    {"redirect", {5, anyCode}},
    {"router-advertisement", {9, anyCode}},
    {"router-solicitation", {10, anyCode}},
    {"source-quench", {4, anyCode}},
    {"source-route-failed", {3, 5}},
    {"time-exceeded", {11, anyCode}},
    {"timestamp-reply", {14, anyCode}},
    {"timestamp-request", {13, anyCode}},
    {"traceroute", {30, anyCode}},
    {"ttl-exceeded", {11, 0}},
    {"unreachable", {3, anyCode}},
};

constexpr NamedMessage icmp6Messages[] = {
    {"destination-unreachable", {1, anyCode}},
    {"no-route", {1, 0}},
    {"no-admin", {1, 1}},
    {"beyond-scope", {1, 2}},
    {"unreachable", {1, anyCode}},
    {"packet-too-big", {2, anyCode}},
    {"time-exceeded", {3, anyCode}},
    {"ttl-exceeded", {3, 0}},
    {"hop-limit", {3, 0}},
    {"parameter-problem", {4, anyCode}},
    {"echo", {128, anyCode}},
    {"echo-request", {128, anyCode}},
    {"echo-reply", {129, anyCode}},
    {"mld-query", {130, anyCode}},
    {"mld-report", {131, anyCode}},
    {"mld-reduction", {132, anyCode}},
    {"router-solicitation", {133, anyCode}},
    {"router-advertisement", {134, anyCode}},
    {"nd-ns", {135, anyCode}},
    {"nd-na", {136, anyCode}},
    {"redirect", {137, anyCode}},
    {"port-unreachable", {1, 4}},
};

constexpr NamedPort etherTypes[] = {
    {"ip", 0x0800},   {"arp", 0x0806},  {"rarp", 0x8035},         {"appletalk", 0x809b},
    {"ipx", 0x8137},  {"ipv6", 0x86dd}, {"mpls-unicast", 0x8847}, {"mpls-multicast", 0x8848},
    {"lldp", 0x88cc}, {"aarp", 0x80f3}, {"decnet-iv", 0x6003},
};

// A linear scan is enough: the tables are short, and words of other lengths are rejected at once.
template <class Value, std::size_t Size>
std::optional<Value> find(Named<Value> const (&table)[Size], std::string_view name) noexcept {
  for (auto const& entry : table) {
    if (equalsKeyword(name, entry.name)) {
      return entry.value;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::uint8_t> protocolNumber(Family family, std::string_view name) noexcept {
  if (equalsKeyword(name, "icmp")) {
    return family == Family::ip6 ? protocol::icmp6 : protocol::icmp;
  }
  for (Acl::Protocol const& protocol : Acl::protocols) {
    if (equalsKeyword(name, protocol.name)) {
      return protocol.number;
    }
  }
  return find(furtherProtocols, name);
}

std::optional<std::uint16_t> portNumber(std::uint8_t protocol, std::string_view name) noexcept {
  return protocol == protocol::udp ? find(udpPorts, name) : find(tcpPorts, name);
}

std::optional<std::uint8_t> dscpNumber(std::string_view name) noexcept {
  return find(dscps, name);
}

std::optional<std::uint8_t> precedenceNumber(std::string_view name) noexcept {
  return find(precedences, name);
}

std::optional<IcmpMessage> icmpMessage(std::uint8_t protocol, std::string_view name) noexcept {
  return protocol == protocol::icmp6 ? find(icmp6Messages, name) : find(icmpMessages, name);
}

std::optional<std::uint16_t> etherTypeNumber(std::string_view name) noexcept {
  return find(etherTypes, name);
}

}  // namespace PolicyMapTestKit::Text
