// SPDX-License-Identifier: Apache-2.0
#include "support/TraceRecorder.h"

#include <Kor/EventLoop.h>
#include <PolicyMap/HelperArbiter.h>

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::HelperArbiter;
using PolicyMap::PolicyMapSmKey;
using testing::ElementsAre;
using testing::IsEmpty;

using Journal = std::vector<std::string>;

class ArbiterOwner final : public Kor::PtrInterface {
 public:
  HelperArbiter arbiter{*this};
  [[nodiscard]] Kor::KorType const* fwkType() const override { return PtrInterface::_fwkType(); }
};

class Client final : public HelperArbiter::Client {
 public:
  Client(std::string name, Journal& journal) : name_(std::move(name)), journal_(journal) {}

  std::function<void()> whenGranted;
  std::function<void()> whenCallEnded;

  void granted() override {
    journal_.push_back(name_ + " granted");
    if (whenGranted) {
      whenGranted();
    }
  }
  void resultArrived(Kor::String const& error) override {
    journal_.push_back(name_ + " result " + error.stdString());
  }
  void callEnded() override {
    journal_.push_back(name_ + " call ended");
    if (whenCallEnded) {
      whenCallEnded();
    }
  }

 private:
  std::string name_;
  Journal& journal_;
};

class Arbiter : public testing::Test {
 protected:
  Arbiter() { Kor::EventLoop::global().virtualTimeIs(true); }
  ~Arbiter() override { Kor::EventLoop::global().virtualTimeIs(false); }

  static void settle() { Kor::EventLoop::global().runUntilIdle(); }
  Kor::String call(std::function<void()> const& deed) {
    return arbiter
        .call([&] {
          deed();
          return Kor::String();
        })
        .error;
  }

  Kor::Ptr<ArbiterOwner> owner = Kor::make<ArbiterOwner>();
  HelperArbiter& arbiter = owner->arbiter;
  Journal journal;
  Client a{"a", journal};
  Client b{"b", journal};
  Client c{"c", journal};
  static constexpr auto ipv4 = ClassMapMatchOption::ipv4;
  PolicyMapSmKey const key{"pm", "input"};
};

TEST_F(Arbiter, GrantsAtOnceThenInOrderOfRequest) {
  arbiter.request(a);
  arbiter.request(c);
  arbiter.request(b);
  EXPECT_THAT(journal, ElementsAre("a granted"));
  arbiter.release(a);
  EXPECT_THAT(journal, ElementsAre("a granted", "c granted"));
  arbiter.release(c);
  EXPECT_THAT(journal, ElementsAre("a granted", "c granted", "b granted"));
}

TEST_F(Arbiter, AClientThatHoldsOrWaitsIsNotQueuedAgain) {
  arbiter.request(a);
  arbiter.request(a);
  arbiter.request(b);
  arbiter.request(b);
  arbiter.release(a);
  arbiter.release(b);
  EXPECT_THAT(journal, ElementsAre("a granted", "b granted"));
}

TEST_F(Arbiter, TurnsThatEndAtOnceDoNotNest) {
  unsigned depth = 0;
  unsigned deepest = 0;
  for (Client* const client : {&a, &b, &c}) {
    client->whenGranted = [&, client] {
      deepest = std::max(deepest, ++depth);
      arbiter.release(*client);
      --depth;
    };
  }
  a.whenGranted = [&] {
    deepest = std::max(deepest, ++depth);
    arbiter.request(b);
    arbiter.request(c);
    arbiter.release(a);
    --depth;
  };
  arbiter.request(a);
  EXPECT_THAT(journal, ElementsAre("a granted", "b granted", "c granted"));
  EXPECT_EQ(deepest, 1U);
}

TEST_F(Arbiter, AHolderThatWithdrawsLeavesTheNextTurnToTheLoop) {
  arbiter.request(a);
  arbiter.request(b);
  arbiter.withdraw(a);
  EXPECT_THAT(journal, ElementsAre("a granted"));
  settle();
  EXPECT_THAT(journal, ElementsAre("a granted", "b granted"));
}

TEST_F(Arbiter, AClientThatWithdrawsInTheQueueIsNotGranted) {
  arbiter.request(a);
  arbiter.request(b);
  arbiter.withdraw(b);
  arbiter.release(a);
  settle();
  EXPECT_THAT(journal, ElementsAre("a granted"));
}

