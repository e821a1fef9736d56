// SPDX-License-Identifier: Apache-2.0
#pragma once

// The framework's exceptions as Python exceptions, one to one, and the other way round.

#include <Kor/Assert.h>
#include <Kor/Exception.h>

#include <cstdint>
#include <memory>
#include <pybind11/pybind11.h>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace KorPython {

// A failed assertion, which must not end the interpreter.
class AssertionFailed : public std::runtime_error {
 public:
  explicit AssertionFailed(Kor::AssertionFailure const& failure);
};

// An exception that a Python function raised. For the framework its text is that of the exception;
// back in Python it is the exception itself.
class CallbackFailed : public Kor::Exception {
 public:
  // Takes the current Python exception.
  static CallbackFailed take();
  ~CallbackFailed() override;
  // Sets it again.
  void restore() const;
  // True for failed assertions and for exceptions that end the program. Those are no failures of an
  // operation.
  [[nodiscard]] bool mustBeRaised() const;
  [[nodiscard]] bool is(PyObject const* exception) const { return exception_->ptr() == exception; }

 private:
  CallbackFailed(std::string text, std::shared_ptr<pybind11::object const> exception);

  std::shared_ptr<pybind11::object const> exception_;
};

// What Python gave is nothing for the framework.
class BadArgument : public std::runtime_error {
 public:
  enum class Kind : std::uint8_t { type, range, unknown };

  // `name` is that of the argument or attribute; empty: not known yet.
  BadArgument(Kind kind, std::string const& text, std::string name = {})
      : std::runtime_error(name.empty() ? text : name + ": " + text),
        kind_(kind),
        name_(std::move(name)) {}

  [[nodiscard]] Kind kind() const { return kind_; }
  [[nodiscard]] std::string const& name() const { return name_; }
  // The same of the argument or attribute of this name.
  [[nodiscard]] BadArgument of(std::string name) const {
    return name_.empty() ? BadArgument(kind_, what(), std::move(name)) : *this;
  }

 private:
  Kind kind_;
  std::string name_;
};

// Keeps an exception that the framework will not pass on. The outermost call from Python raises it
// when it returns; the first of several, the others are reported as unraisable.
void raiseLater(CallbackFailed const& failure);

// A call from Python into the framework.
class Call {
 public:
  Call() { ++depth_; }
  Call(Call const&) = delete;
  Call& operator=(Call const&) = delete;
  ~Call() { --depth_; }

  // Sets the exception that was kept, if there is one and this is the outermost call.
  static bool raiseKept() { return kept_ && depth_ == 1 && raise(); }
  // The same if the call has failed with another exception.
  static void reportKept();

 private:
  friend void raiseLater(CallbackFailed const& failure);
  static bool raise();

  static int depth_;
  static std::unique_ptr<CallbackFailed> kept_;
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

// The same for a function that may call back into Python.
template <class Function>
auto guardedCall(Function const& function, decltype(function()) failed = {}) noexcept
    -> decltype(function()) {
  Call const call;
  auto const result = guarded(function, failed);
  if (PyErr_Occurred() != nullptr) {
    Call::reportKept();
  } else if (Call::raiseKept()) {
    if constexpr (std::is_pointer_v<decltype(function())>) {
      Py_XDECREF(result);
    }
    return failed;
  }
  return result;
}

}  // namespace KorPython
