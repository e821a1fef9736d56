// SPDX-License-Identifier: Apache-2.0
#pragma once

// Functions of Python that the framework calls: as a Kor::Callable, and as observers of attributes.
// What they raise is CallbackFailed for the framework.

#include <Kor/GenericValue.h>
#include <Kor/KorAttr.h>

#include <cstdint>
#include <pybind11/pybind11.h>

namespace KorPython {

// A Kor::Callable that calls the function.
[[nodiscard]] Kor::GenericValue callableOf(PyObject* function);

// Lets `function(object, key)` be called after each change of the attribute; key is None if it is
// no collection, object is None while it is being destroyed. Returns the number of the observation,
// which lasts until unobserve() or the end of the object. Throws Kor::OpNotSupportedException if
// the object has no notifications.
[[nodiscard]] std::uint64_t observe(Kor::GenericValue const& object, Kor::KorAttr const& attr,
                                    pybind11::object const& function);
[[nodiscard]] bool observes(std::uint64_t number);
void unobserve(std::uint64_t number);

// For the garbage collector: the functions that observe an object; and their end. Null: none.
[[nodiscard]] int visitObservers(Kor::PtrInterface const* object, visitproc visit, void* arg);
void unobserveAll(Kor::PtrInterface const* object);

}  // namespace KorPython
