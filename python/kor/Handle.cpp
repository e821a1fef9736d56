// SPDX-License-Identifier: Apache-2.0
#include "python/kor/Handle.h"

#include "python/kor/Callbacks.h"
#include "python/kor/Errors.h"

#include <Kor/ByName.h>
#include <Kor/GenericIf.h>

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <string>
#include <structmember.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace KorPython {

namespace py = pybind11;

namespace {

using Kor::AttributeOperation;
using Kor::GenericIf;
using Kor::GenericList;
using Kor::GenericValue;
using Kor::Instance;
using Kor::KorAttr;
using Kor::KorType;
using Kind = GenericValue::Kind;

struct Descriptor {
  PyObject base;
  vectorcallfunc call;
  KorAttr const* attr;
};

// What the module keeps until the process ends.
struct State {
  PyTypeObject* handleType = nullptr;
  PyTypeObject* attributeType = nullptr;
  PyTypeObject* functionType = nullptr;
  ClassMakers makers;
  std::unordered_map<KorType const*, PyTypeObject*> classes;
  std::unordered_map<KorType const*, std::vector<PyObject*>> enumMembers;
  std::unordered_map<PyTypeObject*, KorType const*> enumTypes;
  // The handles of objects, by object, and by object and const: borrowed references.
  std::array<std::unordered_map<Kor::PtrInterface const*, PyObject*>, 2> handles;
};

State& state() {
  static State* const it = new State;
  return *it;
}

Handle* asHandle(PyObject* object) {
  return reinterpret_cast<Handle*>(object);
}
KorAttr const& attrOf(PyObject* descriptor) {
  return *reinterpret_cast<Descriptor*>(descriptor)->attr;
}

bool refers(GenericValue const& value) {
  return value.kind() == Kind::object || value.kind() == Kind::value;
}

PyObject* textOf(Kor::String const& text) {
  std::string_view const view = text.view();
  return PyUnicode_DecodeUTF8(view.data(), static_cast<Py_ssize_t>(view.size()), "surrogateescape");
}

PyObject* checked(PyObject* object) {
  if (object == nullptr) {
    throw py::error_already_set();
  }
  return object;
}

// Handles -----------------------------------------------------------------------------------------

PyTypeObject* classOf(KorType const& type) {
  PyTypeObject*& known = state().classes[&type];
  if (known == nullptr) {
    py::object const made = state().makers.classOf(std::string(type.name()));
    known = reinterpret_cast<PyTypeObject*>(made.inc_ref().ptr());
  }
  return known;
}

PyObject* newHandle(GenericValue const& value) {
  PyTypeObject* const type = classOf(*value.object()->fwkType());
  PyObject* const object = checked(type->tp_alloc(type, 0));
  new (&asHandle(object)->value) GenericValue(value);
  return object;
}

PyObject* handleFor(GenericValue const& value) {
  if (value.kind() == Kind::value) {
    return newHandle(value);
  }
  auto& known = state().handles[value.isConst() ? 1 : 0];
  auto const found = known.find(value.object());
  if (found != known.end()) {
    return Py_NewRef(found->second);
  }
  PyObject* const made = newHandle(value);
  known.emplace(value.object(), made);
  return made;
}

// The object, if this handle holds its only reference; otherwise null.
Kor::PtrInterface const* ownObject(Handle const& handle) {
  bool const own = handle.value.kind() == Kind::object && handle.value.object()->references() == 1;
  return own ? handle.value.object() : nullptr;
}

int traverse(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(Py_TYPE(self));
  return visitObservers(ownObject(*asHandle(self)), visit, arg);
}

int clear(PyObject* self) {
  unobserveAll(ownObject(*asHandle(self)));
  return 0;
}

void deallocate(PyObject* self) {
  PyObject_GC_UnTrack(self);
  Handle* const handle = asHandle(self);
  PyTypeObject* const type = Py_TYPE(self);
  if (handle->weakReferences != nullptr) {
    PyObject_ClearWeakRefs(self);
  }
  if (handle->value.kind() == Kind::object) {
    state().handles[handle->value.isConst() ? 1 : 0].erase(handle->value.object());
  }
  handle->value.~GenericValue();
  type->tp_free(self);
  Py_DECREF(type);
}

PyObject* printHandle(PyObject* self) {
  return guarded([&] { return checked(textOf(valueToStrep(asHandle(self)->value))); });
}

PyObject* compare(PyObject* a, PyObject* b, int operation) {
  Handle const* const other = handleOf(b);
  if (other == nullptr) {
    Py_RETURN_NOTIMPLEMENTED;
  }
  return guarded([&]() -> PyObject* {
    GenericValue const& value = asHandle(a)->value;
    if (operation == Py_EQ || operation == Py_NE) {
      bool const equal = value == other->value;
      return PyBool_FromLong(equal == (operation == Py_EQ) ? 1 : 0);
    }
    std::partial_ordering const order = orderOf(value, other->value);
    if (order == std::partial_ordering::unordered) {
      Py_RETURN_NOTIMPLEMENTED;
    }
    Py_RETURN_RICHCOMPARE(order < 0 ? -1 : order > 0 ? 1 : 0, 0, operation);
  });
}

Py_hash_t hashOf(PyObject* self) {
  GenericValue const& value = asHandle(self)->value;
  if (value.kind() != Kind::value) {
    return _Py_HashPointer(value.object());
  }
  return guarded(
      [&] {
        auto const hash =
            static_cast<Py_hash_t>(std::hash<std::string_view>()(valueToStrep(value).view()));
        return hash == -1 ? -2 : hash;
      },
      Py_hash_t{-1});
}

// Enumerations ------------------------------------------------------------------------------------

PyObject* enumMember(GenericValue const& value) {
  KorType const* const type = value.enumerationType();
  if (!state().enumMembers.contains(type)) {
    state().makers.enumOf(std::string(type->name()));
  }
  std::vector<PyObject*> const& members = state().enumMembers[type];
  auto const number = static_cast<std::size_t>(value.enumeration());
  return value.enumeration() >= 0 && number < members.size()
             ? Py_NewRef(members[number])
             : checked(PyLong_FromLong(value.enumeration()));
}

GenericValue numberOf(PyObject* object) {
  int overflow = 0;
  long long const number = PyLong_AsLongLongAndOverflow(object, &overflow);
  if (overflow == 0) {
    if (number == -1 && PyErr_Occurred() != nullptr) {
      throw py::error_already_set();
    }
    if (!PyLong_CheckExact(object)) {
      auto const found = state().enumTypes.find(Py_TYPE(object));
      if (found != state().enumTypes.end()) {
        return {found->second, static_cast<std::int32_t>(number)};
      }
    }
    return number;
  }
  unsigned long long const natural =
      overflow > 0 ? PyLong_AsUnsignedLongLong(object) : static_cast<unsigned long long>(-1);
  if (overflow < 0 || PyErr_Occurred() != nullptr) {
    PyErr_Clear();
    throw BadArgument(BadArgument::Kind::range,
                      "expected a number of 64 bits, found " + std::string(py::repr(object)));
  }
  return natural;
}

// Attributes --------------------------------------------------------------------------------------

Instance instanceOf(PyObject* object, KorAttr const& attr) {
  Handle const* const handle = handleOf(object);
  // A function of a class can be called with any object, and Python lets a handle change its class.
  if (handle == nullptr || !refers(handle->value) ||
      !handle->value.object()->fwkType()->isA(attr.owner())) {
    throw Kor::TypeException(Kor::String(attr.owner()->name()), Kor::String("self"));
  }
  return {handle->value.object(), handle->value.isConst()};
}

// What Python gave for the attribute or argument of this name.
template <class Name>
GenericValue argument(PyObject* object, Name const& name) {
  try {
    return toGeneric(object);
  } catch (BadArgument const& error) {
    throw error.of(Kor::String(name()).stdString());
  }
}

PyObject* readAttribute(PyObject* self, PyObject* object, PyObject* /*type*/) {
  if (object == nullptr) {
    return Py_NewRef(self);
  }
  return guarded([&] {
    KorAttr const& attr = attrOf(self);
    if (attr.isCollection()) {
      return checked(
          PyObject_CallFunctionObjArgs(state().makers.collectionOf.ptr(), object, self, nullptr));
    }
    Instance const instance = instanceOf(object, attr);
    return toPython(attr.reader() != nullptr ? attr.reader()(instance)
                                             : GenericIf::attributeOp(instance, attr, {}));
  });
}

int writeAttribute(PyObject* self, PyObject* object, PyObject* value) {
  return guardedCall(
      [&] {
        KorAttr const& attr = attrOf(self);
        AttributeOperation operation{attr.id(), AttributeOperation::del, {}, {}};
        if (value != nullptr) {
          operation.code = AttributeOperation::set;
          operation.value = argument(value, [&] { return attr.name(); });
        }
        GenericIf::attributeOp(instanceOf(object, attr), attr, operation);
        return 0;
      },
      -1);
}

// op(handle, code[, index[, value]])
PyObject* performOperation(PyObject* self, PyObject* const* args, Py_ssize_t count) {
  return guardedCall([&]() -> PyObject* {
    if (count < 2) {
      PyErr_SetString(PyExc_TypeError, "op(handle, code[, index[, value]])");
      return nullptr;
    }
    KorAttr const& attr = attrOf(self);
    unsigned long const code = PyLong_AsUnsignedLong(args[1]);
    if (PyErr_Occurred() != nullptr) {
      throw py::error_already_set();
    }
    AttributeOperation const operation{attr.id(), static_cast<std::uint32_t>(code),
                                       count > 2 ? toGeneric(args[2]) : GenericValue(),
                                       count > 3 ? toGeneric(args[3]) : GenericValue()};
    return toPython(GenericIf::attributeOp(instanceOf(args[0], attr), attr, operation));
  });
}

// Functions ---------------------------------------------------------------------------------------

std::size_t placeOf(KorAttr const& attr, std::string_view wanted) {
  auto const isNamed = [](std::string_view name) {
    return [name](Kor::ArgumentSpec const& each) { return each.name.view() == name; };
  };
  auto const& args = attr.args();
  auto found = std::find_if(args.begin(), args.end(), isNamed(wanted));
  if (found == args.end() && wanted.ends_with('_')) {  // "async_", as "async" is a word of Python
    found = std::find_if(args.begin(), args.end(), isNamed(wanted.substr(0, wanted.size() - 1)));
  }
  if (found != args.end()) {
    return static_cast<std::size_t>(found - args.begin());
  }
  std::string known;
  for (Kor::ArgumentSpec const& each : args) {
    known.append(known.empty() ? "" : ", ").append(each.name.view());
  }
  throw BadArgument(BadArgument::Kind::unknown,
                    attr.name().stdString() +
                        " has no such argument; there are: " + (known.empty() ? "none" : known),
                    std::string(wanted));
}

Kor::String nameOfArgument(KorAttr const& attr, std::size_t place) {
  return place < attr.args().size() ? Kor::String(attr.args()[place].name)
                                    : Kor::String(attr.name());
}

std::size_t placeOf(KorAttr const& attr, PyObject* name) {
  Py_ssize_t size = 0;
  char const* const text = PyUnicode_AsUTF8AndSize(name, &size);
  if (text == nullptr) {
    throw py::error_already_set();
  }
  return placeOf(attr, std::string_view(text, static_cast<std::size_t>(size)));
}

PyObject* callFunction(PyObject* self, PyObject* const* args, std::size_t flagged,
                       PyObject* names) {
  return guardedCall([&]() -> PyObject* {
    KorAttr const& attr = attrOf(self);
    auto const all = static_cast<std::size_t>(PyVectorcall_NARGS(flagged));
    if (all == 0) {
      throw Kor::TypeException(Kor::String(attr.owner()->name()), Kor::String("self"));
    }
    constexpr std::size_t mostArgs = 16;
    std::size_t const named =
        names == nullptr ? 0 : static_cast<std::size_t>(PyTuple_GET_SIZE(names));
    std::size_t given = all - 1;
    if (given > mostArgs || attr.args().size() > mostArgs) {
      throw Kor::UnknownArgException(attr.name());
    }
    std::array<GenericValue, mostArgs> values;
    for (std::size_t i = 0; i != given; ++i) {
      values[i] = argument(args[i + 1], [&] { return nameOfArgument(attr, i); });
    }
    for (std::size_t i = 0; i != named; ++i) {
      std::size_t const place = placeOf(attr, PyTuple_GET_ITEM(names, static_cast<Py_ssize_t>(i)));
      if (values[place].present()) {
        throw BadArgument(BadArgument::Kind::unknown, "is given twice",
                          nameOfArgument(attr, place).stdString());
      }
      values[place] = argument(args[all + i], [&] { return nameOfArgument(attr, place); });
      given = std::max(given, place + 1);
    }
    GenericList list{std::span<GenericValue const>(values.data(), given)};
    return toPython(GenericIf::attributeOp(
        instanceOf(args[0], attr), attr,
        {attr.id(), AttributeOperation::get, {}, GenericValue(Kor::share(&list))}));
  });
}

PyObject* bindFunction(PyObject* self, PyObject* object, PyObject* /*type*/) {
  return object == nullptr ? Py_NewRef(self) : PyMethod_New(self, object);
}

PyObject* nameOfDescriptor(PyObject* self, void* /*unused*/) {
  return textOf(attrOf(self).name());
}

PyObject* docOfDescriptor(PyObject* self, void* /*unused*/) {
  std::string_view const prose = attrOf(self).prose();
  return PyUnicode_DecodeUTF8(prose.data(), static_cast<Py_ssize_t>(prose.size()), nullptr);
}

PyObject* signatureOfFunction(PyObject* self, void* /*unused*/) {
  return guarded(
      [&] { return state().makers.signatureOf(argumentsOf(attrOf(self).args())).release().ptr(); });
}

void deallocateDescriptor(PyObject* self) {
  PyTypeObject* const type = Py_TYPE(self);
  type->tp_free(self);
  Py_DECREF(type);
}

PyTypeObject* makeType(PyType_Spec& spec) {
  return reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spec)));
}