TEST_F(Arbiter, GrantsNoTurnWhileAnOperationIsOnTheStack) {
  call([&] {
    arbiter.request(a);
    settle();
    EXPECT_THAT(journal, IsEmpty());
  });
  settle();
  EXPECT_THAT(journal, ElementsAre("a granted"));
}

TEST_F(Arbiter, ATurnThatIsGivenBackInsideAnOperationWaitsForItsReturn) {
  arbiter.request(a);
  arbiter.request(b);
  call([&] {
    arbiter.withdraw(a);
    settle();
    call([] {});
    EXPECT_THAT(journal, ElementsAre("a granted"));
  });
  settle();
  EXPECT_THAT(journal, ElementsAre("a granted", "b granted"));
}

TEST_F(Arbiter, CallsBackWhenTheOutermostOperationHasReturned) {
  a.whenCallEnded = [&] { arbiter.withdraw(c); };
  call([&] {
    EXPECT_TRUE(arbiter.calling());
    arbiter.afterCall(a);
    arbiter.afterCall(b);
    arbiter.afterCall(c);
    call([] {});
    EXPECT_THAT(journal, IsEmpty());
  });
  EXPECT_FALSE(arbiter.calling());
  EXPECT_THAT(journal, ElementsAre("a call ended", "b call ended"));
}

TEST_F(Arbiter, AnOperationThatThrowsHasFailedWithItsText) {
  auto const answer =
      arbiter.call([]() -> Kor::String { throw std::runtime_error("lost the card"); });
  EXPECT_EQ(answer.error, "exception: lost the card");
  EXPECT_FALSE(answer.carriedOut);
  EXPECT_TRUE(answer.threw);
  auto const other = arbiter.call([]() -> Kor::String { throw 7; });
  EXPECT_EQ(other.error, "exception");
  EXPECT_FALSE(arbiter.calling());
  EXPECT_TRUE(arbiter.call([] { return Kor::String("exception: no"); }).carriedOut);
}

TEST_F(Arbiter, AnOperationMaySayThatItWasNotCarriedOut) {
  auto const refused = arbiter.call([&]() -> Kor::String {
    // The mark of an inner call is not that of the outer one.
    EXPECT_TRUE(arbiter.call([] { return Kor::String("inner"); }).carriedOut);
    arbiter.notCarriedOut();
    return "no room";
  });
  EXPECT_EQ(refused.error, "no room");
  EXPECT_FALSE(refused.carriedOut);
  EXPECT_FALSE(refused.threw);
  EXPECT_TRUE(arbiter.call([] { return Kor::String("no room"); }).carriedOut);
  auto const succeeded = arbiter.call([&]() -> Kor::String {
    arbiter.notCarriedOut();
    return {};
  });
  EXPECT_TRUE(succeeded.carriedOut);
}

TEST_F(Arbiter, InitialisesOnceWhateverComesOfIt) {
  TestSupport::TraceRecorder const trace("PolicyMap", 1);
  int calls = 0;
  auto const hwInit = [&] {
    ++calls;
    throw std::runtime_error("no card");
  };
  arbiter.initialize(hwInit);
  arbiter.initialize(hwInit);
  EXPECT_EQ(calls, 1);
}

TEST_F(Arbiter, KnowsWhoCreatedWhat) {
  EXPECT_FALSE(arbiter.created(key, ipv4));
  EXPECT_EQ(arbiter.creator(key, ipv4), nullptr);
  arbiter.createdIs(key, ipv4, &a);
  EXPECT_TRUE(arbiter.created(key, ipv4));
  EXPECT_FALSE(arbiter.created(key, ClassMapMatchOption::ipv6));
  EXPECT_EQ(arbiter.creator(key, ipv4), &a);
  EXPECT_TRUE(arbiter.presence(key, ipv4, a).created && arbiter.presence(key, ipv4, a).owned);
  EXPECT_TRUE(arbiter.presence(key, ipv4, b).created);
  EXPECT_FALSE(arbiter.presence(key, ipv4, b).owned);
  arbiter.createdIs(key, ipv4, nullptr);
  EXPECT_TRUE(arbiter.created(key, ipv4));
  EXPECT_EQ(arbiter.creator(key, ipv4), nullptr);
  EXPECT_TRUE(arbiter.presence(key, ipv4, a).created);
  EXPECT_FALSE(arbiter.presence(key, ipv4, a).owned);
  arbiter.createdDel(key, ipv4);
  EXPECT_FALSE(arbiter.created(key, ipv4));
  EXPECT_FALSE(arbiter.presence(key, ipv4, a).created);
}

