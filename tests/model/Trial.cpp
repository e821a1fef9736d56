// SPDX-License-Identifier: Apache-2.0
#include "model/Trial.h"

#include "model/Driver.h"

#include <Kor/Assert.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace Model {
namespace {

constexpr unsigned mostSeconds = 20;  // per trial

int assertionPipe = -1;  // in the process of a trial

void tell(int pipe, std::string_view text) {
  while (!text.empty()) {
    ssize_t const written = write(pipe, text.data(), text.size());
    if (written <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

[[noreturn]] void tryHere(Operations const& operations, int pipe) {
  assertionPipe = pipe;
  signal(SIGSEGV, SIG_DFL);  // whatever handler the parent has set
  alarm(mostSeconds);
  Kor::assertionHandlerIs([](Kor::AssertionFailure const& failure) {
    tell(assertionPipe,
         std::string(failure.source).append(": assertion ").append(failure.text).append(" failed"));
    _exit(1);
  });
  tell(pipe, run(operations));
  _exit(0);
}

std::string everythingFrom(int pipe) {
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(pipe, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

bool fails(Operations const& operations) {
  return !trial(operations).empty();
}

// Removes runs of steps, long ones first.
bool leaveOut(Operations& operations) {
  bool better = false;
  for (std::size_t length = std::max<std::size_t>(operations.size() / 2, 1); length > 0;
       length /= 2) {
    for (std::size_t at = 0; at < operations.size();) {
      Operations fewer = operations;
      auto const first = fewer.begin() + static_cast<std::ptrdiff_t>(at);
      auto const count = std::min(length, operations.size() - at);
      fewer.erase(first, first + static_cast<std::ptrdiff_t>(count));
      if (fails(fewer)) {
        operations = std::move(fewer);
        better = true;
      } else {
        at += length;
      }
    }
  }
  return better;
}

bool simplify(Operations& operations) {
  bool better = false;
  for (Operation& operation : operations) {
    for (std::uint32_t& number : operation.numbers) {
      std::uint32_t const before = number;
      for (std::uint32_t const simpler : {0U, before / 1000, before / 10, before / 2, before - 1}) {
        if (simpler < before) {
          number = simpler;
          if (fails(operations)) {
            better = true;
            break;
          }
          number = before;
        }
      }
    }
  }
  return better;
}

}  // namespace

std::string trial(Operations const& operations) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    return std::string("no pipe: ") + std::strerror(errno);
  }
  pid_t const child = fork();
  if (child == 0) {
    close(ends[0]);
    tryHere(operations, ends[1]);
  }
  close(ends[1]);
  std::string text = everythingFrom(ends[0]);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (text.empty() && WIFSIGNALED(status)) {
    text = std::string("ended by signal: ") + strsignal(WTERMSIG(status));
  } else if (text.empty() && status != 0) {
    text = "ended with status " + std::to_string(WEXITSTATUS(status));
  }
  return text;
}

Operations shrunk(Operations operations) {
  constexpr int mostRounds = 10;
  for (int i = 0; i < mostRounds; ++i) {
    bool const shorter = leaveOut(operations);
    if (!simplify(operations) && !shorter) {
      break;
    }
  }
  return operations;
}

std::string report(Operations const& operations) {
  std::string const original = trial(operations);
  Operations const fewest = original.empty() ? operations : shrunk(operations);
  return "the steps, shrunk from " + std::to_string(operations.size()) + " to " +
         std::to_string(fewest.size()) + ":\n" + textOf(fewest) + "\n" + trial(fewest);
}

}  // namespace Model
