// SPDX-License-Identifier: Apache-2.0
#include "testkit/Tracing.h"

#include "support/TraceRecorder.h"
#include "testkit/Labs.h"

#include <Kor/Exception.h>

#include <gmock/gmock.h>

namespace PolicyMapTestKit::test {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::ThrowsMessage;

// Restores the levels of the process.
class Tracing : public testing::Test {
 protected:
  ~Tracing() override {
    Kor::traceLevelIs("PolicyMap", 0);
    Kor::traceLevelIs("*", 0);
  }
};

TEST_F(Tracing, OfOneSource) {
  TestSupport::TraceRecorder const trace;
  traceIs("PolicyMap/3");
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT(trace.lines(), Not(IsEmpty()));
  EXPECT_THAT(trace.lines(), Each(StartsWith("PolicyMap|3|P/input: ")));
}

TEST_F(Tracing, OfAllSources) {
  TestSupport::TraceRecorder const trace;
  traceIs("8");
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT(trace.lines(), testing::Contains(StartsWith("PolicyMap|4|P/input: commitPolicy")));
  EXPECT_THAT(trace.lines(),
              testing::Contains(StartsWith("PolicyMapTestSm|8|virtual Kor::String "
                                           "PolicyMapTest::AclHelper::commitPolicy")));
}

// To be run in a process of its own, as ctest does: other tests use the sources.
TEST_F(Tracing, TheSourcesOfTheLibrariesAreKnownWhenTheyAreLoaded) {
  EXPECT_NO_THROW(traceIs("PolicyMap/0"));
  EXPECT_NO_THROW(traceIs("PolicyMapTestSm/0"));
}

TEST_F(Tracing, AnUnknownSourceNamesTheNearest) {
  EXPECT_THAT([] { traceIs("PolicyMpa/3"); }, ThrowsMessage<LookupError>(testing::AllOf(
                                                  HasSubstr("PolicyMpa"), HasSubstr("PolicyMap"))));
}

TEST_F(Tracing, AnythingElseIsRefused) {
  for (char const* const setting : {"", "10", "PolicyMap", "PolicyMap/", "PolicyMap/x", "-1"}) {
    EXPECT_THAT([&] { traceIs(setting); }, ThrowsMessage<Kor::RangeException>(HasSubstr(setting)));
  }
}

}  // namespace
}  // namespace PolicyMapTestKit::test
