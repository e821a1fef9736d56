// SPDX-License-Identifier: Apache-2.0

// The rules of lists of real configurations. All expected rules were written by hand from reading
// the files: numbers of protocols, ports, messages and code points are those of their registries,
// sequence numbers were counted. A remark has a number, too; an entry without a number that equals
// an earlier one is not repeated.

#include "testkit/RealConfigurations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

class RealLists : public RealConfigurations {
 protected:
  // Rules that begin alike, with the numbers 10, 20, ...
  static Lines alike(std::string const& beginning, Lines const& endings) {
    Lines all;
    all.reserve(endings.size());
    for (std::string const& ending : endings) {
      std::ostringstream line;
      line << 10 * (all.size() + 1) << ' ' << beginning << ending;
      all.push_back(line.str());
    }
    return all;
  }

  // Rules for these ICMP messages, each a type or TYPE/CODE, after one for all.
  static Lines messages(std::string const& text) {
    Lines all{""};
    std::istringstream in(text);
    for (std::string message; in >> message;) {
      if (std::size_t const code = message.find('/'); code != std::string::npos) {
        message.replace(code, 1, " icmp-code ");
      }
      all.push_back(message.insert(0, " icmp-type "));
    }
    return alike("permit icmp any any", all);
  }

  // Rules for the eight code points of each precedence, with the numbers 10 to 17, 20 to 27, ...
  static Lines precedences(std::vector<std::size_t> const& wanted) {
    Lines all;
    all.reserve(8 * wanted.size());
    for (std::size_t i = 0; i != wanted.size(); ++i) {
      for (std::size_t point = 0; point != 8; ++point) {
        std::ostringstream line;
        line << 10 * (i + 1) + point << " permit ip any any dscp " << 8 * wanted[i] + point;
        all.push_back(line.str());
      }
    }
    return all;
  }
};

