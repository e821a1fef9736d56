// SPDX-License-Identifier: Apache-2.0
#pragma once

// Programmer: what the core knows about one helper. Which policies are created on it, who is using
// it and who comes next, and the one operation whose result may still be outstanding. Several
// machines may share a helper; the programmer outlives each of them.

#include "Kor/EventLoop.h"
#include "Kor/String.h"
#include "PolicyMap/AsyncOperationResult.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/Export.h"
#include "PolicyMap/PolicyMapSmKey.h"

#include <deque>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace PolicyMap {

class PolicyMapAclHelper;

// What an operation answers. One that throws has failed with the text of its exception and is taken
// for not carried out: then `undo` is called.
template <class Operation, class Undo>
Kor::String answerOf(Operation&& operation, Undo&& undo) {
  Kor::String error;
  try {
    return operation();
  } catch (std::exception const& exception) {
    error = std::string("exception: ") + exception.what();
  } catch (...) {
    error = "exception";
  }
  undo();
  return error;
}
template <class Operation>
Kor::String answerOf(Operation&& operation) {
  return answerOf(operation, [] {});
}

class POLICYMAP_API Programmer {
 public:
  // One that programs: it holds the programmer from the first call of a pass to the last.
  class User {
   public:
    // The programmer is this user's; it must be given back with release().
    virtual void programmerGranted() = 0;
    // The outstanding operation has ended, "" for success.
    virtual void operationEnded(Kor::String const& error) = 0;

   protected:
    ~User() = default;
  };

  explicit Programmer(PolicyMapAclHelper& helper)
      : helper_(helper), grantTimer_([this] { grantNext(); }) {}
  Programmer(Programmer const&) = delete;
  Programmer& operator=(Programmer const&) = delete;

  // Calls hwInit of the helper the first time.
  void start();

  // Grants at once when free, else in order of request. A user asks once at a time.
  void request(User& user);
  void release(User& user);
  // A user that gives up: out of the queue. When it held the programmer the outstanding result is
  // nobody's, and the next user's turn comes with the event loop's: whoever gives up may do so
  // inside an operation, or with others that are about to give up too.
  void withdraw(User& user);
  [[nodiscard]] bool heldBy(User const& user) const { return holder_ == &user; }

  // Whether a policy stands on the helper, and whose it is: nobody's when its user is gone.
  [[nodiscard]] bool created(PolicyMapSmKey const& key, ClassMapMatchOption option) const {
    return created_.count({key, option}) != 0;
  }
  [[nodiscard]] User const* creator(PolicyMapSmKey const& key, ClassMapMatchOption option) const;
  void createdIs(PolicyMapSmKey const& key, ClassMapMatchOption option, User const* creator);
  void createdDel(PolicyMapSmKey const& key, ClassMapMatchOption option);

  // Runs an operation whose result may come later. Answers its result, or nothing when the result
  // is outstanding: then operationEnded() of the holder follows.
  template <class Operation>
  std::optional<Kor::String> operate(Operation&& operation) {
    // Armed before the call, since the result may come inside it.
    calling_ = true;
    early_.reset();
    Kor::String const answer = answerOf(operation);
    calling_ = false;
    return answered(answer);
  }
  void resultIs(AsyncOperationResult const& result);
  // The outstanding result is no longer waited for; one that comes late is nobody's.
  void abandon() { outstanding_ = false; }

 private:
  std::optional<Kor::String> answered(Kor::String const& answer);
  void grantNext();

  PolicyMapAclHelper& helper_;
  bool started_ = false;
  std::map<std::pair<PolicyMapSmKey, ClassMapMatchOption>, User const*> created_;
  User* holder_ = nullptr;
  std::deque<User*> queue_;
  bool granting_ = false;
  Kor::Timer grantTimer_;
  bool calling_ = false;              // an operation is on the stack
  std::optional<Kor::String> early_;  // its result, come inside the call
  bool outstanding_ = false;          // an operation's result is awaited
};

}  // namespace PolicyMap