template <class Function>
void* slot(Function* function) {
  return reinterpret_cast<void*>(function);
}

}  // namespace

void classMakersAre(ClassMakers makers) {
  state().makers = std::move(makers);
}

void enumIs(KorType const& type, py::object const& made) {
  std::vector<PyObject*>& members = state().enumMembers[&type];
  for (std::size_t number = 0; number != type.enumNames().size(); ++number) {
    members.push_back(made(number).release().ptr());
  }
  state().enumTypes.emplace(reinterpret_cast<PyTypeObject*>(made.ptr()), &type);
}

Handle* handleOf(PyObject* object) {
  return PyObject_TypeCheck(object, state().handleType) != 0 ? asHandle(object) : nullptr;
}

PyObject* toPython(GenericValue const& value) {
  switch (value.kind()) {
  case Kind::none:
  case Kind::null: Py_RETURN_NONE;
  case Kind::boolean: return PyBool_FromLong(value.boolean() ? 1 : 0);
  case Kind::integer: return checked(PyLong_FromLongLong(value.integer()));
  case Kind::natural: return checked(PyLong_FromUnsignedLongLong(value.natural()));
  case Kind::real: return checked(PyFloat_FromDouble(value.real()));
  case Kind::enumeration: return enumMember(value);
  case Kind::text: return checked(textOf(value.text()));
  case Kind::list: {
    py::list list;
    for (GenericValue const& each : value.list()) {
      list.append(py::reinterpret_steal<py::object>(toPython(each)));
    }
    return list.release().ptr();
  }
  case Kind::value:
  case Kind::object: return handleFor(value);
  }
  Py_RETURN_NONE;
}