// asynchronous results

class AsyncArbiter : public Arbiter {
 protected:
  std::optional<std::string> start(std::function<Kor::String()> const& operation,
                                   bool async = true) {
    auto const answer = arbiter.callAsync(operation, [async] { return async; });
    return answer ? std::optional(answer->error.stdString()) : std::nullopt;
  }
  static Kor::String accept() { return {}; }
};

TEST_F(AsyncArbiter, AResultThatComesLaterReachesTheHolder) {
  TestSupport::TraceRecorder const trace("PolicyMap", 1);
  arbiter.request(a);
  EXPECT_EQ(start(accept), std::nullopt);
  arbiter.resultIs({"bad", 0});
  EXPECT_THAT(trace.lines(), IsEmpty());
  arbiter.resultIs({"nobody waits", 0});
  EXPECT_EQ(trace.lines().size(), 1U);
  EXPECT_THAT(journal, ElementsAre("a granted", "a result bad"));
}

TEST_F(AsyncArbiter, AResultBeforeTheFirstCallIsOnlyTraced) {
  TestSupport::TraceRecorder const trace("PolicyMap", 1);
  arbiter.resultIs({"early", 0});
  EXPECT_EQ(trace.lines().size(), 1U);
}

TEST_F(AsyncArbiter, TheFirstResultInsideTheCallDecides) {
  TestSupport::TraceRecorder const trace("PolicyMap", 1);
  arbiter.request(a);
  EXPECT_EQ(start([&] {
              arbiter.resultIs({"first", 0});
              arbiter.resultIs({"second", 0});
              return Kor::String();
            }),
            "first");
  EXPECT_THAT(journal, ElementsAre("a granted"));
  EXPECT_EQ(trace.lines().size(), 1U) << "the second result";
}

TEST_F(AsyncArbiter, ATextOfTheCallIsItsResult) {
  arbiter.request(a);
  EXPECT_EQ(start([&] { return Kor::String("refused"); }), "refused");
  arbiter.resultIs({"late", 0});
  EXPECT_THAT(journal, ElementsAre("a granted"));
}

TEST_F(AsyncArbiter, ASynchronousCallIsDone) {
  arbiter.request(a);
  EXPECT_EQ(start(accept, false), "");
}

TEST_F(AsyncArbiter, AnAbandonedResultIsDropped) {
  arbiter.request(a);
  start(accept);
  arbiter.abandonResult();
  arbiter.resultIs({"late", 0});
  EXPECT_THAT(journal, ElementsAre("a granted"));
}

TEST_F(AsyncArbiter, NobodyWaitsForTheResultOfAHolderThatWithdrew) {
  arbiter.request(a);
  start(accept);
  arbiter.withdraw(a);
  arbiter.request(b);
  arbiter.resultIs({"late", 0});
  EXPECT_THAT(journal, ElementsAre("a granted", "b granted"));
}

TEST_F(AsyncArbiter, AHolderThatWithdrawsInsideTheCallLeavesNoPendingResult) {
  arbiter.request(a);
  EXPECT_EQ(start([&] {
              arbiter.withdraw(a);
              return Kor::String();
            }),
            "");
  arbiter.request(b);
  arbiter.resultIs({"late", 0});
  EXPECT_THAT(journal, ElementsAre("a granted", "b granted"));
}

TEST_F(AsyncArbiter, AResultInsideACallThatFailsIsNotThatOfTheNextCall) {
  arbiter.request(a);
  EXPECT_EQ(start([&] {
              arbiter.resultIs({"early", 0});
              return Kor::String("refused");
            }),
            "refused");
  EXPECT_EQ(start(accept), std::nullopt);
}

TEST_F(Arbiter, WhatAClientGivesUpBelongsToNoClient) {
  PolicyMapSmKey const other{"other", "input"};
  arbiter.createdIs(key, ipv4, &a);
  arbiter.createdIs(key, ClassMapMatchOption::ipv6, &b);
  arbiter.createdIs(other, ipv4, &a);
  arbiter.disown(key, a);
  EXPECT_TRUE(arbiter.created(key, ipv4));
  EXPECT_EQ(arbiter.creator(key, ipv4), nullptr);
  EXPECT_EQ(arbiter.creator(key, ClassMapMatchOption::ipv6), &b);
  EXPECT_EQ(arbiter.creator(other, ipv4), &a);
}

}  // namespace
}  // namespace policymap
