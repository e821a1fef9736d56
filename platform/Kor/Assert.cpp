// SPDX-License-Identifier: Apache-2.0
#include "Kor/Assert.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Kor {
namespace {

AssertionHandler handlerInUse = nullptr;

int precision(std::string_view text) {
  return static_cast<int>(text.size());
}

}  // namespace

AssertionHandler assertionHandlerIs(AssertionHandler handler) {
  return std::exchange(handlerInUse, handler);
}

void assertionFailed(AssertionFailure const& failure) {
  if (handlerInUse != nullptr) {
    handlerInUse(failure);
  } else {
    std::fflush(stdout);
    std::fprintf(stderr, "%.*s: assertion \"%.*s\" failed at %.*s:%d\n", precision(failure.source),
                 failure.source.data(), precision(failure.text), failure.text.data(),
                 precision(failure.file), failure.file.data(), failure.line);
  }
  std::abort();
}

}  // namespace Kor