GenericValue toGeneric(PyObject* object) {
  if (object == Py_None) {
    return nullptr;
  }
  if (PyBool_Check(object)) {
    return object == Py_True;
  }
  if (PyLong_Check(object)) {
    return numberOf(object);
  }
  if (PyUnicode_Check(object)) {
    Py_ssize_t size = 0;
    char const* const text = PyUnicode_AsUTF8AndSize(object, &size);
    if (text != nullptr) {
      return Kor::String(std::string_view(text, static_cast<std::size_t>(size)));
    }
    PyErr_Clear();  // bytes that are no UTF-8, from the framework
    auto const bytes = py::reinterpret_steal<py::bytes>(
        checked(PyUnicode_AsEncodedString(object, "utf-8", "surrogateescape")));
    return Kor::String(std::string_view(bytes));
  }
  if (PyFloat_Check(object)) {
    return PyFloat_AS_DOUBLE(object);
  }
  if (Handle const* const handle = handleOf(object)) {
    return handle->value;
  }
  if (PyList_Check(object) || PyTuple_Check(object)) {
    if (Py_EnterRecursiveCall(" while a list is converted") != 0) {
      throw py::error_already_set();
    }
    struct Left {
      Left() = default;
      Left(Left const&) = delete;
      Left& operator=(Left const&) = delete;
      ~Left() { Py_LeaveRecursiveCall(); }
    } const left;
    auto list = GenericList::of();
    for (py::handle const each : py::handle(object)) {
      list->append(toGeneric(each.ptr()));
    }
    return list;
  }
  if (PyCallable_Check(object) != 0) {
    return callableOf(object);
  }
  throw BadArgument(BadArgument::Kind::type,
                    "expected a number, a text, a list, a function, or an object or value of the "
                    "framework; found " +
                        std::string(py::repr(object)));
}

