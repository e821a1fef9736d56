// SPDX-License-Identifier: Apache-2.0
#include "ip/StatusChecks.h"

#include <Ip/Status.h>

namespace IpVersions {

struct IpVersion {
  using Address = Ip::Address;
  using Status = Ip::Status;
  static constexpr char const* space = "Ip";
  static constexpr char const* name = "ip";
  static constexpr char const* first = "10.0.0.1/24";
  static constexpr char const* next = "10.0.0.2/24";
  static constexpr char const* loopback = "127.0.0.1";
  static constexpr int bits = 32;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Ip, StatusOf, IpVersion);

}  // namespace IpVersions
