// SPDX-License-Identifier: Apache-2.0

// Collections of the records as standard containers.

#include "testkit/Collections.h"
#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;
using testing::_;
using testing::Each;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

TEST(Iteration, KeysAndEntriesOfARecord) {
  Lab lab;
  lab.load(R"(class-map match-any web
                match ip tcp any any eq 80
                match ip tcp any any eq 443
              policy-map edge
                class web
                  set action1 7
              interface Ethernet1
                service-policy input edge
              interface Ethernet2
                service-policy input edge)");
  auto const record =
      lab.helper()->testData({{"edge", "input"}, PolicyMap::ClassMapMatchOption::ipv4});
  EXPECT_THAT(keysOf(record->intfIteratorConst()),
              UnorderedElementsAre(Vorel::IntfId("Ethernet1"), Vorel::IntfId("Ethernet2")));
  EXPECT_THAT(entriesOf(record->ruleAction1IteratorConst()), Each(Pair(_, 7U)));
  for (auto const& rule : record->ruleMatchIteratorConst()) {
    EXPECT_EQ(rule.value().protocol(), 6) << rule.key();
  }
}

}  // namespace