// Its remarks repeat each other, and its last entry has a wildcard that is no prefix.
constexpr auto sampleOfThePartition = R"(
      20 permit tcp host 10.1.6.20 host 10.1.6.98 eq 179
      30 permit tcp host 10.1.6.20 eq 179 host 10.1.6.98
      50 permit icmp 10.1.6.16/30 host 10.1.6.98
      60 permit icmp 10.1.6.24/29 host 10.1.6.98
      70 permit icmp 10.1.6.16/30 host 10.1.5.20
      80 permit icmp 10.1.6.24/29 host 10.1.5.20
      90 permit icmp 10.1.6.16/30 host 10.1.6.144
      100 permit icmp 10.1.6.24/29 host 10.1.6.144
      110 permit icmp 10.1.6.16/30 host 10.1.6.146
      120 permit icmp 10.1.6.24/29 host 10.1.6.146
      130 permit icmp 10.1.6.16/30 host 10.1.6.148
      140 permit icmp 10.1.6.24/29 host 10.1.6.148
      150 permit icmp 10.1.6.16/30 host 10.1.6.152
      160 permit icmp 10.1.6.24/29 host 10.1.6.152
      180 permit icmp 10.1.6.16/30 host 10.1.8.26
      190 permit icmp 10.1.6.24/29 host 10.1.8.26
      200 permit icmp 10.1.6.16/30 host 10.1.8.152
      210 permit icmp 10.1.6.24/29 host 10.1.8.152
      230 permit icmp 10.1.6.16/30 10.3.14.0/25
      240 permit icmp 10.1.6.24/29 10.3.14.0/25
      250 permit icmp 10.1.6.16/30 host 10.3.139.248
      260 permit icmp 10.1.6.24/29 host 10.3.139.248
      270 permit icmp 10.1.6.16/30 10.3.139.128/29
      280 permit icmp 10.1.6.24/29 10.3.139.128/29
      300 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4000
      310 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4010
      320 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4020
      330 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4080
      340 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4300
      350 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4310
      360 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4320
      370 permit tcp 10.1.6.24/29 host 10.1.5.20 eq 4380
      390 permit tcp 10.1.6.24/29 host 10.1.6.144 eq 4000
      400 permit tcp 10.1.6.24/29 host 10.1.6.144 eq 4010
      410 permit tcp 10.1.6.24/29 host 10.1.6.144 eq 4020
      420 permit tcp 10.1.6.24/29 host 10.1.6.144 eq 4300
      430 permit tcp 10.1.6.24/29 host 10.1.6.144 eq 4310
      440 permit tcp 10.1.6.24/29 host 10.1.6.144 eq 4320
      450 permit tcp 10.1.6.24/29 host 10.1.6.146 eq 4000
      460 permit tcp 10.1.6.24/29 host 10.1.6.146 eq 4010
      470 permit tcp 10.1.6.24/29 host 10.1.6.146 eq 4020
      480 permit tcp 10.1.6.24/29 host 10.1.6.146 eq 4300
      490 permit tcp 10.1.6.24/29 host 10.1.6.146 eq 4310
      500 permit tcp 10.1.6.24/29 host 10.1.6.146 eq 4320
      510 permit tcp 10.1.6.24/29 host 10.1.6.148 eq 4050
      520 permit tcp 10.1.6.24/29 host 10.1.6.148 eq 4060
      530 permit tcp 10.1.6.24/29 host 10.1.6.148 eq 4350
      540 permit tcp 10.1.6.24/29 host 10.1.6.148 eq 4360
      550 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4000
      560 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4010
      570 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4020
      580 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4080
      590 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4300
      600 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4310
      610 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4320
      620 permit tcp 10.1.6.24/29 host 10.1.6.152 eq 4380
      640 permit tcp 10.1.6.24/29 host 10.1.8.26 eq 4001
      650 permit tcp 10.1.6.24/29 host 10.1.8.152 eq 4001
      670 permit tcp 10.1.6.24/29 10.3.14.64/27 eq 9815
      680 permit tcp 10.1.6.24/29 10.3.14.64/27 range 9821 9823
      690 permit tcp 10.1.6.24/29 10.3.14.96/27 range 7400 7407
      710 permit udp 10.1.6.16/30 host 10.3.139.133 range 13001 13191
      720 permit udp 10.1.6.24/29 host 10.3.139.133 range 13001 13191
      740 permit tcp 10.1.6.16/30 host 10.3.139.134 range 13001 13191
      750 permit tcp 10.1.6.24/29 host 10.3.139.134 range 13001 13191
      770 permit pim host 10.1.6.20 host 224.0.0.1
      780 deny ip any any
      790 permit ip 10.0.0.0 wildcard 0.255.0.255 any)";

TEST_F(RealLists, OfThePartitionTheLongest) {
  expectLists("ios-acl-partition.cfg", {{"sample", lines(sampleOfThePartition)}});
}

