// SPDX-License-Identifier: Apache-2.0
#pragma once

// Watcher<N>: a notifiee for tests, over any X::NotifieeConst or X::Notifiee. It records its
// notifications in a journal that several watchers may share, and runs the reaction that the test
// has set.
//
//   class LampWatcher : public TestSupport::Watcher<Lamp::NotifieeConst> {
//    public:
//     using Watcher::Watcher;
//     void onColour() override { heard("colour"); }
//   };
//   TestSupport::Journal journal;
//   auto first = Kor::make<LampWatcher>(journal, "first", lamp.get());
//   first->reactionIs([] { throw 7; });
//   lamp->colourIs(red);
//   EXPECT_THAT(journal, ElementsAre("first: colour", "first: caught int 7 of 131"));

#include <Kor/Exception.h>
#include <Kor/Types.h>

#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using Journal = std::vector<std::string>;

// Describes the exception that is being handled. Call it inside a handler.
inline std::string currentException() {
  try {
    throw;
  } catch (Kor::RangeException const& error) {
    return std::string("RangeException ") + error.what();
  } catch (std::exception const& error) {
    return std::string("exception ") + error.what();
  } catch (int number) {
    return "int " + std::to_string(number);
  } catch (...) {
    return "something else";
  }
}

template <class Notifiee>
class Watcher : public Notifiee {
 public:
  using Reaction = std::function<void()>;

  // `subject`: the arguments of Notifiee's constructor, if any.
  template <class... Subject>
  Watcher(Journal& journal, std::string name, Subject&&... subject)
      : Notifiee(std::forward<Subject>(subject)...), journal_(&journal), name_(std::move(name)) {}
  ~Watcher() override {
    if (announcesEnd_) {
      note("gone");
    }
  }

  // Runs inside every hook, after the journal entry is written.
  void reactionIs(Reaction reaction) { reaction_ = std::move(reaction); }
  // Runs inside the exception handler, after the journal entry is written.
  void handlerIs(Reaction handler) { handler_ = std::move(handler); }
  // Whether the journal records the destruction.
  void announcesEndIs(bool announcesEnd) { announcesEnd_ = announcesEnd; }

  void onNotificationException(Kor::AttributeId id) override {
    note("caught " + currentException() + " of " + std::to_string(id));
    run(handler_);
  }

 protected:
  // Called by the hooks.
  void heard(std::string const& what) {
    note(what);
    run(reaction_);
  }

 private:
  void note(std::string const& what) { journal_->push_back(name_ + ": " + what); }
  // Runs a copy: a reaction may replace itself or destroy the watcher.
  static void run(Reaction const& reaction) {
    if (Reaction const copy = reaction) {
      copy();
    }
  }

  Journal* journal_;
  std::string name_;
  Reaction reaction_;
  Reaction handler_;
  bool announcesEnd_ = false;
};

}  // namespace TestSupport
