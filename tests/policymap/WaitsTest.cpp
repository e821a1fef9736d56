// SPDX-License-Identifier: Apache-2.0
#include <Kor/Exception.h>
#include <PolicyMap/Waits.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace policymap {
namespace {

using PolicyMap::Waits;

std::string refusal(auto&& write) {
  try {
    write();
  } catch (Kor::RangeException const& exception) {
    return exception.what();
  }
  return "";
}

TEST(Waits, RefuseWhatIsNoneAndStayAsTheyAre) {
  Waits waits;
  double const nan = std::numeric_limits<double>::quiet_NaN();
  for (double const wait : {0.0, -0.0, -1.0, nan}) {
    EXPECT_THROW(waits.retryMinIs(wait), Kor::RangeException) << wait;
    EXPECT_THROW(waits.retryMaxIs(wait), Kor::RangeException) << wait;
    EXPECT_THROW(waits.asyncTimeoutIs(wait), Kor::RangeException) << wait;
  }
  EXPECT_THROW(waits.retryMinIs(61), Kor::RangeException);
  EXPECT_THROW(waits.retryMaxIs(0.5), Kor::RangeException);
  EXPECT_EQ(waits.retryMin(), 1);
  EXPECT_EQ(waits.retryMax(), 60);
  EXPECT_EQ(waits.asyncTimeout(), 30);
}

TEST(Waits, TheFirstMayBeAsLongAsTheLongest) {
  Waits waits;
  waits.retryMinIs(60);
  waits.retryMaxIs(60);
  waits.asyncTimeoutIs(0.001);
  EXPECT_EQ(waits.retryMin(), 60);
  EXPECT_EQ(waits.retryMax(), 60);
  EXPECT_EQ(waits.asyncTimeout(), 0.001);
}

TEST(Waits, SayWhichIsRefusedAndWhy) {
  Waits waits;
  EXPECT_EQ(refusal([&] { waits.retryMinIs(-1); }),
            "ServicePolicySm::retryMin -1 not allowed, must be above 0 and not above retryMax 60");
  EXPECT_EQ(refusal([&] { waits.retryMaxIs(0.5); }),
            "ServicePolicySm::retryMax 0.5 not allowed, must be above 0 and not below retryMin 1");
  EXPECT_EQ(refusal([&] { waits.asyncTimeoutIs(0); }),
            "ServicePolicySm::asyncTimeout 0 not allowed, must be above 0");
}

}  // namespace
}  // namespace policymap
