// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared by the tests of proofs and traces: a lab with a policy, and its record to change.

#include "packets/Proof.h"
#include "packets/Trace.h"
#include "testkit/Lab.h"

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

namespace PolicyMapPackets::test {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMapTest::AclPolicyData;
using PolicyMapTestKit::Lab;

inline constexpr char const* policy = R"(ip access-list web
  10 permit tcp any any eq 80
  20 permit tcp any any range 8000 8010
ip access-list rest
  10 deny udp any any eq 53
  20 permit ip any any
class-map match-any web
  match access-group web
class-map match-any rest
  match access-group rest
policy-map edge
  class web
    set action1 1
  class rest
    set action1 2
interface Ethernet1
  ip address 192.0.2.1/24
  service-policy input edge)";

inline constexpr char const* webPacket = "tcp 10.0.0.1:4000 > 192.0.2.80:80";

// A class-map with these lines is the only class of a policy-map, with action1 1.
inline std::string oneClass(std::string const& lists, std::string const& classMap) {
  return lists + "\nclass-map " + classMap + "\npolicy-map edge\n class one\n  set action1 1\n" +
         "interface Ethernet1\n ip address 192.0.2.1/24\n ipv6 address 2001:db8::1/64\n" +
         " service-policy input edge\n";
}

template <class Printed>
std::string printed(Printed const& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

inline Proof proofOf(Lab const& lab, SearchOptions const& options = {}) {
  std::vector<Proof> const proofs = prove(lab, options);
  EXPECT_EQ(proofs.size(), 1U);
  return proofs.front();
}

inline Trace traceOf(Lab const& lab, std::string const& packet, TraceOptions const& options = {}) {
  std::vector<Trace> const traces = tracePacket(lab, readPacket(packet), options);
  EXPECT_EQ(traces.size(), 1U) << packet;
  return traces.front();
}

inline Kor::Ptr<AclPolicyData> dataOf(Lab const& lab) {
  return lab.helper()->testData({{"edge", "input"}, ClassMapMatchOption::ipv4});
}

// A rule of the class of the same name.
inline AclRuleKey keyOf(char const* list, std::uint32_t number) {
  return {list, list, number, ClassMapMatchOption::ipv4};
}

}  // namespace PolicyMapPackets::test
