// SPDX-License-Identifier: Apache-2.0
#pragma once

// HelperArbiter: shares one helper among the policies that are programmed on it. It records which
// policies are created there and by which client, which client has the turn, and the one operation
// whose result is pending. Clients of several machines may share a helper. The arbiter belongs to
// the helper and outlives them.
//
// All operations of the helper are called through the arbiter. While one is on the stack, no client
// is granted a turn: grants and afterCall() requests wait until it returns. An operation may
// therefore do anything, including running the event loop.

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
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API HelperArbiter {
 public:
  // One policy. It holds the helper for the duration of a pass.
  class Client {
   public:
    // The client holds the helper from now until release().
    virtual void granted() = 0;
    // The pending operation has completed; "" for success.
    virtual void resultArrived(Kor::String const& error) = 0;
    // The operation that was on the stack at afterCall() has returned.
    virtual void callEnded() = 0;

   protected:
    ~Client() = default;
  };

  // The result of an operation, "" for success. An operation that throws has failed with the text
  // of the exception, and was not carried out.
  struct Result {
    Kor::String error;
    bool carriedOut = true;
    bool threw = false;
  };

  // Whether a policy exists on the helper, and whether it was created by a given client.
  struct Presence {
    bool created = false;
    bool owned = false;
  };

  // `helper` owns the arbiter.
  explicit HelperArbiter(Kor::PtrInterface& helper)
      : helper_(helper), grantTimer_([this] { grantNext(); }) {}
  HelperArbiter(HelperArbiter const&) = delete;
  HelperArbiter& operator=(HelperArbiter const&) = delete;

  // Calls hwInit(), the first time only. An exception is traced and does not propagate.
  void initialize(std::function<void()> const& hwInit);

  // Grants at once if the helper is free, otherwise in order of request. Does nothing if the client
  // already holds the helper or is queued.
  void request(Client& client);
  // The client must hold the helper. Grants it to the next client.
  void release(Client& client);
  // Removes the client from every queue. If it held the helper, a pending result is dropped. The
  // next client is then granted from the event loop, because withdraw() may be called inside an
  // operation or while other clients are about to withdraw.
  void withdraw(Client& client);

  // The policies created on the helper, and the client that created each; null if that client is
  // gone.
  [[nodiscard]] bool created(PolicyMapSmKey const& key, ClassMapMatchOption option) const {
    return created_.contains({key, option});
  }
  [[nodiscard]] Client const* creator(PolicyMapSmKey const& key, ClassMapMatchOption option) const;
  [[nodiscard]] Presence presence(PolicyMapSmKey const& key, ClassMapMatchOption option,
                                  Client const& client) const;
  void createdIs(PolicyMapSmKey const& key, ClassMapMatchOption option, Client const* creator);
  void createdDel(PolicyMapSmKey const& key, ClassMapMatchOption option);
  // Policies that the client has created remain, but belong to no client.
  void disown(PolicyMapSmKey const& key, Client const& client);

  // Why the operations that follow are called, e.g. "rules changed"; a literal. For helpers that
  // record it.
  [[nodiscard]] std::string_view cause() const { return cause_; }
  void causeIs(std::string_view cause) { cause_ = cause; }

  // True while an operation is on the stack.
  [[nodiscard]] bool calling() const { return calls_ != 0; }
  // Calls callEnded() of the client after the operation on the stack has returned.
  void afterCall(Client& client) { waiting_.push_back(&client); }

  // The operation on the stack is not carried out, although it will return a text.
  void notCarriedOut() { notCarriedOut_ = true; }

  // Calls an operation that returns a text.
  template <class Operation>
  Result call(Operation&& operation) {
    Kor::Ptr<Kor::PtrInterface> const pinned = Kor::share(&helper_);
    ++calls_;
    bool const outer = std::exchange(notCarriedOut_, false);
    Result result = resultOf(operation);
    if (std::exchange(notCarriedOut_, outer) && !result.error.empty()) {
      result.carriedOut = false;
    }
    if (--calls_ == 0) {
      callsEnded();
    }
    return result;
  }
  // Calls an operation whose result may come later. Returns nothing if the result is pending;
  // resultArrived() of the holder follows. `isAsync` is evaluated after the call.
  template <class Operation, class IsAsync>
  std::optional<Result> callAsync(Operation&& operation, IsAsync&& isAsync) {
    // Set before the call, because the result may arrive inside it.
    expectingResult_ = true;
    early_.reset();
    Result result = call(operation);
    expectingResult_ = false;
    if (holder_ == nullptr || !result.error.empty()) {
      return result;
    }
    if (early_) {
      return Result{*std::exchange(early_, std::nullopt)};
    }
    pending_ = isAsync();
    return pending_ ? std::nullopt : std::optional(result);
  }
  // The helper reports a result.
  void resultIs(AsyncOperationResult const& result);
  // Stops waiting for the pending result. A late one is dropped.
  void abandonResult() { pending_ = false; }

 private:
  template <class Operation>
  static Result resultOf(Operation&& operation) {
    try {
      return {operation()};
    } catch (std::exception const& exception) {
      return {std::string("exception: ") + exception.what(), false, true};
    } catch (...) {
      return {"exception", false, true};
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
  std::string_view cause_;
  unsigned calls_ = 0;
  bool notCarriedOut_ = false;    // the innermost call
  std::vector<Client*> waiting_;  // for callEnded()
  bool expectingResult_ = false;  // an operation on the stack may get its result inside the call
  std::optional<Kor::String> early_;  // the result that arrived inside the call
  bool pending_ = false;              // a result will arrive later
};

}  // namespace PolicyMap
