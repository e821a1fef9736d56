// SPDX-License-Identifier: Apache-2.0
#include "python/kor/Callbacks.h"

#include "python/kor/Errors.h"
#include "python/kor/Handle.h"

#include <Kor/Callable.h>
#include <Kor/GenericIf.h>
#include <Kor/Notifiee.h>

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace KorPython {

namespace py = pybind11;

namespace {

using Kor::GenericList;
using Kor::GenericValue;

PyObject* callPython(PyObject* function, GenericList const& args) {
  py::tuple given(args.size());
  for (std::size_t i = 0; i != args.size(); ++i) {
    given[i] = py::reinterpret_steal<py::object>(toPython(args[i]));
  }
  return PyObject_CallObject(function, given.ptr());
}

class PythonCallable final : public Kor::Callable {
 public:
  explicit PythonCallable(PyObject* function)
      : function_(py::reinterpret_borrow<py::object>(function)) {}

  GenericValue call(GenericList const& args) override {
    auto const result = py::reinterpret_steal<py::object>(callPython(function_.ptr(), args));
    if (!result) {
      CallbackFailed const failure = CallbackFailed::take();
      if (failure.mustBeRaised()) {
        raiseLater(failure);
      }
      throw failure;  // NOLINT(cert-err09-cpp,cert-err61-cpp,misc-throw-by-value-catch-by-reference)
    }
    return toGeneric(result.ptr());
  }

 private:
  py::object function_;
};

class PythonObserver;

// The observers that exist.
struct Observers {
  std::map<std::uint64_t, PythonObserver*> byNumber;
  std::unordered_multimap<Kor::PtrInterface const*, PythonObserver*> byObject;
  std::uint64_t soFar = 0;
};

// Observers of objects that are destroyed at the end of the process use it, too.
Observers& observers() {
  static Observers* const it = new Observers;
  return *it;
}

class PythonObserver final : public Kor::AttributeObserver {
 public:
  PythonObserver(GenericValue const& object, Kor::AttributeId id, py::object function)
      : object_(object.object()),
        const_(object.isConst()),
        id_(id),
        function_(std::move(function)),
        number_(++observers().soFar) {
    observers().byNumber.emplace(number_, this);
    observers().byObject.emplace(object_, this);
  }
  ~PythonObserver() override {
    observers().byNumber.erase(number_);
    auto const [begin, end] = observers().byObject.equal_range(object_);
    observers().byObject.erase(
        std::find_if(begin, end, [this](auto const& each) { return each.second == this; }));
  }

  [[nodiscard]] std::uint64_t number() const { return number_; }
  [[nodiscard]] PyObject* function() const { return function_.ptr(); }

  void onAttribute(Kor::AttributeId id, GenericValue const& key) override {
    if (id != id_) {
      return;
    }
    Kor::Ptr<NotifieeBase> const pinned = Kor::share<NotifieeBase>(this);
    GenericValue const object = object_->isNondestructing()
                                    ? GenericValue(Kor::share(object_), const_)
                                    : GenericValue(nullptr);
    auto const result = py::reinterpret_steal<py::object>(
        callPython(function_.ptr(), *GenericList::of(object, key)));
    if (!result) {
      throw CallbackFailed::take();
    }
  }
  void onNotificationException(Kor::AttributeId /*id*/) override {
    try {
      throw;
    } catch (CallbackFailed const& failure) {
      raiseLater(failure);
    } catch (...) {
      setError();
      raiseLater(CallbackFailed::take());
    }
  }

 private:
  Kor::PtrInterface const* object_;  // which exists while it is observed
  bool const_;
  Kor::AttributeId id_;
  py::object function_;
  std::uint64_t number_;
};

}  // namespace

GenericValue callableOf(PyObject* function) {
  return {Kor::Ptr<Kor::PtrInterface const>(Kor::make<PythonCallable>(function)), false};
}

std::uint64_t observe(GenericValue const& object, Kor::KorAttr const& attr,
                      py::object const& function) {
  if (object.kind() == GenericValue::Kind::object) {
    auto const observer = Kor::make<PythonObserver>(object, attr.id(), function);
    if (observer->notifierIs(object.object())) {
      return observer->number();
    }
  }
  throw Kor::OpNotSupportedException(attr.name(), Kor::AttributeOperation::get);
}

bool observes(std::uint64_t number) {
  auto const found = observers().byNumber.find(number);
  return found != observers().byNumber.end() && found->second->registered();
}

void unobserve(std::uint64_t number) {
  auto const found = observers().byNumber.find(number);
  if (found != observers().byNumber.end()) {
    Kor::Ptr<PythonObserver> const observer = Kor::share(found->second);
    observer->notifierIs(nullptr);
  }
}

int visitObservers(Kor::PtrInterface const* object, visitproc visit, void* arg) {
  auto const [begin, end] = observers().byObject.equal_range(object);
  int result = 0;
  for (auto it = begin; it != end && result == 0; ++it) {
    result = visit(it->second->function(), arg);
  }
  return result;
}

void unobserveAll(Kor::PtrInterface const* object) {
  auto const [begin, end] = observers().byObject.equal_range(object);
  std::vector<Kor::Ptr<PythonObserver>> all;
  for (auto it = begin; it != end; ++it) {
    all.push_back(Kor::share(it->second));
  }
  for (Kor::Ptr<PythonObserver> const& each : all) {
    each->notifierIs(nullptr);
  }
}

}  // namespace KorPython
