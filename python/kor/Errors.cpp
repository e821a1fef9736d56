// SPDX-License-Identifier: Apache-2.0
#include "python/kor/Errors.h"

#include <Kor/Exception.h>
#include <Kor/GenericIf.h>

#include <array>
#include <exception>
#include <optional>

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
  PyObject* const exception = PyObject_CallFunction(type, "s", error.what());
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
             .assertion = named("AssertionFailed")};
  Kor::assertionHandlerIs(&assertionFailed);
}

void setError() noexcept {
  try {
    throw;
  } catch (py::error_already_set& error) {
    error.restore();
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
  } catch (std::bad_alloc const&) {
    PyErr_NoMemory();
  } catch (std::exception const& error) {
    set(classes.exception, error);
  } catch (...) {
    PyErr_SetString(classes.exception, "an exception that is no std::exception");
  }
}

}  // namespace KorPython
