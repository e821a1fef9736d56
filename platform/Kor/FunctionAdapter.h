// SPDX-License-Identifier: Apache-2.0
#pragma once

// The accessors of functions and constructors, like those in Adapter.h.

#include "Kor/Adapter.h"
#include "Kor/ArgumentView.h"
#include "Kor/Generic.h"
#include "Kor/GenericIf.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"
#include "Kor/TypeModel.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kor::Adapter {

template <class Function>
struct FunctionTraits;
template <class R, class... Args>
struct FunctionTraits<R (*)(Args...)> {
  using Result = std::remove_cvref_t<R>;
  using Values = std::tuple<std::remove_cvref_t<Args>...>;
  static constexpr std::size_t arity = sizeof...(Args);
  static constexpr std::array<TypeGetter, arity> types{
      &Generic<std::remove_cvref_t<Args>>::type...};
};
template <class C, class R, class... Args>
struct FunctionTraits<R (C::*)(Args...)> : FunctionTraits<R (*)(Args...)> {};
template <class C, class R, class... Args>
struct FunctionTraits<R (C::*)(Args...) const> : FunctionTraits<R (*)(Args...)> {};

// What a function is called with.
template <class T>
class Parameter {
 public:
  bool take(ArgumentView const& from) {
    GenericValue const* const generic = from.generic();
    return generic != nullptr && Generic<T>::take(*generic, value_);
  }
  [[nodiscard]] T const& value() const { return value_; }

 private:
  T value_{};
};

template <class T>
class Parameter<Ptr<T>> {
 public:
  bool take(ArgumentView const& from) { return from.take(value_); }
  [[nodiscard]] Ptr<T> const& value() const { return value_; }

 private:
  Ptr<T> value_;
};

// A value of a model type is not copied, except if it is given as a text.
template <PassedAsItIs T>
class Parameter<T> {
 public:
  bool take(ArgumentView const& from) {
    given_ = from.valueAs<T>();
    return given_ != nullptr || takeText(from.generic());
  }
  [[nodiscard]] T const& value() const { return own_ ? *own_ : *given_; }

 private:
  [[gnu::noinline]] bool takeText(GenericValue const* from) {
    T value{};
    if (from == nullptr || !Generic<T>::take(*from, value)) {
      return false;
    }
    own_ = std::move(value);
    return true;
  }

  T const* given_ = nullptr;
  std::optional<T> own_;
};

template <class Values>
struct ParametersOf;
template <class... T>
struct ParametersOf<std::tuple<T...>> {
  using Type = std::tuple<Parameter<T>...>;
};

// Converts the arguments in order and calls `function` with them. argumentAt(place) returns an
// argument, no value past the end. Raises UnknownArgException for surplus arguments.
template <class Values, class ArgumentAt, class Function>
[[gnu::always_inline]] inline GenericValue callWith(ArgumentAt const& argumentAt, std::size_t given,
                                                    std::vector<ArgumentSpec> const& args,
                                                    String const& owner, Function const& function) {
  typename ParametersOf<Values>::Type parameters;
  auto const call = [&]<std::size_t... I>(std::index_sequence<I...>)->GenericValue {
    [[maybe_unused]] auto const take = [&](auto& parameter, std::size_t place) {
      if (!parameter.take(argumentAt(place))) [[unlikely]] {
        GenericIf::throwTypeException(args[place].name);
      }
    };
    (take(std::get<I>(parameters), I), ...);
    if (given > sizeof...(I)) [[unlikely]] {
      GenericIf::throwUnknownArgException(owner);
    }
    return function(std::get<I>(parameters).value()...);
  };
  return call(std::make_index_sequence<std::tuple_size_v<Values>>());
}
inline auto elementsOf(GenericList const& list) {
  return [&list](std::size_t place) { return ArgumentView(list[place]); };
}

template <class Self, auto call, class ArgumentAt>
GenericValue invoke(Instance self, KorAttr const& attr, ArgumentAt const& argumentAt,
                    std::size_t given) {
  using Traits = FunctionTraits<decltype(call)>;
  auto const function = [&self](auto const&... args) -> GenericValue {
    if constexpr (std::is_void_v<typename Traits::Result>) {
      (subject<Self>(self).*call)(args...);
      return {};
    } else {
      return Generic<typename Traits::Result>::value((subject<Self>(self).*call)(args...));
    }
  };
  return callWith<typename Traits::Values>(argumentAt, given, attr.args(), attr.name(), function);
}

// The arguments in a list. A function without arguments needs none.
template <class Self, auto call>
GenericValue function(Instance self, KorAttr const& attr, AttributeOperation const& operation) {
  needCall(attr, operation);
  if constexpr (FunctionTraits<decltype(call)>::arity == 0) {
    if (!operation.value.present()) {
      return invoke<Self, call>(self, attr, elementsOf(GenericList()), 0);
    }
  }
  GenericList const& list = needList(operation.value);
  return invoke<Self, call>(self, attr, elementsOf(list), list.size());
}

template <class Self, auto call>
GenericValue direct(Instance self, KorAttr const& attr, std::span<ArgumentView const> args) {
  constexpr std::size_t arity = FunctionTraits<decltype(call)>::arity;
  if (args.size() < arity) [[unlikely]] {
    std::vector<ArgumentView> all(args.begin(), args.end());
    all.resize(arity, ArgumentView(GenericList::none()));
    return direct<Self, call>(self, attr, all);
  }
  auto const argumentAt = [args](std::size_t place) -> ArgumentView const& { return args[place]; };
  return invoke<Self, call>(self, attr, argumentAt, args.size());
}

// Two overloads with one name. An empty list calls the one without arguments.
template <class Self, auto withArgs, auto without>
GenericValue overloaded(Instance self, KorAttr const& attr, AttributeOperation const& operation) {
  needCall(attr, operation);
  if (!operation.value.present() || needList(operation.value).empty()) {
    (subject<Self>(self).*without)();
    return {};
  }
  return function<Self, withArgs>(self, attr, operation);
}
template <class Self, auto withArgs, auto without>
GenericValue overloadedDirect(Instance self, KorAttr const& attr,
                              std::span<ArgumentView const> args) {
  if (args.empty()) {
    (subject<Self>(self).*without)();
    return {};
  }
  return direct<Self, withArgs>(self, attr, args);
}

template <auto make>
GenericValue construct(KorType const& type, GenericValue const& arguments) {
  using Traits = FunctionTraits<decltype(make)>;
  GenericList const& list = needList(arguments);
  auto const function = [](auto const&... args) {
    // Not called by its name, which g++ refuses for a private function.
    auto const made = std::invoke(make, args...);
    if constexpr (ModelType<typename Traits::Result>) {
      return Generic<typename Traits::Result>::boxed(made, false);
    } else {
      return Generic<typename Traits::Result>::value(made);
    }
  };
  return callWith<typename Traits::Values>(elementsOf(list), list.size(), type.constructorArgs(),
                                           type.shortName(), function);
}

}  // namespace Kor::Adapter
