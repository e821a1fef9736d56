// SPDX-License-Identifier: Apache-2.0
#pragma once

// Handle: an object or a value of a model type as a Python object, and the conversion between
// Python objects and generic values.
//
//   Python             generic value
//   None               null; from Python to the framework also: no value
//   bool, int, float   a number
//   str                a text
//   list               a list; a tuple becomes one, too
//   member of an Enum  an enumeration
//   Handle             an object, or a value
//   any other callable a Kor::Callable
//
// An object has at most one handle at a time, and at most one const handle, so `is` compares
// objects. The garbage collector sees the observers of an object that only its handle holds.

#include <Kor/GenericValue.h>
#include <Kor/KorAttr.h>

#include <pybind11/pybind11.h>
#include <vector>

namespace KorPython {

struct Handle {
  PyObject base;
  PyObject* weakReferences;
  Kor::GenericValue value;
};

// The classes of Python, made by these functions of the module:
//   class_of(name)   the class of a type of the framework, derived from _kor.Handle
//   enum_of(name)    makes the IntEnum of an enumeration, and calls enumIs()
//   collection_of(handle, attribute)
//   signature_of(arguments)   of a function; the arguments are pairs of name and type
struct ClassMakers {
  pybind11::object classOf;
  pybind11::object enumOf;
  pybind11::object collectionOf;
  pybind11::object signatureOf;
};
void classMakersAre(ClassMakers makers);
// Once for each enumeration. The class lives until the process ends.
void enumIs(Kor::KorType const& type, pybind11::object const& made);

// _kor.Handle, _kor.Attribute and _kor.Function.
void addHandleTypes(pybind11::module_& module);

// Null for every other object.
[[nodiscard]] Handle* handleOf(PyObject* object);

// A new reference. Throws pybind11::error_already_set.
[[nodiscard]] PyObject* toPython(Kor::GenericValue const& value);
// Throws pybind11::error_already_set, for an int with more than 64 bits Kor::RangeException.
[[nodiscard]] Kor::GenericValue toGeneric(PyObject* object);

// The attribute of a descriptor. Throws Kor::TypeException for every other object.
[[nodiscard]] Kor::KorAttr const& attributeOf(pybind11::handle descriptor);

// Pairs of name and type.
[[nodiscard]] pybind11::list argumentsOf(std::vector<Kor::ArgumentSpec> const& args);

// A descriptor of the attribute, for the class of its type. A new reference.
[[nodiscard]] PyObject* makeDescriptor(Kor::KorAttr const& attr);

}  // namespace KorPython
