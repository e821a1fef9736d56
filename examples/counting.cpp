// SPDX-License-Identifier: Apache-2.0

// Counting calls: a helper that records nothing else.

#include "testkit/ForwardingHelper.h"
#include "testkit/Lab.h"
#include "testkit/Matchers.h"

#include <map>

using namespace PolicyMapTestKit;

namespace {

class Counting final : public ForwardingHelper<PolicyMap::PolicyMapAclHelper> {
 public:
  std::map<std::string_view, int> calls;

 protected:
  void around(HelperCall& call, Proceed const& proceed) override {
    ++calls[call.operation];
    proceed();
  }
};

TEST(Counting, ManyEditsInOneTextAreOnePass) {
  Lab lab;
  Kor::EventLoop::Scope const scope(lab.eventLoop());
  auto const counting = Kor::make<Counting>();
  lab.machine()->aclHelperIs(counting);
  std::string text = "class-map match-any web\n";
  for (int port = 8000; port != 8100; ++port) {
    text += "match ip tcp any any eq " + std::to_string(port) + "\n";
  }
  lab.load(text + "policy-map edge\n class web\n"
                  "interface Ethernet1\n service-policy input edge");
  EXPECT_EQ(counting->calls["createPolicy"], 1);
  EXPECT_EQ(counting->calls["addRule"], 100);
  EXPECT_EQ(counting->calls["commitPolicy"], 1);
}

}  // namespace
