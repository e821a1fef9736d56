// SPDX-License-Identifier: Apache-2.0
#pragma once

// The framework's exceptions as Python exceptions, one to one, and the other way round.

#include <Kor/Assert.h>

#include <pybind11/pybind11.h>
#include <stdexcept>
#include <string>

namespace KorPython {

// A failed assertion, which must not end the interpreter.
class AssertionFailed : public std::runtime_error {
 public:
  explicit AssertionFailed(Kor::AssertionFailure const& failure);
};

// The exceptions are classes of the Python module `errors`. From now on failed assertions throw.
void errorsAre(pybind11::module_ const& errors);

// Sets the Python exception of the C++ exception that is being handled.
void setError() noexcept;

// Returns what `function` returns, and null with a Python exception set if it throws.
template <class Function>
auto guarded(Function const& function, decltype(function()) failed = {}) noexcept
    -> decltype(function()) {
  try {
    return function();
  } catch (...) {
    setError();
    return failed;
  }
}

}  // namespace KorPython
