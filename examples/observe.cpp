// SPDX-License-Identifier: Apache-2.0

// An observer: the changes of a status while its policy fails and recovers.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;
using PolicyMap::ClassMapMatchOption;

namespace {

class StatusWatch final : public PolicyMap::PolicyMapStatus::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  std::vector<std::string> events;

  void onError() override { events.push_back("error: " + notifier()->error().stdString()); }
  void onProgrammed(ClassMapMatchOption option) override {
    bool const programmed = notifier()->programmed(option);
    events.push_back(toText(option) + (programmed ? " programmed" : " not programmed"));
  }
};

TEST(Observe, EachChangeIsReportedOnce) {
  Lab lab;
  lab.load(R"(class-map match-any web
                match ip tcp any any eq 80
              policy-map edge
                class web
              interface Ethernet1
                service-policy input edge)");
  auto const watch = Kor::make<StatusWatch>(lab.status()->policyMapStatus({"edge", "input"}));
  lab.inject({"commitError", "table full"});
  lab.load("class-map match-any web\n match ip tcp any any eq 443");
  lab.clearFaults();
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(watch->events, testing::ElementsAre("ipv4 not programmed", "error: table full",
                                                  "ipv4 programmed", "error: "));
}

}  // namespace
