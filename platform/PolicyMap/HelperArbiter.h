// SPDX-License-Identifier: Apache-2.0
#pragma once

// HelperArbiter: shares one helper among the policies that are programmed on it. It knows which
// policies are created there and by which client, which client's turn it is, and the one operation
// whose result is pending. Clients of several machines may share a helper; the arbiter belongs to
// the helper and outlives them.
//
// All operations of the helper are called through the arbiter. While one is on the stack no client
// is granted a turn: a turn that becomes free, and what callers asked for with afterCall(), waits
// for its return. So an operation may do anything, turning the event loop included.

#include "Kor/EventLoop.h"
#include "Kor/PtrInterface.h"
#include "Kor/String.h"
#include "PolicyMap/AsyncOperationResult.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMapExport.h"

#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API HelperArbiter {
 public:
  // One policy. It holds the helper for the length of a pass.
  class Client {
   public:
    // The helper is this client's until release().
    virtual void granted() = 0;
    // The pending operation has ended; "" for success.
    virtual void resultArrived(Kor::String const& error) = 0;
    // The operation that was on the stack at afterCall() has returned.
    virtual void callEnded() = 0;

   protected:
    ~Client() = default;
  };

  // The result of an operation, "" for success. One that throws has failed with the text of its
  // exception and is taken for not carried out.
  struct Answer {
    Kor::String error;
    bool threw = false;
  };

  // `helper` owns the arbiter.
  explicit HelperArbiter(Kor::PtrInterface& helper)
      : helper_(helper), grantTimer_([this] { grantNext(); }) {}
  HelperArbiter(HelperArbiter const&) = delete;
  HelperArbiter& operator=(HelperArbiter const&) = delete;

  // Calls hwInit() the first time. An exception is traced.
  void initialize(std::function<void()> const& hwInit);

  // Grants at once when the helper is free, else in order of request. A client that holds the
  // helper or waits for it already is not queued again.
  void request(Client& client);
  void release(Client& client);
  // Removes the client from every queue. If it held the helper, a pending result is dropped and the
  // next client is granted from the event loop, since withdraw() may be called inside an operation
  // or while other clients are about to withdraw.
  void withdraw(Client& client);

  // Whether a policy is created on the helper, and by which client: null when it is gone.
  [[nodiscard]] bool created(PolicyMapSmKey const& key, ClassMapMatchOption option) const {
    return created_.contains({key, option});
  }
  [[nodiscard]] Client const* creator(PolicyMapSmKey const& key, ClassMapMatchOption option) const;
  void createdIs(PolicyMapSmKey const& key, ClassMapMatchOption option, Client const* creator);
  void createdDel(PolicyMapSmKey const& key, ClassMapMatchOption option);
  // What the client has created of the policy belongs to no client from now on.
  void disown(PolicyMapSmKey const& key, Client const& client);

  // Whether an operation is on the stack.
  [[nodiscard]] bool calling() const { return calls_ != 0; }
  // Calls callEnded() of the client when the operation on the stack has returned.
  void afterCall(Client& client) { waiting_.push_back(&client); }

  // Calls an operation that returns a text.
  template <class Operation>
  Answer call(Operation&& operation) {
    Kor::Ptr<Kor::PtrInterface> const pinned = Kor::share(&helper_);
    ++calls_;
    Answer answer = answerOf(operation);
    if (--calls_ == 0) {
      callsEnded();
    }
    return answer;
  }
  // Calls one whose result may come later. Returns nothing when the result is pending: then
  // resultArrived() of the holder follows. `isAsync` is asked after the call.
  template <class Operation, class IsAsync>
  std::optional<Answer> callAsync(Operation&& operation, IsAsync&& isAsync) {
    // Armed before the call, since the result may come inside it.
    expectingResult_ = true;
    early_.reset();
    Answer answer = call(operation);
    expectingResult_ = false;
    if (holder_ == nullptr || !answer.error.empty()) {
      return answer;
    }
    if (early_) {
      return Answer{*std::exchange(early_, std::nullopt)};
    }
    pending_ = isAsync();
    return pending_ ? std::nullopt : std::optional(answer);
  }
  // A result has come from the helper.
  void resultIs(AsyncOperationResult const& result);
  // The pending result is no longer waited for; one that comes late is dropped.
  void abandonResult() { pending_ = false; }

 private:
  template <class Operation>
  static Answer answerOf(Operation&& operation) {
    try {
      return {operation()};
    } catch (std::exception const& exception) {
      return {std::string("exception: ") + exception.what(), true};
    } catch (...) {
      return {"exception", true};
    }
  }
  void callsEnded();
  void grantNext();

  Kor::PtrInterface& helper_;
  bool initialized_ = false;
  std::map<std::pair<PolicyMapSmKey, ClassMapMatchOption>, Client const*> created_;
  Client* holder_ = nullptr;
  std::deque<Client*> queue_;
  bool granting_ = false;
  Kor::Timer grantTimer_;
  unsigned calls_ = 0;
  std::vector<Client*> waiting_;      // for callEnded()
  bool expectingResult_ = false;      // an operation on the stack may get its result inside
  std::optional<Kor::String> early_;  // that result
  bool pending_ = false;              // a result is to come later
};

}  // namespace PolicyMap
