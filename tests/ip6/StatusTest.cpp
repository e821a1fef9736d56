// SPDX-License-Identifier: Apache-2.0
#include "ip/StatusChecks.h"

#include <Ip6/Status.h>

namespace IpVersions {

struct Ip6Version {
  using Address = Ip6::Address;
  using Status = Ip6::Status;
  static constexpr char const* space = "Ip6";
  static constexpr char const* name = "ip6";
  static constexpr char const* first = "2001:db8::1/64";
  static constexpr char const* next = "2001:db8::2/64";
  static constexpr char const* loopback = "::1";
  static constexpr int bits = 128;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Ip6, StatusOf, Ip6Version);

}  // namespace IpVersions
