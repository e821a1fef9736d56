// SPDX-License-Identifier: Apache-2.0
#pragma once

// assertionOf(statement): the assertion that a statement fails, as "SOURCE: TEXT", or "none". The
// failure leaves the statement by an exception, so that a test can see what was done before it.

#include <Kor/Assert.h>

#include <string>
#include <utility>

namespace TestSupport {

template <class Statement>
std::string assertionOf(Statement&& statement) {
  struct Caught {
    std::string text;
  };
  Kor::AssertionHandler const previous =
      Kor::assertionHandlerIs([](Kor::AssertionFailure const& failure) {
        throw Caught{std::string(failure.source).append(": ").append(failure.text)};
      });
  std::string text = "none";
  try {
    std::forward<Statement>(statement)();
  } catch (Caught const& caught) {
    text = caught.text;
  }
  Kor::assertionHandlerIs(previous);
  return text;
}

}  // namespace TestSupport
