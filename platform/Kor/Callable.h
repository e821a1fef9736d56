// SPDX-License-Identifier: Apache-2.0
#pragma once

// Callable: a function as an object, to pass it where objects are reached by name.
//
//   Callable::Ptr const twice = callable([](GenericList const& args) -> GenericValue {
//     return 2 * args[0].integer();
//   });

#include "Kor/Export.h"
#include "Kor/GenericValue.h"
#include "Kor/PtrInterface.h"

#include <utility>

namespace Kor {

class KOR_API Callable : public PtrInterface {
 public:
  using Ptr = Kor::Ptr<Callable>;
  using PtrConst = Kor::Ptr<Callable const>;

  ~Callable() override;

  [[nodiscard]] KorType const* fwkType() const override;
  [[nodiscard]] static KorType* _fwkType();

  // What it throws is an exception of the caller.
  virtual GenericValue call(GenericList const& args) = 0;
};

template <class Function>
[[nodiscard]] Callable::Ptr callable(Function function) {
  class Made final : public Callable {
   public:
    explicit Made(Function made) : function_(std::move(made)) {}
    GenericValue call(GenericList const& args) override { return function_(args); }

   private:
    Function function_;
  };
  return make<Made>(std::move(function));
}

}  // namespace Kor