py::list argumentsOf(std::vector<Kor::ArgumentSpec> const& args) {
  py::list list;
  for (Kor::ArgumentSpec const& arg : args) {
    list.append(py::make_tuple(arg.name.stdString(), arg.typeName.stdString()));
  }
  return list;
}

KorAttr const& attributeOf(py::handle descriptor) {
  if (Py_TYPE(descriptor.ptr()) != state().attributeType) {
    throw Kor::TypeException(Kor::String("attribute"));
  }
  return attrOf(descriptor.ptr());
}

PyObject* makeDescriptor(KorAttr const& attr) {
  PyTypeObject* const type = attr.isFunction() ? state().functionType : state().attributeType;
  PyObject* const made = checked(type->tp_alloc(type, 0));
  reinterpret_cast<Descriptor*>(made)->call = &callFunction;
  reinterpret_cast<Descriptor*>(made)->attr = &attr;
  return made;
}

void addHandleTypes(py::module_& module) {
  static std::array handleMembers{PyMemberDef{"__weaklistoffset__", T_PYSSIZET,
                                              offsetof(Handle, weakReferences), READONLY, nullptr},
                                  PyMemberDef{nullptr, 0, 0, 0, nullptr}};
  static std::array handleSlots{PyType_Slot{Py_tp_dealloc, slot(&deallocate)},
                                PyType_Slot{Py_tp_traverse, slot(&traverse)},
                                PyType_Slot{Py_tp_clear, slot(&clear)},
                                PyType_Slot{Py_tp_str, slot(&printHandle)},
                                PyType_Slot{Py_tp_richcompare, slot(&compare)},
                                PyType_Slot{Py_tp_hash, slot(&hashOf)},
                                PyType_Slot{Py_tp_members, handleMembers.data()},
                                PyType_Slot{0, nullptr}};
  static PyType_Spec handleSpec{"_kor.Handle", sizeof(Handle), 0,
                                Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC,
                                handleSlots.data()};

  static std::array descriptorGetters{
      PyGetSetDef{"__name__", &nameOfDescriptor, nullptr, nullptr, nullptr},
      PyGetSetDef{"__doc__", &docOfDescriptor, nullptr, nullptr, nullptr},
      PyGetSetDef{nullptr, nullptr, nullptr, nullptr, nullptr}};
  static std::array functionGetters{
      PyGetSetDef{"__name__", &nameOfDescriptor, nullptr, nullptr, nullptr},
      PyGetSetDef{"__doc__", &docOfDescriptor, nullptr, nullptr, nullptr},
      PyGetSetDef{"__signature__", &signatureOfFunction, nullptr, nullptr, nullptr},
      PyGetSetDef{nullptr, nullptr, nullptr, nullptr, nullptr}};
  static std::array attributeMethods{
      PyMethodDef{"op", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(&performOperation)),
                  METH_FASTCALL, "op(handle, code[, index[, value]])"},
      PyMethodDef{nullptr, nullptr, 0, nullptr}};
  static std::array attributeSlots{PyType_Slot{Py_tp_dealloc, slot(&deallocateDescriptor)},
                                   PyType_Slot{Py_tp_descr_get, slot(&readAttribute)},
                                   PyType_Slot{Py_tp_descr_set, slot(&writeAttribute)},
                                   PyType_Slot{Py_tp_methods, attributeMethods.data()},
                                   PyType_Slot{Py_tp_getset, descriptorGetters.data()},
                                   PyType_Slot{0, nullptr}};
  static PyType_Spec attributeSpec{"_kor.Attribute", sizeof(Descriptor), 0, Py_TPFLAGS_DEFAULT,
                                   attributeSlots.data()};

  static std::array functionMembers{PyMemberDef{"__vectorcalloffset__", T_PYSSIZET,
                                                offsetof(Descriptor, call), READONLY, nullptr},
                                    PyMemberDef{nullptr, 0, 0, 0, nullptr}};
  static std::array functionSlots{PyType_Slot{Py_tp_dealloc, slot(&deallocateDescriptor)},
                                  PyType_Slot{Py_tp_call, slot(&PyVectorcall_Call)},
                                  PyType_Slot{Py_tp_descr_get, slot(&bindFunction)},
                                  PyType_Slot{Py_tp_members, functionMembers.data()},
                                  PyType_Slot{Py_tp_getset, functionGetters.data()},
                                  PyType_Slot{0, nullptr}};
  static PyType_Spec functionSpec{"_kor.Function", sizeof(Descriptor), 0,
                                  Py_TPFLAGS_DEFAULT | Py_TPFLAGS_METHOD_DESCRIPTOR |
                                      Py_TPFLAGS_HAVE_VECTORCALL,
                                  functionSlots.data()};

  state().handleType = makeType(handleSpec);
  state().attributeType = makeType(attributeSpec);
  state().functionType = makeType(functionSpec);
  auto const add = [&](char const* name, PyTypeObject* type) {
    module.add_object(name, py::handle(reinterpret_cast<PyObject*>(type)));
  };
  add("Handle", state().handleType);
  add("Attribute", state().attributeType);
  add("Function", state().functionType);
}

}  // namespace KorPython
