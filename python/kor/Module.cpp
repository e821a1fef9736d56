// SPDX-License-Identifier: Apache-2.0

// kor._kor: what the Python module kor is made of.

#include "python/kor/Callbacks.h"
#include "python/kor/Errors.h"
#include "python/kor/Handle.h"

#include <Kor/ByName.h>
#include <Kor/Callable.h>
#include <Kor/GenericIf.h>

#include <dlfcn.h>
#include <string>

namespace py = pybind11;

namespace KorPython {

namespace {

using Kor::GenericIf;
using Kor::GenericValue;
using Kor::KorAttr;
using Kor::KorType;

py::object toObject(GenericValue const& value) {
  return py::reinterpret_steal<py::object>(toPython(value));
}

GenericValue const& valueOf(py::handle object) {
  Handle const* const handle = handleOf(object.ptr());
  if (handle == nullptr) {
    throw Kor::TypeException(Kor::String("object"));
  }
  return handle->value;
}

// The result of a call into the framework, which may call back into Python.
template <class Function>
py::object called(Function const& function) {
  PyObject* const result = guardedCall([&] { return toPython(function()); });
  if (result == nullptr) {
    throw py::error_already_set();
  }
  return py::reinterpret_steal<py::object>(result);
}

void load(std::string const& path) {
  if (dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL) == nullptr) {
    PyErr_SetString(PyExc_OSError, dlerror());
    throw py::error_already_set();
  }
}

py::list namesOfTypes() {
  py::list names;
  for (KorType const* type : KorType::all()) {
    names.append(std::string(type->name()));
  }
  return names;
}

std::string nameOf(KorType const* type) {
  return type == nullptr ? std::string() : std::string(type->name());
}

py::dict describe(KorAttr const& attr) {
  py::dict all;
  all["name"] = attr.name().stdString();
  all["id"] = attr.id();
  all["prose"] = std::string(attr.prose());
  all["owner"] = nameOf(attr.owner());
  all["value_type"] = nameOf(attr.valueType());
  all["key_type"] = nameOf(attr.keyType());
  all["is_function"] = attr.isFunction();
  all["is_owned"] = attr.isOwnedCollection();
  all["is_writable"] = attr.isWritable();
  all["flags"] = py::make_tuple(attr.flags().first(), attr.flags().second());
  all["introspection_flags"] = attr.introspectionFlags().value();
  all["args"] = argumentsOf(attr.args());
  all["descriptor"] = py::reinterpret_steal<py::object>(makeDescriptor(attr));
  return all;
}

py::dict describeType(std::string const& name) {
  KorType const& type = Kor::typeNamed(name);
  py::dict all;
  all["name"] = name;
  all["base"] = nameOf(type.base());
  all["is_entity"] = type.isEntity();
  all["is_value"] = type.isValue();
  all["level"] = type.level();
  all["size"] = type.size();
  all["can_construct"] = type.operations().construct != nullptr;
  all["args"] = argumentsOf(type.constructorArgs());
  py::list names;
  for (std::string_view const each : type.enumNames()) {
    names.append(std::string(each));
  }
  all["enum_names"] = names;
  py::list attrs;
  for (KorAttr::Ptr const& attr : type.attrs()) {
    attrs.append(describe(*attr));
  }
  all["attributes"] = attrs;
  return all;
}

py::object construct(std::string const& name, py::tuple const& args) {
  return called(
      [&] { return Kor::genericConstruct(Kor::typeNamed(name), toGeneric(args.ptr())).value(); });
}

// None for an index or a value is none.
py::object attributeOp(py::handle object, std::uint32_t id, std::uint32_t code, py::handle index,
                       py::handle value) {
  auto const given = [](py::handle each) {
    return each.is_none() ? GenericValue() : toGeneric(each.ptr());
  };
  return called([&] {
    return GenericIf(valueOf(object)).attributeOp({id, code, given(index), given(value)});
  });
}

py::object asConst(py::handle object) {
  GenericValue value = valueOf(object);
  value.makeConst();
  return toObject(value);
}

// Any text form.
py::object parse(py::str const& text) {
  Kor::String const whole = toGeneric(text.ptr()).text();
  GenericValue value;
  auto it = whole.begin();
  sequenceToValue(it, whole.end(), value);
  if (it != whole.end()) {
    throw Kor::RangeException("more than one value: " + whole.stdString());
  }
  return toObject(value);
}

py::object textForm(py::handle object) {
  return toObject(GenericValue(valueToStrep(toGeneric(object.ptr()))));
}

// Calls a Kor::Callable.
py::object call(py::handle callable, py::tuple const& args) {
  GenericValue const& value = valueOf(callable);
  Kor::Callable::Ptr function;
  if (!Kor::Generic<Kor::Callable::Ptr>::take(value, function) || !function) {
    throw Kor::TypeException(Kor::String("Kor::Callable"), Kor::String("callable"));
  }
  return called([&] { return function->call(toGeneric(args.ptr()).list()); });
}

// Called by the package with its exceptions and its makers of classes.
void begin(py::module_ const& errors, py::object const& classOf, py::object const& enumOf,
           py::object const& collectionOf, py::object const& signatureOf) {
  errorsAre(errors);
  classMakersAre({classOf, enumOf, collectionOf, signatureOf});
}

}  // namespace

}  // namespace KorPython

PYBIND11_MODULE(_kor, module) {
  using namespace KorPython;
  py::register_exception_translator([](std::exception_ptr error) {
    try {
      std::rethrow_exception(std::move(error));
    } catch (...) {
      setError();
    }
  });
  addHandleTypes(module);
  module.def("begin", &begin);
  module.def("enum_is", [](std::string const& name, py::object const& made) {
    enumIs(Kor::typeNamed(name), made);
  });
  module.def("load", &load);
  module.def("types", &namesOfTypes);
  module.def("describe", &describeType);
  module.def("construct", &construct);
  module.def("attribute_op", &attributeOp);
  module.def("const", &asConst);
  module.def("is_const", [](py::handle object) { return valueOf(object).isConst(); });
  module.def("is_value",
             [](py::handle object) { return valueOf(object).kind() == GenericValue::Kind::value; });
  module.def("equal",
             [](py::handle a, py::handle b) { return toGeneric(a.ptr()) == toGeneric(b.ptr()); });
  module.def("call", &call);
  module.def("observe", [](py::handle object, py::handle descriptor, py::object const& function) {
    return observe(valueOf(object), attributeOf(descriptor), function);
  });
  module.def("observes", &observes);
  module.def("unobserve", &unobserve);
  module.def("parse", &parse);
  module.def("text", &textForm);
}