// Named and numbered lists, standard and extended.
TEST_F(RealLists, OfThePartition) {
  expectLists("ios-acl-partition.cfg", {{"ios_partition_acl", lines(R"(
      20 deny 53 any any
      30 deny 55 any any
      40 deny pim any any
      70 permit udp any range 3478 3481 host 172.16.1.1
      80 permit udp any range 50000 50019 host 172.16.1.1
      90 permit udp any range 50020 50039 host 172.16.1.1
      100 permit udp any range 50040 50059 host 172.16.1.1
      130 permit tcp any host 192.168.100.1 established
      150 permit tcp host 10.1.1.1 eq 21 any eq 49)")},
                                        {"97", lines(R"(
      20 deny ip 10.1.0.1 wildcard 0.0.255.0 any
      30 permit ip any any)")},
                                        {"98", lines(R"(
      10 permit ip host 10.16.5.19 any
      20 permit ip host 10.16.5.20 any)")},
                                        {"101", lines(R"(
      10 permit tcp any host 10.1.1.1 eq 80
      20 permit tcp any host 10.1.1.1 eq 443
      40 permit ahp any any
      50 permit tcp host 10.1.1.1 eq 21 any eq 49)")},
                                        {"199", lines(R"(
      10 permit tcp host 10.16.5.19 any eq 80
      20 permit udp any any eq 1000)")},
                                        {"stdacl", {"10 permit ip host 10.1.1.1 any"}}});
}

TEST_F(RealLists, OfTheSampler) {
  expectLists("nxos_ip_access_list.cfg", {{"acl_indices", lines(R"(
      10 deny icmp any any
      13 deny 4 any any
      15 deny igmp any any
      25 deny 3 any any)")},
                                          {"acl_common_ip_options_destination_ip", lines(R"(
      10 permit ip any 10.0.0.0/24
      20 permit ip any 10.0.1.0/24
      30 permit ip any host 10.0.5.5
      40 permit ip any host 10.0.2.2
      50 permit ip any any)")},
                                          {"acl_common_ip_options_ttl", lines(R"(
      10 permit ip any any ttl eq 5)")},
                                          {"acl_tcp_destination_ports", lines(R"(
      10 permit tcp any any eq 1
      20 permit tcp any any gt 5
      30 permit tcp any any lt 10
      40 permit tcp any any neq 15
      50 permit tcp any any eq 65432
      60 permit tcp any any range 20 25)")},
                                          {"acl_udp_source_ports", lines(R"(
      10 permit udp any eq 1 any
      20 permit udp any gt 5 any
      30 permit udp any lt 10 any
      40 permit udp any neq 15 any
      50 permit udp any eq 54321 any
      60 permit udp any range 20 25 any)")},
                                          {"acl_l4_fragments_semantics", lines(R"(
      10 permit icmp host 192.0.2.1 any icmp-type 0
      20 deny icmp host 192.0.2.1 any icmp-type 1
      30 permit igmp host 192.0.2.1 any
      40 deny 3 host 192.0.2.1 any
      50 permit 4 host 192.0.2.1 any fragments
      60 deny 5 host 192.0.2.1 any fragments)")}});
}

TEST_F(RealLists, OfTheSamplerWithOneFieldEach) {
  expectLists("nxos_ip_access_list.cfg",
              {{"acl_simple_protocols",
                alike("permit ", {"ahp any any", "eigrp any any", "esp any any", "gre any any",
                                  "ip any any", "94 any any", "ospf any any", "108 any any",
                                  "pim any any", "icmp any any"})},
               {"acl_common_ip_options_dscp",
                alike("permit ip any any dscp ",
                      {"1",  "10", "12", "14", "18", "20", "22", "26", "28", "30", "34",
                       "36", "38", "8",  "16", "24", "32", "40", "48", "56", "0",  "46"})},
               // 5 and critical are the same.
               {"acl_common_ip_options_precedence", precedences({5, 3, 4, 2, 6, 7, 1, 0})},
               {"acl_tcp_flags",
                alike("permit tcp any any ", {"+ack", "+fin", "+psh", "+rst", "+syn", "+urg"})},
               {"acl_tcp_established", alike("permit tcp any any ", {"established"})}});
}

TEST_F(RealLists, OfTheSamplerByNames) {
  expectLists(
      "nxos_ip_access_list.cfg",
      {// echo-reply is the same as 0.
       {"acl_icmp", messages("0 1/2 3/13 6 31 3/10 3/9 8 12/0 3/8 3/14 5/1 5/3 3/12 3/7 3/1 16 15 "
                             "18 17 32 5/0 5/2 3/11 3/0 3/6 12/2 12/1 3/4 12 3/3 3/15 3/2 11/1 5 "
                             "9 10 4 3/5 11 14 13 30 11/0 3")},
       {"acl_tcp_destination_ports_named",
        alike("permit tcp any any eq ",
              {"179", "19",  "514", "13",  "9",   "53",  "3949", "7",   "512", "79",  "21",
               "20",  "70",  "101", "113", "194", "543", "544",  "513", "515", "119", "496",
               "109", "110", "25",  "111", "49",  "517", "23",   "37",  "540", "43",  "80"})},
       {"acl_udp_destination_ports_named",
        alike("permit udp any any eq ",
              {"512", "68",  "67",  "9",   "195",  "53",  "7",   "500", "434",
               "42",  "138", "137", "139", "4500", "123", "496", "520", "161",
               "162", "111", "514", "49",  "517",  "69",  "37",  "513", "177"})}});
}

}  // namespace
}  // namespace PolicyMapTestKit::test
