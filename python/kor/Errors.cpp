// SPDX-License-Identifier: Apache-2.0
#include "python/kor/Errors.h"

#include <Kor/Exception.h>
#include <Kor/GenericIf.h>

#include <array>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

namespace KorPython {

namespace py = pybind11;

namespace {

// The classes live as long as the interpreter.
struct Classes {
  PyObject* exception = nullptr;
  PyObject* range = nullptr;
  PyObject* type = nullptr;
  PyObject* badIndex = nullptr;
  PyObject* notConst = nullptr;
  PyObject* notSupported = nullptr;
  PyObject* unknownArg = nullptr;
  PyObject* lookup = nullptr;
  PyObject* callback = nullptr;  // makes the exception that an observer's exception becomes
  PyObject* assertion = nullptr;
};
Classes classes;

struct Fields {
  std::string name = {};
  std::string typeName = {};
  std::optional<std::uint32_t> code = {};
};

// Its attributes say what was wrong.
void set(PyObject* type, std::exception const& error, Fields const& fields = {}) {
  // A text may have bytes that are no UTF-8.
  std::string_view const text = error.what();
  PyObject* const shown =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "backslashreplace");
  PyObject* const exception = shown == nullptr ? nullptr : PyObject_CallOneArg(type, shown);
  Py_XDECREF(shown);
  if (exception == nullptr) {
    return;
  }
  auto const add = [&](char const* name, PyObject* value) {
    if (value == nullptr || PyObject_SetAttrString(exception, name, value) != 0) {
      PyErr_Clear();
    }
    Py_XDECREF(value);
  };
  if (!fields.name.empty()) {
    add("name", PyUnicode_FromString(fields.name.c_str()));
  }
  if (!fields.typeName.empty()) {
    add("type_name", PyUnicode_FromString(fields.typeName.c_str()));
  }
  if (fields.code) {
    add("code", PyLong_FromUnsignedLong(*fields.code));
  }
  PyErr_SetObject(type, exception);
  Py_DECREF(exception);
}

[[noreturn]] void assertionFailed(Kor::AssertionFailure const& failure) {
  throw AssertionFailed(failure);
}

}  // namespace

AssertionFailed::AssertionFailed(Kor::AssertionFailure const& failure)
    : std::runtime_error(std::string(failure.source) + ": assertion \"" +
                         std::string(failure.text) + "\" failed at " + std::string(failure.file) +
                         ":" + std::to_string(failure.line)) {}

void errorsAre(py::module_ const& errors) {
  auto const named = [&](char const* name) {
    return py::object(errors.attr(name)).release().ptr();
  };
  classes = {.exception = named("Exception"),
             .range = named("RangeException"),
             .type = named("TypeException"),
             .badIndex = named("BadIndexAttrException"),
             .notConst = named("ConstException"),
             .notSupported = named("OpNotSupportedException"),
             .unknownArg = named("UnknownArgException"),
             .lookup = named("LookupException"),
             .callback = named("callback_exception"),
             .assertion = named("AssertionFailed")};
  Kor::assertionHandlerIs(&assertionFailed);
}

CallbackFailed::CallbackFailed(std::string text, std::shared_ptr<py::object const> exception)
    : Kor::Exception(std::move(text)), exception_(std::move(exception)) {}
CallbackFailed::~CallbackFailed() = default;

CallbackFailed CallbackFailed::take() {
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* trace = nullptr;
  PyErr_Fetch(&type, &value, &trace);
  PyErr_NormalizeException(&type, &value, &trace);
  if (trace != nullptr) {
    PyException_SetTraceback(value, trace);
  }
  Py_XDECREF(type);
  Py_XDECREF(trace);
  auto const text = py::reinterpret_steal<py::object>(PyObject_Str(value));
  if (!text) {
    PyErr_Clear();
  }
  std::string shown = text ? std::string(py::str(text)) : std::string();
  if (shown.empty()) {
    shown = Py_TYPE(value)->tp_name;
  }
  return {std::move(shown),
          std::make_shared<py::object const>(py::reinterpret_steal<py::object>(value))};
}

void CallbackFailed::restore() const {
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception_->ptr())), exception_->ptr());
}

bool CallbackFailed::mustBeRaised() const {
  return PyObject_IsInstance(exception_->ptr(), PyExc_AssertionError) == 1 ||
         PyObject_IsInstance(exception_->ptr(), PyExc_Exception) == 0;
}

int Call::depth_ = 0;
std::unique_ptr<CallbackFailed> Call::kept_;

void raiseLater(CallbackFailed const& failure) {
  if (Call::depth_ != 0 && !Call::kept_) {
    Call::kept_ = std::make_unique<CallbackFailed>(failure);
  } else {
    failure.restore();
    PyErr_WriteUnraisable(nullptr);
  }
}

bool Call::raise() {
  std::unique_ptr<CallbackFailed> const kept = std::move(kept_);
  kept->restore();
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* trace = nullptr;
  PyErr_Fetch(&type, &value, &trace);
  PyErr_NormalizeException(&type, &value, &trace);
  PyObject* const raised = PyObject_CallOneArg(classes.callback, value);
  Py_XDECREF(type);
  Py_XDECREF(value);
  Py_XDECREF(trace);
  if (raised != nullptr) {
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(raised)), raised);
    Py_DECREF(raised);
  }
  return true;
}

void Call::reportKept() {
  if (kept_ && depth_ == 1) {
    std::unique_ptr<CallbackFailed> const kept = std::move(kept_);
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* trace = nullptr;
    PyErr_Fetch(&type, &value, &trace);
    if (!kept->is(value)) {
      kept->restore();
      PyErr_WriteUnraisable(nullptr);
    }
    PyErr_Restore(type, value, trace);
  }
}

void setError() noexcept {
  try {
    throw;
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (CallbackFailed const& error) {
    error.restore();
  } catch (BadArgument const& error) {
    std::array const kinds{classes.type, classes.range, classes.unknownArg};
    set(kinds.at(static_cast<std::size_t>(error.kind())), error, {.name = error.name()});
  } catch (Kor::TypeException const& error) {
    set(classes.type, error,
        {.name = error.name().stdString(), .typeName = error.typeName().stdString()});
  } catch (Kor::OpNotSupportedException const& error) {
    set(classes.notSupported, error, {.name = error.name().stdString(), .code = error.code()});
  } catch (Kor::BadIndexAttrException const& error) {
    set(classes.badIndex, error, {.name = error.name().stdString()});
  } catch (Kor::UnknownArgException const& error) {
    set(classes.unknownArg, error, {.name = error.name().stdString()});
  } catch (Kor::ConstException const& error) {
    set(classes.notConst, error);
  } catch (Kor::RangeException const& error) {
    set(classes.range, error);
  } catch (AssertionFailed const& error) {
    set(classes.assertion, error);
  } catch (std::out_of_range const& error) {
    set(classes.lookup, error);
  } catch (std::invalid_argument const& error) {
    set(classes.range, error);
  } catch (std::bad_alloc const&) {
    PyErr_NoMemory();
  } catch (std::exception const& error) {
    set(classes.exception, error);
  } catch (...) {
    PyErr_SetString(classes.exception, "an exception that is no std::exception");
  }
}

}  // namespace KorPython
