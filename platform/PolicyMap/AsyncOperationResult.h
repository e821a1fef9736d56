// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Strep.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"

#include <tuple>

namespace PolicyMap {

// The result of an asynchronous helper operation: "" for success or the message of the failure, and
// the time of completion in seconds.
class POLICYMAP_API AsyncOperationResult {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::AsyncOperationResult";

  AsyncOperationResult() = default;
  AsyncOperationResult(Kor::String8 error, double time) : error_(std::move(error)), time_(time) {}
  // Parses one text form and leaves `it` after it. Throws Kor::RangeException.
  AsyncOperationResult(Kor::TextIterator& it, Kor::TextIterator const& end);

  [[nodiscard]] Kor::String8 const& error() const { return error_; }
  [[nodiscard]] double time() const { return time_; }
  void errorIs(Kor::String8 const& error) { error_ = error; }
  void timeIs(double time) { time_ = time; }

  bool operator==(AsyncOperationResult const&) const = default;
  [[nodiscard]] bool operator!() const { return *this == AsyncOperationResult(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using R = AsyncOperationResult;
    return std::tuple(
        Kor::field("error", &R::error, &R::errorIs, "text of the failure; empty: success"),
        Kor::field("time", &R::time, &R::timeIs, "when the operation was completed, in seconds"));
  }

 private:
  Kor::String8 error_;
  double time_ = 0;
};

}  // namespace PolicyMap
