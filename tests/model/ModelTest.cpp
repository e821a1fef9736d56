// SPDX-License-Identifier: Apache-2.0

// Random runs compared with the reference model. The plain run prints its seed and number of steps,
// and can be replayed with them:
//
//   MODEL_SEED=7 MODEL_STEPS=1000000 model_tests --gtest_filter='*PlainRun*'

#include "model/Driver.h"
#include "model/Trial.h"

#include <Kor/Assert.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <unistd.h>

namespace Model {

static rc::Gen<Operation> anyOperation() {
  return rc::gen::exec([] {
    static std::vector<Verb> const verbsByWeight = [] {
      std::vector<Verb> all;
      for (std::size_t i = 0; i < verbs; ++i) {
        all.insert(all.end(), weight(static_cast<Verb>(i)), static_cast<Verb>(i));
      }
      return all;
    }();
    Operation operation;
    operation.verb = *rc::gen::noShrink(rc::gen::elementOf(verbsByWeight));
    for (std::size_t i = 0; i < arity(operation.verb); ++i) {
      operation.numbers[i] = *rc::gen::inRange<std::uint32_t>(0, limit(operation.verb, i));
    }
    return operation;
  });
}

namespace {

std::uint64_t fromEnvironment(char const* name, std::uint64_t otherwise) {
  char const* const text = std::getenv(name);
  return text == nullptr ? otherwise : std::stoull(text);
}

// The steps that are running, for the assertion handler.
Operations const* running = nullptr;
std::size_t runningTo = 0;

void reportRunning() {
  auto const end = running->begin() + static_cast<std::ptrdiff_t>(runningTo);
  std::cerr << report(Operations(running->begin(), end)) << std::endl;
}

// While in scope, also reports runs that end on an assertion or an invalid access.
class EndWatch {
 public:
  EndWatch()
      : previous_(Kor::assertionHandlerIs([](Kor::AssertionFailure const& failure) {
          std::cerr << failure.source << ": assertion " << failure.text << " failed\n";
          reportRunning();
        })) {
    // An alternate stack: after endless recursion the normal one is full.
    stack_t const stack{stack_.data(), 0, stack_.size()};
    sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_handler = [](int number) {
      std::cerr << strsignal(number) << '\n';
      reportRunning();
      _exit(1);
    };
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGSEGV, &action, &previousAction_);
  }
  ~EndWatch() {
    sigaction(SIGSEGV, &previousAction_, nullptr);
    stack_t stack = {};
    stack.ss_flags = SS_DISABLE;
    sigaltstack(&stack, nullptr);
    Kor::assertionHandlerIs(previous_);
  }
  EndWatch(EndWatch const&) = delete;
  EndWatch& operator=(EndWatch const&) = delete;

 private:
  Kor::AssertionHandler previous_;
  struct sigaction previousAction_ = {};
  std::vector<char> stack_ = std::vector<char>(1 << 20);
};

// Steps per driver. A new driver from time to time keeps failing runs short.
constexpr std::size_t episodeLength = 500;

}  // namespace

TEST(ReferenceModel, PlainRunOfRandomStepsAgrees) {
  std::uint64_t const steps = fromEnvironment("MODEL_STEPS", 250'000);
  std::uint64_t const seed = fromEnvironment(
      "MODEL_SEED",
      static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count()));
  std::cout << "MODEL_SEED=" << seed << " MODEL_STEPS=" << steps << std::endl;
  std::mt19937_64 random(seed);
  EndWatch const watch;
  auto const start = std::chrono::steady_clock::now();
  for (std::uint64_t done = 0; done < steps; done += episodeLength) {
    Operations operations = randomOperations(random, episodeLength - 1);
    operations.push_back({Verb::settle, {}});
    running = &operations;
    std::string const problem = run(operations, [](std::size_t step) { runningTo = step; });
    ASSERT_EQ(problem, "") << "MODEL_SEED=" << seed << ", steps " << done << " to "
                           << done + episodeLength << "\n"
                           << report(operations);
  }
  std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start;
  std::cout << static_cast<std::uint64_t>(static_cast<double>(steps) / time.count())
            << " steps per second; " << coverage().comparisons << " comparisons of "
            << coverage().records << " records with " << coverage().rules << " rules ("
            << coverage().intersections << " of them intersections) and " << coverage().subRules
            << " sub-rules; " << coverage().refused << " refusals, " << coverage().failures
            << " failures; " << coverage().proofs << " proofs" << std::endl;
}

TEST(ReferenceModel, GeneratedRunsAgree) {
  EXPECT_TRUE(rc::check("records agree with the model", [] {
    Operations operations = *rc::gen::container<Operations>(anyOperation());
    operations.push_back({Verb::settle, {}});
    std::string const problem = trial(operations);
    RC_ASSERT(problem == "");
  }));
}

}  // namespace Model
