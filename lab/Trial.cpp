// SPDX-License-Identifier: Apache-2.0
#include "lab/Trial.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace lab {

namespace {

// The file that the copy reports to.
int reportFile = -1;

void report(Kor::AssertionFailure const& failure) {
  std::string const text = toText(failure);
  std::size_t written = 0;
  while (written != text.size()) {
    ssize_t const some = ::write(reportFile, text.data() + written, text.size() - written);
    if (some <= 0) {
      break;
    }
    written += static_cast<std::size_t>(some);
  }
  ::_exit(1);
}

[[noreturn]] void runCopy(std::function<void()> const& action, int file) {
  int const nothing = ::open("/dev/null", O_RDWR);
  ::dup2(nothing, STDIN_FILENO);
  ::dup2(nothing, STDOUT_FILENO);
  ::dup2(nothing, STDERR_FILENO);
  reportFile = file;
  std::signal(SIGINT, SIG_DFL);  // this process may ignore it
  Kor::assertionHandlerIs(report);
  try {
    action();
  } catch (...) {
    // The real run raises it again.
  }
  ::_exit(0);  // buffered output belongs to the original process
}

std::string readAll(int file) {
  std::string text;
  std::array<char, 4096> buffer{};
  while (true) {
    ssize_t const some = ::read(file, buffer.data(), buffer.size());
    if (some > 0) {
      text.append(buffer.data(), static_cast<std::size_t>(some));
    } else if (some == 0 || errno != EINTR) {
      return text;
    }
  }
}

int waitFor(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) == -1 && errno == EINTR) {
  }
  return status;
}

[[noreturn]] void failCopying() {
  throw std::system_error(errno, std::generic_category(), "the process cannot be copied");
}

}  // namespace

std::string toText(Kor::AssertionFailure const& failure) {
  return std::string(failure.source) + ": assertion \"" + std::string(failure.text) +
         "\" failed at " + std::string(failure.file) + ":" + std::to_string(failure.line);
}

std::string endOf(std::function<void()> const& action) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
    failCopying();
  }
  pid_t const copy = ::fork();
  if (copy == 0) {
    runCopy(action, pipe[1]);
  }
  int const failure = errno;
  ::close(pipe[1]);
  std::string text = copy == -1 ? "" : readAll(pipe[0]);
  ::close(pipe[0]);
  if (copy == -1) {
    errno = failure;
    failCopying();
  }
  int const status = waitFor(copy);
  if (WIFSIGNALED(status)) {
    text = std::string("signal ") + std::to_string(WTERMSIG(status)) + " (" +
           ::strsignal(WTERMSIG(status)) + ")";
  }
  return text;
}

}  // namespace lab
